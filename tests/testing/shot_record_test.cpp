// SPDX-License-Identifier: GPL-3.0-or-later
// The record at the end of a shot: whole, in pieces, across blocks, damaged.

#include "tests/testing/sequence_rig.h"

#include "tests/support/testing.h"

namespace davo::test {
namespace {

class RecordTest : public testing::Test, public SequenceRig {
  protected:
    RecordTest() { OpenFor(false); }
};

TEST_F(RecordTest, RecordStartAndEnd) {
    StartFullShot();
    Say("DATA" + std::string(100, '1'));
    EXPECT_EQ(sequence.TestState(), 3);
    EXPECT_TRUE(sequence.Polling());
    Say("\r\n" + std::string(196, '1') + "\r\nDO");
    EXPECT_EQ(sequence.TestState(), 3);
    Say("NE");
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(Screen().lblTest, (ControlView{"TEST COMPLETE.", true, true}));
    EXPECT_EQ(Screen().lblMessage.text, "");
    EXPECT_TRUE(Screen().cmdExit.enabled);
    EXPECT_TRUE(Screen().cmdHeader.enabled);
    EXPECT_EQ(Screen().cmdContinue, (ControlView{"&Repeat Test", true, true}));
    EXPECT_EQ(Screen().cmdStart, (ControlView{"&Next Test", true, true}));
    EXPECT_FALSE(Screen().cmdCancel.enabled);
    EXPECT_FALSE(Screen().lblConfirm.visible);
    EXPECT_TRUE(sequence.ShotPending());
    EXPECT_FALSE(sequence.Polling());
    EXPECT_EQ(sequence.Reply().sessionPending, "");
    EXPECT_EQ(sequence.Reply().sessionWindow, "");
    EXPECT_FALSE(Screen().lblDamage.visible);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(RecordTest, DataAndDoneInOnePassCompleteTheShot) {
    StartFullShot();
    Say("RATIO=240.0\r\n" + RecordOf(Digits()) + "\r\n");
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(session.shotCount, 1);
    EXPECT_EQ(sequence.ShotTrailer().substr(0, 320).find(RecordOf(Digits())), 0U);
}

// The window shows what the record and its workbook can hold.
TEST_F(RecordTest, ControlCharactersOfARatioBecomeQuestionMarks) {
    StartFullShot();
    Say("RATIO=24\x01"
        "0.\x1b\r\n" +
        RecordOf(Digits()) + "\r\n");
    EXPECT_EQ(Screen().txtRatio.text, "24?0.?");
    EXPECT_NE(sequence.ShotTrailer().find("MEASURED RATIO: 24?0.?\r\n"), std::string::npos);
}

TEST_F(RecordTest, ARatioThatIsNoPlainNumberIsSaidOnTheWindow) {
    OpenFor(true);
    const auto said = [this](const std::string& ratio) {
        RunRatioShot(ratio);
        EXPECT_EQ(Screen().lblDamage.visible, !Screen().lblDamage.text.empty());
        return Screen().lblDamage.text;
    };
    const auto notice = [](const std::string& ratio) {
        return "The ratio of this shot is no plain number: \"" + ratio +
               "\". Press Repeat Test to drop the shot and run it again.";
    };
    EXPECT_EQ(said("24\x01"
                   "0.1"),
              notice("24?0.1"));
    EXPECT_EQ(said("24\xff"
                   "0.1"),
              notice("24\xff"
                     "0.1"));
    for (const char* odd : {"x40.1", "2x40.1", "240.1.5", "240.1:", "2 40.1"})
        EXPECT_EQ(said(odd), notice(odd));
    EXPECT_EQ(said("x" + std::string(23, '1')), notice("x" + std::string(23, '1')));
    EXPECT_EQ(said("x" + std::string(40, '1')), notice("x" + std::string(23, '1') + "..."));
    for (const char* plain : {"240.1", " 240.1 ", "240.7:1", "0", "", "\r240.1"})
        EXPECT_EQ(said(plain), "") << plain;
    EXPECT_TRUE(prompts.shown.empty()) << "no box";
    sequence.cmdContinue_Click();
    RunRatioShot("x1", Digits().substr(1));
    EXPECT_THAT(Screen().lblDamage.text, HasSubstr("295 of 296 digits"));
    EXPECT_THAT(Screen().lblDamage.text, EndsWith("\r\n" + notice("x1")));
    sequence.cmdContinue_Click();
    EXPECT_FALSE(Screen().lblDamage.visible);
}

TEST_F(RecordTest, ARecordWithoutAnyLineEndCompletesTheShot) {
    StartFullShot();
    Say("DATA" + Digits() + "DONE");
    EXPECT_EQ(sequence.TestState(), 99);
}

TEST_F(RecordTest, TheSaturationTestIsOverWithTheShot) {
    StartFullShot();
    EXPECT_TRUE(sequence.Saturating());
    Say(RecordOf(Digits()));
    ASSERT_EQ(sequence.TestState(), 99);
    EXPECT_FALSE(sequence.Saturating());
}

TEST_F(RecordTest, DoneWithoutDataDoesNotCompleteAShot) {
    StartFullShot();
    SayLine("DONE");
    EXPECT_EQ(sequence.TestState(), 2);
    EXPECT_TRUE(sequence.Polling());
    EXPECT_EQ(session.shotCount, 0);
}

TEST_F(RecordTest, DoneBeforeDataDoesNotCompleteAShot) {
    StartFullShot();
    SayLine("DONE");
    Say("DONE\r\nDATA" + Digits());
    EXPECT_EQ(sequence.TestState(), 3);
    Say("DONE");
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(sequence.ShotTrailer().find("DATA" + Digits() + "DONE\r\n"), 0U);
}

TEST_F(RecordTest, AReadingAndARecordInOneBurstCostNoShot) {
    const std::string record = RecordOf(Digits());
    for (std::size_t cut = 0; cut <= record.size(); ++cut) {
        SequenceRig rig;
        rig.OpenFor(false);
        rig.StartFullShot();
        rig.Say("I=0.1 V=1.0\r\n" + record.substr(0, cut));
        rig.Say(record.substr(cut));
        EXPECT_EQ(rig.sequence.TestState(), 99) << cut;
        EXPECT_EQ(rig.sequence.ShotTrailer().find(record), 0U) << cut;
    }
}

TEST_F(RecordTest, ARecordCutByABlockIsKept) {
    const std::string record = RecordOf(Digits());
    for (std::size_t before = 700; before <= 1030; ++before) {
        SequenceRig rig;
        rig.OpenFor(false);
        rig.StartFullShot();
        rig.Say(std::string(before - 2, 'x') + "\r\n" + record + "\r\n");
        EXPECT_EQ(rig.sequence.TestState(), 99) << before;
    }
}

// As long as a block, and a character too late for the first one.
TEST_F(RecordTest, ARecordThatFillsABlockIsKept) {
    StartFullShot();
    const std::string record = "DATA" + std::string(kSessionBlock - 10, '0') + "\r\nDONE";
    Say("x" + record);
    EXPECT_EQ(sequence.TestState(), 99);
    EXPECT_EQ(sequence.ShotTrailer().find(record + "\r\n"), 0U);
}

TEST_F(RecordTest, ALineCutByABlockIsKept) {
    for (std::size_t before = 1000; before <= 1030; ++before) {
        SequenceRig rig;
        rig.OpenFor(false);
        rig.StartFullShot();
        rig.Say(std::string(before - 2, 'x') + "\r\nRATIO=241.2\r\nPOLARITY=+\r\n");
        EXPECT_EQ(rig.Screen().txtRatio.text, "241.2") << before;
        EXPECT_EQ(rig.Screen().txtPolarity.text, "IN PHASE") << before;
    }
}

TEST_F(RecordTest, AnEndlessRecordDoesNotHoldTheWindow) {
    StartFullShot();
    Say("DATA" + std::string(5000, '0'));
    EXPECT_EQ(sequence.TestState(), 3);
    sequence.cmdCancel_Click();
    EXPECT_TRUE(Screen().cmdExit.enabled);
}

TEST_F(RecordTest, DamageIsShownOnce) {
    RunFullShot("240.0", std::string(290, '0'));
    const std::string text =
        "The record of this shot is damaged: 290 of 296 digits. Press Repeat Test to drop the shot "
        "and run it again.";
    EXPECT_EQ(Screen().lblDamage, (ControlView{text, true, true}));
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_EQ(prompts.shown[0].toStdString(), text);
    EXPECT_EQ(session.shotCount, 1) << "the shot is complete all the same";
    EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
    sequence.cmdContinue_Click();
    EXPECT_EQ(Screen().lblDamage, (ControlView{"", true, false}));
}

TEST_F(RecordTest, DamageIsHiddenWhenTheNextShotStarts) {
    RunFullShot("240.0", std::string(295, '0') + "?");
    EXPECT_TRUE(Screen().lblDamage.visible);
    prompts.answers = {Answer::No};
    sequence.cmdStart_Click();
    EXPECT_EQ(Screen().lblDamage, (ControlView{"", true, false}));
}

}  // namespace
}  // namespace davo::test
