// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "common/files.h"
#include "reports/report_runner.h"
#include "retrieval/frmTestList.h"
#include "tests/reports/waiting_renderer.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"
#include "ui/record_list.h"

namespace davo::test {

// The window over a data folder of its own and a link of the test's.
class TestListWindow {
  public:
    TestListWindow() {
        settings.dataPath = folder.Path("Jobs/Shots_Data/");
        settings.excelPath = folder.Path("Jobs/Shots_Excel/");
        QDir().mkpath(settings.dataPath);
        QDir().mkpath(settings.excelPath);
        QDir().mkpath(places.scratchFolder);
    }

    void Show(ListMode mode, Link& link, const std::string& dirReply = {}) {
        window = std::make_unique<frmTestList>(
            mode, TestListSurroundings{settings, directory, prompts, link, places.scratchFolder,
                                       dirReply});
        window->OnUnload = [this] { ++unloaded; };
        window->Reports.make = [this](const QString& file, const ReportHooks::Show& show) {
            reports.Run(file, show);
        };
        window->Reports.leave = [this] { reports.Cancel(); };
        window->OnExcelFolderMade = [this](const QString& path) { excelFolders.push_back(path); };
        window->Form_Load();
        constexpr int kWidth = 1100;
        constexpr int kHeight = 640;
        window->resize(kWidth, kHeight);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    template <class Control>
    Control* Find(const char* name) {
        auto* control = window->findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::logic_error(std::string("no control ") + name);
        return control;
    }
    void Click(const char* name) { QTest::mouseClick(Find<QPushButton>(name), Qt::LeftButton); }
    void Choose(const char* name) { Find<QRadioButton>(name)->click(); }
    RecordList* List() {
        return static_cast<RecordList*>(window->findChild<QTreeWidget*>(QStringLiteral("lvTest")));
    }
    QPoint RowPlace(int row) { return List()->visualItemRect(List()->topLevelItem(row)).center(); }
    void ClickRow(int row, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, keys, RowPlace(row));
    }
    std::vector<std::string> Column(int column) {
        std::vector<std::string> texts;
        for (int row = 0; row < List()->topLevelItemCount(); ++row)
            texts.push_back(List()->topLevelItem(row)->text(column).toStdString());
        return texts;
    }
    std::string Text(const char* label) { return Find<QLabel>(label)->text().toStdString(); }
    std::vector<std::string> Shown() const {
        std::vector<std::string> texts;
        for (const QString& text : prompts.shown)
            texts.push_back(text.toStdString());
        return texts;
    }
    bool Until(const std::function<bool()>& condition) {
        constexpr int kPatience = 10000;
        return QTest::qWaitFor(condition, kPatience);
    }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    Settings settings;
    DirectoryTables directory;
    FakePrompts prompts;
    std::vector<QString> targets;
    std::vector<QString> opened;
    std::vector<QString> excelFolders;
    bool rendererWaits = false;
    ReportRunner reports{
        prompts, settings,
        [this] {
            return ChosenRenderer{std::make_unique<WaitingRenderer>(targets, rendererWaits), false};
        },
        [this](const QString& path) {
            opened.push_back(path);
            return true;
        }};
    std::unique_ptr<frmTestList> window;
    int unloaded = 0;
};

}  // namespace davo::test
