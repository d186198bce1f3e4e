// SPDX-License-Identifier: GPL-3.0-or-later
// Grabs the record panel and the windows that have it into the folder that the argument names.
// Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QStyleFactory>
#include <QTest>
#include <QTreeWidget>
#include <iostream>

#include "common/files.h"
#include "curves/curve_chart.h"
#include "curves/record_panel.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmSetDescr.h"
#include "tests/curves/panel_records.h"
#include "tests/curves/small_chart.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

namespace {

QPalette DarkPalette() {
    QPalette dark(QColor(45, 45, 48), QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(28, 28, 30));
    dark.setColor(QPalette::AlternateBase, QColor(40, 40, 44));
    for (const QPalette::ColorRole role :
         {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        dark.setColor(role, QColor(235, 235, 235));
    return dark;
}

QPalette HighContrastPalette() {
    QPalette palette(Qt::black, Qt::black);
    palette.setColor(QPalette::Base, Qt::black);
    for (const QPalette::ColorRole role :
         {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(role, Qt::yellow);
    return palette;
}

class Pictures {
  public:
    explicit Pictures(QString folderName) : folderName_(std::move(folderName)) {
        settings_.dataPath = folder_.Path("Shots_Data/");
        QDir().mkpath(settings_.dataPath);
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
        ReplaceFile(Path("BROKEN"), "TEST NUMBER: BROKEN\r\nREC");
        RebuildDirectory(settings_.dataPath, directory_);
        LoadDirectoryFile(settings_.dataPath, directory_);
    }

    void Take() {
        for (const char* name : {"ONE", "THREE", "STRAIGHT", "FALLING", "SHORT", "SIXTY", "BROKEN"})
            Panel(name, {Path(name)});
        std::vector<QString> ten;
        for (int i = 0; i < 12; ++i)
            ten.push_back(Path("TEN" + std::to_string(i)));
        Panel("TEN", ten);
        Panel("NONE", {});
        const QPalette usual = QApplication::palette();
        SmallCharts("light");
        QApplication::setPalette(DarkPalette());
        SmallCharts("dark");
        Panel("dark", {Path("THREE")});
        QApplication::setPalette(HighContrastPalette());
        Panel("contrast", {Path("ONE")});
        QApplication::setPalette(usual);
        Chart();
        for (const int records : {1, 3, 10})
            Saved(records);
        Window("utilities", new frmFileUtilOverlay(FileUtilMode::FileUtilities,
                                                   {settings_, directory_, prompts_, nullptr}));
        Window("overlay", new frmFileUtilOverlay(FileUtilMode::Overlay,
                                                 {settings_, directory_, prompts_, nullptr}));
        Window("headers", new frmSetDescr(directory_, settings_.dataPath, prompts_));
    }

  private:
    QString Path(const std::string& name) const {
        return settings_.dataPath + QString::fromStdString(name) + QStringLiteral(".txt");
    }
    void Add(const std::string& name, const std::string& tests) {
        ReplaceFile(Path(name), HeaderText(name) + tests);
    }
    void Grab(QWidget& widget, const QString& name) {
        QTest::qWait(80);
        widget.grab().save(QDir(folderName_).filePath(name + QStringLiteral(".png")));
    }
    void Panel(const char* name, const std::vector<QString>& files) {
        RecordPanel panel(prompts_);
        panel.resize(480, 660);
        panel.show();
        panel.ShowRecords(files);
        Grab(panel, QStringLiteral("panel-") + QLatin1String(name));
    }
    void Chart() {
        CurveChart chart;
        chart.resize(700, 500);
        chart.SetCurves({{QStringLiteral("Before"),
                          {{0.001, 10}, {0.01, 90}, {0.1, 200}},
                          {},
                          CurveLook::Faint},
                         {QStringLiteral("This shot"), {{0.002, 20}}, {}, CurveLook::Readings}});
        for (double current = 0.003; current < 2; current *= 1.3)
            chart.AppendPoint(1, {current, 300 * current / (current + 0.05)});
        chart.show();
        QTest::qWait(50);
        QTest::keyClick(chart.focusProxy(), Qt::Key_Right, Qt::ControlModifier);
        QTest::keyClick(chart.focusProxy(), Qt::Key_Right, Qt::ControlModifier);
        Grab(chart, QStringLiteral("chart-readings"));
        for (int i = 0; i < 5; ++i)
            chart.ZoomBy(1.25);
        Grab(chart, QStringLiteral("chart-zoomed"));
        chart.SavePng(QDir(folderName_).filePath(QStringLiteral("chart-saved.png")), {800, 600});
    }
    // What the panel's buttons save.
    void Saved(int records) {
        RecordPanel panel(prompts_);
        panel.resize(480, 660);
        panel.show();
        std::vector<QString> files;
        for (int i = 0; i < records; ++i)
            files.push_back(Path("TEN" + std::to_string(i)));
        panel.ShowRecords(files);
        for (const char* kind : {"png", "pdf"}) {
            prompts_.files = {
                QDir(folderName_)
                    .filePath(QStringLiteral("saved-%1.%2").arg(records).arg(QLatin1String(kind)))};
            prompts_.answers = {Answer::Yes};
            const QString button = QLatin1String(kind) == QLatin1String("png")
                                       ? QStringLiteral("cmdSavePng")
                                       : QStringLiteral("cmdSavePdf");
            QTest::qWait(80);
            panel.findChild<QAbstractButton*>(button)->click();
        }
    }
    // The display of a running shot beside its prompt.
    void SmallCharts(const char* palette) {
        for (const QSize size : {QSize(420, 260), QSize(340, 220)}) {
            for (int moment = 0; moment < 4; ++moment) {
                CurveChart chart;
                chart.resize(size);
                ShowMoment(chart, static_cast<Moment>(moment));
                chart.show();
                Grab(chart, QStringLiteral("small-%1-%2-%3")
                                .arg(QLatin1String(palette))
                                .arg(size.width())
                                .arg(moment));
            }
        }
    }
    template <class Form>
    void Window(const char* name, Form* window) {
        window->Form_Load();
        window->resize(1366, 690);
        window->show();
        auto* list = window->template findChild<QTreeWidget*>(QStringLiteral("lvTest"));
        list->topLevelItem(1)->setSelected(true);
        Grab(*window, QStringLiteral("window-") + QLatin1String(name));
        window->resize(1000, 560);
        Grab(*window, QStringLiteral("window-small-") + QLatin1String(name));
        std::cout << name << ' ' << window->minimumSizeHint().width() << " x "
                  << window->minimumSizeHint().height() << " at least\n";
        delete window;
    }

    QString folderName_;
    TemporaryFolder folder_;
    Settings settings_;
    DirectoryTables directory_;
    FakePrompts prompts_;
};

}  // namespace

}  // namespace davo::test

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (argc < 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::cerr << "usage: " << argv[0] << " folder\n";
        return 2;
    }
    davo::test::Pictures(QString::fromLocal8Bit(argv[1])).Take();
    return 0;
}
