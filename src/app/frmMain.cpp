// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmMain.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScopeGuard>
#include <QStackedWidget>
#include <QStatusBar>
#include <chrono>
#include <memory>
#include <thread>

#include "app/frmAbout.h"
#include "app/frmConfig.h"
#include "app/home_panel.h"
#include "app/load_stored.h"
#include "app/session_cards.h"
#include "app/window_geometry.h"
#include "common/version.h"
#include "reports/report_hooks.h"
#include "retrieval/memory_directory.h"
#include "testing/frmCControl.h"
#include "testing/session_save.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"

namespace davo {

namespace {

constexpr int kFactsInterval = 2000;    // ms; what is plugged in shows up so soon
constexpr int kMessageDuration = 8000;  // ms; two sentences are read in half of it

}  // namespace

frmMain::frmMain(ProgramState& state, const ProgramServices& services, ChildForms forms)
    : state_(state),
      services_(services),
      forms_(std::move(forms)),
      handlers_(services.prompts),
      saver_(services.prompts),
      dateGuard_(services.shortDate),
      menu_(*menuBar()),
      statusLine_(new StatusLine(services.link, services.prompts, this)),
      pages_(new QStackedWidget(this)),
      area_(new QMdiArea(pages_)) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("DAVO PC-Interface V.%1").arg(QLatin1String(kVersion)));
    BuildCentre();
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(statusLine_, 1);
    ConnectMenu();
    services_.link.OnWaitChanged = [this] { WaitChanged(); };
    services_.link.OnPortChanged = [this] {
        if (loaded_) ShowFacts();
        if (config_ != nullptr) config_->ShowPort();
    };
    factsTimer_.setInterval(kFactsInterval);
    connect(&factsTimer_, &QTimer::timeout, this, [this] { LookAround(); });
}

frmMain::~frmMain() {
    services_.link.OnWaitChanged = nullptr;
    services_.link.OnPortChanged = nullptr;
    area_->disconnect(this);
}

void frmMain::BuildCentre() {
    std::vector<QAction*> items{menu_.mnuBoth, menu_.mnuRatio};
    if (forms_.testList) items.push_back(menu_.mnuRecall);
    if (forms_.memoryDirectory) items.push_back(menu_.mnuDownload);
    items.push_back(menu_.mnuConfig);
    std::vector<SecondItem> second;
    if (forms_.fileUtilities) second.emplace_back(menu_.mnuOverlay, "Overlay");
    if (forms_.headerSetup) second.emplace_back(menu_.mnuSetHeaderFile, "Header");
    if (forms_.fileUtilities) second.emplace_back(menu_.mnuFileUtil, "File Utilities");
    home_ = new HomePanel(items, second, pages_);
    home_->OnView = [this](const QString& file) { Start([this, file] { ViewRecord(file); }); };
    home_->OnCertificate = [this](const QString& file) {
        Start([this, file] { SaveCertificate(file); });
    };
    // Nothing happens without a report.
    OnKey(home_, Qt::Key_Escape, [this] {
        if (services_.reports != nullptr) services_.reports->Cancel();
    });
    home_->Sessions().OnSave = [this](const UnsavedSession& session) {
        handlers_.RunAlone([this, &session] { SaveSession(session); });
        ShowFacts();
    };
    pages_->addWidget(home_);
    pages_->addWidget(area_);
    OnKey(home_, Qt::Key_F5, [this] {
        handlers_.RunAlone([this] { ListAgain(); });
        ShowFacts();
        home_->Preview();
    });
    // Behind the copy window is the start page, not an empty area.
    connect(area_, &QMdiArea::subWindowActivated, this, [this] {
        if (area_->subWindowList().isEmpty()) pages_->setCurrentWidget(home_);
    });
    setCentralWidget(pages_);
}

