// SPDX-License-Identifier: GPL-3.0-or-later
// What is on the disk when, the limit of shots, and the loss of the port.

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

class SafetyTest : public testing::Test, public SequenceRig {};

using Sent = std::vector<std::string>;

// A folder in the way of the journal: nothing can be written over it.
void BlockJournal(const SequenceRig& rig) {
    QFile::remove(rig.JournalPath());
    ASSERT_TRUE(QDir().mkpath(rig.JournalPath() + u"/in the way"_s));
}

TEST_F(SafetyTest, WhenTheDiskRefusesNothingIsSentAndTheShotStaysPending) {
    OpenFor(false);
    RunFullShot();
    sequence.Capture().Close();
    TakeSent();
    prompts.answers = {Answer::Yes};
    EXPECT_THROW(sequence.cmdStart_Click(), RunTimeError);
    EXPECT_TRUE(port.sent.empty());
    EXPECT_TRUE(sequence.ShotPending());
    EXPECT_TRUE(sequence.RepeatOffered());
    EXPECT_FALSE(modes.testRatioOnlyMode);
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_EQ(Screen().cmdStart.text, "&Next Test");
    EXPECT_FALSE(Journal().pendingShot.empty());
}

TEST_F(SafetyTest, ACompleteShotIsOnTheDiskBeforeItIsCalledComplete) {
    OpenFor(false);
    header.Field(0) = "COMPANY";
    session.testNotes = "notes";
    RunFullShot("241.2");
    EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
    EXPECT_EQ(Journal().shotsInCapture, 0);
    EXPECT_EQ(Journal().header.Field(0), "COMPANY");
    EXPECT_EQ(Journal().testNotes, "notes");
}

TEST_F(SafetyTest, AShotThatIsNotSafeOnDiskCompletesAndSaysSo) {
    OpenFor(false);
    StartFullShot();
    BlockJournal(*this);
    std::string testLabel;
    prompts.onMessage = [&](const QString&) { testLabel = Screen().lblTest.text; };
    EndShot();
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(session.shotCount, 1);
    EXPECT_TRUE(sequence.ShotPending());
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_TRUE(
        prompts.shown[0].startsWith(u"The shot is complete, but it is not yet safe on disk: "_s))
        << prompts.shown[0].toStdString();
    EXPECT_TRUE(prompts.shown[0].endsWith(
        u".\r\nPlease make room on the disk, then go on with Next Test or Exit, which save it."_s));
    EXPECT_EQ(testLabel, "TEST COMPLETE.");
    // Writing the shot itself does not fail for want of a journal.
    sequence.WriteShotTrailer();
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_FALSE(CaptureBytes().empty());
}

TEST_F(SafetyTest, AShotThatIsNotSafeOnDiskIsNotLeftWithoutAQuestion) {
    OpenFor(false);
    StartFullShot();
    BlockJournal(*this);
    EndShot();
    prompts.answers = {Answer::No};
    EXPECT_FALSE(sequence.MayLeave());
    EXPECT_EQ(prompts.presets, std::vector<Answer>{Answer::No});
    ASSERT_TRUE(QDir(JournalPath()).removeRecursively());
    EXPECT_TRUE(sequence.MayLeave());
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
}

TEST_F(SafetyTest, AJournalThatIsDeletedOrChangedIsWrittenAgain) {
    OpenFor(false);
    RunFullShot();
    EXPECT_TRUE(Screen().shotOnDisk);
    for (const bool deleted : {true, false}) {
        DeleteFile(JournalPath());
        if (!deleted) ReplaceFile(JournalPath(), "not ours");
        sequence.LookAround();
        EXPECT_TRUE(Screen().shotOnDisk);
        EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
    }
    DeleteFile(JournalPath());
    BlockJournal(*this);
    sequence.LookAround();
    EXPECT_FALSE(Screen().shotOnDisk);
    ASSERT_TRUE(QDir(JournalPath()).removeRecursively());
    sequence.LookAround();
    EXPECT_TRUE(Screen().shotOnDisk);
}

