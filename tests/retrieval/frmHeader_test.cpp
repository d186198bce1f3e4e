// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmHeader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QToolTip>

#include "common/run_time_error.h"
#include "tests/support/fake_prompts.h"
#include "ui/frmNotepad.h"
#include "ui/page_input.h"

namespace davo::test {

namespace {

using ::testing::HasSubstr;

constexpr int kUntilGone = 3000;  // ms

// The header window of a test session; its real boxes and buttons are used.
class HeaderWindow : public ::testing::Test {
  protected:
    void Open() {
        window = new frmHeader(header, testNotes, prompts, nullptr);
        window->OnChanged = [this] { ++changes; };
        window->open();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    ~HeaderWindow() override { delete window; }

    QLineEdit* Box(int i) { return Find<QLineEdit>("txtHeader" + std::to_string(i)); }
    template <class Control>
    Control* Find(const std::string& name) {
        auto* control = window->findChild<Control*>(QString::fromStdString(name));
        if (control == nullptr) throw std::logic_error("no control " + name);
        return control;
    }
    void Click(const char* name) { QTest::mouseClick(Find<QPushButton>(name), Qt::LeftButton); }
    void Type(int i, const char* text) {
        Box(i)->setFocus();
        Box(i)->selectAll();
        QTest::keyClicks(Box(i), QLatin1String(text));
    }
    frmNotepad* OpenNotepad() {
        Click("cmdNotes");
        auto* notepad = static_cast<frmNotepad*>(Find<QDialog>("frmNotepad"));
        EXPECT_TRUE(QTest::qWaitForWindowActive(notepad));
        return notepad;
    }

    FakePrompts prompts;
    HeaderTable header;
    std::string testNotes;
    int changes = 0;
    QPointer<frmHeader> window;
};

TEST_F(HeaderWindow, ShowsTheCurrentHeaderTrimmed) {
    header.Field(0) = "ACME                ";
    header.Field(7) = "M\xFCller              ";
    Open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Test Record Header Information"));
    EXPECT_EQ(Box(0)->text(), QStringLiteral("ACME"));
    EXPECT_EQ(Box(7)->text(), QStringLiteral("M\u00FCller"));
    const auto* form = window->findChild<QFormLayout*>();
    const char* labels[] = {
        "COMPANY:", "STATION:", "CIRCUIT:", "MFR:", "MODEL:", "SN:", "COMMENTS:", "OPERATOR:"};
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        EXPECT_EQ(static_cast<QLabel*>(form->labelForField(Box(i)))->text(),
                  QLatin1String(labels[i]));
    }
    EXPECT_EQ(Find<QPushButton>("cmdSave")->text(), QStringLiteral("&Use Header"));
    EXPECT_EQ(Find<QPushButton>("cmdNotes")->text(), QStringLiteral("&Notepad"));
    EXPECT_EQ(Find<QPushButton>("cmdExit")->text(), QStringLiteral("&Exit"));
}

TEST_F(HeaderWindow, UseHeaderTakesTheBoxes) {
    header.Field(2) = "OLD                 ";
    Open();
    Type(0, "  ACME ");
    Type(2, "");
    QTest::keyClick(Box(2), Qt::Key_Delete);
    Click("cmdSave");
    EXPECT_EQ(header.Field(0), "ACME                ");
    EXPECT_EQ(header.Field(2), "");
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Find<QLabel>("lblUsed")->text(),
              QStringLiteral("This header is used for the tests that follow."));
    Type(0, "B");
    EXPECT_EQ(Find<QLabel>("lblUsed")->text(), QString());
}

TEST_F(HeaderWindow, ATextOfTwentyFiveIsCutInItsBoxToo) {
    Open();
    Type(1, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    Click("cmdSave");
    EXPECT_EQ(Box(1)->text(), QStringLiteral("ABCDEFGHIJKLMNOPQRST"));
    EXPECT_EQ(header.Field(1), "ABCDEFGHIJKLMNOPQRST");
}

TEST_F(HeaderWindow, ExitLeavesTheHeaderAsItWas) {
    header.Field(0) = "ACME                ";
    Open();
    Type(0, "OTHER");
    Click("cmdExit");
    EXPECT_TRUE(QTest::qWaitFor([this] { return window.isNull(); }, kUntilGone));
    EXPECT_EQ(header.Field(0), "ACME                ");
    EXPECT_EQ(changes, 0);
}

TEST_F(HeaderWindow, CharactersOutsideThePageAreRefusedInWords) {
    Open();
    Box(3)->setFocus();
    QTest::sendKeyEvent(QTest::Click, Box(3), Qt::Key_unknown, QStringLiteral("\u03A9"), {});
    EXPECT_EQ(Box(3)->text(), QString());
    EXPECT_EQ(QToolTip::text(), NotInPageMessage());
}

TEST_F(HeaderWindow, WhatOnChangedThrowsIsShown) {
    Open();
    window->OnChanged = [] { throw RunTimeError(ErrorNumber::DiskFull); };
    Click("cmdSave");
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("Disk full"));
}

TEST_F(HeaderWindow, TheNotepadShowsAndTakesTheNotes) {
    testNotes = "first\r\nsecond";
    Open();
    QPointer<frmNotepad> notepad = OpenNotepad();
    EXPECT_EQ(notepad->windowTitle(), QStringLiteral("Notepad"));
    auto* rt = notepad->findChild<QTextEdit*>(QStringLiteral("rt"));
    EXPECT_EQ(rt->toPlainText(), QStringLiteral("first\nsecond"));
    EXPECT_EQ(rt->size(), notepad->size());
    rt->moveCursor(QTextCursor::End);
    QTest::keyClick(rt, Qt::Key_Return);
    QTest::keyClicks(rt, QStringLiteral("third"));
    EXPECT_EQ(testNotes, "first\r\nsecond");
    notepad->close();
    EXPECT_EQ(testNotes, "first\r\nsecond\r\nthird");
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return notepad.isNull(); }, kUntilGone));
}

