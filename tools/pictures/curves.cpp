// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTabBar>
#include <cstdlib>
#include <iostream>

#include "curves/curve_chart.h"
#include "curves/frmNameplate.h"
#include "curves/record_panel.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmSetDescr.h"
#include "records/nameplate_file.h"
#include "tests/curves/panel_records.h"
#include "tests/curves/small_chart.h"
#include "tests/support/controls.h"
#include "tests/support/data_folder.h"
#include "tests/support/pause.h"
#include "tools/pictures/pictures.h"

namespace davo::test {
namespace {

QPalette WithTexts(QPalette palette, const QColor& colour) {
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(role, colour);
    return palette;
}

QPalette HighContrastPalette() {
    QPalette palette(Qt::black, Qt::black);
    palette.setColor(QPalette::Base, Qt::black);
    return WithTexts(palette, Qt::yellow);
}

class CurvePictures : public DataFolder {
  public:
    explicit CurvePictures(const Album& album) : album_(album) {
        Add("ONE", Curve(KneeCurve(), 1));
        Add("THREE",
            Curve(SmoothCurve(150), 1) + Curve(SmoothCurve(310), 2) + Curve(SmoothCurve(640), 3));
        Add("STRAIGHT", Curve(StraightCurve(), 1));
        Add("FALLING", Curve(FallingCurve(), 1));
        Add("SHORT", Curve(ThreePoints(), 1));
        std::string many;
        for (int i = 1; i <= 60; ++i)
            many += Curve(SmoothCurve(80 + 10 * i), i);
        Add("SIXTY", many);
        for (int i = 0; i < 12; ++i)
            Add("TEN" + std::to_string(i), Curve(SmoothCurve(100 + 80 * i), 1));
        ReplaceFile(DataFile(u"BROKEN"_s), "TEST NUMBER: BROKEN\r\nREC");
        ListRecords();
    }

    void Take() {
        Add("PLAIN", Curve(PlainCurve(), 1));
        Add("RATIO", Curve(SmoothCurve(150), 1) + Curve({}, 2));
        Add("OPEN", Curve(OpenCurve(), 1));
        for (const char* name : {"ONE", "THREE", "STRAIGHT", "FALLING", "SHORT", "SIXTY", "RATIO",
                                 "PLAIN", "OPEN", "BROKEN"})
            GrabPanel(name, {DataFile(QLatin1String(name))});
        GrabPanel("TEN", FilesOfTen(12));
        GrabPanel("NONE", {});
        Add("NOW", Curve(SmoothCurve(375), 1));
        ReplaceFile(
            DataFile(u"FIRST"_s),
            HeaderText({"FIRST",
                        "03/07/15",
                        "14:05",
                        "01",
                        {"C", "Hilltop", "Feeder 4", "Acme", "CT-600", "00012345", "", ""}}) +
                Curve(SmoothCurve(400), 1));
        ListRecords();
        Compared("low", {880, 400});
        Nameplates();
        settings.curveLimit = u"5"_s;
        settings.ratioLimit = u"0.25"_s;
        Compared("light", {660, 640});
        Compared("narrow", {430, 520});
        Compared("few", {660, 640}, "SHORT");
        SmallCharts("light");
        {
            const Colours dark(WithTexts(DarkPalette({28, 28, 30}, {40, 40, 44}), {235, 235, 235}));
            SmallCharts("dark");
            GrabPanel("dark", {DataFile(u"THREE"_s)});
            Compared("dark", {660, 640});
        }
        {
            const Colours contrast(HighContrastPalette());
            GrabPanel("contrast", {DataFile(u"ONE"_s)});
        }
        Chart();
        for (const int records : {1, 3, 10})
            Saved(records);
        for (const auto& [name, mode] : {std::pair("utilities", FileUtilMode::FileUtilities),
                                         std::pair("overlay", FileUtilMode::Overlay)})
            Window(name, frmFileUtilOverlay(mode, {settings, directory, prompts, nullptr}));
        Window("headers",
               frmSetDescr(directory, settings.dataPath, settings.kneepointType, prompts));
    }

