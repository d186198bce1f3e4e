// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session_cards.h"

#include <QDir>
#include <QVBoxLayout>

#include "tests/support/controls.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

UnsavedSession Session(const char* time, const QTime& lastChange, int number = 1) {
    UnsavedSession session;
    session.capturePath = u"/scratch/TESTFILE-%1-%2.txt"_s.arg(lastChange.toString()).arg(number);
    session.journal.header.headerFields[kHeaderDate] = "11/21/26";
    session.journal.header.headerFields[kHeaderTime] = time;
    session.journal.header.Field(1) = "NORTH SUBSTATION    ";
    session.journal.header.Field(5) = "4711-0815           ";
    session.shots = 3;
    session.lastChange = QDateTime(QDate(2026, 11, 21), lastChange);
    session.number = number;
    return session;
}

TEST(SessionWords, SayWhenAndHowManyShots) {
    UnsavedSession session = Session("14:05", QTime(14, 7, 33));
    EXPECT_EQ(WhenWords(session), u"11/21/26, 14:05 to 14:07:33, 3 shots"_s);
    session.shots = 1;
    EXPECT_EQ(WhenWords(session), u"11/21/26, 14:05 to 14:07:33, 1 shot"_s);
    // One without its journal has the date of its name.
    session.journal = {};
    EXPECT_EQ(WhenWords(session), u"11/21/26, until 14:07:33, 1 shot"_s);
    // One that was named by hand has that name.
    session.lastChange = {};
    session.capturePath = u"/scratch/TESTFILE-mine.txt"_s;
    EXPECT_EQ(WhenWords(session), u"TESTFILE-mine.txt, 1 shot"_s);
}

TEST(SessionWords, TellTwoOfOneMinuteAndOfOneSecondApart) {
    const UnsavedSession first = Session("14:05", QTime(14, 5, 10));
    EXPECT_NE(WhenWords(first), WhenWords(Session("14:05", QTime(14, 5, 11))));
    EXPECT_EQ(WhenWords(Session("14:05", QTime(14, 5, 10), 2)),
              u"11/21/26, 14:05 to 14:05:10 (2), 3 shots"_s);
}

TEST(SessionWords, SayStationAndSerialNumber) {
    UnsavedSession session = Session("14:05", QTime(14, 7, 33));
    EXPECT_EQ(WhereWords(session), u"Station NORTH SUBSTATION, serial number 4711-0815"_s);
    session.journal.header.Field(1) = std::string(20, ' ');
    EXPECT_EQ(WhereWords(session), u"No station, serial number 4711-0815"_s);
    session.journal = {};
    EXPECT_EQ(WhereWords(session), u"No station, no serial number"_s);
}

