// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <optional>

namespace davo {

enum class Answer { Ok, Yes, No, Cancel };

// Every question and message to the operator goes through here, so that windows and rules can be
// tested without a dialog. Texts are shown exactly as given, blanks and line ends included.
class Prompts {
  public:
    virtual ~Prompts() = default;

    // A message with an OK button; no title unless given.
    virtual void Message(const QString& text, const QString& title = {}) = 0;

    // The same, of something that is in order.
    virtual void Inform(const QString& text) { Message(text); }

    // A message that comes by itself, not from what the operator did: shown once nothing else is
    // open, never over a question that waits for an answer.
    virtual void MessageAfter(const QString& text) { Message(text); }

    // Yes/No. preset is the default button: never the one that destroys.
    virtual Answer YesNo(const QString& text, Answer preset, const QString& title = {}) = 0;
    // Whether the answer is Yes; No is the default.
    bool Agrees(const QString& text) { return YesNo(text, Answer::No) == Answer::Yes; }

    // The same; Cancel when the box is left by the Escape key or its frame.
    virtual Answer YesNoOrBack(const QString& text, Answer preset, const QString& title = {}) {
        return YesNo(text, preset, title);
    }

    virtual Answer YesNoCancel(const QString& text, Answer preset, const QString& title = {}) = 0;

    // A line of text; nothing when the operator cancels.
    virtual std::optional<QString> Input(const QString& title, const QString& prompt,
                                         const QString& initial = {}) = 0;

    // A save dialog that starts in folder with a filter such as "*.txt" and proposes a name; the
    // full path chosen, empty when cancelled. It asks nothing about an existing file: the caller
    // does.
    virtual QString SaveFile(const QString& folder, const QString& filter, const QString& name) = 0;

    // A dialog that starts in folder with a filter such as "*.csv"; the full path of the file that
    // was chosen, empty when cancelled.
    virtual QString OpenFile(const QString& folder, const QString& filter) = 0;

    // A folder-choice dialog that starts in start, or at the user's own folder when that is not
    // there; empty when cancelled.
    virtual QString ChooseFolder(const QString& prompt, const QString& start) = 0;
};

}  // namespace davo