// Once a second would be a flush of the disk a second.
TEST_F(SafetyTest, AJournalThatIsRightIsNotWrittenAgain) {
    const QDateTime earlier(QDate(2026, 11, 20), QTime(8, 0));
    const auto isWritten = [&] {
        QFile file(JournalPath());
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        EXPECT_TRUE(file.setFileTime(earlier, QFileDevice::FileModificationTime));
        file.close();
        sequence.LookAround();
        return QFileInfo(JournalPath()).lastModified() != earlier;
    };
    OpenFor(false);
    EXPECT_FALSE(isWritten());
    RunFullShot();
    EXPECT_FALSE(isWritten());
    SessionJournal other = Journal();
    other.pendingShot = "of another";
    other.Write(JournalPath());
    EXPECT_TRUE(isWritten());
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
}

TEST_F(SafetyTest, AShotWhoseFolderIsGoneIsNotOnTheDisk) {
    OpenFor(false);
    RunFullShot();
    LoseFolder();
    sequence.LookAround();
    EXPECT_FALSE(Screen().shotOnDisk);
    FindFolder();
    sequence.LookAround();
    EXPECT_TRUE(Screen().shotOnDisk);
}

TEST_F(SafetyTest, AShotInTheCaptureFileIsOnTheDiskWithoutAJournal) {
    OpenFor(false);
    RunFullShot();
    BlockJournal(*this);
    sequence.WriteShotTrailer();
    EXPECT_TRUE(Screen().shotOnDisk);
    EXPECT_EQ(CaptureBytes(), sequence.ShotTrailer());
    EXPECT_EQ(Screen().shotShown, 1) << "while it is asked whether to save";
}

TEST_F(SafetyTest, ResultsAreThoseOfACompleteShotOnly) {
    OpenFor(false);
    EXPECT_EQ(Screen().shotShown, 0);
    RunFullShot();
    EXPECT_EQ(Screen().shotShown, 1);
    prompts.answers = {Answer::No};
    StartFullShot();
    EXPECT_EQ(Screen().shotShown, 0);
    EndShot();
    EXPECT_EQ(Screen().shotShown, 2);
    sequence.cmdContinue_Click();  // "&Repeat Test"
    EXPECT_EQ(Screen().shotShown, 0);
    session.shotCount = kShotRefusal;
    prompts.answers = {Answer::No};
    RunFullShot();
    EXPECT_EQ(Screen().shotShown, 0);
}

TEST_F(SafetyTest, AFirstShotThatCannotBeNotedIsNotStarted) {
    OpenFor(false);
    BlockJournal(*this);
    EXPECT_THROW(sequence.cmdStart_Click(), RunTimeError);
    EXPECT_TRUE(port.sent.empty());
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_TRUE(session.firstShot);
}

TEST_F(SafetyTest, TheHundredAndSecondShotIsRefused) {
    OpenFor(true);
    RunRatioShot();
    session.shotCount = 100;
    RunRatioShot();
    EXPECT_EQ(session.shotCount, 101) << "the shot after the hundredth is counted";
    EXPECT_TRUE(prompts.shown.empty());
    RunRatioShot("333.3");
    EXPECT_EQ(prompts.shown,
              std::vector<QString>{u"You have ran the maximum limit (100) of shots."_s});
    EXPECT_EQ(session.shotCount, 101);
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 2");
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
    EXPECT_EQ(Screen().lblMessage.text, "");
    EXPECT_FALSE(sequence.Polling());
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_TRUE(Screen().cmdHeader.enabled);
    EXPECT_EQ(CaptureBytes().find("333.3"), std::string::npos);
}

