// SPDX-License-Identifier: GPL-3.0-or-later
// Whole shots in memory: what is said, in which order, and what a seed decides.

#include <regex>
#include <set>

#include "tests/instrument/image_fields.h"
#include "tests/instrument/memory_pc.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr const char* kZero = "MESSAGE=TURN VOLTAGE DRIVE TO ZERO...\r\n";
constexpr const char* kRange = "MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH\r\n";
constexpr const char* kSaturate =
    "MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)\r\n";
constexpr const char* kLower = "MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...\r\n";
constexpr const char* kRatio = "MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)\r\n";

// Removes the prompts and the results; what is left must be nothing but readings.
void ExpectReadings(const std::string& text) {
    const std::regex reading(R"(I=\d+\.\d{4} V=\d+\.\d\r\n)");
    EXPECT_EQ(std::regex_replace(text, reading, ""), "");
}

std::string Lines(MemoryPc& pc, int count) {
    std::string lines;
    while (count-- > 0)
        lines += pc.Until("\r\n");
    return lines;
}

// A full shot up to the saturation test. Returns all that was sent.
std::string StartFullShot(MemoryPc& pc) {
    pc.Send("T");
    const std::string said = pc.Until(kRange);
    pc.Send("\r");
    return said + pc.Until(kSaturate);
}

// Confirms as an operator who looks at some readings first. Returns all that was sent.
std::string RunFullShot(MemoryPc& pc) {
    std::string said = StartFullShot(pc);
    said += Lines(pc, 15);
    pc.Send("\r");
    said += pc.Until(kRatio);
    said += Lines(pc, 15);
    pc.Send("\r");
    return said + pc.Rest();
}

std::string RunRatioShot(MemoryPc& pc) {
    pc.Send("t");
    std::string said = pc.Until(kRatio);
    said += Lines(pc, 5);
    pc.Send("\r");
    return said + pc.Rest();
}

TEST(Shot, AFullOneGoesThroughAllPrompts) {
    const std::uint64_t seed = RandomSeed(11);
    MemoryPc pc({.seed = seed});
    pc.Send("T");
    EXPECT_EQ(pc.Until(kRange), std::string(kZero) + kRange);
    EXPECT_EQ(pc.Rest(), "") << "the switch waits for a confirmation";
    EXPECT_TRUE(pc.Instrument().WaitsForConfirmation());

    pc.Send("\r");
    EXPECT_EQ(pc.Until("1000V)\r\n"), kSaturate);
    ExpectReadings(Lines(pc, 20));
    EXPECT_TRUE(pc.Instrument().WaitsForConfirmation());

    pc.Send("\r");
    std::string said = pc.Until(kLower);
    said.erase(said.size() - std::string(kLower).size());
    ExpectReadings(said);  // one may have been on its way
    said = pc.Until(kRatio);
    said.erase(said.size() - std::string(kRatio).size());
    ExpectReadings(said);
    EXPECT_THAT(said, EndsWith("I=0.0000 V=0.0\r\n"));

    ExpectReadings(Lines(pc, 20));
    pc.Send("\r");
    said = pc.Until("RATIO=");
    said.erase(said.size() - 6);
    ExpectReadings(said);
    const Shot& shot = [&]() -> const Shot& {
        said = pc.Rest();
        return pc.Instrument().Shots().at(0);
    }();
    EXPECT_THAT(said, StartsWith(shot.ratioText + "\r\nPOLARITY=+\r\nDATA"));
    ExpectImage(DigitsOf(said), shot.image);
    EXPECT_FALSE(shot.ratioOnly);
    EXPECT_FALSE(pc.Instrument().ShotUnderWay());
}

TEST(Shot, ARatioTestAloneHasNoSwitchAndNoPoints) {
    MemoryPc pc({.seed = RandomSeed(12)});
    pc.Send("t");
    EXPECT_EQ(pc.Until(kRatio), std::string(kZero) + kRatio);
    ExpectReadings(Lines(pc, 20));
    pc.Send("\r");
    pc.Until("RATIO=");
    const std::string said = pc.Rest();
    ASSERT_EQ(pc.Instrument().Shots().size(), 1U);
    const Shot& shot = pc.Instrument().Shots()[0];
    EXPECT_TRUE(shot.ratioOnly);
    EXPECT_THAT(said, StartsWith(shot.ratioText + "\r\nPOLARITY=+\r\nDATA"));
    ExpectImage(DigitsOf(said), shot.image);
    EXPECT_TRUE(shot.image.Points().empty());
    EXPECT_EQ(shot.image.excitationVoltage, 0);
    EXPECT_GT(shot.image.measuredRatio, 0);
}

TEST(Shot, ASessionOfFullFullAndRatioOnlyGivesThreeDifferentRecords) {
    MemoryPc pc({.seed = RandomSeed(13)});
    std::set<std::string> records;
    records.insert(DigitsOf(RunFullShot(pc)));
    // From the second shot on the PC may confirm the saturation the moment it is prompted.
    StartFullShot(pc);
    pc.Send("\r");
    pc.Until(kLower);
    pc.Until(kRatio);
    pc.Until("V=");
    pc.Send("\r");
    records.insert(DigitsOf(pc.Rest()));
    records.insert(DigitsOf(RunRatioShot(pc)));
    ASSERT_EQ(pc.Instrument().Shots().size(), 3U);
    EXPECT_EQ(records.size(), 3U);
    EXPECT_FALSE(records.contains(""));
    EXPECT_TRUE(pc.Instrument().Shots()[2].ratioOnly);
}

