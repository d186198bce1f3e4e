// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QScreen>
#include <QWidget>
#include <stdexcept>
#include <string>
#include <vector>

namespace davo::test {

template <class Control>
Control* FindIn(const QWidget& window, const char* name) {
    auto* control = window.findChild<Control*>(QLatin1String(name));
    if (control == nullptr) throw std::logic_error(std::string("no control ") + name);
    return control;
}

// The mnemonics of what is visible in window, in no order, one for each control that has one.
inline std::vector<std::string> MnemonicsOf(const QWidget& window) {
    std::vector<std::string> mnemonics;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        QString text;
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            text = button->text();
        } else if (const auto* frame = qobject_cast<const QGroupBox*>(widget)) {
            text = frame->title();
        } else if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            if (label->buddy() != nullptr) text = label->text();
        }
        const QString mnemonic = QKeySequence::mnemonic(text).toString();
        if (!mnemonic.isEmpty() && widget->isVisible()) mnemonics.push_back(mnemonic.toStdString());
    }
    return mnemonics;
}

// The names of the visible labels and buttons whose text has less room than it needs.
inline std::vector<std::string> CutTextsOf(const QWidget& window) {
    std::vector<std::string> cut;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible()) continue;
        bool fits = true;
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            const int needed = label->wordWrap() ? label->heightForWidth(label->width())
                                                 : label->minimumSizeHint().height();
            // Of a label that elides, the least width is less than that of its text.
            fits = label->width() >= label->minimumSizeHint().width() && label->height() >= needed;
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            const QSize text = button->fontMetrics().size(Qt::TextShowMnemonic, button->text());
            fits = button->width() >= text.width() && button->height() >= text.height();
        }
        if (!fits) cut.push_back(widget->objectName().toStdString());
    }
    return cut;
}

inline bool FitsItsScreen(const QWidget& window) {
    return window.screen()->availableGeometry().contains(window.frameGeometry());
}

// The object names of window's visible controls in the order of the Tab key, from its first one.
inline std::vector<std::string> TabOrderOf(const QWidget& window) {
    std::vector<std::string> order;
    const QWidget* widget = window.nextInFocusChain();
    for (; widget != &window; widget = widget->nextInFocusChain()) {
        const bool stop = (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (stop && widget->isVisible() && widget->isEnabled() && window.isAncestorOf(widget)) {
            order.push_back(widget->objectName().toStdString());
        }
    }
    return order;
}

}  // namespace davo::test
