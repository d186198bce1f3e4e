// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <initializer_list>

class QMdiArea;

namespace davo {

// The strip at the top of a child window: its caption at the left, its buttons at the right, the
// way out at the very end. A hand finds it at the same place in every window.
class PageHeader : public QWidget {
  public:
    // Lays page out, a window without a layout. buttons from left to right: the way out is the last
    // one, and what is pressed most is beside it.
    PageHeader(QWidget* page, std::initializer_list<QWidget*> buttons);

    // The rest of the page.
    QVBoxLayout* Body() { return body_; }

  private:
    QVBoxLayout* body_;
};

// Shows form in the whole of area. It can be closed, by its own means and with the keys that close
// a window, and cannot be made smaller: a running test must not become a bar. The focus stays where
// form has it, else it goes to no control. form is deleted when it closes.
void ShowPage(QMdiArea& area, QWidget& form);

// Closes form and the frame that it has in the main window's area.
void CloseForm(QWidget& form);

}  // namespace davo