void frmMain::ConnectMenu() {
    const auto on = [this](QAction* item, auto handler) {
        connect(item, &QAction::triggered, this, [this, item, handler] {
            opener_ = item;
            Start(handler);
        });
    };
    on(menu_.mnuRecall, [this] { mnuRecall_Click(); });
    on(menu_.mnuBoth, [this] { RunTest(false); });
    on(menu_.mnuRatio, [this] { RunTest(true); });
    on(menu_.mnuDownload, [this] { mnuDownload_Click(); });
    on(menu_.mnuOverlay, [this] { ShowFileWindow(ListCaller::Overlay, *menu_.mnuOverlay); });
    on(menu_.mnuSetHeaderFile, [this] {
        WithFileDisabled([this] { ShowChild(forms_.headerSetup, *menu_.mnuSetHeaderFile, home_); });
    });
    on(menu_.mnuSetDescr, [this] {
        state_.directory.recordsFromInstrument = false;
        ShowRecords(forms_.recordHeaders, *menu_.mnuSetDescr);
    });
    on(menu_.mnuFileUtil,
       [this] { ShowFileWindow(ListCaller::FileUtilities, *menu_.mnuFileUtil); });
    on(menu_.mnuConfig, [this] { mnuConfig_Click(); });
    // The way out of a wait, too: "X" is sent inside it.
    connect(menu_.mnuExit, &QAction::triggered, this, [this] {
        if (!menu_.FileEnabled()) return;
        handlers_.Run([this] { mnuExit_Click(); });
        if (closeWanted_) close();
    });
    on(menu_.mnuAbout, [this] { mnuAbout_Click(); });
    // The marker is told to be checked even where the handler does not run: a click toggles it.
    menu_.ConnectKneepoint([this](const QString& kneepointType) {
        if (menu_.FileEnabled()) state_.settings.kneepointType = kneepointType;
        menu_.CheckKneepoint(state_.settings.kneepointType);
        ShowFacts();
    });
}

template <class Handler>
void frmMain::Start(const Handler& handler) {
    if (!menu_.FileEnabled() || handlers_.Running()) return;
    handlers_.Run(handler);
    EnableWorking(true);
    ShowFacts();
    if (closeWanted_) close();
}

// --- Load ---------------------------------------------------------------------------------------

void frmMain::Form_Load() {
    dateGuard_.Run();
    state_.modes = {};
    state_.linkState.instrumentModel.clear();
    troubles_ = LoadStored(state_, services_);
    menu_.CheckKneepoint(state_.settings.kneepointType);
    services_.link.OpenComPort(state_.settings.comPort);
    ListAgain();
    if (HasRecords()) {
        menu_.mnuRecall->setEnabled(true);
        state_.directory.recordsFromInstrument = true;
        state_.directory.recordCount = 0;
    }
    handlers_.Run([this] { OfferSessions(); });
    loaded_ = true;
    ShowFacts();
    factsTimer_.start();
    home_->findChild<QWidget*>(QStringLiteral("cmdBoth"))->setFocus();
}

// --- Menu ---------------------------------------------------------------------------------------

bool frmMain::OpenPort() {
    return state_.linkState.portOpen || services_.link.OpenComPort(state_.settings.comPort);
}

void frmMain::mnuRecall_Click() {
    OpenPort();
    state_.directory.recordsFromInstrument = false;
    state_.listCaller = ListCaller::Recall;
    ShowRecords(forms_.testList, *menu_.mnuRecall);
}

void frmMain::mnuDownload_Click() {
    state_.listCaller = ListCaller::Download;
    if (!forms_.memoryDirectory) {
        ShowChild({}, *menu_.mnuDownload, area_);
        return;
    }
    menu_.mnuDownload->setEnabled(false);
    // Without a port it stays disabled until the next start: only a list that closes enables it.
    if (!OpenPort()) return;
    auto enable = qScopeGuard([this] { menu_.mnuDownload->setEnabled(true); });
    std::optional<std::string> reply = ReadMemoryDirectory(services_.link, services_.prompts);
    if (!reply || closeWanted_) return;
    state_.directory.recordsFromInstrument = true;
    state_.dirReply = std::move(*reply);
    const auto open = [this](QMdiArea& area, const std::function<void()>& closed) {
        forms_.memoryDirectory(area, [this, closed] {
            menu_.mnuDownload->setEnabled(true);
            closed();
        });
    };
    WithFileDisabled([&] { ShowChild(open, *menu_.mnuDownload, area_); });
    enable.dismiss();
}

void frmMain::ShowFileWindow(ListCaller caller, const QAction& item) {
    state_.directory.recordsFromInstrument = false;
    state_.listCaller = caller;
    WithFileDisabled([&] {
        ListRecords();
        if (HasRecords()) return ShowChild(forms_.fileUtilities, item, area_);
        menu_.EnableFile(true);
        menu_.EnableRecordItems(false);
        ShowFacts();
        const RebuildResult& listing = state_.directory.listing;
        if (!listing.unread.isEmpty())
            services_.prompts.Message(UnreadText(listing, state_.settings.dataPath));
    });
}

void frmMain::mnuConfig_Click() {
    auto* config =
        new frmConfig(state_.settings, services_.link, services_.devices, services_.prompts, this);
    config->setAttribute(Qt::WA_DeleteOnClose);
    config_ = config;
    connect(config, &QDialog::finished, this, [this] { ShowFacts(); });
    config->Form_Load();
    config->open();
}

