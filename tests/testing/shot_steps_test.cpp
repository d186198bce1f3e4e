// SPDX-License-Identifier: GPL-3.0-or-later
// What each line of the instrument does, the states, and lines that arrive in pieces.

#include "testing/session_text.h"
#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

const std::string kZero = "MESSAGE=TURN VOLTAGE DRIVE TO ZERO...";
const std::string kRange = "MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH";
const std::string kSaturate = "MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)";
const std::string kSlow = "MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...";
const std::string kRatio = "MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)";
const std::string kSlowShown = "S-L-O-W-L-Y LOWER THE CURRENT NOW...";
const std::string kRatioShown = "SET VOLTAGE FROM 5V TO 100V MAX";

class StepsTest : public testing::Test, public SequenceRig {
  protected:
    StepsTest() {
        OpenFor(false);
        sequence.OnFocus = [this](const char* control) { focused.emplace_back(control); };
        sequence.OnShow = [this] { ++shows; };
        sequence.OnReadings = [this](std::string_view window) {
            for (const Reading& reading : CompleteReadings(window))
                readings +=
                    "[" + std::string(reading.current) + "|" + std::string(reading.voltage) + "]";
        };
    }
    void StartRatioOnly() {
        modes = {false, true, true};
        sequence.cmdStart_Click();
    }
    const std::string& Message() { return Screen().lblMessage.text; }
    int State() const { return sequence.TestState(); }

    std::vector<std::string> focused;
    int shows = 0;
    std::string readings;
};

