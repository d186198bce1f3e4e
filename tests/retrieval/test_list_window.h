// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>
#include <QRadioButton>

#include "reports/report_runner.h"
#include "retrieval/frmTestList.h"
#include "tests/support/controls.h"
#include "tests/support/data_folder.h"
#include "tests/support/waiting_renderer.h"

namespace davo::test {

// The window over a data folder of its own and a link of the test's.
class TestListWindow : public DataFolder, public Controls {
  public:
    TestListWindow() : DataFolder("Jobs/") {}

    QWidget& Window() override { return *window; }
    void Show(ListMode mode, Link& link, const std::string& dirReply = {}) {
        window = std::make_unique<frmTestList>(
            mode, TestListSurroundings{settings, directory, prompts, link, places.scratchFolder,
                                       dirReply});
        window->OnUnload = [this] { ++unloaded; };
        window->Reports.make = [this](const QString& file, const ReportHooks::Show& show) {
            reports.runner.Run(file, show);
        };
        window->Reports.leave = [this] { reports.runner.Cancel(); };
        window->OnExcelFolderMade = [this](const QString& path) { excelFolders.push_back(path); };
        window->Form_Load();
        constexpr int kWidth = 1100;
        constexpr int kHeight = 640;
        window->resize(kWidth, kHeight);
        ASSERT_TRUE(ShowActive(*window));
    }
    void Choose(const char* name) { Find<QRadioButton>(name)->click(); }

    Places places = folder.MakePlaces();
    std::vector<QString> excelFolders;
    WaitingReports reports{prompts, settings};
    std::unique_ptr<frmTestList> window;
    int unloaded = 0;
};

}  // namespace davo::test
