// SPDX-License-Identifier: GPL-3.0-or-later
// Where a session ends or is cut off: the last shot that fits, a question that is left, a line that
// floods, and the folder of the session that goes.

#include <QCoreApplication>
#include <QDir>
#include <algorithm>

#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

class SessionLimits : public testing::Test, public SequenceRig {
  protected:
    std::string Notice() {
        return Screen().lblNotice.visible ? Screen().lblNotice.text : std::string();
    }
    void FillSession() {
        RunRatioShot("111.1");
        session.shotCount = kShotRefusal;
        RunRatioShot("333.3");
    }
};

TEST_F(SessionLimits, LeavingTheQuestionForTheNextShotIsNoAnswer) {
    OpenFor(false);
    RunFullShot("111.1");
    const ShotScreen before = Screen();
    TakeSent();
    prompts.answers = {Answer::Cancel};
    sequence.cmdStart_Click();
    EXPECT_EQ(Screen(), before);
    EXPECT_TRUE(port.sent.empty());
    EXPECT_EQ(CaptureBytes(), "");
    EXPECT_TRUE(sequence.ShotPending());
    EXPECT_FALSE(sequence.Polling());
    EXPECT_FALSE(modes.testRatioOnlyMode);
    EXPECT_FALSE(Journal().pendingShot.empty());
    sequence.cmdContinue_Click();
    EXPECT_EQ(session.shotCount, 0) << "Repeat Test is still possible";
}

TEST_F(SessionLimits, AShotThatCannotBeStartedIsNotWritten) {
    OpenFor(false);
    RunFullShot("111.1");
    link.CloseComPort();
    prompts.answers = {Answer::Yes};
    sequence.cmdStart_Click();
    EXPECT_EQ(prompts.shown.back(), u"DAVO is not ready.  Please check equipment."_s);
    EXPECT_TRUE(sequence.ShotPending());
    EXPECT_TRUE(sequence.RepeatOffered());
    EXPECT_EQ(CaptureBytes(), "");
    EXPECT_FALSE(modes.testRatioOnlyMode);
}

TEST_F(SessionLimits, ARefusedShotLeavesExitAlone) {
    OpenFor(true);
    FillSession();
    EXPECT_TRUE(sequence.ShotRefused());
    EXPECT_EQ(Notice(), "NO MORE SHOTS.\nPRESS EXIT TO SAVE.");
    EXPECT_FALSE(Screen().noticeWarns);
    EXPECT_EQ(Screen().lblTest, (ControlView{"TEST COMPLETE.", true, true}));
    EXPECT_FALSE(Screen().lblConfirm.visible);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().cmdCancel.enabled);
    EXPECT_TRUE(Screen().cmdExit.enabled);
}

TEST_F(SessionLimits, StartIsDisabledDuringTheReadinessCheck) {
    OpenFor(false);
    for (const bool answered : {true, false}) {
        bool painted = true;
        bool saidToAsk = false;
        sequence.OnShow = [&] {
            painted = Screen().cmdStart.enabled;
            saidToAsk = Screen().asking;
        };
        bool during = true;
        port.OnOutputDo("B", [&] {
            during = Screen().cmdStart.enabled;
            if (answered) port.Deliver("RDY\r\n");
        });
        sequence.ResetTestWindow();
        EXPECT_FALSE(during) << answered;
        EXPECT_FALSE(painted) << answered;
        EXPECT_TRUE(saidToAsk) << answered;
        EXPECT_FALSE(Screen().asking) << answered;
        EXPECT_TRUE(Screen().cmdStart.enabled) << answered;
    }
}

TEST_F(SessionLimits, TheRatioPromptEndsTheTwoConfirmationsRule) {
    OpenFor(false);
    RunFullShot();
    for (const bool byMessage : {true, false}) {
        prompts.answers = {Answer::No};
        StartFullShot();  // one confirmation
        SayLine(byMessage ? "MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)"
                          : "RATIO=240.0");
        Confirm();  // two
        SayLine("I=0.0011 V=50.0");
        EXPECT_EQ(Screen().lblMessage.text, "SET VOLTAGE FROM 5V TO 100V MAX") << byMessage;
        EXPECT_TRUE(Screen().cmdContinue.enabled) << byMessage;
        SayLine(RecordOf(Digits()));
        ASSERT_EQ(sequence.TestState(), 99);
    }
}

