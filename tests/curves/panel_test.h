// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QPlainTextEdit>
#include <QTableWidget>

#include "common/files.h"
#include "common/places.h"
#include "common/settings.h"
#include "curves/curve_chart.h"
#include "curves/record_panel.h"
#include "records/directory_file.h"
#include "tests/curves/panel_records.h"
#include "tests/support/controls.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/pause.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// Records in a folder and a place where a panel is shown.
class PanelTest : public ::testing::Test {
  protected:
    PanelTest() {
        settings.dataPath = folder.Path("Shots_Data/");
        settings.excelPath = folder.Path("Shots_Excel/");
        QDir().mkpath(settings.dataPath);
        QDir().mkpath(settings.excelPath);
        Add("ONE", Curve(KneeCurve(), 1));
        Add("STRAIGHT", Curve(StraightCurve(), 1));
        Add("THREE",
            Curve(SmoothCurve(150), 1) + Curve(SmoothCurve(310), 2) + Curve(SmoothCurve(640), 3));
    }
    QString File(const std::string& name) const {
        return settings.dataPath + QString::fromStdString(name) + u".txt"_s;
    }
    void Add(const std::string& name, const std::string& tests) {
        ReplaceFile(File(name), HeaderText(name) + tests);
    }
    template <class Control>
    Control* In(const QWidget& parent, const char* name) const {
        return FindIn<Control>(parent, name);
    }
    static std::string TextOf(const QWidget& parent, const char* name) {
        const auto* label = FindIn<QLabel>(parent, name);
        return label->isHidden() ? std::string() : label->text().toStdString();
    }
    static std::vector<std::string> ColumnOf(const QWidget& parent, int column) {
        const auto* table = FindIn<QTableWidget>(parent, "tblTests");
        std::vector<std::string> cells;
        for (int row = 0; row < table->rowCount(); ++row)
            cells.push_back(table->item(row, column)->text().toStdString());
        return cells;
    }
    static std::string Doubts(const QWidget& parent) {
        return FindIn<QPlainTextEdit>(parent, "txtDoubts")->toPlainText().toStdString();
    }
    static bool Comes(const QWidget& parent, const char* title) {
        return QTest::qWaitFor([&] { return TextOf(parent, "lblRecord").starts_with(title); },
                               kPatience);
    }

    TemporaryFolder folder;
    Settings settings;
    DirectoryTables directory;
    FakePrompts prompts;
};

class Panel : public PanelTest {
  protected:
    Panel() {
        panel.resize(500, 680);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
    }
    void ShowFiles(const std::vector<std::string>& names) {
        std::vector<QString> files;
        for (const std::string& name : names)
            files.push_back(File(name));
        panel.ShowRecords(files);
        test::Pause(60);
    }
    CurveChart* TheChart() {
        return dynamic_cast<CurveChart*>(FindIn<QWidget>(panel, "chtCurves"));
    }
    void Press(const char* name) {
        QTest::mouseClick(FindIn<QPushButton>(panel, name), Qt::LeftButton);
    }
    RecordPanel panel{prompts};
};

}  // namespace davo::test
