// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <stdexcept>

#include "tests/support/testing.h"

namespace davo::test {

inline constexpr int kPatience = 60000;  // ms until a condition must have come true

inline bool Until(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatience);
}

template <class Control>
Control* FindIn(const QWidget& window, const char* name) {
    // Qt itself finds only classes that its meta-object compiler knows.
    for (QObject* found : window.findChildren<QObject*>(QLatin1String(name)))
        if (auto* control = dynamic_cast<Control*>(found)) return control;
    throw std::logic_error(std::string("no control ") + name);
}

// A button is pressed with the mouse.
inline void ClickIn(const QWidget& window, const char* name) {
    QTest::mouseClick(FindIn<QAbstractButton>(window, name), Qt::LeftButton);
}

// A row of a list or a tree is clicked.
template <class List, class Item>
void ClickItem(List& list, const Item* item, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(list.viewport(), Qt::LeftButton, keys, list.visualItemRect(item).center());
}

// Shows window as the one that has the keyboard.
inline bool ShowActive(QWidget& window) {
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

// The controls of a rig's window by their object names, and what hands do with them.
class Controls {
  public:
    virtual ~Controls() = default;
    virtual QWidget& Window() = 0;

    template <class Control>
    Control* Find(const char* name) {
        return FindIn<Control>(Window(), name);
    }
    QLineEdit* Box(const char* name) { return Find<QLineEdit>(name); }
    // Of a label, a button or a box.
    std::string Text(const char* name) {
        return Find<QWidget>(name)->property("text").toString().toStdString();
    }
    bool Enabled(const char* name) { return Find<QWidget>(name)->isEnabled(); }
    void Click(const char* name) { ClickIn(Window(), name); }
    // In place of what the box has.
    void Type(const char* name, const char* text) {
        Box(name)->setFocus();
        Box(name)->selectAll();
        QTest::keyClick(Box(name), Qt::Key_Delete);
        QTest::keyClicks(Box(name), QLatin1String(text));
    }
    QTreeWidget* List() { return Find<QTreeWidget>("lvTest"); }
    // One column of the list of records.
    std::vector<std::string> Column(int column) {
        std::vector<std::string> texts;
        for (int row = 0; row < List()->topLevelItemCount(); ++row)
            texts.push_back(List()->topLevelItem(row)->text(column).toStdString());
        return texts;
    }
    void ClickRow(int row, Qt::KeyboardModifiers keys = {}) {
        ClickItem(*List(), List()->topLevelItem(row), keys);
    }
    // The record with that name.
    void ClickRecord(const char* name, Qt::KeyboardModifiers keys = {}) {
        const auto found = List()->findItems(QLatin1String(name), Qt::MatchExactly);
        if (found.size() != 1) throw std::logic_error(std::string("no record ") + name);
        ClickItem(*List(), found.front(), keys);
    }
    void ClickTest(int row) {
        auto* list = Find<QListWidget>("lstTest");
        list->scrollToItem(list->item(row));
        ClickItem(*list, list->item(row));
    }
    void ChooseAll() { QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier); }
};

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

inline bool MnemonicsAreUnique(const QWidget& window) {
    std::vector<std::string> mnemonics = MnemonicsOf(window);
    std::sort(mnemonics.begin(), mnemonics.end());
    return std::adjacent_find(mnemonics.begin(), mnemonics.end()) == mnemonics.end();
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