TEST_F(SessionLimits, AFloodIsExaminedInParts) {
    OpenFor(false);
    StartFullShot();
    constexpr std::size_t kFlood = 4 << 20;
    // No reading is cut by the end of a block.
    const std::string reading = "I=0.0123 V=1.2\r\n";
    static_assert(kSessionBlock % 16 == 0);
    ASSERT_EQ(reading.size(), 16U);
    std::string flood;
    while (flood.size() < kFlood)
        flood += reading;
    port.waiting = flood;
    std::size_t left = flood.size();
    int passes = 0;
    while (true) {
        sequence.Timer1_Timer();
        ++passes;
        const std::size_t now = sequence.Reply().sessionPending.size();
        ASSERT_EQ(left - now, std::min(left, kMostExaminedAtOnce)) << passes;
        if (!sequence.Unexamined()) break;
        ASSERT_LT(now, left) << passes;
        left = now;
    }
    EXPECT_GE(passes, static_cast<int>(kFlood / kMostExaminedAtOnce));
    SayLine("I=0.0124 V=500.0");
    EXPECT_EQ(Screen().txtVolt.text, "500.0");
}

TEST_F(SessionLimits, AFloodIsPaintedAtItsEndOnly) {
    OpenFor(false);
    StartFullShot();
    int shown = 0;
    sequence.OnShow = [&] { ++shown; };
    std::string flood;
    while (flood.size() < 100000)
        flood += "I=0.0123 V=491.2\r\n";
    Say(flood);
    EXPECT_LE(shown, 1);
    EXPECT_EQ(Screen().txtVolt.text, "491.2");
}

TEST_F(SessionLimits, AShotInTheMidstOfAFloodIsFound) {
    OpenFor(false);
    StartFullShot();
    std::string flood(3 << 20, '.');
    flood += "\r\nMESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)\r\nRATIO=241.2\r\n" +
             RecordOf(Digits('7')) + "\r\n";
    port.waiting = flood;
    do {
        sequence.Timer1_Timer();
    } while (sequence.Unexamined() && sequence.Polling());
    EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
    EXPECT_EQ(Screen().txtRatio.text, "241.2");
    EXPECT_FALSE(Screen().lblDamage.visible);
}

class DeletedFolder : public SessionLimits {
  protected:
    std::string SaidPath() { return ShownPath(places.scratchFolder).toStdString(); }
};

TEST_F(DeletedFolder, IsSaidAndTheSessionGoesOnInANewFile) {
    OpenFor(true);
    RunRatioShot("111.1");
    const std::string first = sequence.ShotTrailer();
    RunRatioShot("222.2");
    const std::string second = sequence.ShotTrailer();
    DeleteFolder();
    sequence.LookAround();
    EXPECT_TRUE(Screen().lblDamage.visible);
    EXPECT_EQ(Screen().lblDamage.text,
              "The folder of the running session was deleted: " + SaidPath() +
                  ". The session goes on in a new one; all complete shots are in it.");
    EXPECT_EQ(CaptureBytes(), first);
    EXPECT_EQ(Journal().pendingShot, second);
    EXPECT_EQ(Journal().shotsInCapture, 1);
    RunRatioShot("333.3");
    EXPECT_FALSE(Screen().lblDamage.visible);
    EXPECT_EQ(CaptureBytes(), first + second);
}

TEST_F(DeletedFolder, IsSaidWhileAShotRuns) {
    OpenFor(true);
    RunRatioShot("111.1");
    sequence.cmdStart_Click();
    const std::string first = CaptureBytes();
    DeleteFolder();
    sequence.LookAround();
    EXPECT_TRUE(Screen().lblDamage.visible);
    EXPECT_EQ(CaptureBytes(), first);
    EXPECT_TRUE(prompts.shown.empty()) << "no box may cover a prompt";
}

