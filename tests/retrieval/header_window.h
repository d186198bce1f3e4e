// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <QProgressBar>

#include "common/files.h"
#include "common/text.h"
#include "retrieval/frmHeader.h"
#include "tests/support/controls.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

inline const QString kNotReady = u"DAVO is not ready.  Please check equipment."_s;

// A header window; its real boxes and buttons are used.
class HeaderForm : public ::testing::Test, public Controls {
  protected:
    ~HeaderForm() override { delete window; }

    QWidget& Window() override { return *window; }
    static std::string BoxName(int i) { return "txtHeader" + std::to_string(i); }
    QLineEdit* Box(int i) { return Find<QLineEdit>(BoxName(i).c_str()); }
    // What the box counts; nothing when that is not shown.
    std::string Length(int i) {
        const auto* length = FindIn<QLabel>(*Box(i), "lblLength");
        return length->isVisible() ? length->text().toStdString() : std::string();
    }
    using Controls::Text;
    std::string Text(int i) { return ToPage(Box(i)->text()).value(); }
    void Type(int i, const char* text) { Controls::Type(BoxName(i).c_str(), text); }

    HeaderTable header;
    QPointer<frmHeader> window;
};

// The header window on a line of Line, which has link and prompts.
template <class Line>
class HeaderWindowOn : public HeaderForm {
  protected:
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
    std::string Status() { return Text("lblUsed"); }
    void Choose(int slot) { Find<QComboBox>("cboHeader")->setCurrentIndex(slot - 1); }
    // The save button, and whatever it starts.
    void Save() {
        Click("cmdSave");
        EXPECT_TRUE(Until([this] { return window.isNull() || Idle(); }));
    }

    TemporaryFolder folder;
    HeaderSlots slots;
    HeaderPatience patience;
    Line line;
    int unloads = 0;
};

}  // namespace davo::test
