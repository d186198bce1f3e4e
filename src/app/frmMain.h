#pragma once

#include <QMainWindow>

#include "app/program_state.h"
#include "app/wait_notice.h"
#include "common/event_handlers.h"

class QMdiArea;
class QMenu;

namespace davo {

class frmCControl;

// "DAVO PC-Interface V.3.15": the menus, and the area that the other windows open in.
class frmMain : public QMainWindow {
  public:
    // Both must outlive the window.
    frmMain(ProgramState& state, const ProgramServices& services);
    ~frmMain() override;

    // Reads the settings and the header file and opens the port; nothing is sent.
    void Form_Load();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void BuildMenus();
    void UseDefaultFolders();
    void mnuBoth_Click();
    void mnuRatio_Click();
    void mnuExit_Click();
    void RunTest();
    void ShowTestWindow();
    void TestWindowClosed();
    // Leaves a wait for the instrument and the test window first; false when the window stays.
    bool MayClose();
    void Form_Unload();

    ProgramState& state_;
    ProgramServices services_;
    EventHandlers handlers_;
    QMdiArea* area_;
    QMenu* mnuFile_ = nullptr;
    WaitNotice waitNotice_;
    frmCControl* testWindow_ = nullptr;
    bool closeWanted_ = false;
    bool unloaded_ = false;
};

}  // namespace davo
