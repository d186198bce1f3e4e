// SPDX-License-Identifier: GPL-3.0-or-later
// The window's events: opening, starting, confirming, cancelling.

#include <QTimer>

#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

class NewSequenceTest : public testing::Test, public SequenceRig {};

// For full tests.
class SequenceTest : public NewSequenceTest {
  protected:
    SequenceTest() { OpenFor(false); }
};

using Sent = std::vector<std::string>;

TEST_F(NewSequenceTest, FormLoad) {
    session = {5, "notes of the last session", false, false};
    Screen().txtPE.text = "1";
    Screen().txtCRatio.text = "2";
    Screen().cmdHeader.enabled = Screen().cmdCancel.enabled = false;
    OpenFor(false);
    EXPECT_TRUE(session.firstShot);
    EXPECT_EQ(session.testNotes, "");
    EXPECT_TRUE(session.testWindowOpen);
    EXPECT_EQ(session.shotCount, 0);
    EXPECT_TRUE(Screen().cmdHeader.enabled);
    EXPECT_EQ(Screen().lblTime.text, "11/21/2026 - 02:05:09 PM");
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    EXPECT_EQ(Screen().txtPE.text, "");
    EXPECT_EQ(Screen().txtCRatio.text, "");
    EXPECT_FALSE(Screen().lblTest.visible);
    EXPECT_TRUE(sequence.Clocking());
    EXPECT_FALSE(sequence.Polling());
    EXPECT_FALSE(sequence.Saturating());
    EXPECT_FALSE(sequence.Aborted());
    EXPECT_TRUE(sequence.Capture().IsOpen());
    EXPECT_EQ(CaptureBytes(), "");
    EXPECT_EQ(Journal().shotsInCapture, 0);
    EXPECT_FALSE(Journal().saved);
    EXPECT_TRUE(port.sent.empty());
}

TEST_F(NewSequenceTest, FormLoadInRatioOnlyMode) {
    OpenFor(true);
    EXPECT_EQ(Screen().lblTest, (ControlView{"RATIO TEST", true, true}));
}

TEST_F(NewSequenceTest, InitialCaptions) {
    EXPECT_EQ(Screen().cmdStart.text, "&Start Test");
    EXPECT_EQ(Screen().cmdContinue.text, "&Continue Test");
    EXPECT_EQ(Screen().cmdCancel.text, "C&ancel Test");
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 0");
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 0");
}

TEST_F(SequenceTest, ResetWithAReadyInstrument) {
    Screen().txtVolt.text = Screen().txtCur.text = Screen().txtPE.text = "1";
    Screen().cmdContinue.text = "&OK";
    port.OnOutput("B", "RDY\r\n");
    sequence.ResetTestWindow();
    EXPECT_EQ(TakeSent(), Sent{"B"});
    EXPECT_FALSE(Screen().cmdCancel.enabled);
    EXPECT_EQ(Screen().txtVolt.text, "");
    EXPECT_EQ(Screen().txtCur.text, "");
    EXPECT_EQ(Screen().txtPE.text, "");
    EXPECT_EQ(Screen().cmdContinue.text, "&Continue Test");
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_TRUE(sequence.Capture().IsOpen());
}

TEST_F(SequenceTest, ResetWithoutAnAnswer) {
    Screen().cmdContinue.text = "&OK";
    sequence.ResetTestWindow();
    EXPECT_EQ(prompts.shown,
              std::vector<QString>{u"DAVO is not ready.  Please check equipment."_s});
    EXPECT_EQ(Screen().cmdContinue.text, "&OK");
}