TEST(Shot, AConfirmationThatNoStepWaitsForIsIgnored) {
    MemoryPc pc({});
    pc.Send("\r\r");
    EXPECT_EQ(pc.Rest(), "");
    pc.Send("T\r\r");
    EXPECT_EQ(pc.Until(kRange), std::string(kZero) + kRange);
    EXPECT_EQ(pc.Rest(), "");
    pc.Send("\r\r\r");  // the second and third come before the next prompt
    pc.Until(kSaturate);
    for (int i = 0; i < 30; ++i)
        EXPECT_THAT(pc.Until("\r\n"), StartsWith("I="));
    EXPECT_TRUE(pc.Instrument().WaitsForConfirmation());
}

TEST(Shot, LowersByItselfAndThenWaitsInTheRatioTest) {
    MemoryPc pc({});
    StartFullShot(pc);
    pc.Send("\r");
    pc.Until(kLower);
    pc.Send("\r");  // while it is lowered: for nothing
    pc.Until(kRatio);
    for (int i = 0; i < 30; ++i)
        EXPECT_THAT(pc.Until("\r\n"), StartsWith("I="));
    EXPECT_TRUE(pc.Instrument().Shots().empty());
}

TEST(Shot, TheReadyCommandIsAnsweredInBetween) {
    MemoryPc pc({});
    pc.Send("T");
    pc.Until(kRange);
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
    pc.Send("\r");
    pc.Until(kSaturate);
}

TEST(Shot, EscapeEndsItAtOnce) {
    for (const char* end : {"\x1B", "S\x1B", "X"}) {
        MemoryPc pc({});
        pc.Send("T");
        pc.Until(kRange);
        pc.Send("\r");
        pc.Until("V=");
        pc.Send(end);
        EXPECT_FALSE(pc.Instrument().ShotUnderWay());
        pc.Wait(seconds(60));
        EXPECT_EQ(pc.Instrument().NextDue(), std::nullopt);
        EXPECT_TRUE(pc.Instrument().Shots().empty());
    }
}

TEST(Shot, CancellingTenTimesLeavesItReadyForTheNext) {
    MemoryPc pc({});
    pc.Send("T");
    pc.Until(kRange);
    for (int i = 0; i < 10; ++i)
        pc.Send("S\x1B");
    pc.Rest();
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
    EXPECT_THAT(RunFullShot(pc), HasSubstr("DONE"));
}

TEST(Shot, SWithoutEscapeDoesNotEndIt) {
    MemoryPc pc({});
    pc.Send("TSSS");
    pc.Until(kRange);
    EXPECT_TRUE(pc.Instrument().ShotUnderWay());
}

TEST(Shot, TStartsAnew) {
    MemoryPc pc({});
    pc.Send("T");
    pc.Until(kRange);
    pc.Send("T");
    EXPECT_EQ(pc.Until(kRange), std::string(kZero) + kRange);
}

TEST(Shot, ReadingsComeAtTheirRate) {
    MemoryPc pc({.readingsPerSecond = 4});
    pc.Send("t");
    pc.Until(kRatio);
    pc.Until("\r\n");
    const Micros begin = pc.Now();
    Lines(pc, 40);
    const double elapsed = static_cast<double>((pc.Now() - begin).count()) / 1e6;
    EXPECT_NEAR(elapsed, 10, 0.2);
}

TEST(Shot, IsSilentBetweenTheLastReadingAndAMessage) {
    // Also when all pauses are short: the PC drops what follows a reading in the same gulp.
    MemoryPc pc({.seed = RandomSeed(14), .pauseScale = 0.001});
    StartFullShot(pc);
    Lines(pc, 15);
    Micros last = pc.Now();
    pc.Send("\r");
    for (const char* message : {"MESSAGE=S", "MESSAGE=R"}) {
        std::string said;
        while (true) {
            said = pc.Until("=");
            if (said.ends_with("MESSAGE=")) break;
            pc.Until("\r\n");
            last = pc.Now();
        }
        EXPECT_GE(pc.Now() - last, milliseconds(39)) << message;
        pc.Until("\r\n");
    }
}

TEST(Shot, AnOverVoltageIsReportedWhileItSaturates) {
    MemoryPc pc({.scenarios = {Scenario::OverVoltage}});
    const std::string said = RunFullShot(pc);
    const std::size_t at = said.find("MESSAGE=VOLTAGE TOO HIGH!\r\n");
    ASSERT_NE(at, std::string::npos);
    EXPECT_GT(at, said.find(kSaturate));
    EXPECT_LT(at, said.find(kLower));
    EXPECT_EQ(said.find("VOLTAGE TOO HIGH", at + 20), std::string::npos) << "said once";
    EXPECT_EQ(DigitsOf(said).size(), 296U) << "and the test goes on";
}