void frmMain::mnuExit_Click() {
    if (services_.prompts.YesNo(QStringLiteral("Do You Want to Exit?"), Answer::No) !=
        Answer::Yes) {
        return;
    }
    if (state_.linkState.portOpen) {
        services_.link.SendCommand("X", "");
        services_.link.CloseComPort();
    }
    closeWanted_ = true;
}

void frmMain::mnuAbout_Click() {
    if (!OpenPort()) return;
    std::string& model = state_.linkState.instrumentModel;
    if (!services_.link.ReadInstrumentModel(model)) model = "DAVO N/A";
    if (closeWanted_) return;
    if (about_.isNull()) about_ = new frmAbout(this);
    about_->Form_Load(model);
    about_->show();
    about_->raise();
    about_->activateWindow();
}

void frmMain::ListRecords() {
    ListFolder(state_.settings.dataPath, state_.directory);
    listedRecords_ = state_.directory.recordCount;
}

void frmMain::OfferSessions() {
    home_->Sessions().Show(UnsavedSessionsIn(services_.places.scratchFolder, troubles_));
}

void frmMain::SaveSession(const UnsavedSession& session) {
    const QString saved = SaveUnsavedSession(session, services_.prompts, state_.settings);
    if (saved.isEmpty()) return;
    statusBar()->showMessage(QStringLiteral("The session is saved as %1").arg(ShownPath(saved)),
                             kMessageDuration);
    savedRecord_ = saved;
    OfferSessions();
    ListAgain();
}

void frmMain::SaveCertificate(const QString& file) {
    home_->Say(
        saver_.SaveCertificate(state_.settings.dataPath + file, state_.settings.kneepointType));
    // It may have gone, or be damaged, since it was listed.
    home_->Preview();
}

void frmMain::ViewRecord(const QString& file) {
    if (services_.reports == nullptr) return;
    EnableWorking(false);
    const auto show = [this](const QString& text) { statusBar()->showMessage(text); };
    const auto hide = qScopeGuard([this] { statusBar()->clearMessage(); });
    show(QLatin1String(kPlottingCaption));
    services_.reports->Run(state_.settings.dataPath + file, show);
}

void frmMain::ListAgain() {
    ListRecords();
    menu_.EnableRecordItems(HasRecords());
}

// --- The test window ----------------------------------------------------------------------------

void frmMain::RunTest(bool ratioOnly) {
    state_.modes.testRatioOnlyMode = ratioOnly;
    state_.modes.testBothMode = !ratioOnly;
    std::string& model = state_.linkState.instrumentModel;
    model.clear();
    if (OpenPort()) services_.link.ReadInstrumentModel(model);
    if (closeWanted_) return;
    if (const QString why = WhyNoTest(model); !why.isEmpty()) {
        services_.prompts.Message(why);
        return;
    }
    state_.modes.modelIsExtended = true;
    WithFileDisabled([this] { ShowTestWindow(); });
}

void frmMain::ShowTestWindow() {
    std::unique_ptr<frmCControl> window = LoadTestWindow(state_, services_);
    testWindow_ = window.get();
    testWindow_->OnSaved = [this](const QString& record) { savedRecord_ = record; };
    testWindow_->OnUnload = [this] {
        testWindow_ = nullptr;
        ChildClosed();
    };
    ShowOn(area_, [&] { ShowPage(*area_, *window.release()); });
}

// --- Child windows ------------------------------------------------------------------------------

template <class Open>
void frmMain::WithFileDisabled(const Open& open) {
    menu_.EnableFile(false);
    auto back = qScopeGuard([this] {
        menu_.EnableFile(true);
        if (children_ == 0) pages_->setCurrentWidget(home_);
    });
    open();
    back.dismiss();
}

void frmMain::ShowRecords(const OpenChild& open, const QAction& item) {
    WithFileDisabled([&] {
        ListRecords();
        ShowChild(open, item, area_);
    });
}

void frmMain::ShowChild(const OpenChild& open, const QAction& item, QWidget* page) {
    if (!open) {
        menu_.EnableFile(true);
        statusBar()->showMessage(
            QStringLiteral("\"%1\" is not part of this version of the program.")
                .arg(item.text().remove(QLatin1Char('&'))),
            kMessageDuration);
        return;
    }
    ShowOn(page, [&] { open(*area_, [this] { ChildClosed(); }); });
}

template <class Open>
void frmMain::ShowOn(QWidget* page, const Open& open) {
    pages_->setCurrentWidget(page);
    ++children_;
    auto back = qScopeGuard([this] { --children_; });
    open();
    back.dismiss();
}