TEST_F(StepsTest, DriveToZeroOfAFullTest) {
    sequence.cmdStart_Click();
    Screen().cmdContinue.enabled = true;
    Screen().lblConfirm.visible = true;
    SayLine(kZero);
    EXPECT_EQ(State(), 0);
    EXPECT_EQ(Message(), "TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_FALSE(Screen().cmdStart.enabled);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().lblConfirm.visible);
    // Only the range switch prompt is awaited now, and it needs no line end.
    SayLine("I=0.1 V=2.0");
    EXPECT_EQ(Screen().txtCur.text, "");
    Say("SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_EQ(State(), 1);
}

TEST_F(StepsTest, DriveToZeroOfARatioOnlyTest) {
    StartRatioOnly();
    SayLine(kZero);
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(Message(), "TURN VOLTAGE DRIVE TO ZERO...");
    SayLine("I=0.1 V=2.0");
    EXPECT_EQ(Screen().txtCur.text, "") << "only the ratio prompt is awaited";
    Say(kRatio);
    EXPECT_EQ(Message(), kRatioShown);
}

TEST_F(StepsTest, ARatioOnlyShotNeverShowsTheRangeSwitchPrompt) {
    StartRatioOnly();
    for (const std::string& line : {kZero, kRange, kRatio, kRange, std::string("RATIO=1.0")}) {
        SayLine(line);
        EXPECT_NE(Message(), "SET THE VOLTAGE RANGE SELECTOR SWITCH") << line;
    }
}

TEST_F(StepsTest, RangeSwitchAsksForAConfirmation) {
    sequence.cmdStart_Click();
    SayLine(kZero);
    SayLine(kRange);
    EXPECT_EQ(State(), 1);
    EXPECT_EQ(Message(), "SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_TRUE(Screen().lblConfirm.visible);
    EXPECT_EQ(Screen().lblConfirm.text, "Click <&OK> to Continue");
    EXPECT_EQ(Screen().cmdContinue.text, "&OK");
    EXPECT_TRUE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().cmdStart.enabled);
    EXPECT_EQ(focused, std::vector<std::string>{"cmdContinue"});
    EXPECT_TRUE(sequence.Polling());
}

TEST_F(StepsTest, RangeSwitchWithCaptionOkOnlyMovesOn) {
    sequence.cmdStart_Click();
    SayLine(kZero);
    Screen().cmdContinue.text = "&OK";
    SayLine(kRange);
    EXPECT_EQ(State(), 1);
    EXPECT_EQ(Message(), "TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    SayLine(kSaturate);
    EXPECT_EQ(State(), 2) << "lines are awaited again";
}

TEST_F(StepsTest, SaturationShowsItsBracket) {
    StartFullShot();
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(Message(), "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_EQ(Screen().lblTest, (ControlView{"SATURATION TEST", true, true}));
    EXPECT_FALSE(Screen().lblConfirm.visible);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    EXPECT_TRUE(sequence.Saturating());
    SayLine(kRatio);
    EXPECT_FALSE(sequence.Saturating());
}

TEST_F(StepsTest, WhatNobodyConfirmedIsNotAnswered) {
    sequence.cmdStart_Click();
    SayLine(kRange);
    TakeSent();
    SayLine(kSaturate);
    EXPECT_TRUE(TakeSent().empty());
    EXPECT_TRUE(Screen().cmdCancel.enabled);
}

TEST_F(StepsTest, SaturationWaitsForItsWholeLine) {
    sequence.cmdStart_Click();
    SayLine(kZero);
    SayLine(kRange);
    Confirm();
    Say("X\r\nMESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX");
    EXPECT_EQ(State(), 1);
    Say(" 1000V)\r\n");
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(Message(), "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
}

TEST_F(StepsTest, SaturationDoesNothingOutOfItsState) {
    sequence.cmdStart_Click();
    SayLine(kSaturate);
    EXPECT_EQ(State(), 0);
    EXPECT_EQ(Message(), "");
}

TEST_F(StepsTest, AConfirmationGivenWhileRunningAnswersTheNextSaturationPrompt) {
    StartFullShot();
    Confirm();  // in testState 2
    EndShot();
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    SayLine(kZero);
    SayLine(kRange);
    TakeSent();
    SayLine(kSaturate);
    EXPECT_EQ(TakeSent(), std::vector<std::string>{"\r"});
    EXPECT_FALSE(Screen().cmdCancel.enabled);
    SayLine("I=0.1 V=1.0");
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    // It is used up then.
    EndShot();
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    SayLine(kRange);
    TakeSent();
    SayLine(kSaturate);
    EXPECT_TRUE(TakeSent().empty());
}

TEST_F(StepsTest, AConfirmationOfTheRangeSwitchTakesThatBack) {
    StartFullShot();
    Confirm();
    EndShot();
    prompts.answers = {Answer::No};
    TakeSent();
    StartFullShot();
    EXPECT_EQ(TakeSent(), (std::vector<std::string>{"T", "\r"})) << "one CR: the range switch";
    EXPECT_TRUE(Screen().cmdCancel.enabled);
}

TEST_F(StepsTest, RatioTestStart) {
    StartFullShot();
    const int before = shows;
    SayLine(kRatio);
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(Screen().lblTest.text, "RATIO TEST");
    EXPECT_EQ(Message(), kRatioShown);
    EXPECT_TRUE(Screen().lblConfirm.visible);
    EXPECT_TRUE(Screen().cmdContinue.enabled);
    EXPECT_EQ(Screen().cmdContinue.text, "&OK");
    EXPECT_EQ(focused.back(), "cmdContinue");
    EXPECT_EQ(shows, before + 1);
    EXPECT_TRUE(sequence.Beeping());
}

TEST_F(StepsTest, AReadingRightBehindTheRatioPromptIsShown) {
    StartFullShot();
    SayLine(kRatio + "I=0.1 V=50.0");
    EXPECT_EQ(Message(), kRatioShown);
    EXPECT_EQ(Screen().txtVolt.text, "50.0");
}

TEST_F(StepsTest, RatioPromptBeepsTwiceHoweverTheLineIsCut) {
    StartFullShot();
    Say("\r\n" + kRatio);
    const int before = beeps;
    for (int i = 0; i < 5; ++i) {
        sequence.timBeep_Timer();
        sequence.Timer1_Timer();
        Say(i == 0 ? "\r\n" : "x\r\n");
    }
    EXPECT_EQ(beeps, before + 2);
    EXPECT_FALSE(sequence.Beeping());
    Confirm();  // an act does not bring the prompt back
    EXPECT_FALSE(sequence.Beeping());
    SayLine(kRatio);
    EXPECT_TRUE(sequence.Beeping());
    sequence.timBeep_Timer();
    EXPECT_TRUE(sequence.Beeping()) << "the count starts anew with the prompt";
}

TEST_F(StepsTest, RatioTestStartDisablesCmdStartInRatioOnlyMode) {
    StartRatioOnly();
    Screen().cmdStart.enabled = true;
    SayLine(kRatio);
    EXPECT_FALSE(Screen().cmdStart.enabled);
    EXPECT_EQ(State(), 0) << "the message does not change the state";
    const int before = shows;
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(shows, before + 1) << "readings are painted from the prompt on";
}

TEST_F(StepsTest, Reading) {
    StartFullShot();
    Screen().txtCur.enabled = Screen().txtVolt.enabled = false;
    SayLine("I=0.0123 V=152.4");
    EXPECT_EQ(Screen().txtCur, (ControlView{"0.0123", true, true}));
    EXPECT_EQ(Screen().txtVolt, (ControlView{"152.4", true, true}));
    SayLine("I=0.012345 V=1.0");
    EXPECT_EQ(Screen().txtCur.text, "0.0123");
    EXPECT_EQ(Screen().txtVolt.text, "1.0");
    EXPECT_EQ(readings, "[0.0123|152.4][0.012345|1.0]");
}

TEST_F(StepsTest, ReadingsOpenAConfirmationOnce) {
    StartFullShot();
    focused.clear();
    const int before = shows;
    SayLine("I=0.1 V=1.0");
    EXPECT_TRUE(Screen().cmdContinue.enabled);
    EXPECT_TRUE(Screen().lblConfirm.visible);
    EXPECT_EQ(focused.size(), 1U);
    SayLine("I=0.2 V=2.0");
    EXPECT_EQ(focused.size(), 1U) << "the operator may type a nameplate current meanwhile";
    EXPECT_EQ(shows, before + 2);
    EXPECT_TRUE(sequence.Polling());
    Screen().lblConfirm.visible = false;
    SayLine("I=0.3 V=3.0");
    EXPECT_EQ(focused.size(), 2U);
}

TEST_F(StepsTest, ReadingsActInAnyState) {
    sequence.cmdStart_Click();
    Screen().cmdCancel.enabled = false;
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(State(), 0);
    EXPECT_EQ(Screen().txtVolt.text, "1.0");
    EXPECT_TRUE(Screen().cmdCancel.enabled);
    EXPECT_FALSE(Screen().lblConfirm.visible) << "nothing to confirm yet";
}

TEST_F(StepsTest, APartOfAReadingLetsTheTestBeCancelled) {
    for (const char* part : {"I=0.1", "V=1.0"}) {
        sequence.cmdStart_Click();
        Screen().cmdCancel.enabled = false;
        SayLine(part);
        EXPECT_TRUE(Screen().cmdCancel.enabled) << part;
        EXPECT_EQ(Screen().txtVolt.text, "") << part;
    }
}

TEST_F(StepsTest, BeforeItRunsEveryReadingOfAFloodIsThere) {
    sequence.cmdStart_Click();
    std::string flood;
    std::string wanted;
    for (int i = 100; i < 400; ++i) {
        flood += "I=0.012 V=" + std::to_string(i) + "\r\n";
        wanted += "[0.012|" + std::to_string(i) + "]";
    }
    static_assert(kSessionBlock % 15 != 0, "blocks cut readings");
    Say(flood);
    EXPECT_EQ(readings, wanted);
}

TEST_F(StepsTest, AReadingCutOffIsLeftForTheNextPass) {
    sequence.cmdStart_Click();
    Say("X\r\nI=0.1 V=1");
    EXPECT_EQ(Screen().txtCur.text, "");
    EXPECT_TRUE(sequence.Polling());
    Say("52.4\r\n");
    EXPECT_EQ(Screen().txtVolt.text, "152.4");
}

TEST_F(StepsTest, AReadingCutOffWhileRunningIsNotShown) {
    StartFullShot();
    Say("X\r\nI=0.1 V=1");
    Say("52.4\r\n");
    EXPECT_EQ(Screen().txtCur.text, "");
    EXPECT_EQ(Screen().txtVolt.text, "");
    SayLine("I=0.2 V=2.0");
    EXPECT_EQ(readings, "[0.2|2.0]");
}

TEST_F(StepsTest, WhatComesWithACutReadingIsNotLost) {
    StartFullShot();
    SayLine(kRatio);
    Say("X\r\nI=0.1 V=1");
    Say("52.4 V=1\r\nRATIO=24");
    Say("1.2\r\n23 V=3.0\r\nPOLARITY=-\r\nI");
    EXPECT_EQ(Screen().txtRatio.text, "241.2");
    EXPECT_EQ(Screen().txtPolarity.text, "OUT OF PHASE");
}

TEST_F(StepsTest, SlowLowering) {
    StartFullShot();
    SayLine("I=0.1 V=1.0");
    SayLine(kSlow);
    EXPECT_EQ(Message(), kSlowShown);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().lblConfirm.visible);
    SayLine("I=0.05 V=0.5");
    EXPECT_FALSE(Screen().cmdContinue.enabled) << "readings ask for nothing now";
    EXPECT_EQ(State(), 2);
}

TEST_F(StepsTest, SlowLoweringCutBehindAReading) {
    StartFullShot();
    Say("I=0.1 V=1.0\r\nMESSAGE=S-L-O");
    Say("-W-L-Y LOWER CURRENT NOW...\r\n");
    EXPECT_EQ(Message(), kSlowShown);
}

TEST_F(StepsTest, SecondShotAsksForSlowLoweringAfterTwoConfirmations) {
    StartFullShot();
    Confirm();
    SayLine("I=0.1 V=1.0");
    EXPECT_NE(Message(), kSlowShown) << "not in the first shot";
    EndShot();
    prompts.answers = {Answer::No};
    StartFullShot();
    SayLine("I=0.1 V=1.0");
    EXPECT_NE(Message(), kSlowShown) << "one confirmation so far";
    Confirm();
    SayLine("I=0.2 V=2.0");
    EXPECT_EQ(Message(), kSlowShown);
    EXPECT_FALSE(Screen().cmdContinue.enabled);
    EXPECT_FALSE(Screen().lblConfirm.visible);
    Screen().lblMessage.text = "other";
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(Message(), "other") << "once per shot";
}

TEST_F(StepsTest, TheInstrumentsOwnSlowLoweringLeavesTheSecondShotsToCome) {
    RunFullShot();
    prompts.answers = {Answer::No};
    StartFullShot();
    SayLine("I=0.1 V=1.0");
    Confirm();
    SayLine(kSlow);
    Screen().lblMessage.text = "other";
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(Message(), kSlowShown);
}

TEST_F(StepsTest, ConfirmationsOfEarlierShotsDoNotCountForSlowLowering) {
    modes = {false, true, true};
    for (int shot = 1; shot <= 2; ++shot) {
        sequence.cmdStart_Click();
        SayLine(kZero);
        SayLine(kRatio);
        Confirm();
        SayLine("I=0.1 V=1.0");
        EXPECT_EQ(Message(), kRatioShown) << shot;
        SayLine(RecordOf(Digits()));
    }
}

TEST_F(StepsTest, SlowLoweringDoesNotTakeThePlaceOfTheRatioPrompt) {
    for (const bool burst : {false, true}) {
        SequenceRig rig;
        rig.OpenFor(false);
        rig.RunFullShot();
        rig.prompts.answers = {Answer::No};
        rig.StartFullShot();
        rig.SayLine("I=0.1 V=1.0");
        rig.Confirm();
        std::string text = kSlow + "\r\n";
        if (!burst) rig.Say(std::exchange(text, {}));
        text += kRatio;
        rig.SayLine(text + "\r\nI=0.1 V=1.0");
        EXPECT_EQ(rig.Screen().lblMessage.text, kRatioShown) << burst;
        EXPECT_TRUE(rig.Screen().cmdContinue.enabled) << burst;
    }
}

TEST_F(StepsTest, HittingTheRangeSwitchConfirmationTwiceCountsOnce) {
    RunFullShot();
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    SayLine(kRange);
    Confirm();
    Confirm();
    EXPECT_EQ(Screen().lblCRCount.text, "(3)") << "one of the first shot";
    SayLine(kSaturate);
    SayLine("I=0.1 V=1.0");
    EXPECT_EQ(Message(), "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_TRUE(Screen().cmdContinue.enabled);
}

TEST_F(StepsTest, RatioLineMovesThePromptOn) {
    StartFullShot();
    SayLine("RATIO=240.1");
    EXPECT_EQ(Message(), kRatioShown);
    EXPECT_EQ(Screen().lblTest.text, "RATIO TEST");
    EXPECT_TRUE(sequence.Beeping());
    EXPECT_TRUE(Screen().lblConfirm.visible);
    EXPECT_EQ(Screen().cmdContinue, (ControlView{"&OK", true, true}));
    EXPECT_EQ(focused.back(), "cmdContinue");
    sequence.timBeep_Timer();
    sequence.timBeep_Timer();
    SayLine("POLARITY=+");
    EXPECT_FALSE(sequence.Beeping()) << "the prompt is shown already";
}

TEST_F(StepsTest, PolarityLineMovesThePromptOn) {
    StartFullShot();
    SayLine("POLARITY=+");
    EXPECT_EQ(Message(), kRatioShown);
}

TEST_F(StepsTest, RatioCutBehindAReadingIsNotLost) {
    StartFullShot();
    Say("I=0.1 V=1.0\r\nRATIO=24");
    EXPECT_EQ(Screen().txtRatio.text, "");
    Say("1.2\r\n");
    EXPECT_EQ(Screen().txtRatio.text, "241.2");
}

TEST_F(StepsTest, OverVoltage) {
    StartFullShot();
    SayLine("MESSAGE=VOLTAGE TOO HIGH!");
    EXPECT_EQ(Message(), "VOLTAGE TOO HIGH! TURN VOLTAGE DOWN!");
    EXPECT_TRUE(Screen().messageWarns);
    EXPECT_EQ(State(), 2);
    EXPECT_TRUE(sequence.Polling()) << "the test goes on";
}

TEST_F(StepsTest, MessagesActInAnyStateAndDoNotChangeIt) {
    for (const bool confirmed : {false, true}) {
        sequence.cmdStart_Click();
        if (confirmed) SayLine(kRange);
        const int before = State();
        for (const std::string& line :
             {kRatio, kSlow, std::string("RATIO=1.0"), std::string("POLARITY=+"),
              std::string("I=1 V=1"), std::string("MESSAGE=VOLTAGE TOO HIGH!")}) {
            Screen().lblMessage.text = "none";
            Screen().txtCur.text.clear();
            SayLine(line);
            EXPECT_EQ(State(), before) << line;
            EXPECT_TRUE(Message() != "none" || !Screen().txtCur.text.empty()) << line;
        }
    }
}

}  // namespace
}  // namespace davo::test
