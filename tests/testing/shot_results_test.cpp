// SPDX-License-Identifier: GPL-3.0-or-later
// Ratio, percent error, polarity, counters and the capture block.

#include "testing/shot_results.h"

#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

class ResultsTest : public testing::Test, public SequenceRig {
  protected:
    ResultsTest() { OpenFor(false); }
    void Nameplate(const std::string& h, const std::string& x) {
        Screen().txtHVolt.text = h;
        Screen().txtXVolt.text = x;
        sequence.txtHVolt_LostFocus();
        sequence.txtXVolt_LostFocus();
    }
    std::string ErrorOf(const std::string& measured) {
        Screen().txtRatio.text = measured;
        sequence.txtXVolt_LostFocus();
        return Screen().txtPE.text;
    }
};

TEST_F(ResultsTest, CalculatedRatioAndPercentError) {
    Nameplate("1200", "5");
    EXPECT_EQ(Screen().txtCRatio.text, "240");
    EXPECT_TRUE(Screen().lblCRatio.enabled);
    EXPECT_FALSE(Screen().lblPE.enabled);
    EXPECT_EQ(Screen().txtPE.text, "");
    EXPECT_EQ(ErrorOf("241.2"), "0.50");
    EXPECT_TRUE(Screen().lblPE.enabled);
    EXPECT_EQ(ErrorOf("238.8"), "0.50");
    EXPECT_EQ(ErrorOf(" 240.0 "), "0.00");
    EXPECT_EQ(ErrorOf("0"), "100.00");
}

TEST_F(ResultsTest, CalculatedRatioIsRoundedToThreeDecimals) {
    Nameplate("1000", "3");
    EXPECT_EQ(Screen().txtCRatio.text, "333.333");
    Nameplate("240", "5");
    EXPECT_EQ(Screen().txtCRatio.text, "48");
    Nameplate(" 1 ", " 8 ");
    EXPECT_EQ(Screen().txtCRatio.text, "0.125");
    Nameplate("2.0005", "1");
    EXPECT_EQ(Screen().txtCRatio.text, "2.001");
}

