// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

namespace davo {

// A button for gloves: high, its letters large, its focus seen from a distance. Enter presses it
// when it has the focus; a key that is held down presses it once.
class BigButton : public QPushButton {
  public:
    explicit BigButton(QWidget* parent, QAnyStringView name = {}, const char* caption = "");

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace davo
