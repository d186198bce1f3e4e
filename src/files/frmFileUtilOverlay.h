// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "common/settings.h"
#include "files/group_file.h"
#include "records/directory_file.h"
#include "reports/report_runner.h"
#include "ui/event_handlers.h"

class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace davo {

class BesideRecords;
class PageHeader;
class RecordList;

// What the window is for; the values are those of fileUtilMode.
enum class FileUtilMode : std::int16_t { FileUtilities = 2, Overlay = 3 };

// What the window works on; all outlive it.
struct FileUtilSurroundings {
    Settings& settings;
    DirectoryTables& directory;  // loaded already
    Prompts& prompts;
    ReportRunner* reports = nullptr;  // without it nothing is plotted
};

// "File Utilities": renames, copies and deletes record files. "Overlaying 2 Tests": two tests on
// one chart.
class frmFileUtilOverlay : public QWidget {
  public:
    frmFileUtilOverlay(FileUtilMode mode, const FileUtilSurroundings& around);

    void Form_Load();

    // The window has closed.
    std::function<void()> OnUnload;
    // The record files of the data folder that are to be copied; the window closes then.
    std::function<void(const std::vector<QString>& files)> OnCopy;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    bool IsOverlay() const { return mode_ == FileUtilMode::Overlay; }
    QGroupBox* BuildOverlay();
    PageHeader* BuildButtons(QWidget* cmdRecord);
    void Connect();

    void ListAgain();
    void cmdOp_Click(int index);
    void RunOperation(int index);
    void FillTests();
    void ChooseTest(int graph);
    void ShowGraphs();
    void PlotIt();
    void BuildOverlayReport();

    const FileUtilMode mode_;
    FileUtilSurroundings around_;
    EventHandlers handlers_;
    std::array<std::optional<OverlayTest>, 2> chosen_;
    bool plotting_ = false;
    bool closeWanted_ = false;

    BesideRecords* beside_ = nullptr;
    RecordList* lvTest_ = nullptr;
    QListWidget* lstTest_ = nullptr;
    std::array<QLineEdit*, 2> txtTest_{};
    QFrame* frmeOp_ = nullptr;
    std::array<QPushButton*, 3> cmdOp_{};
    QLabel* lblMessage_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
};

}  // namespace davo
