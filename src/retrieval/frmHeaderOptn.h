// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>

#include "retrieval/frmHeader.h"

namespace davo {

// "Choose Test Header": the header of the PC or those of the instrument.
class frmHeaderOptn : public QDialog {
  public:
    explicit frmHeaderOptn(QWidget* parent);

    // A button was clicked; the window closes behind it.
    std::function<void(HeaderMode mode)> OnChosen;
    // The window has closed.
    std::function<void()> OnUnload;

    void done(int result) override;
};

}  // namespace davo