TEST_F(ResultsTest, XOfZeroOrBelowLeavesBothEmpty) {
    for (const char* x : {"0", "-5", "0.0"}) {
        Nameplate("1200", "5");
        ASSERT_EQ(ErrorOf("241.2"), "0.50");
        Nameplate("1200", x);
        EXPECT_EQ(Screen().txtCRatio.text, "") << x;
        EXPECT_EQ(Screen().txtPE.text, "") << x;
    }
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(ResultsTest, WhatCannotBeComputedIsEmptyAndNeverAnError) {
    for (const auto& [h, x] : std::vector<std::pair<std::string, std::string>>{{"", "5"},
                                                                               {"1200", ""},
                                                                               {"  ", "  "},
                                                                               {"abc", "5"},
                                                                               {"1200", "5A"},
                                                                               {"1,200", "5"},
                                                                               {"1e308", "1e-300"},
                                                                               {"1e999", "5"}}) {
        Nameplate("1200", "5");
        ASSERT_EQ(ErrorOf("241.2"), "0.50");
        Nameplate(h, x);
        EXPECT_EQ(Screen().txtCRatio.text, "") << h << ":" << x;
        EXPECT_EQ(Screen().txtPE.text, "") << h << ":" << x;
    }
}

TEST_F(ResultsTest, NameplateRatioOfZeroShowsAnEmptyPercentError) {
    Screen().txtRatio.text = "241.2";
    Nameplate("0", "5");
    EXPECT_EQ(Screen().txtCRatio.text, "0");
    EXPECT_EQ(Screen().txtPE.text, "");
    EXPECT_FALSE(Screen().lblPE.enabled);
}

TEST_F(ResultsTest, PercentErrorTakesTheNumberThatTheMeasuredRatioBeginsWith) {
    Nameplate("1200", "5");
    for (const char* ratio : {"241.2:1", " 241.2:1 ", "241.2 : 1", "241.2/1", "241.2 TO 1"})
        EXPECT_EQ(ErrorOf(ratio), "0.50") << ratio;
    RunFullShot("240.7:1");
    EXPECT_EQ(Screen().txtRatio.text, "240.7:1");
    EXPECT_EQ(Screen().txtPE.text, "0.29");
    EXPECT_THAT(sequence.ShotTrailer(),
                HasSubstr("MEASURED RATIO: 240.7:1\r\nNAMEPLATE RATIO: 240 (1200:5)\r\n"
                          "PERCENT ERROR: 0.29%\r\n"));
    // What an operator types is a number as a whole.
    for (const auto& [h, x] : {std::pair("1200:1", "5"), std::pair("1200", "5:1")}) {
        Nameplate(h, x);
        EXPECT_EQ(Screen().txtCRatio.text, "");
        EXPECT_EQ(Screen().txtPE.text, "");
    }
}

TEST_F(ResultsTest, MeasuredRatioThatIsNoNumberShowsAnEmptyPercentError) {
    Nameplate("1200", "5");
    for (const char* none : {"?24.1", ":1", "N/A", "-", "1e999:1"})
        EXPECT_EQ(ErrorOf(none), "") << none;
    Nameplate("1", "100");
    EXPECT_EQ(ErrorOf("1e308"), "") << "the percentage would overflow";
    Screen().txtCRatio.text = "typed";
    RunFullShot("241.2");
    EXPECT_EQ(Screen().txtPE.text, "");
}

TEST(ComputePercentErrorTest, LeavesTheErrorWhileARatioIsEmpty) {
    for (const auto& [measured, nameplate] : {std::pair("", "240"), std::pair("241.2", "")}) {
        ShotScreen screen;
        screen.txtRatio.text = measured;
        screen.txtCRatio.text = nameplate;
        screen.txtPE.text = "0.50";
        ComputePercentError(screen);
        EXPECT_EQ(screen.txtPE.text, "0.50");
    }
}

TEST_F(ResultsTest, PolarityCharacters) {
    sequence.cmdStart_Click();
    Screen().txtPolarity.text = "before";
    Say("POLARITY=?\r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "before");
    Say("POLARITY=+\r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "IN PHASE");
    Say("POLARITY=-\r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "OUT OF PHASE");
    Say("POLARITY= \r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "UNDETERMINED");
    Say("POLARITY=x\r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "UNDETERMINED");
}

TEST_F(ResultsTest, PolarityWaitsForACharacterThatIsNotThereYet) {
    sequence.cmdStart_Click();
    Say("RATIO=1\r\nPOLARITY=");
    EXPECT_EQ(Screen().txtPolarity.text, "");
    Say("-\r\n");
    EXPECT_EQ(Screen().txtPolarity.text, "OUT OF PHASE");
}

TEST_F(ResultsTest, RatioIsShownAsReceivedOnceItsLineIsWhole) {
    sequence.cmdStart_Click();
    Say("MESSAGE=X\r\nRATIO= 24");
    EXPECT_EQ(Screen().txtRatio.text, "");
    Say("1.20 ");
    EXPECT_EQ(Screen().txtRatio.text, "");
    Say("\r\n");
    EXPECT_EQ(Screen().txtRatio.text, " 241.20 ");
}

TEST_F(ResultsTest, PercentErrorOfAShotIsComputedWhenItCompletes) {
    StartFullShot();
    Screen().txtHVolt.text = "1200";
    Screen().txtXVolt.text = "5";
    Screen().txtCRatio.text = "240";
    Screen().txtPE.text = "";
    EndShot("241.2");
    EXPECT_EQ(Screen().txtPE.text, "0.50");
    EXPECT_TRUE(Screen().lblPE.enabled);
    EXPECT_TRUE(sequence.ShotPending());
}

TEST_F(ResultsTest, CountersOfAFullShot) {
    RunFullShot();
    EXPECT_EQ(session.shotCount, 1);
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 1");
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 1");
    EXPECT_EQ(Screen().lblCRCount.text, "(1)");
}

TEST_F(ResultsTest, RatioOnlyLeavesTheSaturationCount) {
    RunFullShot();
    prompts.answers = {Answer::Yes};
    RunRatioShot();
    EXPECT_EQ(session.shotCount, 2);
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 1");
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 2");
    sequence.cmdContinue_Click();  // repeat
    EXPECT_EQ(session.shotCount, 1);
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 1");
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 1");
    prompts.answers = {Answer::No};
    RunFullShot();
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 2");
}

TEST_F(ResultsTest, RepeatTakesBackAllCountsAndTheShotNeverReachesTheFile) {
    RunFullShot("111.1");
    sequence.cmdContinue_Click();
    EXPECT_EQ(session.shotCount, 0);
    EXPECT_EQ(Screen().lblSatCount.text, "Sat. - 0");
    EXPECT_EQ(Screen().lblRatioCount.text, "Ratio - 0");
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_EQ(Journal().pendingShot, "");
    sequence.WriteShotTrailer();
    EXPECT_EQ(CaptureBytes(), "");
}

TEST_F(ResultsTest, CountsBeyondSixteenBitsAreAnError) {
    session.shotCount = 32767;
    StartFullShot();
    EXPECT_THROW(EndShot(), RunTimeError);
}

TEST_F(ResultsTest, BlockOfAShotWithNameplate) {
    RunFullShot("241.2");
    Nameplate(" 1200 ", " 5 ");
    const std::string block = RecordOf(Digits()) +
                              "\r\nMEASURED RATIO: 241.2\r\nNAMEPLATE RATIO: 240 (1200:5)\r\n"
                              "PERCENT ERROR: 0.50%\r\n\r\n";
    EXPECT_EQ(sequence.ShotTrailer(), block);
    EXPECT_EQ(Journal().pendingShot, block) << "the nameplate belongs to the shot";
    sequence.WriteShotTrailer();
    EXPECT_EQ(CaptureBytes(), block);
    EXPECT_FALSE(sequence.ShotPending());
    EXPECT_EQ(Journal().pendingShot, "");
    EXPECT_EQ(Journal().shotsInCapture, 1);
}

TEST_F(ResultsTest, BlockOfAShotWithoutNameplate) {
    const std::string tail = "\r\nNAMEPLATE RATIO: N/A\r\nPERCENT ERROR: N/A\r\n\r\n";
    RunFullShot("241.2");
    EXPECT_EQ(sequence.ShotTrailer(), RecordOf(Digits()) + "\r\nMEASURED RATIO: 241.2" + tail);
    for (ControlView* missing :
         {&Screen().txtHVolt, &Screen().txtXVolt, &Screen().txtCRatio, &Screen().txtPE}) {
        Nameplate("1200", "5");
        missing->text = "  ";
        EXPECT_EQ(sequence.ShotTrailer(), RecordOf(Digits()) + "\r\nMEASURED RATIO: 241.2" + tail);
    }
    Screen().txtRatio.text = "";
    EXPECT_EQ(sequence.ShotTrailer(), RecordOf(Digits()) + "\r\nMEASURED RATIO: " + tail);
}

TEST_F(ResultsTest, LineEndThatNoisePutIntoTheRatioDoesNotShiftTheLinesBehindIt) {
    RunFullShot("24\n1.\r2");
    EXPECT_EQ(Screen().txtRatio.text, "24\n1.\r2");
    EXPECT_EQ(sequence.ShotTrailer(), RecordOf(Digits()) +
                                          "\r\nMEASURED RATIO: 241.2\r\nNAMEPLATE RATIO: N/A\r\n"
                                          "PERCENT ERROR: N/A\r\n\r\n");
}

}  // namespace
}  // namespace davo::test
