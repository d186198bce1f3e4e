// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/cursor_pointer.h"

#include <QApplication>

namespace davo {

void CursorPointer::ShowBusyPointer() {
    if (busy_) return;
    busy_ = true;
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void CursorPointer::RestoreMousePointer() {
    if (!busy_) return;
    busy_ = false;
    QApplication::restoreOverrideCursor();
}

}  // namespace davo