TEST_F(SafetyTest, LosingThePortEndsTheShotAndItCanBeStartedAgain) {
    OpenFor(false);
    RunFullShot("111.1");
    prompts.answers = {Answer::No};
    StartFullShot();
    SayLine("I=0.1 V=1.0");
    const std::string captured = CaptureBytes();
    TakeSent();
    link.OnLost = [this] { sequence.PortLost(); };
    port.Unplug();
    QCoreApplication::processEvents();
    EXPECT_EQ(prompts.shown.back(), Link::LostMessage());
    EXPECT_TRUE(port.sent.empty());
    EXPECT_FALSE(sequence.Polling());
    EXPECT_TRUE(sequence.Clocking()) << "the session goes on";
    for (const ControlView& view :
         {Screen().lblMessage, Screen().lblTest, Screen().txtCur, Screen().txtVolt,
          Screen().txtRatio, Screen().txtPolarity, Screen().txtPE}) {
        EXPECT_EQ(view.text, "");
    }
    EXPECT_EQ(Screen().lblNotice, (ControlView{"CONNECTION LOST", true, true}));
    EXPECT_TRUE(Screen().noticeWarns);
    EXPECT_FALSE(Screen().lblConfirm.visible);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().cmdCancel.enabled);
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_TRUE(Screen().cmdHeader.enabled);
    EXPECT_TRUE(Screen().cmdStart.enabled);
    EXPECT_EQ(session.shotCount, 1);

    sequence.cmdStart_Click();
    EXPECT_EQ(prompts.shown.back(), u"DAVO is not ready.  Please check equipment."_s);
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_FALSE(sequence.Polling());
    EXPECT_EQ(reopenings, 1);

    reopens = true;
    sequence.cmdStart_Click();
    EXPECT_EQ(TakeSent(), Sent{"T"});
    EXPECT_FALSE(Screen().lblNotice.visible);
    SayLine("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_EQ(Screen().lblMessage.text, "SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_TRUE(Screen().cmdContinue.enabled) << "the range switch is asked for again";
    EndShot("222.2");
    EXPECT_EQ(session.shotCount, 2);
    EXPECT_EQ(CaptureBytes(), captured);
}

TEST_F(SafetyTest, TheLossStaysUntilThePortIsBack) {
    OpenFor(false);
    StartFullShot();
    link.OnLost = [this] { sequence.PortLost(); };
    port.Unplug();
    QCoreApplication::processEvents();
    TakeSent();
    for (int look = 1; look <= 3; ++look) {
        sequence.LookAround();
        EXPECT_TRUE(Screen().lblNotice.visible);
        EXPECT_EQ(reopenings, look);
    }
    reopens = true;
    sequence.LookAround();
    EXPECT_FALSE(Screen().lblNotice.visible);
    EXPECT_TRUE(port.sent.empty());
    sequence.LookAround();
    EXPECT_EQ(reopenings, 4) << "a port that is open is not opened again";
    link.CloseComPort();
    sequence.LookAround();
    EXPECT_EQ(reopenings, 4) << "nor one that was not lost";
}

TEST_F(SafetyTest, APortThatWasNeverOpenIsNotLost) {
    OpenFor(false);
    link.CloseComPort();
    sequence.LookAround();
    EXPECT_EQ(reopenings, 0);
}

TEST_F(SafetyTest, TheLossEndsTheBeepOfThePrompt) {
    OpenFor(false);
    StartFullShot();
    SayLine("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    EXPECT_TRUE(sequence.Beeping());
    sequence.PortLost();
    EXPECT_FALSE(sequence.Beeping());
}

TEST_F(SafetyTest, LosingThePortBetweenShotsChangesNothing) {
    OpenFor(false);
    RunFullShot();
    const ShotScreen before = Screen();
    sequence.PortLost();
    EXPECT_EQ(Screen(), before);
    EXPECT_TRUE(sequence.ShotPending());
}

TEST_F(SafetyTest, LosingThePortKeepsTheSlowLoweringOfTheNextShotInTime) {
    OpenFor(false);
    RunFullShot();
    prompts.answers = {Answer::No};
    StartFullShot();  // one confirmation
    sequence.PortLost();
    StartFullShot();  // the same one again
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(Screen().lblMessage.text, "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
}

// The instrument goes on by itself, and the range switch is never confirmed.
TEST_F(SafetyTest, OneConfirmationIsNotTakenForTwo) {
    OpenFor(false);
    RunFullShot();
    for (const bool lost : {false, true}) {
        prompts.answers = {Answer::No};
        if (lost) {
            StartFullShot();
            SayLine("I=0.1 V=1.0");
            Confirm();
            sequence.PortLost();
        }
        sequence.cmdStart_Click();
        SayLine("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
        SayLine("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
        SayLine("I=0.1 V=1.0");
        Confirm();
        SayLine("I=0.2 V=2.0");
        EXPECT_EQ(Screen().lblMessage.text,
                  "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)")
            << lost;
        EndShot();
    }
}

TEST_F(SafetyTest, NotesAndHeaderReachTheJournal) {
    OpenFor(false);
    session.testNotes = "later notes";
    header.Field(7) = "OPERATOR";
    sequence.UpdateJournal();
    EXPECT_EQ(Journal().testNotes, "later notes");
    EXPECT_EQ(Journal().header.Field(7), "OPERATOR");
}

}  // namespace
}  // namespace davo::test
