#include "app/frmMain.h"

#include <QAction>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTimer>
#include <memory>

#include "common/files.h"
#include "common/text.h"
#include "testing/frmCControl.h"

namespace davo {

namespace {

constexpr std::string_view kModel = "DAVO";
constexpr std::string_view kExtendedModel = "DAVO-E";

template <class Item>
Item* Named(Item* item, const char* name) {
    item->setObjectName(QLatin1String(name));
    return item;
}

QMenu* AddMenu(QMenu* menu, const char* name, const char* caption) {
    QMenu* added = Named(menu->addMenu(QLatin1String(caption)), name);
    Named(added->menuAction(), name);
    return added;
}

template <class Handler>
void AddItem(QMenu* menu, const char* name, const char* caption, Handler handler) {
    QAction* item = Named(menu->addAction(QLatin1String(caption)), name);
    QObject::connect(item, &QAction::triggered, menu, handler);
}

}  // namespace

frmMain::frmMain(ProgramState& state, const ProgramServices& services)
    : state_(state),
      services_(services),
      handlers_(services.prompts),
      area_(new QMdiArea(this)),
      waitNotice_(services.link, *statusBar()) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("DAVO PC-Interface V.3.15"));
    setCentralWidget(area_);
    BuildMenus();
    services_.link.OnWaitChanged = [this] { waitNotice_.WaitChanged(); };
}

frmMain::~frmMain() {
    services_.link.OnWaitChanged = nullptr;
}

void frmMain::BuildMenus() {
    mnuFile_ = Named(menuBar()->addMenu(QStringLiteral("&File")), "mnuFile");
    Named(mnuFile_->menuAction(), "mnuFile");
    QMenu* run = AddMenu(mnuFile_, "mnuCControl", "R&un Test");
    const auto alone = [this](void (frmMain::*handler)()) {
        return [this, handler] {
            handlers_.RunAlone([this, handler] { (this->*handler)(); });
            if (closeWanted_) close();
        };
    };
    AddItem(run, "mnuBoth", "S&aturation && Ratio Tests", alone(&frmMain::mnuBoth_Click));
    AddItem(run, "mnuRatio", "Ratio Test &Only", alone(&frmMain::mnuRatio_Click));
    Named(mnuFile_->addSeparator(), "mnuLine7");
    AddItem(mnuFile_, "mnuExit", "&Exit", alone(&frmMain::mnuExit_Click));
}

void frmMain::Form_Load() {
    state_.modes = {};
    state_.linkState.instrumentModel.clear();
    handlers_.Run([this] {
        const QString& scratch = services_.places.scratchFolder;
        if (!FolderExists(scratch)) CreateFolder(scratch);
    });
    handlers_.Run([this] { state_.settings = ReadSettings(services_.store, services_.places); });
    if (state_.settings.dataPath.isEmpty()) UseDefaultFolders();
    handlers_.Run([this] {
        LoadHeaderFile(state_.header, state_.settings.dataPath);
        services_.link.OpenComPort(state_.settings.comPort);
    });
}

void frmMain::UseDefaultFolders() {
    // The stored settings could not be read; the program is to run all the same.
    state_.settings.dataPath =
        services_.places.applicationFolder + FolderText(R"(\Shots_Data\)").mid(1);
    state_.settings.excelPath = ExcelPathOf(state_.settings.dataPath);
}

void frmMain::mnuBoth_Click() {
    state_.modes.testRatioOnlyMode = false;
    state_.modes.testBothMode = true;
    RunTest();
}

void frmMain::mnuRatio_Click() {
    state_.modes.testRatioOnlyMode = true;
    state_.modes.testBothMode = false;
    RunTest();
}

void frmMain::RunTest() {
    std::string& model = state_.linkState.instrumentModel;
    model.clear();
    Link& link = services_.link;
    if (state_.linkState.portOpen || link.OpenComPort(state_.settings.comPort)) {
        link.ReadInstrumentModel(model);
    }
    if (closeWanted_) return;
    if (!Contains(model, kModel)) {
        services_.prompts.Message(QStringLiteral("Cannot read option, please try again."));
    } else if (!Contains(model, kExtendedModel)) {
        services_.prompts.Message(QStringLiteral("This option is not available on your DAVO."));
    } else {
        state_.modes.modelIsExtended = true;
        ShowTestWindow();
    }
}

void frmMain::ShowTestWindow() {
    auto window = std::make_unique<frmCControl>(
        TestSurroundings{services_.link, services_.prompts, services_.clock, services_.places,
                         state_.modes, state_.session, state_.header, services_.beep,
                         [this] { return services_.link.OpenComPort(state_.settings.comPort); }},
        state_.settings);
    window->Form_Load();
    mnuFile_->menuAction()->setEnabled(false);
    testWindow_ = window.get();
    testWindow_->OnUnload = [this] { TestWindowClosed(); };
    QMdiSubWindow* frame = area_->addSubWindow(window.release());
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->showMaximized();
}

void frmMain::TestWindowClosed() {
    testWindow_ = nullptr;
    mnuFile_->menuAction()->setEnabled(true);
    if (closeWanted_) QTimer::singleShot(0, this, [this] { close(); });
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

bool frmMain::MayClose() {
    if (handlers_.Running()) {
        // The handler that waits comes to its end first and closes the window then.
        closeWanted_ = services_.link.CurrentWait().has_value();
        services_.link.EndWait();
        return false;
    }
    if (testWindow_ == nullptr || testWindow_->Exit()) return true;
    // The test window may wait itself, and closes when that has ended.
    closeWanted_ = testWindow_->CloseWanted();
    return false;
}

void frmMain::closeEvent(QCloseEvent* event) {
    closeWanted_ = false;
    if (!MayClose()) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

void frmMain::Form_Unload() {
    if (unloaded_) return;
    unloaded_ = true;
    handlers_.Run([this] { WriteSettings(services_.store, state_.settings); });
}

}  // namespace davo