void frmMain::ChildClosed() {
    if (leaving_) {
        // One that could not close when the program was told to end: now it can end.
        QTimer::singleShot(0, this, [this] { close(); });
        return;
    }
    if (--children_ > 0) return;
    area_->setMinimumSize(0, 0);
    pages_->setCurrentWidget(home_);
    menu_.EnableFile(true);
    // The data folder may have changed while the window was open, and a session may be left.
    handlers_.Run([this] { ListAgain(); });
    handlers_.Run([this] { OfferSessions(); });
    ShowFacts();
    home_->FocusButtonOf(opener_);
    if (closeWanted_) QTimer::singleShot(0, this, [this] { close(); });
}

void frmMain::LookAround() {
    const bool idle = children_ == 0 && !handlers_.Running();
    if (look_.valid() && look_.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
        const auto [path, isThere] = look_.get();
        if (idle && path == state_.settings.dataPath && isThere != folderWasThere_) {
            folderWasThere_ = isThere;
            handlers_.Run([this] { ListAgain(); });
        }
    }
    if (idle && !look_.valid()) {
        std::packaged_task look([path = state_.settings.dataPath, exists = services_.folderExists] {
            return std::pair(path, exists(path));
        });
        look_ = look.get_future();
        std::thread(std::move(look)).detach();
    }
    ShowFacts();
}

void frmMain::ShowFacts() {
    ShellFacts facts = FactsOf(state_, services_.devices, listedRecords_);
    facts.troubles = troubles_;
    if (config_ != nullptr && config_->Trying())
        facts.link.portOpen = facts.link.openFailed = false;
    statusLine_->ShowFacts(facts);
    home_->ShowFacts(facts);
    if (savedRecord_.isEmpty() || children_ > 0) return;
    const QString record = std::exchange(savedRecord_, {});
    const QString file = QFileInfo(record).fileName();
    if (state_.settings.dataPath + file == record) home_->ShowSavedSession(file);
}

void frmMain::EnableWorking(bool enabled) {
    if (enabled == menu_.working->isEnabled()) return;
    // A button that is disabled hands the focus on.
    if (!enabled) focusBefore_ = focusWidget();
    menu_.working->setEnabled(enabled);
    home_->EnableWorking(enabled);
    if (enabled && focusBefore_ != nullptr && focusBefore_->isVisible()) focusBefore_->setFocus();
}

void frmMain::WaitChanged() {
    if (handlers_.Running() && services_.link.CurrentWait()) EnableWorking(false);
    statusBar()->clearMessage();
    statusLine_->WaitChanged();
}

// --- Unload -------------------------------------------------------------------------------------

bool frmMain::MayClose() {
    if (leaving_) return true;
    if (!handlers_.Running() && testWindow_ != nullptr) {
        if (testWindow_->Exit()) return true;
        // The test window may wait itself, and closes when that has ended.
        closeWanted_ = testWindow_->CloseWanted();
        return false;
    }
    if (!handlers_.Running()) {
        area_->closeAllSubWindows();
        if (area_->subWindowList().isEmpty()) return true;
    }
    // What waits for the instrument or for a report comes to its end first and closes then.
    const bool reports = services_.reports != nullptr && services_.reports->UnderWay();
    closeWanted_ = reports || services_.link.CurrentWait().has_value();
    services_.link.EndWait();
    if (reports) services_.reports->Cancel();
    return false;
}

void frmMain::closeEvent(QCloseEvent* event) {
    closeWanted_ = leaving_;
    if (!MayClose()) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

void frmMain::SessionEnds() {
    if (loaded_ && !unloaded_) KeepSettings(false);
}

void frmMain::Leave() {
    leaving_ = true;
    closeWanted_ = true;
    services_.link.EndWait();
    // One that cannot write back what it holds asks, and asks again; the desktop waits for no
    // answer.
    auto* noAnswer = new QTimer(this);
    noAnswer->callOnTimeout([] {
        if (QWidget* question = QApplication::activeModalWidget()) question->close();
    });
    noAnswer->start(std::chrono::milliseconds(10));
    // What they hold goes back to the settings before these are written. The test window would ask.
    for (QMdiSubWindow* child : area_->subWindowList()) {
        if (testWindow_ == nullptr || child->widget() != testWindow_) child->close();
    }
    Form_Unload();
}

void frmMain::Form_Unload() {
    if (!loaded_ || unloaded_) return;
    unloaded_ = true;
    factsTimer_.stop();
    KeepSettings(!leaving_);
    SaveWindowGeometry(*this, services_.places);
}

void frmMain::KeepSettings(bool sayErrors) {
    try {
        WriteSettings(services_.store, state_.settings);
    } catch (const std::exception& error) {
        if (sayErrors) services_.prompts.Message(QString::fromUtf8(error.what()));
    }
    dateGuard_.Undo();
}

}  // namespace davo
