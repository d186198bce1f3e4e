// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/program.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QTimer>

#include "app/crash_trace.h"
#include "app/cursor_pointer.h"
#include "app/end_requests.h"
#include "app/frmMain.h"
#include "app/frmSplash.h"
#include "app/guide.h"
#include "app/open_forms.h"
#include "app/program_icon.h"
#include "app/single_instance.h"
#include "app/window_geometry.h"
#include "common/open_document.h"
#include "common/settings_store.h"
#include "link/serial_port.h"
#include "ui/contrast.h"
#include "ui/dialog_prompts.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

// Unloads the main window before the application, told to quit, begins to close its windows: a
// window that asks then would keep the desktop from closing.
class QuitFilter : public QObject {
  public:
    explicit QuitFilter(frmMain& window) : window_(window) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Quit) window_.Leave();
        return QObject::eventFilter(watched, event);
    }

  private:
    frmMain& window_;
};

void ShowMain(frmMain& window, const Places& places) {
    window.Form_Load();
    if (RestoreWindowGeometry(window, places)) {
        window.show();
        return;
    }
    // What it falls back to when it is no longer maximized.
    constexpr double kShare = 0.9;
    window.resize(window.screen()->availableSize() * kShare);
    CentreForm(window, nullptr);
    window.showMaximized();
}

// Says once what a crash has left.
void TellOfCrash(Prompts& prompts, const Places& places) {
    const QString trace = TakeCrashTrace(places.scratchFolder);
    if (trace.isEmpty()) return;
    prompts.Message(
        QStringLiteral("The program crashed last time. Each shot that it showed as on the disk is "
                       "there: a session that was not saved is on the start page.\r\nWhat helps to "
                       "find the fault is in %1. It is sent to nobody.")
            .arg(trace));
}

}  // namespace

void DressApplication() {
    QApplication::setApplicationName(QStringLiteral("DAVO PC-Interface"));
    QApplication::setWindowIcon(ProgramIcon());
    QApplication::setStyle(MakeOutlineStyle());
}

int RunProgram(QApplication& application) {
    DressApplication();
    const Places places = PlatformPlaces();
    DialogPrompts prompts;
    prompts.AdviceOn = [](const QString& text) { return GuideAdvice(GuideFolders(), text); };
    SingleInstance instance(places);
    if (instance.AnotherRuns()) {
        prompts.Message(
            QStringLiteral("Cannot load DAVO again. The application is already opened."));
        return EXIT_SUCCESS;
    }
    const auto store = MakeSettingsStore(places);
    const auto devices = MakePortDevices(*store);
    const auto port = MakeSerialPort(*devices);
    const auto shortDate = MakeShortDateFormat();
    const Clock clock;
    CursorPointer pointer;
    ProgramState state;
    Link link(*port, state.linkState, prompts, pointer);
    ReportRunner reports(prompts, state.settings);
    const ProgramServices services{*store,  places,   clock,      prompts,
                                   link,    *devices, *shortDate, [] { QApplication::beep(); },
                                   &reports};
    frmMain window(state, services, OpenForms(state, services));
    LeaveCrashTraces(places.scratchFolder);
    frmSplash splash(pointer, [&] {
        ShowMain(window, places);
        // Once the splash has gone.
        QTimer::singleShot(0, &window, [&] { TellOfCrash(prompts, places); });
    });
    QuitFilter quitFilter(window);
    application.installEventFilter(&quitFilter);
    GuideKey guideKey(GuideFolders(), prompts, ShowDocument);
    application.installEventFilter(&guideKey);
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window,
                     [&window] { window.SessionEnds(); });
    const auto endRequests = QuitOnEndRequests();
    splash.Form_Load();
    splash.show();
    return QApplication::exec();
}

}  // namespace davo
