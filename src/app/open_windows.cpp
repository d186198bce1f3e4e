#include "app/open_windows.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <memory>
#include <utility>

namespace davo {

namespace {

// Loads window, then shows it in area; closed is called when it unloads. Throws what Form_Load
// throws; nothing is shown then.
template <class Window>
[[maybe_unused]] void ShowIn(QMdiArea& area, std::unique_ptr<Window> window,
                             std::function<void()> closed) {
    window->Form_Load();
    window->OnUnload = std::move(closed);
    Window* shown = window.release();
    QMdiSubWindow* frame = area.addSubWindow(shown);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->showMaximized();
    // No button of it may be pushed out of a main window that is made small.
    area.setMinimumSize(shown->minimumSizeHint());
}

}  // namespace

ChildWindows OpenWindows(ProgramState& /*state*/, const ProgramServices& /*services*/) {
    return {};
}

}  // namespace davo