TEST_F(SequenceTest, ResetOnAClosedPortDoesNothing) {
    link.CloseComPort();
    sequence.ResetTestWindow();
    EXPECT_TRUE(port.sent.empty());
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(SequenceTest, ResetThatWasEndedSaysNothing) {
    port.OnOutputDo("B", [this] { QTimer::singleShot(0, [this] { link.EndWait(); }); });
    sequence.ResetTestWindow();
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(SequenceTest, StartDuringTheReadinessCheckIsRefused) {
    port.OnOutputDo("B", [this] {
        QTimer::singleShot(0, [this] {
            sequence.cmdStart_Click();
            port.Deliver("RDY\r\n");
        });
    });
    sequence.ResetTestWindow();
    EXPECT_EQ(TakeSent(), Sent{"B"});
    EXPECT_FALSE(sequence.Polling());
}

TEST_F(SequenceTest, ResetKeepsTheShotsThatAreThere) {
    RunFullShot();
    port.OnOutput("B", "RDY\r\n");
    sequence.ResetTestWindow();
    sequence.WriteShotTrailer();
    const std::string bytes = CaptureBytes();
    EXPECT_FALSE(bytes.empty());
    port.OnOutput("B", "RDY\r\n");
    sequence.ResetTestWindow();
    EXPECT_EQ(CaptureBytes(), bytes);
}

TEST_F(SequenceTest, ResetWithoutAShotBeginsANewCaptureFile) {
    DeleteFile(sequence.Capture().Path());
    port.OnOutput("B", "RDY\r\n");
    sequence.ResetTestWindow();
    EXPECT_TRUE(FileExists(sequence.Capture().Path()));
}

TEST_F(SequenceTest, FirstStart) {
    for (ControlView* view :
         {&Screen().txtVolt, &Screen().txtCur, &Screen().txtPolarity, &Screen().txtRatio,
          &Screen().lblMessage, &Screen().lblTest, &Screen().txtPE}) {
        view->text = "left over";
    }
    Screen().lblPE.enabled = true;
    Screen().cmdCancel.enabled = false;
    Screen().txtHVolt.text = "1200";
    sequence.cmdStart_Click();
    EXPECT_EQ(TakeSent(), Sent{"T"});
    EXPECT_EQ(sequence.TestState(), 0);
    EXPECT_TRUE(sequence.Polling());
    EXPECT_FALSE(sequence.Unexamined());
    EXPECT_FALSE(Screen().cmdExit.enabled);
    EXPECT_FALSE(Screen().cmdHeader.enabled);
    EXPECT_FALSE(Screen().lblPE.enabled);
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    EXPECT_TRUE(Screen().cmdStart.enabled);
    for (const ControlView& view :
         {Screen().txtVolt, Screen().txtCur, Screen().txtPolarity, Screen().txtRatio,
          Screen().lblMessage, Screen().lblTest, Screen().txtPE}) {
        EXPECT_EQ(view.text, "");
    }
    EXPECT_EQ(Screen().txtHVolt.text, "1200") << "not cleared at the first shot";
    EXPECT_EQ(header.headerFields[1], "11/21/26");
    EXPECT_EQ(header.headerFields[2], "14:05");
    EXPECT_FALSE(session.firstShot);
    EXPECT_EQ(Journal().header.headerFields[1], "11/21/26");
    EXPECT_EQ(Journal().header.headerFields[2], "14:05");
}

TEST_F(NewSequenceTest, StartInRatioOnlyModeSendsSmallT) {
    OpenFor(true);
    sequence.cmdStart_Click();
    EXPECT_EQ(TakeSent(), Sent{"t"});
    EXPECT_TRUE(Screen().cmdStart.enabled) << "the very first shot leaves it";
}

TEST_F(SequenceTest, WhatWasSaidBeforeAShotDoesNotBelongToIt) {
    port.waiting = RecordOf(Digits()) + "\r\n";
    sequence.cmdStart_Click();
    sequence.Timer1_Timer();
    EXPECT_EQ(sequence.TestState(), 0);
    EXPECT_EQ(session.shotCount, 0);
}

TEST_F(SequenceTest, NextTestAsksAndWritesThePendingShot) {
    RunFullShot("111.1");
    const std::string block = sequence.ShotTrailer();
    clock.Set(QDateTime(QDate(2027, 1, 2), QTime(3, 4)));
    TakeSent();
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    EXPECT_EQ(prompts.shown, std::vector<QString>{u"Run Ratio test only?"_s});
    EXPECT_EQ(TakeSent(), Sent{"T"});
    EXPECT_EQ(CaptureBytes(), block);
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_EQ(Journal().pendingShot, "");
    EXPECT_EQ(Screen().cmdStart.text, "&Start Test");
    EXPECT_FALSE(modes.testRatioOnlyMode);
    EXPECT_EQ(header.headerFields[1], "11/21/26") << "the date of the first shot stays";
    EXPECT_EQ(sequence.TestState(), 0);
}

TEST_F(SequenceTest, NextTestMayBecomeARatioTest) {
    RunFullShot();
    TakeSent();
    prompts.answers = {Answer::Yes, Answer::No};
    sequence.cmdStart_Click();
    EXPECT_EQ(TakeSent(), Sent{"t"});
    EXPECT_TRUE(modes.testRatioOnlyMode);
    EXPECT_FALSE(Screen().cmdStart.enabled);
    SayLine("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    EndShot();
    TakeSent();
    sequence.cmdStart_Click();
    EXPECT_EQ(TakeSent(), Sent{"T"});
    EXPECT_FALSE(modes.testRatioOnlyMode);
}

TEST_F(NewSequenceTest, ARatioOnlyWindowAsksNothing) {
    OpenFor(true);
    RunRatioShot();
    TakeSent();
    sequence.cmdStart_Click();
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_EQ(TakeSent(), Sent{"t"});
    EXPECT_EQ(Screen().cmdStart.text, "&Next Test");
}

TEST_F(SequenceTest, NextTestClearsAnIncompleteNameplate) {
    RunFullShot();
    Screen().txtHVolt.text = "1200";
    Screen().txtXVolt.text = " ";
    Screen().txtCRatio.text = "240";
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    EXPECT_EQ(Screen().txtHVolt.text + Screen().txtXVolt.text + Screen().txtCRatio.text, "");
}

TEST_F(SequenceTest, NextTestKeepsAWholeNameplate) {
    RunFullShot();
    Screen().txtHVolt.text = "1200";
    Screen().txtXVolt.text = "5";
    Screen().txtCRatio.text = "240";
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    EXPECT_EQ(Screen().txtHVolt.text, "1200");
    EXPECT_EQ(Screen().txtXVolt.text, "5");
    EXPECT_EQ(Screen().txtCRatio.text, "240");
}

TEST_F(SequenceTest, AShotThatIsWrittenCanNoLongerBeRepeated) {
    RunFullShot();
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_EQ(Screen().cmdContinue.text, "&Continue Test");
    EXPECT_EQ(session.shotCount, 1);
}

TEST_F(SequenceTest, RepeatWithoutAPendingShotTakesNothingBack) {
    RunFullShot();
    sequence.WriteShotTrailer();
    sequence.cmdContinue_Click();
    EXPECT_EQ(session.shotCount, 1);
}

TEST_F(SequenceTest, ContinueConfirms) {
    StartFullShot();
    TakeSent();
    beeps = 0;
    Screen().txtHVolt.text = "1200";
    Screen().txtCRatio.text = "7";
    sequence.cmdContinue_Click();
    EXPECT_EQ(beeps, 2);
    EXPECT_EQ(TakeSent(), Sent{"\r"});
    EXPECT_EQ(Screen().lblCRCount.text, "(2)");
    EXPECT_TRUE(sequence.Polling());
    EXPECT_EQ(Screen().txtHVolt.text, "") << "X is blank";
    EXPECT_EQ(Screen().txtCRatio.text, "");
}

TEST_F(SequenceTest, ContinueOutsideTheRunningTestKeepsTheNameplate) {
    sequence.cmdStart_Click();
    SayLine("SET THE VOLTAGE RANGE SELECTOR SWITCH");
    Screen().txtHVolt.text = "1200";
    sequence.cmdContinue_Click();
    EXPECT_EQ(Screen().txtHVolt.text, "1200");
}

TEST_F(SequenceTest, RepeatDropsTheShot) {
    RunFullShot();
    ASSERT_FALSE(Journal().pendingShot.empty());
    TakeSent();
    beeps = 0;
    sequence.cmdContinue_Click();
    EXPECT_EQ(beeps, 2);
    EXPECT_TRUE(port.sent.empty());
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_TRUE(Screen().shotDropped);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_EQ(Screen().cmdContinue.text, "&Continue");
    EXPECT_EQ(Screen().lblCRCount.text, "(1)");
    EXPECT_EQ(Journal().pendingShot, "");
    EXPECT_TRUE(Screen().cmdExit.enabled);
    // The next shot takes its place.
    prompts.answers = {Answer::No};
    RunFullShot("222.2");
    EXPECT_FALSE(Screen().shotDropped);
    EXPECT_EQ(session.shotCount, 1);
    EXPECT_EQ(CaptureBytes(), "");
    EXPECT_NE(sequence.ShotTrailer().find("222.2"), std::string::npos);
}

TEST_F(SequenceTest, CancelSendsTheStopPairTenTimes) {
    StartFullShot();
    SayLine("I=0.1 V=1.0");
    TakeSent();
    beeps = 0;
    sequence.cmdCancel_Click();
    EXPECT_EQ(beeps, 2);
    EXPECT_EQ(TakeSent(), Sent(10, "S\x1b"));
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_FALSE(sequence.Clocking());
    EXPECT_FALSE(sequence.Polling());
    EXPECT_FALSE(Screen().lblConfirm.visible);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    SayLine("RATIO=1.0");
    EXPECT_EQ(Screen().txtRatio.text, "") << "nothing is polled any more";
}

TEST_F(SequenceTest, EscapeStopsPollingAndSendsEscape) {
    StartFullShot();
    TakeSent();
    sequence.EscapePressed();
    EXPECT_EQ(TakeSent(), Sent{"\x1b"});
    EXPECT_FALSE(sequence.Polling());
    EXPECT_TRUE(sequence.Aborted());
}

TEST_F(SequenceTest, ClockAndBeeper) {
    clock.Set(QDateTime(QDate(2026, 1, 2), QTime(0, 3, 4)));
    sequence.timDateTime_Timer();
    EXPECT_EQ(Screen().lblTime.text, "01/02/2026 - 12:03:04 AM");
    sequence.timBeep_Timer();
    EXPECT_EQ(beeps, 0) << "not without the ratio prompt";
}

TEST_F(SequenceTest, PollingNothingChangesNothing) {
    StartFullShot();
    const ShotScreen before = Screen();
    for (int i = 0; i < 3; ++i) {
        sequence.Timer1_Timer();
    }
    EXPECT_EQ(Screen(), before);
    sequence.StopTimers();
    port.waiting = "RATIO=1.0\r\n";
    sequence.Timer1_Timer();
    EXPECT_EQ(port.waiting, "RATIO=1.0\r\n") << "a stopped timer does not poll";
}

}  // namespace
}  // namespace davo::test
