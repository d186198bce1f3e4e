// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <functional>

#include "common/prompts.h"

namespace davo {

// Prompts as real dialogs over the active window. Object names for tests: the message boxes are
// "msgBox" (buttons by their standard role), the input box "inputBox", the file dialog "cdFile",
// the folder dialog "folderBrowser". The text of each is in its property "exactText" as it was
// given. Escape and the window's close button answer Cancel, or the preset where there is none. A
// menu or a list that is open is closed: it would be above the dialog. A message box has the icon
// of its kind; with an advice it has a button "cmdHelp", which does what F1 does.
class DialogPrompts : public Prompts {
  public:
    void Message(const QString& text, const QString& title = {}) override;
    void Inform(const QString& text) override;
    void MessageAfter(const QString& text) override;
    Answer YesNo(const QString& text, Answer preset, const QString& title = {}) override;
    Answer YesNoOrBack(const QString& text, Answer preset, const QString& title = {}) override;
    Answer YesNoCancel(const QString& text, Answer preset, const QString& title = {}) override;
    std::optional<QString> Input(const QString& title, const QString& prompt,
                                 const QString& initial = {}) override;
    QString SaveFile(const QString& folder, const QString& filter, const QString& name) override;
    QString OpenFile(const QString& folder, const QString& filter) override;
    QString ChooseFolder(const QString& prompt, const QString& start) override;

    // One sentence that says what to do about a message; empty where there is nothing to say.
    std::function<QString(const QString& text)> AdviceOn;

  private:
    class Open;

    QString Advice(const QString& text) const { return AdviceOn ? AdviceOn(text) : QString(); }

    int open_ = 0;  // dialogs, one over the other
    std::deque<QString> due_;
};

}  // namespace davo
