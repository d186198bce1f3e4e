// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/fake_prompts.h"

#include <stdexcept>
#include <utility>

namespace davo::test {

namespace {

template <class T>
T TakeScripted(std::deque<T>& script, const QString& text) {
    if (script.empty()) throw std::logic_error("unscripted prompt: " + text.toStdString());
    T first = script.front();
    script.pop_front();
    return first;
}

}  // namespace

std::vector<std::string> FakePrompts::Texts() const {
    std::vector<std::string> texts;
    for (const QString& text : shown)
        texts.push_back(text.toStdString());
    return texts;
}

void FakePrompts::Message(const QString& text, const QString& title) {
    shown.push_back(title.isEmpty() ? text : title + QLatin1Char('|') + text);
    if (!onMessage) return;
    const bool first = !std::exchange(messageOpen_, true);
    onMessage(text);
    if (!first) return;
    messageOpen_ = false;
    for (const QString& next : std::exchange(due_, {}))
        Message(next);
}

void FakePrompts::Inform(const QString& text) {
    informed.push_back(text);
    Message(text);
}

void FakePrompts::MessageAfter(const QString& text) {
    if (messageOpen_) {
        due_.push_back(text);
    } else {
        Message(text);
    }
}

Answer FakePrompts::YesNo(const QString& text, Answer preset, const QString&) {
    shown.push_back(text);
    presets.push_back(preset);
    if (onQuestion) onQuestion(text);
    return TakeScripted(answers, text);
}

Answer FakePrompts::YesNoCancel(const QString& text, Answer preset, const QString&) {
    shown.push_back(text);
    presets.push_back(preset);
    if (onQuestion) onQuestion(text);
    return TakeScripted(answers, text);
}

std::optional<QString> FakePrompts::Input(const QString& title, const QString& prompt,
                                          const QString&) {
    shown.push_back(title + QLatin1Char('|') + prompt);
    return TakeScripted(inputs, prompt);
}

QString FakePrompts::SaveFile(const QString& folder, const QString& filter, const QString& name) {
    proposed.push_back(name);
    shown.push_back(folder + QLatin1Char('|') + filter);
    if (onFile) onFile();
    return TakeScripted(files, folder);
}

QString FakePrompts::OpenFile(const QString& folder, const QString& filter) {
    shown.push_back(folder + QLatin1Char('|') + filter);
    return TakeScripted(files, folder);
}

QString FakePrompts::ChooseFolder(const QString& prompt, const QString& start) {
    shown.push_back(prompt + QLatin1Char('|') + start);
    return TakeScripted(folders, prompt);
}

}  // namespace davo::test
