// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/session_text.h"

#include "tests/support/testing.h"

namespace davo::test {
namespace {

using testing::Optional;

struct CutCase {
    const char* name;
    const char* text;
    bool keepReading;
    const char* unfinished;
};

class UnfinishedTest : public testing::TestWithParam<CutCase> {};

TEST_P(UnfinishedTest, KeepsWhatHasNotBeenExamined) {
    const std::string_view text = GetParam().text;
    EXPECT_EQ(text.substr(UnfinishedFrom(text, GetParam().keepReading)), GetParam().unfinished);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnfinishedTest,
    testing::Values(
        CutCase{"Nothing", "", true, ""}, CutCase{"WholeLines", "RATIO=1\r\nABC\r\n", false, ""},
        CutCase{"CutRatio", "I=1 V=2\r\nRATIO=24", false, "RATIO=24"},
        CutCase{"CutMessage", "I=1 V=2\r\nMESSAGE=S-L-O", false, "MESSAGE=S-L-O"},
        CutCase{"CutLineEnd", "I=1 V=2\r\nRATIO=24\r", false, "RATIO=24\r"},
        CutCase{"ReadingDropped", "RATIO=1\r\nI=0.01 V=1", false, ""},
        CutCase{"ReadingLetterDropped", "RATIO=1\r\nI", false, ""},
        CutCase{"RestOfReadingDropped", "RATIO=1\r\n23 V=1", false, ""},
        CutCase{"ReadingKept", "RATIO=1\r\nI=0.01 V=1", true, "I=0.01 V=1"},
        CutCase{"ReadingLetterKept", "RATIO=1\r\nI", true, "I"},
        CutCase{"RecordBegun", "POLARITY=+\r\nDATA01\r\n02\r\n0", false, "DATA01\r\n02\r\n0"},
        CutCase{"RecordBegunBehindReading", "I=1 V=2\r\nDATA01\r\n", false, "DATA01\r\n"},
        CutCase{"RecordBehindCutReading", "I=1 V=2DATA01", false, "DATA01"},
        CutCase{"OneLetterOfData", "I=1 V=2\r\nD", false, "D"},
        CutCase{"OneLetterOfDataBehindReading", "I=1 V=2D", false, "D"},
        CutCase{"TwoLettersOfData", "I=1 V=2\r\nDA", false, "DA"},
        CutCase{"ThreeLettersOfDataBehindReading", "I=1 V=2DAT", false, "DAT"},
        CutCase{"WholeRecord", "DATA01\r\nDONE\r\n", false, ""},
        CutCase{"WholeRecordLineEndCut", "DATA01\r\nDONE\r", false, "\r"},
        CutCase{"SecondRecordBegun", "DATA01\r\nDONE\r\nDATA7\r\n", false, "DATA7\r\n"},
        CutCase{"DoneBeforeData", "DONE\r\nDATA7\r\n", false, "DATA7\r\n"}),
    [](const auto& test) { return std::string(test.param.name); });

std::string Shown(std::string_view text) {
    std::string shown;
    for (const Reading& reading : CompleteReadings(text)) {
        shown += "[" + std::string(reading.current) + "|" + std::string(reading.voltage) + "]";
    }
    return shown;
}

TEST(CompleteReadingsTest, AreThoseUpToTheirLineEnd) {
    EXPECT_EQ(Shown("I=0.0123 V=152.4\r\n"), "[0.0123|152.4]");
    EXPECT_EQ(Shown("I=0.0123 V=152.4\r"), "");
    EXPECT_EQ(Shown("I=0.0123 V=152.4"), "");
    EXPECT_EQ(Shown("I=0.0123\r\n"), "");
    EXPECT_EQ(Shown("V=152.4\r\n"), "");
    EXPECT_EQ(Shown("V=1\r\nI=2 V=3\r\n"), "[2|3]");
    EXPECT_EQ(Shown("I=1 V=2\r\nI=3 V=4\r\nI=5"), "[1|2][3|4]");
}

TEST(CompleteReadingsTest, TakeTheVoltageOfTheNextLine) {
    EXPECT_EQ(Shown("I=0.01\r\nV=2\r\n"), "[0.01|2]");
    EXPECT_EQ(Shown("I=V=2\r\n"), "[|2]");
    EXPECT_EQ(Shown("I=1 V=\r\nI=2 V=3\r\n"), "[1|][2|3]");
}

TEST(CompleteReadingsTest, PassOverAReadingThatNoiseCut) {
    EXPECT_EQ(Shown("I=0.01\r\nRATIO=2\r\nI=3 V=4\r\n"), "[3|4]");
}

TEST(SaturationPromptTest, WaitsForItsBracketOrItsLineEnd) {
    const std::string prompt = "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES";
    EXPECT_EQ(SaturationPrompt(prompt), std::nullopt);
    EXPECT_EQ(SaturationPrompt(prompt + " (MAX 10"), std::nullopt);
    EXPECT_EQ(SaturationPrompt(prompt + "\r"), std::nullopt);
    EXPECT_THAT(SaturationPrompt("MESSAGE=" + prompt + " (MAX 1000V)"),
                Optional(prompt + " (MAX 1000V)"));
    EXPECT_THAT(SaturationPrompt(prompt + " NOW (MAX 1000V) PLEASE\r\n(B)"),
                Optional(prompt + " (MAX 1000V)"));
    EXPECT_THAT(SaturationPrompt(prompt + "\r\n"), Optional(prompt + " "));
    EXPECT_THAT(SaturationPrompt(prompt + " (MAX\r\n10:1)"), Optional(prompt + " "));
}

TEST(RatioInTest, IsTheLastWholeLine) {
    EXPECT_EQ(RatioIn(""), std::nullopt);
    EXPECT_EQ(RatioIn("RATIO=240.1"), std::nullopt);
    EXPECT_EQ(RatioIn("\r\nRATIO=240.1\r"), std::nullopt);
    EXPECT_THAT(RatioIn("RATIO= 240.1 \r\nPOLARITY=+"), Optional(std::string_view(" 240.1 ")));
    EXPECT_THAT(RatioIn("RATIO=1\r\nRATIO=2\r\nRATIO=3"), Optional(std::string_view("2")));
    EXPECT_THAT(RatioIn("RATIO=\r\n"), Optional(std::string_view("")));
}

TEST(PolarityInTest, WaitsForItsCharacter) {
    EXPECT_EQ(PolarityIn(""), std::nullopt);
    EXPECT_EQ(PolarityIn("POLARITY="), std::nullopt);
    EXPECT_THAT(PolarityIn("POLARITY=-"), Optional('-'));
    EXPECT_THAT(PolarityIn("POLARITY=-\r\nPOLARITY="), Optional('-'));
    EXPECT_THAT(PolarityIn("POLARITY=-\r\nPOLARITY=+\r\n"), Optional('+'));
}

TEST(RecordInTest, NeedsDoneBehindData) {
    EXPECT_EQ(RecordIn("DONE"), std::nullopt);
    EXPECT_EQ(RecordIn("DONE\r\nDATA00"), std::nullopt);
    EXPECT_EQ(RecordIn("DATA00"), std::nullopt);
    EXPECT_THAT(RecordIn("X\r\nDATA00\r\nDONE\r\n"), Optional(std::string_view("DATA00\r\nDONE")));
    EXPECT_THAT(RecordIn("DONE DATA1DONE"), Optional(std::string_view("DATA1DONE")));
}

}  // namespace
}  // namespace davo::test
