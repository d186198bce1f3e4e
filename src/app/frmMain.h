// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <future>
#include <utility>
#include <vector>

#include "app/date_guard.h"
#include "app/main_menu.h"
#include "app/open_forms.h"
#include "app/program_state.h"
#include "app/status_line.h"
#include "curves/record_saver.h"
#include "ui/event_handlers.h"

class QMdiArea;
class QStackedWidget;

namespace davo {

class frmAbout;
class frmCControl;
class frmConfig;
class HomePanel;
struct UnsavedSession;

// "DAVO PC-Interface" and its version: the menus, and the area that the other windows open in.
class frmMain : public QMainWindow {
  public:
    // state, and everything of services, must outlive the window.
    frmMain(ProgramState& state, const ProgramServices& services, ChildForms forms = {});
    ~frmMain() override;

    // Forces the date format, reads the settings and the header file, opens the port (nothing is
    // sent) and lists the records of the data folder. What goes wrong is said in the status line;
    // the program goes on.
    void Form_Load();

    // The desktop session may be about to end: the settings are written and the date format is put
    // back, whether or not the window closes then. Nothing is asked.
    void SessionEnds();

    // The program ends now: unloads and ends every wait, without a question. What a running test
    // session holds is in its journal; the window can be closed.
    void Leave();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void ConnectMenu();
    void BuildCentre();
    // Runs what a menu item or a button does, one at a time.
    template <class Handler>
    void Start(const Handler& handler);

    void mnuRecall_Click();
    void mnuDownload_Click();
    void mnuConfig_Click();
    void mnuExit_Click();
    void mnuAbout_Click();

    bool OpenPort();
    void RunTest(bool ratioOnly);
    void ShowTestWindow();
    void ShowFileWindow(ListCaller caller, const QAction& item);
    // Rebuilds the directory file and reads it.
    void ListRecords();
    // The same, and enables the items that need records.
    void ListAgain();
    bool HasRecords() const { return listedRecords_ > 0; }
    // Sets a session that was never saved aside, and shows all of them on the start page.
    void OfferSessions();
    void SaveSession(const UnsavedSession& session);
    // Of a record of the data folder.
    void SaveCertificate(const QString& file);
    // Makes the report of a record of the data folder; Esc leaves it.
    void ViewRecord(const QString& file);

    // Disables mnuFile and runs open; mnuFile is enabled again when open throws.
    template <class Open>
    void WithFileDisabled(const Open& open);
    // Lists the records and opens the window of item, which works on them.
    void ShowRecords(const OpenChild& open, const QAction& item);
    // Opens the window of item, or says that there is none; page is the one that it opens in or
    // over.
    void ShowChild(const OpenChild& open, const QAction& item, QWidget* page);
    // Runs open with page in front; the start page is back when the last child has closed.
    template <class Open>
    void ShowOn(QWidget* page, const Open& open);
    void ChildClosed();
    // Shows the facts anew, and lists a data folder that has gone, or is back, with its stick. It
    // is looked for on a thread that nobody waits for: a network drive that is dead answers late.
    void LookAround();
    void ShowFacts();
    // The menu items and buttons that do nothing while one of them waits.
    void EnableWorking(bool enabled);
    void WaitChanged();

    // Leaves a wait for the instrument and the windows in the area first; false when the main
    // window stays.
    bool MayClose();
    void Form_Unload();
    // Nothing is asked or said unless sayErrors: a desktop that closes waits for nobody to read.
    void KeepSettings(bool sayErrors);

    ProgramState& state_;
    ProgramServices services_;
    ChildForms forms_;
    EventHandlers handlers_;
    RecordSaver saver_;
    DateGuard dateGuard_;
    MainMenu menu_;
    StatusLine* statusLine_;
    QStackedWidget* pages_;
    QMdiArea* area_;
    HomePanel* home_ = nullptr;
    QPointer<frmAbout> about_;
    QPointer<frmConfig> config_;
    QPointer<QWidget> focusBefore_;  // of the wait
    QAction* opener_ = nullptr;      // of the window that is open, or was last
    frmCControl* testWindow_ = nullptr;
    int children_ = 0;  // that are open
    QTimer factsTimer_;
    QString savedRecord_;           // by a session that has ended; the start page says so
    int listedRecords_ = 0;         // as the directory file says
    std::vector<Notice> troubles_;  // of the load and of the sessions
    bool loaded_ = false;
    bool closeWanted_ = false;
    bool folderWasThere_ = true;  // the data folder, when it was looked at last
    bool leaving_ = false;
    bool unloaded_ = false;
    std::future<std::pair<QString, bool>> look_;  // a data folder, and whether it is there
};

}  // namespace davo
