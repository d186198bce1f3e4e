// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/paced_line.h"

#include "instrument/random.h"

#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;

constexpr Micros kStart{1000000};

TEST(PacedLine, AByteArrivesAfterItsTenBits) {
    PacedLine line;
    line.Put("AB", kStart);
    EXPECT_EQ(line.NextDue(), kStart + Micros{521});  // 520.83 rounded up
    EXPECT_EQ(line.Take(kStart + Micros{520}), "");
    EXPECT_EQ(line.Take(kStart + Micros{521}), "A");
    EXPECT_EQ(line.Take(kStart + Micros{1041}), "");
    EXPECT_EQ(line.Take(kStart + Micros{1042}), "B");
    EXPECT_TRUE(line.Empty());
    EXPECT_EQ(line.NextDue(), std::nullopt);
}

TEST(PacedLine, DoesNotDriftOverALongBurst) {
    PacedLine line;
    line.Put(std::string(192000, 'x'), kStart);
    const Micros end = kStart + std::chrono::seconds(100);
    EXPECT_EQ(line.Take(end - Micros{1}).size(), 191999U);
    EXPECT_EQ(line.Take(end), "x");
}

TEST(PacedLine, PiecesThatFollowClosePackTogether) {
    PacedLine line;
    line.Put("abc", kStart);
    // Before the first burst is over, and at the very moment in which it ends.
    line.Put("def", kStart + Micros{700});
    EXPECT_EQ(line.Take(kStart + Micros{3125}), "abcdef");
    line.Put("g", kStart + Micros{3125});
    EXPECT_EQ(line.NextDue(), kStart + Micros{3646});
}

TEST(PacedLine, LateTakingDoesNotBeginANewBurst) {
    PacedLine line;
    line.Put("ab", kStart);
    EXPECT_EQ(line.Take(kStart + Micros{9000}), "ab");
    line.Put("c", kStart + Micros{9000});
    EXPECT_EQ(line.Take(kStart + Micros{9520}), "") << "a rest is no credit";
    EXPECT_EQ(line.Take(kStart + Micros{9521}), "c");
}

TEST(PacedLine, NeverFasterThanTheLineUnderRandomUse) {
    Random random(RandomSeed(41));
    for (int round = 0; round < 200; ++round) {
        PacedLine line;
        Micros now = kStart;
        std::size_t put = 0;
        std::size_t taken = 0;
        while (taken < 300) {
            now += Micros{random.Between(0, 2000)};
            if (put < 300 && random.Chance(0.5)) {
                const auto length = static_cast<std::size_t>(random.Between(1, 9));
                line.Put(std::string(length, 'x'), now);
                put += length;
            }
            taken += line.Take(now).size();
            const double most = static_cast<double>((now - kStart).count()) * 1920 / 1e6;
            ASSERT_LE(static_cast<double>(taken), most + 1e-9);
        }
    }
}

TEST(PacedLine, WithoutPaceAllArrivesAtOnce) {
    PacedLine line(0);
    line.Put("RDY\r\n", kStart);
    EXPECT_EQ(line.NextDue(), kStart);
    EXPECT_EQ(line.Take(kStart), "RDY\r\n");
}

TEST(PacedLine, OtherSpeeds) {
    PacedLine line(192);
    line.Put("A", kStart);
    EXPECT_EQ(line.NextDue(), kStart + Micros{5209});
}

}  // namespace
}  // namespace davo::test
