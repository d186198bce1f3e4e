// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "link/link.h"

namespace davo {

// The mouse pointer of the whole program: the hourglass while an exchange waits. Showing it twice
// and restoring it twice is the same as once.
class CursorPointer : public BusyPointer {
  public:
    ~CursorPointer() override { RestoreMousePointer(); }
    void ShowBusyPointer() override;
    void RestoreMousePointer() override;

  private:
    bool busy_ = false;
};

}  // namespace davo