class Cards : public ::testing::Test, public Controls {
  protected:
    Cards() {
        window.resize(500, 200);
        auto* column = new QVBoxLayout(&window);
        before = new QPushButton(u"before"_s, &window);
        before->setObjectName(u"before"_s);
        after = new QPushButton(u"after"_s, &window);
        after->setObjectName(u"after"_s);
        cards = new SessionCards(before, &window);
        cards->OnSave = [this](const UnsavedSession& session) {
            saved.push_back(session.capturePath);
        };
        column->addWidget(before);
        column->addWidget(cards);
        column->addWidget(after);
    }
    QWidget& Window() override { return window; }
    void Open(const std::vector<UnsavedSession>& sessions) {
        cards->Show(sessions);
        ASSERT_TRUE(ShowActive(window));
    }
    // The cards that are shown, by their first lines.
    std::vector<std::string> Shown() {
        std::vector<std::string> shown;
        for (const QLabel* label : cards->findChildren<QLabel*>())
            if (label->isVisible() && label->objectName().startsWith(u"lblWhen"_s))
                shown.push_back(label->text().toStdString());
        return shown;
    }
    // What a press has replaced is deleted from the event loop.
    void Press(const char* name) {
        Click(name);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QWidget window;
    QPushButton* before;
    QPushButton* after;
    SessionCards* cards;
    std::vector<QString> saved;
    const UnsavedSession older = Session("09:00", QTime(9, 30, 1));
    const UnsavedSession newer = Session("14:05", QTime(14, 7, 33));
};

TEST_F(Cards, WithoutASessionNothingIsShown) {
    Open({});
    EXPECT_FALSE(cards->isVisible());
}

TEST_F(Cards, EachSessionHasOneTheNewestFirst) {
    Open({older, newer});
    EXPECT_TRUE(cards->isVisible());
    EXPECT_THAT(Shown(), ElementsAre("11/21/26, 14:05 to 14:07:33, 3 shots",
                                     "11/21/26, 09:00 to 09:30:01, 3 shots"));
    EXPECT_EQ(Text("lblWhere0"), "Station NORTH SUBSTATION, serial number 4711-0815");
    EXPECT_EQ(Text("cmdSaveSession0"), "Save");
    EXPECT_EQ(Text("cmdLater0"), "Later");
}

TEST_F(Cards, SaveIsThatOfItsSession) {
    Open({older, newer});
    Press("cmdSaveSession1");
    Press("cmdSaveSession0");
    EXPECT_THAT(saved, ElementsAre(older.capturePath, newer.capturePath));
}

TEST_F(Cards, WhatIsLeftForLaterIsStillThere) {
    Open({older, newer});
    Press("cmdLater0");
    EXPECT_THAT(Shown(), ElementsAre("11/21/26, 09:00 to 09:30:01, 3 shots"));
    EXPECT_EQ(Text("lblLater"), "1 session is left for later.");
    cards->Show({older, newer});
    EXPECT_EQ(Shown().size(), 1U) << "it is not offered again in this run";
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Press("cmdLater0");
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_EQ(Text("lblLater"), "2 sessions are left for later.");
    Press("cmdShowLater");
    EXPECT_EQ(Shown().size(), 2U);
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(Cards, TheKeyboardReachesThemInTheirOrder) {
    Open({older, newer});
    EXPECT_THAT(TabOrderOf(window), ElementsAre("before", "cmdSaveSession0", "cmdLater0",
                                                "cmdSaveSession1", "cmdLater1", "after"));
    Find<QPushButton>("cmdLater1")->setFocus();
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.focusWidget()->objectName(), u"cmdSaveSession0"_s);
    EXPECT_THAT(TabOrderOf(window),
                ElementsAre("before", "cmdSaveSession0", "cmdLater0", "cmdShowLater", "after"));
    cards->Show({});
    EXPECT_EQ(window.focusWidget(), before);
    EXPECT_THAT(MnemonicsOf(window), IsEmpty()) << "they would clash with the menu bar's";
}

// The button of a card that is scrolled out of sight comes into sight with the focus.
TEST_F(Cards, WhereThereIsNoRoomForAllTheyScroll) {
    std::vector<UnsavedSession> many;
    for (int i = 0; i < 6; ++i)
        many.push_back(Session("09:00", QTime(9, 30, i)));
    Open(many);
    window.resize(500, 260);
    test::Pause(20);
    auto* last = Find<QPushButton>("cmdSaveSession5");
    EXPECT_TRUE(last->visibleRegion().isEmpty());
    Find<QPushButton>("cmdLater4")->setFocus();
    QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(last->hasFocus());
    EXPECT_TRUE(Until([last] { return last->visibleRegion().boundingRect() == last->rect(); }));
    EXPECT_TRUE(after->isVisible());
}

TEST_F(Cards, NoTextIsCut) {
    UnsavedSession wide = newer;
    wide.journal.header.Field(1) = "WWWWWWWWWWWWWWWWWWWW";
    wide.journal.header.Field(5) = "WWWWWWWWWWWWWWWWWWWW";
    Open({older, wide});
    window.resize(500, 600);
    test::Pause(20);
    EXPECT_THAT(CutTextsOf(window), IsEmpty());
}

}  // namespace
}  // namespace davo::test
