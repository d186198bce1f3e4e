#include "app/program.h"

#include <QApplication>
#include <QStyleFactory>

#include "app/cursor_pointer.h"
#include "app/frmMain.h"
#include "app/settings_store.h"
#include "common/dialog_prompts.h"
#include "link/port_devices.h"
#include "link/serial_port.h"

namespace davo {

int RunProgram(QApplication& application) {
    // One look on every platform; it follows the user's light or dark colours.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const Places places = PlatformPlaces();
    const auto store = MakeSettingsStore(places);
    const auto devices = MakePortDevices(*store);
    const auto port = MakeSerialPort(*devices);
    const Clock clock;
    DialogPrompts prompts;
    CursorPointer pointer;
    ProgramState state;
    Link link(*port, state.linkState, prompts, pointer);
    frmMain window(state, {*store, places, clock, prompts, link, [] { QApplication::beep(); }});
    window.Form_Load();
    window.showMaximized();
    return application.exec();
}

}  // namespace davo