TEST_F(HeaderWindow, TheNotepadKeepsFixedBlanksAndUntouchedNotes) {
    testNotes =
        "a\xA0"
        "b\nlone";
    Open();
    QPointer<frmNotepad> untouched = OpenNotepad();
    untouched->close();
    ASSERT_TRUE(QTest::qWaitFor([&] { return untouched.isNull(); }, kUntilGone));
    EXPECT_EQ(testNotes,
              "a\xA0"
              "b\nlone");
    EXPECT_EQ(changes, 0);
    frmNotepad* notepad = OpenNotepad();
    auto* rt = notepad->findChild<QTextEdit*>(QStringLiteral("rt"));
    rt->moveCursor(QTextCursor::End);
    QTest::keyClicks(rt, QStringLiteral("!"));
    QTest::keyClick(notepad, Qt::Key_Escape);
    EXPECT_EQ(testNotes,
              "a\xA0"
              "b\r\nlone!");
}

TEST_F(HeaderWindow, TheNotepadRefusesCharactersOutsideThePageInWords) {
    testNotes = "old";
    Open();
    QPointer<frmNotepad> notepad = OpenNotepad();
    auto* rt = notepad->findChild<QTextEdit*>(QStringLiteral("rt"));
    rt->setPlainText(QStringLiteral("5 k\u03A9"));
    rt->document()->setModified(true);
    notepad->close();
    EXPECT_TRUE(notepad->isVisible());
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_EQ(prompts.shown.front(), NotInPageMessage());
    EXPECT_EQ(rt->textCursor().selectedText(), QStringLiteral("\u03A9"));
    EXPECT_EQ(testNotes, "old");
    QTest::keyClicks(rt, QStringLiteral("ohm"));
    notepad->close();
    EXPECT_EQ(testNotes, "5 kohm");
}

}  // namespace

}  // namespace davo::test
