// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmHeader.h"

#include <QFormLayout>
#include <QTextEdit>
#include <QToolTip>

#include "tests/retrieval/header_window.h"
#include "ui/frmNotepad.h"
#include "ui/page_input.h"

namespace davo::test {
namespace {

// The header window of a test session.
class HeaderWindow : public HeaderForm {
  protected:
    void Open() {
        window = new frmHeader(header, testNotes, prompts, nullptr);
        window->OnChanged = [this] { ++changes; };
        window->open();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    frmNotepad* OpenNotepad() {
        Click("cmdNotes");
        auto* notepad = static_cast<frmNotepad*>(Find<QDialog>("frmNotepad"));
        EXPECT_TRUE(QTest::qWaitForWindowActive(notepad));
        return notepad;
    }

    FakePrompts prompts;
    std::string testNotes;
    int changes = 0;
};

TEST_F(HeaderWindow, ShowsTheCurrentHeaderTrimmed) {
    header.Field(0) = "ACME                ";
    header.Field(7) = "M\xFCller              ";
    Open();
    EXPECT_EQ(window->windowTitle(), u"Test Record Header Information"_s);
    EXPECT_EQ(Box(0)->text(), u"ACME"_s);
    EXPECT_EQ(Box(7)->text(), u"M\u00FCller"_s);
    const auto* form = window->findChild<QFormLayout*>();
    const char* labels[] = {
        "COMPANY:", "STATION:", "CIRCUIT:", "MFR:", "MODEL:", "SN:", "COMMENTS:", "OPERATOR:"};
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        EXPECT_EQ(static_cast<QLabel*>(form->labelForField(Box(i)))->text(),
                  QLatin1String(labels[i]));
    }
    EXPECT_EQ(Text("cmdSave"), "&Use Header");
    EXPECT_EQ(Text("cmdNotes"), "&Notepad");
    EXPECT_EQ(Text("cmdExit"), "&Exit");
}

TEST_F(HeaderWindow, EscapeDoesNotDropWhatWasTyped) {
    Open();
    Type(0, "ACME");
    QTest::keyClick(Box(0), Qt::Key_Escape);
    ASSERT_TRUE(window->isVisible());
    EXPECT_EQ(Text("lblUsed"), "Not used yet. Press Use Header. Exit leaves without it.");
    EXPECT_TRUE(Until([this] { return CutTextsOf(*window).empty(); }));
    Click("cmdSave");
    QTest::keyClick(Box(0), Qt::Key_Escape);
    EXPECT_TRUE(Until([this] { return window.isNull(); }));
    EXPECT_EQ(header.Field(0), "ACME                ");
}

TEST_F(HeaderWindow, TheMainButtonIsBesideTheWayOut) {
    Open();
    const auto left = [this](const char* name) { return Find<QWidget>(name)->x(); };
    EXPECT_LT(left("cmdNotes"), left("cmdSave"));
    EXPECT_LT(left("cmdSave"), left("cmdExit"));
}

TEST_F(HeaderWindow, UseHeaderTakesTheBoxes) {
    header.Field(2) = "OLD                 ";
    Open();
    Type(0, "  ACME ");
    Type(2, "");
    Click("cmdSave");
    EXPECT_EQ(header.Field(0), "ACME                ");
    EXPECT_EQ(header.Field(2), "");
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Text("lblUsed"), "This header is used for the tests that follow.");
    Type(0, "B");
    EXPECT_EQ(Text("lblUsed"), "Not used yet. Press Use Header.");
    Click("cmdSave");
    EXPECT_EQ(Text("lblUsed"), "This header is used for the tests that follow.");
}

TEST_F(HeaderWindow, NothingIsSaidOfABoxThatWasOnlyRead) {
    header.Field(0) = "ACME                ";
    Open();
    QTest::keyClick(Box(0), Qt::Key_End);
    QTest::keyClick(Box(0), Qt::Key_Tab);
    EXPECT_EQ(Text("lblUsed"), "");
}

TEST_F(HeaderWindow, ABoxCountsItsCharactersWhileItIsTyped) {
    header.Field(1) = "NORTH               ";
    Open();
    EXPECT_EQ(Length(0), "0 of 20");
    EXPECT_EQ(Length(1), "");
    Type(1, " 12345678901234567890 ");
    EXPECT_EQ(Length(0), "");
    EXPECT_EQ(Length(1), "20 of 20");
    EXPECT_FALSE(Box(1)->findChild<QLabel*>()->font().bold());
    QTest::keyClicks(Box(1), u"X"_s);
    EXPECT_EQ(Length(1), "22 of 20");
    EXPECT_TRUE(Box(1)->findChild<QLabel*>()->font().bold());
    Box(2)->setFocus();
    EXPECT_EQ(Length(1), "22 of 20") << "for as long as it is too long";
    EXPECT_EQ(Length(2), "0 of 20");
    Click("cmdSave");
    EXPECT_EQ(Length(1), "");
}

TEST_F(HeaderWindow, TheCountLeavesTheTextItsRoom) {
    Open();
    Type(0, "ABCDEFGHIJKLMNOPQRST");
    EXPECT_GE(Box(0)->textMargins().right(), FindIn<QLabel>(*Box(0), "lblLength")->width());
    EXPECT_TRUE(Until([this] { return CutTextsOf(*window).empty(); }));
    const int width = Box(0)->width();
    Box(1)->setFocus();
    EXPECT_EQ(Box(0)->textMargins().right(), 0);
    EXPECT_EQ(Box(0)->width(), width) << "nothing moves";
}

TEST_F(HeaderWindow, ATextOfTwentyFiveIsCutInItsBoxToo) {
    Open();
    Type(1, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    Click("cmdSave");
    EXPECT_EQ(Box(1)->text(), u"ABCDEFGHIJKLMNOPQRST"_s);
    EXPECT_EQ(header.Field(1), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(Text("lblUsed"),
              "This header is used for the tests that follow.\nSTATION was cut to 20 characters.");
    EXPECT_TRUE(Until([this] { return CutTextsOf(*window).empty(); }));
    Type(0, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    EXPECT_EQ(Text("lblUsed"), "Not used yet. Press Use Header.");
    Type(7, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    Click("cmdSave");
    EXPECT_EQ(
        Text("lblUsed"),
        "This header is used for the tests that follow.\n2 fields were cut to 20 characters.");
    Click("cmdSave");
    EXPECT_EQ(Text("lblUsed"), "This header is used for the tests that follow.");
}

TEST_F(HeaderWindow, ExitLeavesTheHeaderAsItWas) {
    header.Field(0) = "ACME                ";
    Open();
    Type(0, "OTHER");
    Click("cmdExit");
    EXPECT_TRUE(Until([this] { return window.isNull(); }));
    EXPECT_EQ(header.Field(0), "ACME                ");
    EXPECT_EQ(changes, 0);
}

TEST_F(HeaderWindow, CharactersOutsideThePageAreRefusedInWords) {
    Open();
    Box(3)->setFocus();
    QTest::sendKeyEvent(QTest::Click, Box(3), Qt::Key_unknown, u"\u03A9"_s, {});
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
    EXPECT_EQ(notepad->windowTitle(), u"Notepad"_s);
    auto* rt = notepad->findChild<QTextEdit*>(u"rt"_s);
    EXPECT_EQ(rt->toPlainText(), u"first\nsecond"_s);
    EXPECT_EQ(rt->size(), notepad->size());
    rt->moveCursor(QTextCursor::End);
    QTest::keyClick(rt, Qt::Key_Return);
    QTest::keyClicks(rt, u"third"_s);
    EXPECT_EQ(testNotes, "first\r\nsecond");
    notepad->close();
    EXPECT_EQ(testNotes, "first\r\nsecond\r\nthird");
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(Until([&] { return notepad.isNull(); }));
}

TEST_F(HeaderWindow, TheNotepadKeepsFixedBlanksAndUntouchedNotes) {
    testNotes =
        "a\xA0"
        "b\nlone";
    Open();
    QPointer<frmNotepad> untouched = OpenNotepad();
    untouched->close();
    ASSERT_TRUE(Until([&] { return untouched.isNull(); }));
    EXPECT_EQ(testNotes,
              "a\xA0"
              "b\nlone");
    EXPECT_EQ(changes, 0);
    frmNotepad* notepad = OpenNotepad();
    auto* rt = notepad->findChild<QTextEdit*>(u"rt"_s);
    rt->moveCursor(QTextCursor::End);
    QTest::keyClicks(rt, u"!"_s);
    QTest::keyClick(notepad, Qt::Key_Escape);
    EXPECT_EQ(testNotes,
              "a\xA0"
              "b\r\nlone!");
}

TEST_F(HeaderWindow, TheNotepadRefusesCharactersOutsideThePageInWords) {
    testNotes = "old";
    Open();
    QPointer<frmNotepad> notepad = OpenNotepad();
    auto* rt = notepad->findChild<QTextEdit*>(u"rt"_s);
    rt->setPlainText(u"5 k\u03A9"_s);
    rt->document()->setModified(true);
    notepad->close();
    EXPECT_TRUE(notepad->isVisible());
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_EQ(prompts.shown.front(), NotInPageMessage());
    EXPECT_EQ(rt->textCursor().selectedText(), u"\u03A9"_s);
    EXPECT_EQ(testNotes, "old");
    QTest::keyClicks(rt, u"ohm"_s);
    notepad->close();
    EXPECT_EQ(testNotes, "5 kohm");
}

}  // namespace
}  // namespace davo::test
