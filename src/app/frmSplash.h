// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "link/link.h"

namespace davo {

// "DAVO PC-Interface": is on the screen while the program starts.
class frmSplash : public QWidget {
  public:
    // pointer must outlive the window. showMain shows the main window, and throws nothing.
    frmSplash(BusyPointer& pointer, std::function<void()> showMain);

    // Centres the window and starts Timer1; the caller shows it.
    void Form_Load();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    // Under the hourglass shows the main window, then leaves.
    void Timer1_Timer();

    BusyPointer& pointer_;
    std::function<void()> showMain_;
    QTimer Timer1_;
};

}  // namespace davo
