// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "common/prompts.h"
#include "common/settings.h"
#include "link/link.h"
#include "records/directory_file.h"
#include "reports/report_hooks.h"
#include "retrieval/list_order.h"
#include "ui/event_handlers.h"

class QBoxLayout;
class QButtonGroup;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace davo {

class RecordList;

// What the test list shows: the record files of the data folder, to be viewed, or the instrument's
// memory, to be saved in the data folder.
enum class ListMode : std::uint8_t { Folder, Instrument };

// What the test list works on; all that is referred to must outlive it.
struct TestListSurroundings {
    Settings& settings;
    DirectoryTables& tables;
    Prompts& prompts;
    Link& link;
    QString scratchFolder;  // ends with the separator
    std::string dirReply;   // what the instrument sent as its directory; empty in folder mode
};

// The test list, "DAVO Memory Content".
class frmTestList : public QWidget {
  public:
    frmTestList(ListMode mode, TestListSurroundings around, QWidget* parent = nullptr);

    // Fills the list: of the loaded directory, or of the instrument's reply. Throws nothing of its
    // own.
    void Form_Load();

    // The window has closed.
    std::function<void()> OnUnload;

    ReportHooks Reports;  // in folder mode
    // The folder of the reports was made (full path, separator at its end). May throw RunTimeError.
    std::function<void(const QString& excelPath)> OnExcelFolderMade;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    enum class Activity : std::uint8_t { None, Download, Report };

    void BuildTop(QBoxLayout* column);
    void BuildOptions(QWidget* frame);
    void BuildList(QBoxLayout* column);
    void BuildBottom(QBoxLayout* column);
    void Connect();

    void SetOptionButtons();
    void DisplayAndSort();
    void EntriesFromFolder();
    // Makes the folders that are missing; false when the operator wants none made.
    bool MakeFolders();
    void ChangeFolder(const QString& chosen);
    void Download(const std::vector<int>& rows);
    // The first of files.
    void View(const std::vector<QString>& files);

    void cmdRefresh_Click();
    void cmdDir_Click();
    void cmdSave_Click();
    void cmdExit_Click();
    void lvTest_SelectionChange();

    void ShowTotal(std::size_t count);
    void ShowFolder();
    // Runs what takes time, with nothing but the exit button to press.
    template <class Work>
    void While(Activity activity, const Work& work);

    const ListMode mode_;
    TestListSurroundings around_;
    EventHandlers handlers_;
    std::vector<ListedRecord> records_;  // as they are shown
    Activity activity_ = Activity::None;
    std::function<void()> leave_;  // ends the activity
    bool closeWanted_ = false;

    QWidget* frameDisplaySort_ = nullptr;
    QButtonGroup* optDisplay_ = nullptr;
    QButtonGroup* optSort_ = nullptr;
    QPushButton* cmdRefresh_ = nullptr;
    QPushButton* cmdDir_ = nullptr;
    QLineEdit* txtFolder_ = nullptr;
    QWidget* filter_ = nullptr;
    RecordList* lvTest_ = nullptr;
    QLabel* lblStatus_ = nullptr;
    QLabel* lblSelect_ = nullptr;
    QLabel* lblMessage_ = nullptr;
    QProgressBar* pbarProgress_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
    QPushButton* cmdSave_ = nullptr;
};

}  // namespace davo