  private:
    void Add(const std::string& name, const std::string& tests) {
        ReplaceFile(DataFile(QString::fromStdString(name)), HeaderText(name) + tests);
    }
    std::vector<QString> FilesOfTen(int count) const {
        std::vector<QString> files;
        for (int i = 0; i < count; ++i)
            files.push_back(DataFile(u"TEN%1"_s.arg(i)));
        return files;
    }
    static void ShowPanel(RecordPanel& panel, const std::vector<QString>& files) {
        panel.resize(660, 640);
        panel.show();
        panel.ShowRecords(files);
    }
    void GrabPanel(const char* name, const std::vector<QString>& files) {
        RecordPanel panel(prompts);
        ShowPanel(panel, files);
        album_.Grab(panel, u"panel-"_s + QLatin1String(name));
    }
    // The tab Compare.
    void Compared(const char* name, QSize size, const char* record = "NOW") {
        RecordPanel panel(prompts);
        panel.OfferCompare(settings);
        ShowPanel(panel, {DataFile(QLatin1String(record))});
        panel.resize(size);
        test::Pause(60);
        FindIn<QTabBar>(panel, "tabPanel")->setCurrentIndex(1);
        album_.Grab(panel, u"compare-"_s + QLatin1String(name));
    }
    // The dialog in each class, and the tab with a nameplate, taps and a maker's curve.
    void Nameplates() {
        std::string table = "A;V\r\n";
        for (const auto& [current, voltage] : SmoothCurve(390))
            table += current + ";" + voltage + "\r\n";
        ReplaceFile(settings.dataPath + u"Acme CT-600.reference.csv"_s, table);
        RecordParts half;
        half.number = " 2";
        half.points = SmoothCurve(188);
        for (auto& [current, voltage] : half.points)
            current = std::to_string(2 * std::strtod(current.c_str(), nullptr)).substr(0, 6);
        half.nameplate = "120 (600:5)";
        Add("FILLED", Curve(SmoothCurve(375), 1) + RecordText(half));
        NameplateTexts texts{"PX", "5", "2.4", "300", "0.12", "240", "0.25"};
        texts.back() = "1200:5, 600:5, 4000:5";
        KeepNameplate(settings.dataPath, "00012345", texts);
        settings.curveLimit = u"5"_s;
        for (const auto& [name, size] :
             {std::pair("filled", QSize(660, 640)), std::pair("filled-narrow", QSize(430, 520)),
              std::pair("filled-low", QSize(880, 400)), std::pair("filled-tall", QSize(660, 1100))})
            Compared(name, size, "FILLED");
        for (const char* kind : {"PX", "5P", "C"}) {
            texts.front() = kind;
            frmNameplate dialog(u"00012345"_s, texts, prompts, nullptr);
            dialog.setAttribute(Qt::WA_DeleteOnClose, false);
            album_.ShowAndGrab(dialog, u"nameplate-"_s + QLatin1String(kind));
        }
        KeepNameplate(settings.dataPath, "00012345", {});
        DeleteFile(DataFile(u"FILLED"_s));
        DeleteFile(settings.dataPath + u"Acme CT-600.reference.csv"_s);
        settings.curveLimit.clear();
    }
    void Chart() {
        CurveChart chart;
        chart.resize(700, 500);
        chart.SetCurves({{u"Before"_s, {{0.001, 10}, {0.01, 90}, {0.1, 200}}, {}, CurveLook::Faint},
                         {u"This shot"_s, {{0.002, 20}}, {}, CurveLook::Readings}});
        for (double current = 0.003; current < 2; current *= 1.3)
            chart.AppendPoint(1, {current, 300 * current / (current + 0.05)});
        chart.show();
        test::Pause(50);
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(chart.focusProxy(), Qt::Key_Right, Qt::ControlModifier);
        album_.Grab(chart, u"chart-readings"_s);
        for (int i = 0; i < 5; ++i)
            chart.ZoomBy(1.25);
        album_.Grab(chart, u"chart-zoomed"_s);
        chart.SavePng(album_.Path(u"chart-saved.png"_s), {800, 600});
    }
    // What the panel's buttons save.
    void Saved(int records) {
        RecordPanel panel(prompts);
        ShowPanel(panel, FilesOfTen(records));
        for (const auto& [button, kind] :
             {std::pair("cmdSavePng", "png"), std::pair("cmdSavePdf", "pdf")}) {
            prompts.files = {album_.Path(u"saved-%1.%2"_s.arg(records).arg(QLatin1String(kind)))};
            prompts.answers = {Answer::Yes};
            test::Pause(80);
            FindIn<QAbstractButton>(panel, button)->click();
        }
    }
    // The display of a running shot beside its prompt.
    void SmallCharts(const char* palette) {
        for (const QSize size : {QSize(420, 260), QSize(340, 220)}) {
            for (int moment = 0; moment < 4; ++moment) {
                CurveChart chart;
                chart.resize(size);
                ShowMoment(chart, static_cast<Moment>(moment));
                album_.ShowAndGrab(
                    chart,
                    u"small-%1-%2-%3"_s.arg(QLatin1String(palette)).arg(size.width()).arg(moment));
            }
        }
    }
    template <class Form>
    void Window(const char* name, Form&& window) {
        window.Form_Load();
        window.resize(1366, 690);
        window.show();
        FindIn<QTreeWidget>(window, "lvTest")->topLevelItem(1)->setSelected(true);
        album_.Grab(window, u"window-"_s + QLatin1String(name));
        if (auto* tests = window.template findChild<QListWidget*>(u"lstTest"_s);
            tests != nullptr && tests->isVisible()) {
            test::Pause(50);
            tests->setCurrentRow(0);
        }
        for (const char* graph : {"cmdOp0", "cmdOp1"}) {
            if (name != std::string("overlay")) break;
            ClickIn(window, graph);
            album_.Grab(window, u"window-"_s + QLatin1String(graph));
            auto* list = FindIn<QTreeWidget>(window, "lvTest");
            list->setCurrentItem(list->findItems(u"THREE"_s, Qt::MatchExactly).front());
            test::Pause(50);
        }
        window.resize(1000, 560);
        album_.Grab(window, u"window-small-"_s + QLatin1String(name));
        ClickIn(window, "cmdRecord");
        album_.Grab(window, u"window-small-record-"_s + QLatin1String(name));
        std::cout << name << ' ' << window.minimumSizeHint().width() << " x "
                  << window.minimumSizeHint().height() << " at least\n";
    }

    const Album& album_;
};

}  // namespace

void TakeCurves(const Album& album) {
    CurvePictures(album).Take();
}

}  // namespace davo::test
