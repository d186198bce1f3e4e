// SPDX-License-Identifier: GPL-3.0-or-later
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTimer>
#include <functional>
#include <optional>

#include "app/frmAbout.h"
#include "app/frmConfig.h"
#include "app/frmSplash.h"
#include "app/home_panel.h"
#include "app/session_cards.h"
#include "app/status_line.h"
#include "common/files.h"
#include "tests/support/controls.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/record_text.h"
#include "tests/support/scripted_link.h"
#include "tests/support/temporary_folder.h"
#include "tools/pictures/pictures.h"
#include "ui/dialog_prompts.h"

namespace davo::test {
namespace {

class ShellPictures {
  public:
    ShellPictures(const Album& album, QString colours)
        : album_(album), colours_(std::move(colours)) {
        devices.present = present;
        settings.dataPath = u"/home/technician/Documents/DAVO/Shots_Data/"_s;
    }

    void Take() {
        if (!album_.Wants(colours_)) return;
        TakeConfig();
        frmAbout about(nullptr);
        about.setAttribute(Qt::WA_DeleteOnClose, false);
        about.Form_Load("DAVO-E R3.10");
        Grab(about, "about");
        frmSplash splash(line.pointer, [] {});
        splash.Form_Load();
        Grab(splash, "splash");
        TakeMain();
        TakeMessages();
    }

  private:
    // The message boxes of each kind, with what the guide has to say.
    void TakeMessages() {
        DialogPrompts prompts;
        prompts.AdviceOn = [](const QString& text) {
            return text.startsWith(u"These"_s) ? QString()
                                               : u"Plug the adapter in, then try again."_s;
        };
        const auto grab = [this](const char* name, const std::function<void()>& ask) {
            QTimer::singleShot(0, qApp, [this, name] {
                QWidget* box = QApplication::activeModalWidget();
                Grab(*box, name);
                box->close();
            });
            ask();
        };
        grab("message-warning",
             [&] { prompts.Message(u"DAVO is not ready.  Please check equipment."_s); });
        grab("message-error", [&] {
            prompts.Message(
                u"The test record was not saved.\r\nRun-time error '61': Disk full: /media/T1.txt"_s);
        });
        grab("message-information", [&] { prompts.Inform(u"There are no test records."_s); });
        grab("message-question",
             [&] { prompts.YesNo(u"Do you want to save the test record?"_s, Answer::Yes); });
        QString texts = u"These texts would be read back as others:"_s;
        for (int i = 1; i <= 100; ++i)
            texts += u"\r\nThe text \"SN: %1\" of COMMENTS"_s.arg(i);
        grab("message-long", [&] { prompts.YesNoCancel(texts, Answer::No); });
    }

    void Grab(QWidget& window, const char* name) {
        album_.ShowAndGrab(window, u"%1-%2"_s.arg(QLatin1String(name), colours_));
    }
    void GrabList(const QWidget& window, const char* box, const char* name) {
        auto* list = FindIn<QComboBox>(window, box);
        list->showPopup();
        Grab(*list->view()->window(), name);
        list->hidePopup();
    }

    void TakeConfig() {
        frmConfig config(settings, line.link, devices, line.prompts, nullptr);
        config.Form_Load();
        Grab(config, "config");
        GrabList(config, "cboComPort", "config-list");
        line.port.failOpen = ErrorNumber::PortAlreadyOpen;
        ClickIn(config, "cmdSave");
        Grab(config, "config-not-open");
        line.port.failOpen.reset();
        devices.present.clear();
        config.ShowPort();
        Grab(config, "config-nothing");
        settings.comPort = 1;
        devices.present = present;
        devices.assigned[1] = u"/dev/ttyS0"_s;
        frmConfig builtIn(settings, line.link, devices, line.prompts, nullptr);
        builtIn.Form_Load();
        Grab(builtIn, "config-built-in");
        devices.assigned.clear();
        devices.needsAssignment = false;
        devices.present = {BuiltInPort("COM1"),
                           UsbAdapter("COM3", "USB Serial Port", "FTDI", "A50285BI"),
                           UsbAdapter("COM11", "USB-Serial Controller", "Prolific", "")};
        frmConfig named(settings, line.link, devices, line.prompts, nullptr);
        named.Form_Load();
        Grab(named, "config-com-names");
        devices.needsAssignment = true;
        devices.present = present;
    }

    QAction* AddItem(QMenu* menu, const char* name, const char* caption) {
        QAction* item = menu->addAction(QLatin1String(caption));
        item->setObjectName(QLatin1String(name));
        return item;
    }