TEST(Shot, PolaritiesOfTheScenarios) {
    MemoryPc pc({.scenarios = {Scenario::OutOfPhase, Scenario::Undetermined, Scenario::Full}});
    const std::string out = RunRatioShot(pc);
    EXPECT_THAT(out, HasSubstr("\r\nPOLARITY=-\r\n"));
    const double phase = static_cast<double>(Field(DigitsOf(out), 140, 2)) / 10;
    EXPECT_GT(phase, 90.1);
    EXPECT_LT(phase, 269.9);

    const std::string open = RunRatioShot(pc);
    EXPECT_THAT(open, HasSubstr("\r\nPOLARITY= \r\n"));
    EXPECT_EQ(Field(DigitsOf(open), 140, 2), 65535);

    const std::string in = RunRatioShot(pc);
    EXPECT_THAT(in, HasSubstr("\r\nPOLARITY=+\r\n"));
    const double angle = static_cast<double>(Field(DigitsOf(in), 140, 2)) / 10;
    EXPECT_TRUE(angle <= 90 || (angle >= 270 && angle < 360)) << angle;
}

TEST(Shot, ScenariosAndTransformersComeInTurnAndStartOver) {
    MemoryPc pc({.scenarios = {Scenario::OutOfPhase, Scenario::Full}});
    for (int k = 0; k < 10; ++k)
        RunRatioShot(pc);
    const auto& shots = pc.Instrument().Shots();
    ASSERT_EQ(shots.size(), 10U);
    for (std::size_t k = 0; k < 10; ++k)
        EXPECT_EQ(shots[k].polarity, k % 2 == 0 ? '-' : '+');
    EXPECT_EQ(shots[8].image.nameplateH, shots[0].image.nameplateH);
    EXPECT_NE(shots[1].image.nameplateH, shots[0].image.nameplateH);
}

// For many seeds: the record always has the form that the capture file is read by.
TEST(Record, HasItsFormUnderEverySeed) {
    const std::uint64_t first = RandomSeed(100);
    bool blanks = false;
    bool doneOnItsOwnLine = false;
    bool doneAfterDigits = false;
    bool endsInLineEnd = false;
    bool endsInDone = false;
    for (std::uint64_t seed = first; seed < first + 200; ++seed) {
        const RecordedShot recorded = RecordShot({.seed = seed}, seed % 2 == 0);
        const std::string bytes = recorded.Bytes();
        const std::size_t data = bytes.find("DATA");
        ASSERT_NE(data, std::string::npos) << seed;
        EXPECT_EQ(bytes.substr(data - 2, 2), "\r\n") << "DATA begins a line";
        EXPECT_NE(std::string("0123456789ABCDEF").find(bytes[data + 4]), std::string::npos);
        const std::string record = bytes.substr(data);
        EXPECT_LT(record.find("\r\n"), record.find("DONE")) << "DONE is on a later line";
        ExpectImage(DigitsOf(record), recorded.shot.image);
        // Ratio, polarity and record fit one block of the PC's search.
        EXPECT_LT(bytes.size() - bytes.rfind("RATIO="), 1024U);
        blanks |= record.find(' ') != std::string::npos;
        (record.find("\r\nDONE") != std::string::npos ? doneOnItsOwnLine : doneAfterDigits) = true;
        (record.ends_with("DONE\r\n") ? endsInLineEnd : endsInDone) = true;
    }
    EXPECT_TRUE(blanks && doneOnItsOwnLine && doneAfterDigits && endsInLineEnd && endsInDone);
}

TEST(RecordShot, IsTheSameUnderTheSameSeedAndAnotherUnderAnother) {
    const auto text = [](const RecordedShot& shot) {
        std::string all;
        for (const auto& piece : shot.pieces) {
            all += std::to_string(piece.at.count()) + ":" + piece.bytes + "|";
        }
        return all;
    };
    const std::string once = text(RecordShot({.seed = 5}, false));
    EXPECT_EQ(text(RecordShot({.seed = 5}, false)), once);
    EXPECT_NE(text(RecordShot({.seed = 6}, false)), once);
    EXPECT_THAT(once, Not(IsEmpty()));
}

TEST(RecordShot, PlaysEveryScenario) {
    for (const Scenario scenario : {Scenario::Full, Scenario::RatioOnly, Scenario::OverVoltage,
                                    Scenario::OutOfPhase, Scenario::Undetermined}) {
        const RecordedShot shot =
            RecordShot({.scenarios = {scenario}}, scenario == Scenario::RatioOnly);
        EXPECT_EQ(DigitsOf(shot.Bytes()).size(), 296U);
        const bool high = shot.Bytes().find("VOLTAGE TOO HIGH!") != std::string::npos;
        EXPECT_EQ(high, scenario == Scenario::OverVoltage);
        const bool range = shot.Bytes().find("SELECTOR SWITCH") != std::string::npos;
        EXPECT_EQ(range, scenario != Scenario::RatioOnly);
    }
}

}  // namespace
}  // namespace davo::test
