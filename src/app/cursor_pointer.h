// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <utility>

#include "link/link.h"

namespace davo {

// The mouse pointer of the whole program: the hourglass while an exchange waits. Showing it twice
// and restoring it twice is the same as once.
class CursorPointer : public BusyPointer {
  public:
    ~CursorPointer() override { RestoreMousePointer(); }
    void ShowBusyPointer() override {
        if (!std::exchange(busy_, true)) QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    void RestoreMousePointer() override {
        if (std::exchange(busy_, false)) QApplication::restoreOverrideCursor();
    }

  private:
    bool busy_ = false;
};

}  // namespace davo
