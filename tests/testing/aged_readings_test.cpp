// SPDX-License-Identifier: GPL-3.0-or-later
// A line that falls silent while a shot runs.

#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

using namespace std::chrono_literals;

class AgedReadings : public testing::Test, public SequenceRig {
  protected:
    // Nothing arrives for so long.
    void Silence(std::chrono::milliseconds time) {
        clock.Advance(time);
        sequence.Timer1_Timer();
    }
    std::string Notice() {
        return Screen().lblNotice.visible ? Screen().lblNotice.text : std::string();
    }
    bool BoxesAreGrey() { return !Screen().txtCur.enabled && !Screen().txtVolt.enabled; }
    bool BoxesAreBlack() { return Screen().txtCur.enabled && Screen().txtVolt.enabled; }
};

TEST_F(AgedReadings, TwoSecondsWithoutOneAreSaidUntilTheNext) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    Silence(1999ms);
    EXPECT_EQ(Notice(), "");
    EXPECT_TRUE(BoxesAreBlack());
    Silence(1ms);
    EXPECT_EQ(Notice(), "NO READING FOR 2 s");
    EXPECT_TRUE(Screen().noticeWarns);
    EXPECT_TRUE(BoxesAreGrey());
    EXPECT_EQ(Screen().txtVolt.text, "491.2");
    TakeSent();
    Silence(70500ms);
    EXPECT_EQ(Notice(), "NO READING FOR 72 s");
    EXPECT_EQ(Screen().lblMessage.text, "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_TRUE(Screen().cmdContinue.enabled);
    EXPECT_TRUE(Screen().lblConfirm.visible);
    EXPECT_TRUE(port.sent.empty());
    SayLine("I=0.0124 V=492.0");
    EXPECT_EQ(Notice(), "");
    EXPECT_TRUE(BoxesAreBlack());
}

TEST_F(AgedReadings, OtherTextIsNoReading) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    clock.Advance(2500ms);
    SayLine("noise");
    EXPECT_EQ(Notice(), "NO READING FOR 2 s");
    SayLine("MESSAGE=VOLTAGE TOO HIGH!");
    EXPECT_EQ(Notice(), "NO READING FOR 2 s") << "the step is the same";
}

TEST_F(AgedReadings, AStepThatHasNoneYetIsNotSilent) {
    OpenFor(false);
    StartFullShot();
    Silence(1h);
    EXPECT_EQ(Notice(), "");
    EXPECT_TRUE(BoxesAreBlack());
    SayLine("I=0.0123 V=491.2");
    SayLine("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Silence(3s);
    EXPECT_EQ(Notice(), "");
    EXPECT_TRUE(BoxesAreGrey()) << "they are of the step before";
    SayLine("I=0.0011 V=50.0");
    EXPECT_TRUE(BoxesAreBlack());
    Silence(3s);
    EXPECT_EQ(Notice(), "NO READING FOR 3 s");
}

TEST_F(AgedReadings, WhatFollowsTheLoweringPromptAtOnceIsOfItsStep) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    SayLine("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...");
    Silence(3s);
    EXPECT_EQ(Notice(), "");
    SayLine("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...\r\nI=0.0123 V=480.0");
    Silence(3s);
    EXPECT_EQ(Notice(), "NO READING FOR 3 s");
}

TEST_F(AgedReadings, ARecordThatStopsIsSaid) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    SayLine("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    SayLine("I=0.0011 V=50.0");
    Say("DATA0000");
    Silence(1s);
    Say("0000");
    Silence(1500ms);
    EXPECT_EQ(Notice(), "");
    Silence(500ms);
    EXPECT_EQ(Notice(), "NO RECORD DATA FOR 2 s");
    EXPECT_TRUE(BoxesAreGrey());
    Say("0000");
    EXPECT_EQ(Notice(), "");
    Silence(5s);
    EXPECT_EQ(Notice(), "NO RECORD DATA FOR 5 s");
    Say(Digits().substr(16) + "\r\nDONE");
    EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
    EXPECT_EQ(Notice(), "");
}

TEST_F(AgedReadings, ARecordWithoutReadingsThatStopsIsSaid) {
    OpenFor(true);
    sequence.cmdStart_Click();
    Say("DATA0000\r\n");
    Silence(2s);
    EXPECT_EQ(Notice(), "NO RECORD DATA FOR 2 s") << "though every prompt was lost";
}

TEST_F(AgedReadings, NothingIsSaidOfACancelledShotAndTheNextBeginsAnew) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    Silence(3s);
    sequence.cmdCancel_Click();
    EXPECT_EQ(Notice(), "");
    Silence(3s);
    EXPECT_EQ(Notice(), "");
    sequence.cmdStart_Click();
    EXPECT_TRUE(BoxesAreBlack());
    Silence(1s);
    EXPECT_EQ(Notice(), "");
}

TEST_F(AgedReadings, CancelMakesThemGreyAtOnce) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    sequence.cmdCancel_Click();
    EXPECT_TRUE(BoxesAreGrey()) << "nobody looks any more whether they are of now";
    EXPECT_EQ(Screen().txtVolt.text, "491.2");
}

TEST_F(AgedReadings, TheEndOfTheShotMakesThemGreyAtOnce) {
    OpenFor(false);
    StartFullShot();
    SayLine("I=0.0123 V=491.2");
    EndShot();
    ASSERT_EQ(Screen().shotShown, 1);
    EXPECT_TRUE(BoxesAreGrey());
    EXPECT_EQ(Screen().txtVolt.text, "491.2");
}

TEST_F(AgedReadings, AShotOfWhichNothingComesIsSaidUntilItsFirstPrompt) {
    OpenFor(false);
    clock.Advance(1h);
    sequence.cmdStart_Click();
    TakeSent();
    Silence(1999ms);
    EXPECT_EQ(Notice(), "");
    Silence(1ms);
    EXPECT_EQ(Notice(), "NOTHING RECEIVED FOR 2 s");
    EXPECT_TRUE(Screen().noticeWarns);
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    EXPECT_TRUE(port.sent.empty());
    Say("MESSA");
    EXPECT_EQ(Notice(), "");
    Silence(5s);
    EXPECT_EQ(Notice(), "NOTHING RECEIVED FOR 5 s") << "there is no prompt yet";
    SayLine("GE=TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_EQ(Screen().lblMessage.text, "TURN VOLTAGE DRIVE TO ZERO...");
    Silence(1h);
    EXPECT_EQ(Notice(), "") << "the operator has his time for what the prompt asks";
}

}  // namespace
}  // namespace davo::test
