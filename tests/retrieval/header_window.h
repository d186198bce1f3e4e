// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include "common/files.h"
#include "common/text.h"
#include "retrieval/frmHeader.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

inline constexpr int kPatience = 8000;  // ms until a condition must have come true

// The header window on a line of Line, which has link and prompts; its real boxes and buttons are
// used.
template <class Line>
class HeaderWindowOn : public ::testing::Test {
  protected:
    ~HeaderWindowOn() override { delete window; }

    // No event has run yet.
    void Make(HeaderMode mode) {
        const HeaderTargets targets{
            header,  folder.Path(""), slots, line.link, [this] { return line.link.OpenComPort(1); },
            patience};
        window = new frmHeader(mode, targets, line.prompts, nullptr);
        window->OnUnload = [this] { ++unloads; };
        window->open();
    }
    void Open(HeaderMode mode) {
        Make(mode);
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    // Mode 2, until the slots were read or not.
    void OpenAndRead() {
        Open(HeaderMode::Davo);
        ASSERT_TRUE(Until([this] { return Idle(); }));
    }
    bool Idle() { return window->isVisible() && Box(0)->isEnabled() && !Reading(); }
    bool Reading() { return Status().starts_with("Reading"); }
    static bool Until(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }
    template <class Control>
    Control* Find(const char* name) {
        auto* control = window->findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::logic_error(std::string("no control ") + name);
        return control;
    }
    QLineEdit* Box(int i) { return Find<QLineEdit>(("txtHeader" + std::to_string(i)).c_str()); }
    std::string Text(int i) { return ToPage(Box(i)->text()).value(); }
    std::string Status() { return Find<QLabel>("lblUsed")->text().toStdString(); }
    void Click(const char* name) { QTest::mouseClick(Find<QPushButton>(name), Qt::LeftButton); }
    void Choose(int slot) { Find<QComboBox>("cboHeader")->setCurrentIndex(slot - 1); }
    void Type(int i, const char* text) {
        Box(i)->setFocus();
        Box(i)->selectAll();
        QTest::keyClick(Box(i), Qt::Key_Delete);
        QTest::keyClicks(Box(i), QLatin1String(text));
    }
    // The save button, and whatever it starts.
    void Save() {
        Click("cmdSave");
        EXPECT_TRUE(Until([this] { return window.isNull() || Idle(); }));
    }

    TemporaryFolder folder;
    HeaderTable header;
    HeaderSlots slots;
    HeaderPatience patience;
    Line line;
    int unloads = 0;
    QPointer<frmHeader> window;
};

}  // namespace davo::test
