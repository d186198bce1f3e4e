// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>

class QProgressBar;

namespace davo {

// A bar that fills in four steps while long work runs; it does not measure that work.
class frmProgress : public QWidget {
  public:
    explicit frmProgress(QWidget* parent = nullptr);

    // Empties the bar and starts it.
    void Form_Load();

  private:
    void Timer1_Timer();

    QProgressBar* pbarProgress_;
    QTimer Timer1_;
};

}  // namespace davo
