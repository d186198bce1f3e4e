// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "common/clock.h"
#include "common/prompts.h"

namespace davo::test {

// Prompts that answer by a script and keep what was shown. A prompt without a scripted answer
// fails the test by throwing, so that none goes unnoticed.
class FakePrompts : public Prompts {
  public:
    void Message(const QString& text, const QString& title = {}) override;
    void Inform(const QString& text) override;
    void MessageAfter(const QString& text) override;
    Answer YesNo(const QString& text, Answer preset, const QString& title = {}) override;
    Answer YesNoCancel(const QString& text, Answer preset, const QString& title = {}) override;
    std::optional<QString> Input(const QString& title, const QString& prompt,
                                 const QString& initial = {}) override;
    QString SaveFile(const QString& folder, const QString& filter, const QString& name) override;
    QString OpenFile(const QString& folder, const QString& filter) override;
    QString ChooseFolder(const QString& prompt, const QString& start) override;

    // What was shown, as tests compare it.
    std::vector<std::string> Texts() const;

    std::deque<Answer> answers;                 // for YesNo and YesNoCancel
    std::deque<std::optional<QString>> inputs;  // for Input
    std::deque<QString> files;                  // for SaveFile and OpenFile
    std::deque<QString> folders;                // for ChooseFolder
    std::vector<QString> shown;                 // every text, in order; "folder|filter" of SaveFile
    std::vector<QString> informed;              // of shown, what Inform was given
    std::vector<QString> proposed;              // names of SaveFile, in order
    std::vector<Answer> presets;                // default buttons, in order
    std::function<void(const QString&)> onMessage;   // called after a message is kept
    std::function<void(const QString&)> onQuestion;  // the same for YesNo and YesNoCancel
    std::function<void()> onFile;                    // the same for SaveFile

  private:
    bool messageOpen_ = false;
    std::deque<QString> due_;  // to be shown after it
};

// A clock that does not go on until it is set.
class FakeClock : public Clock {
  public:
    explicit FakeClock(const QDateTime& now) : now_(now) {}
    QDateTime Now() const override { return now_; }
    std::chrono::steady_clock::time_point Ticks() const override {
        return std::chrono::steady_clock::time_point(
            std::chrono::milliseconds(now_.toMSecsSinceEpoch()));
    }
    void Set(const QDateTime& now) { now_ = now; }
    void Advance(std::chrono::milliseconds time) { now_ = now_.addMSecs(time.count()); }

  private:
    QDateTime now_;
};

}  // namespace davo::test
