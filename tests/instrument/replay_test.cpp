// SPDX-License-Identifier: GPL-3.0-or-later
// A recorded conversation, answered again.

#include "instrument/replay.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::milliseconds;

std::vector<LoggedBytes> Recorded() {
    return {
        {milliseconds(500), false, "B", 1},    {milliseconds(530), true, "RD", 2},
        {milliseconds(540), true, "Y\r\n", 3}, {milliseconds(900), false, "L0", 4},
        {milliseconds(910), false, "12", 5},   {milliseconds(950), true, "Record Found\r\n", 6}};
}

TEST(Replay, AnswersAsRecordedAndAsLate) {
    Replay replay(Recorded());
    EXPECT_FALSE(replay.NextDue());
    replay.Receive("B", milliseconds(40));
    EXPECT_EQ(replay.NextDue(), milliseconds(70));
    EXPECT_EQ(replay.Take(milliseconds(69)), "");
    EXPECT_EQ(replay.Take(milliseconds(70)), "RD");
    EXPECT_EQ(replay.NextDue(), milliseconds(80));
    EXPECT_EQ(replay.Take(milliseconds(95)), "Y\r\n");
    EXPECT_FALSE(replay.NextDue());
    EXPECT_EQ(replay.State(),
              "stopped at line 4 of the log: 1 bytes from the PC as recorded, the "
              "next one has not come");
    replay.Receive("L01", milliseconds(200));
    EXPECT_FALSE(replay.NextDue());
    replay.Receive("2", milliseconds(210));
    EXPECT_EQ(replay.State(),
              "stopped at line 6 of the log: 5 bytes from the PC as recorded, more to send");
    EXPECT_EQ(replay.Take(milliseconds(250)), "Record Found\r\n");
    EXPECT_TRUE(replay.Ended());
    EXPECT_EQ(replay.State(), "whole: 5 bytes from the PC as recorded");
    EXPECT_EQ(replay.Departure(), "");
}

TEST(Replay, BeginsWithWhatTheInstrumentSaidFirst) {
    Replay replay({{milliseconds(20), true, "HELLO", 1}});
    EXPECT_EQ(replay.NextDue(), milliseconds(20));
    EXPECT_EQ(replay.Take(milliseconds(20)), "HELLO");
    EXPECT_TRUE(replay.Ended());
}

TEST(Replay, KeepsWhatComesBeforeItsTurn) {
    Replay replay(Recorded());
    replay.Receive("BL012", milliseconds(0));
    EXPECT_EQ(replay.Departure(), "");
    EXPECT_EQ(replay.Take(milliseconds(40)), "RDY\r\n");
    EXPECT_EQ(replay.Take(milliseconds(80)), "Record Found\r\n");
    EXPECT_TRUE(replay.Ended());
}

TEST(Replay, NamesTheFirstByteThatDeparts) {
    Replay other(Recorded());
    other.Receive("T", milliseconds(0));
    EXPECT_EQ(other.Departure(),
              "byte 1 from the PC: expected 42 'B' (line 1 of the log), got 54 'T'");
    EXPECT_FALSE(other.NextDue());
    EXPECT_EQ(other.Take(milliseconds(1000)), "");
    EXPECT_EQ(other.State(), "departed at " + other.Departure());

    Replay later(Recorded());
    later.Receive("B", milliseconds(0));
    later.Take(milliseconds(100));
    later.Receive("L01\r", milliseconds(100));
    EXPECT_EQ(later.Departure(), "byte 5 from the PC: expected 32 '2' (line 5 of the log), got 0D");

    Replay more(Recorded());
    more.Receive("BL012", milliseconds(0));
    more.Take(milliseconds(1000));
    more.Receive("X", milliseconds(1000));
    EXPECT_EQ(more.Departure(),
              "byte 6 from the PC: expected nothing: the recording has ended, got 58 'X'");
}

}  // namespace
}  // namespace davo::test