TEST_F(DeletedFolder, IsFoundByTheNextShotAtTheLatest) {
    OpenFor(true);
    RunRatioShot("111.1");
    const std::string first = sequence.ShotTrailer();
    DeleteFolder();
    sequence.WriteShotTrailer();
    EXPECT_EQ(CaptureBytes(), first);
}

TEST_F(DeletedFolder, ThatCannotBeMadeAgainIsSaidAndTriedAgain) {
    OpenFor(true);
    RunRatioShot("111.1");
    const std::string first = sequence.ShotTrailer();
    sequence.WriteShotTrailer();
    LoseFolder();
    sequence.LookAround();
    EXPECT_THAT(Screen().lblDamage.text,
                StartsWith("The folder of the running session is gone: " + SaidPath() +
                           ". Its shots are in memory: do not leave this window. "
                           "Run-time error '"));
    FindFolder();
    sequence.LookAround();
    EXPECT_THAT(Screen().lblDamage.text, HasSubstr("goes on in a new one"));
    EXPECT_EQ(CaptureBytes(), first);
}

TEST_F(DeletedFolder, IsSaidBesideADamagedRecord) {
    OpenFor(true);
    RunRatioShot("111.1", Digits().substr(6));
    const std::string damage = Screen().lblDamage.text;
    EXPECT_THAT(damage, StartsWith("The record of this shot is damaged: "));
    DeleteFolder();
    sequence.LookAround();
    EXPECT_THAT(Screen().lblDamage.text, StartsWith("The folder of the running session was "));
    EXPECT_THAT(Screen().lblDamage.text, EndsWith("\r\n" + damage));
    sequence.cmdContinue_Click();  // "&Repeat Test"
    EXPECT_THAT(Screen().lblDamage.text, Not(HasSubstr("damaged")));

    sequence.cmdStart_Click();
    LoseFolder();
    sequence.LookAround();
    EndShot("222.2", Digits().substr(6));
    EXPECT_THAT(Screen().lblDamage.text, StartsWith("The folder of the running session is gone: "));
    EXPECT_THAT(Screen().lblDamage.text, EndsWith("\r\n" + damage));
}

TEST_F(DeletedFolder, IsSaidOverTheNextStartUntilItIsBack) {
    OpenFor(false);
    StartFullShot();
    LoseFolder();
    sequence.LookAround();
    sequence.PortLost();
    EXPECT_THAT(Screen().lblDamage.text, StartsWith("The folder of the running session is gone: "));
    FindFolder();
    sequence.LookAround();
    EXPECT_THAT(Screen().lblDamage.text, HasSubstr("goes on in a new one"));
}

TEST_F(DeletedFolder, HasItsJournalMadeAgainAsSoonAsThatIsPossible) {
    OpenFor(true);
    RunRatioShot("111.1");
    const std::string pending = sequence.ShotTrailer();
    DeleteFolder();
    const QString inTheWay = JournalPath() + u"/in the way"_s;
    ASSERT_TRUE(QDir().mkpath(inTheWay));
    sequence.LookAround();
    EXPECT_TRUE(FileExists(sequence.Capture().Path()));
    EXPECT_THAT(Screen().lblDamage.text, HasSubstr("do not leave this window"));
    ASSERT_TRUE(QDir(JournalPath()).removeRecursively());
    sequence.LookAround();
    EXPECT_EQ(Journal().pendingShot, pending);
    EXPECT_THAT(Screen().lblDamage.text, HasSubstr("goes on in a new one"));
}

TEST_F(DeletedFolder, IsMadeAgainWhenAShotCompletes) {
    OpenFor(true);
    RunRatioShot("111.1");
    sequence.cmdStart_Click();
    DeleteFolder();
    EndShot("222.2");
    EXPECT_THAT(prompts.Texts(), IsEmpty());
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
}

TEST_F(DeletedFolder, IsNoFullDisk) {
    OpenFor(true);
    RunRatioShot("111.1");
    sequence.cmdStart_Click();
    LoseFolder();
    EndShot("222.2");
    EXPECT_THAT(prompts.Texts(), IsEmpty());
    EXPECT_THAT(Screen().lblDamage.text, StartsWith("The folder of the running session is gone: "));
    EXPECT_TRUE(sequence.ShotPending());
}

}  // namespace
}  // namespace davo::test
