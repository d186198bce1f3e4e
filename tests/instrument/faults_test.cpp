// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/faults.h"

#include "instrument/conversation.h"
#include "instrument/paced_line.h"
#include "tests/instrument/image_fields.h"
#include "tests/instrument/memory_pc.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::milliseconds;

constexpr Micros kNow{1000};

FaultyLine LineWith(std::initializer_list<const char*> texts, std::uint64_t seed = 1) {
    std::vector<Fault> faults;
    for (const char* text : texts) {
        const auto fault = ParseFault(text);
        EXPECT_TRUE(fault.has_value()) << text;
        faults.push_back(fault.value_or(Fault{}));
    }
    return FaultyLine(faults, seed);
}

// Passes text in pieces of different length.
std::string Pass(FaultyLine& line, std::string_view text) {
    std::string arrived;
    for (std::size_t at = 0, length = 1; at < text.size(); at += length, length = length % 5 + 1) {
        line.FromInstrument(text.substr(at, length), kNow);
        arrived += line.TakeForPc(kNow);
    }
    return arrived;
}

TEST(Faults, AreParsedByNameWithTheirArguments) {
    const auto flip = ParseFault("flip:12,7");
    ASSERT_TRUE(flip.has_value());
    EXPECT_EQ(flip->kind, FaultKind::Flip);
    EXPECT_EQ(flip->first, 12);
    EXPECT_EQ(flip->second, 7);
    EXPECT_EQ(ParseFault("slow")->first, 10);
    EXPECT_EQ(ParseFault("noise:0.5")->first, 0.5);
    EXPECT_EQ(ParseFault("wrong-lengths:-4")->first, -4);
    for (const char* bad : {"", "mute", "cut:", "cut:x", "flip:1,", "flip:1,b", "silent 1"}) {
        EXPECT_FALSE(ParseFault(bad).has_value()) << bad;
    }
}

TEST(Faults, WithoutOneAllArrives) {
    FaultyLine line;
    EXPECT_EQ(Pass(line, "RDY\r\nDATA0123"), "RDY\r\nDATA0123");
    EXPECT_EQ(line.FromPc("B"), "B");
    EXPECT_EQ(line.SlowFactor(), 1);
    EXPECT_FALSE(line.Unplugged());
}

TEST(Faults, SilentHearsButSaysNothing) {
    FaultyLine line = LineWith({"silent"});
    EXPECT_EQ(Pass(line, "RDY\r\n"), "");
    EXPECT_EQ(line.FromPc("B"), "B");
}

TEST(Faults, SlowIsThePaceOfTheLine) {
    EXPECT_EQ(LineWith({"slow:20"}).SlowFactor(), 20);
}

TEST(Faults, NoisePutsRandomBytesBetweenTheOthers) {
    const std::uint64_t seed = RandomSeed(31);
    const std::string text(10000, '.');
    FaultyLine line = LineWith({"noise:0.1"}, seed);
    const std::string arrived = Pass(line, text);
    const double inserted = static_cast<double>(arrived.size() - text.size());
    EXPECT_NEAR(inserted, 1000, 150);
    FaultyLine again = LineWith({"noise:0.1"}, seed);
    EXPECT_EQ(Pass(again, text), arrived);
}

TEST(Faults, CutLineEndsBothDirections) {
    FaultyLine line = LineWith({"cut-line:3"});
    EXPECT_EQ(line.FromPc("B"), "B");
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RDY");
    EXPECT_EQ(line.FromPc("B"), "");
}

TEST(Faults, CutLosesWhatFollowsAndStillHears) {
    FaultyLine line = LineWith({"cut:4"});
    EXPECT_EQ(Pass(line, "RDY\r\nRDY\r\n"), "RDY\r");
    EXPECT_EQ(line.FromPc("B"), "B");
}

TEST(Faults, UnpluggedAfterSoManyBytesUntilItIsPluggedIn) {
    FaultyLine line = LineWith({"unplugged:4"});
    EXPECT_EQ(Pass(line, "RDY"), "RDY");
    EXPECT_FALSE(line.Unplugged());
    EXPECT_EQ(Pass(line, "\r\nRDY"), "\r");
    EXPECT_TRUE(line.Unplugged());
    EXPECT_EQ(line.FromPc("B"), "");
    line.PlugIn();
    EXPECT_FALSE(line.Unplugged());
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RDY\r\n");
}

TEST(Faults, StallHoldsTheRestBackForItsTime) {
    FaultyLine line = LineWith({"stall:2,500"});
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RD");
    EXPECT_EQ(line.NextDue(), kNow + milliseconds(500));
    EXPECT_EQ(line.TakeForPc(kNow + milliseconds(499)), "");
    EXPECT_EQ(line.TakeForPc(kNow + milliseconds(500)), "Y\r\n");
    EXPECT_EQ(Pass(line, "later"), "") << "never before the time of what was sent earlier";
}

TEST(Faults, StallWithoutATimeIsForEver) {
    FaultyLine line = LineWith({"stall:2"});
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RD");
    EXPECT_EQ(line.NextDue(), std::nullopt);
    EXPECT_EQ(line.FromPc("B"), "B");
}

TEST(Faults, DoubleSendsOneByteTwice) {
    FaultyLine line = LineWith({"double:1"});
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RDDY\r\n");
}

TEST(Faults, FlipTurnsOneBitOver) {
    for (unsigned bit = 0; bit < 8; ++bit) {
        FaultyLine line({{FaultKind::Flip, 2, static_cast<double>(bit)}});
        std::string expected = "RDY\r\n";
        expected[2] = static_cast<char>(expected[2] ^ static_cast<char>(1U << bit));
        EXPECT_EQ(Pass(line, "RDY\r\n"), expected);
    }
}

TEST(Faults, SeveralWorkTogether) {
    FaultyLine line = LineWith({"double:0", "flip:1,5", "cut:3"});
    EXPECT_EQ(Pass(line, "RDY\r\n"), "RRdY");
}

TEST(Faults, ADroppedEchoIsMissingInTheUpload) {
    ConversationOptions options;
    ApplyFaults({*ParseFault("dropped-echo:3")}, options);
    MemoryPc pc(options);
    pc.Send("Fh");
    pc.Until("H:\r\n");
    pc.Send("abcde");
    EXPECT_EQ(pc.Rest(), "abde");
    EXPECT_EQ(pc.Instrument().HeaderMemory().substr(0, 5), "abcde") << "stored all the same";
}

TEST(Faults, RecordsOfWrongLength) {
    for (const int extra : {-296, -6, -1, 1, 8}) {
        ConversationOptions options;
        ApplyFaults({{FaultKind::WrongLengths, static_cast<double>(extra), 0}}, options);
        const RecordedShot shot = RecordShot(options, false);
        const std::string bytes = shot.Bytes();
        ASSERT_NE(bytes.find("DATA"), std::string::npos);
        ASSERT_NE(bytes.find("DONE"), std::string::npos);
        EXPECT_EQ(static_cast<int>(DigitsOf(bytes).size()), 296 + extra);
    }
}

}  // namespace
}  // namespace davo::test