    void TakeMain() {
        QMainWindow window;
        QMenu* file = window.menuBar()->addMenu(u"&File"_s);
        window.menuBar()->addAction(u"&About"_s);
        QAction* recall = AddItem(file, "mnuRecall", "&Recall Test");
        QMenu* run = file->addMenu(u"R&un Test"_s);
        QAction* both = AddItem(run, "mnuBoth", "S&aturation && Ratio Tests");
        QAction* ratio = AddItem(run, "mnuRatio", "Ratio Test &Only");
        QAction* download = AddItem(file, "mnuDownload", "&Download Test Record");
        QAction* config = AddItem(file, "mnuConfig", "&Configure System");
        QAction* overlay = AddItem(file, "mnuOverlay", "&Overlay 2 Tests");
        QAction* headers = AddItem(file, "mnuSetHeaderFile", "Setup Test &Header Information");
        QAction* utilities = AddItem(file, "mnuFileUtil", "File &Utilities");
        auto* home = new HomePanel(
            {both, ratio, recall, download, config},
            {{overlay, "Overlay"}, {headers, "Header"}, {utilities, "File Utilities"}}, &window);
        auto* status = new StatusLine(line.link, line.prompts, &window);
        status->WaitChanged();
        window.setCentralWidget(home);
        window.statusBar()->setSizeGripEnabled(false);
        window.statusBar()->addWidget(status, 1);
        window.setWindowState(Qt::WindowMaximized);

        recall->setEnabled(false);
        const auto glance = [&] { return GlanceAtLink(settings, line.state, devices); };
        ShellFacts facts{glance(), settings.dataPath, settings.kneepointType};
        ShellFacts homeFacts = facts;
        status->ShowFacts(facts);
        home->ShowFacts(homeFacts);
        Grab(window, "main-empty");

        facts.listing.unread = homeFacts.listing.unread = u"Permission denied"_s;
        status->ShowFacts(facts);
        home->ShowFacts(homeFacts);
        Grab(window, "main-unread");
        facts.listing = homeFacts.listing = {};

        recall->setEnabled(true);
        line.link.OpenComPort(1);
        line.state.instrumentModel = "DAVO-E R3.10";
        facts.link = homeFacts.link = glance();
        facts.listing.skipped = {{u"Notes.txt"_s, SkipReason::TooFewLines}};
        facts.listing.notListed = 13;
        const TemporaryFolder folder;
        homeFacts.dataPath = folder.Path();
        homeFacts.kneepointType = settings.kneepointType;
        for (int i = 0; i < 12; ++i) {
            const std::string name = "BREAKER" + std::to_string(4210 - i);
            homeFacts.records.push_back(
                {name, "11/21/26", "03", "NORTH SUBSTATION    ", "", "", ""});
            homeFacts.files.push_back(QString::fromStdString(name) + u".txt"_s);
            ReplaceFile(folder.Path() + homeFacts.files.back(),
                        HeaderText(name, "NORTH SUBSTATION") + RecordText(1) + RecordText(2) +
                            RecordText(3));
        }
        status->ShowFacts(facts);
        home->ShowFacts(homeFacts);
        Grab(window, "main");
        home->ShowSavedSession(homeFacts.files.at(1));
        Grab(window, "main-saved");
        home->Say({});
        TakeSessions(window, *home, homeFacts);

        QTimer::singleShot(2100, &window, [&] {
            Grab(window, "main-wait");
            line.link.EndWait();
        });
        line.link.OnWaitChanged = [status] { status->WaitChanged(); };
        line.link.SendCommand("d", "DONE");
        line.link.OnWaitChanged = nullptr;
    }

    static UnsavedSession Session(const char* time, const QTime& end, const char* station,
                                  const char* serialNumber, int shots) {
        UnsavedSession session;
        session.capturePath = u"TESTFILE-%1.txt"_s.arg(end.toString());
        session.journal.header.headerFields[kHeaderDate] = "11/21/26";
        session.journal.header.headerFields[kHeaderTime] = time;
        session.journal.header.Field(1) = station;
        session.journal.header.Field(5) = serialNumber;
        session.shots = shots;
        session.lastChange = QDateTime(QDate(2026, 11, 21), end);
        return session;
    }

    void TakeSessions(QWidget& window, HomePanel& home, const ShellFacts& facts) {
        const std::vector<UnsavedSession> sessions{
            Session("09:12", QTime(9, 40, 2), "", "", 12),
            Session("14:05", QTime(14, 5, 33), "NORTH SUBSTATION", "4711-0815", 1),
            Session("14:05", QTime(14, 9, 51), "WESTERN TRANSMISSION", "ABCDEFGH-01234567890", 3)};
        home.Sessions().Show({sessions.front()});
        home.ShowFacts(facts);
        Grab(window, "main-session");
        home.Sessions().Show(sessions);
        Grab(window, "main-sessions");
        FindIn<QAbstractButton>(home, "cmdLater0")->click();
        Grab(window, "main-session-later");
        home.Sessions().Show({});
        home.ShowFacts(facts);
    }

    const Album& album_;
    QString colours_;
    Settings settings;
    const std::vector<PresentPort> present = {
        UsbAdapter("/dev/ttyUSB0", "FT232R USB UART", "FTDI", "A50285BI"),
        UsbAdapter("/dev/ttyUSB1", "USB-Serial Controller D", "Prolific Technology Inc.", ""),
        BuiltInPort("/dev/ttyS0")};
    FakePortDevices devices;
    ScriptedLine line;
};

}  // namespace

void TakeShell(const Album& album) {
    ShellPictures(album, u"light"_s).Take();
    QPalette dark = DarkPalette({30, 30, 30}, {38, 38, 40});
    dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
    const Colours colours(dark);
    ShellPictures(album, u"dark"_s).Take();
    QPalette contrast(Qt::black, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        contrast.setColor(role, Qt::yellow);
    contrast.setColor(QPalette::Base, Qt::black);
    contrast.setColor(QPalette::Highlight, QColor(0, 0, 160));
    contrast.setColor(QPalette::HighlightedText, Qt::white);
    const Colours highContrast(contrast);
    ShellPictures(album, u"contrast"_s).Take();
}

}  // namespace davo::test
