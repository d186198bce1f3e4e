// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "ui/event_handlers.h"

class QTextEdit;

namespace davo {

// "Notepad": one text box that fills the window. Closing the window takes the text over.
class frmNotepad : public QDialog {
  public:
    // notes: Windows-1252, lines joined by CR LF. Both must outlive the window.
    frmNotepad(std::string& notes, Prompts& prompts, QWidget* parent);

    // notes has changed.
    std::function<void()> OnChanged;

    // Every way of closing comes here. A text that cannot be written in Windows-1252 is refused
    // in words, the first such character is selected and the window stays.
    void done(int result) override;

  private:
    bool TakeText();

    std::string& notes_;
    Prompts& prompts_;
    EventHandlers handlers_;
    QTextEdit* rt_;
};

}  // namespace davo
