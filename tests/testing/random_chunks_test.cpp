// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever pieces the line delivers a shot in, the session is the same.

#include <gtest/gtest.h>

#include <iostream>
#include <random>

#include "tests/support/random_seed.h"
#include "tests/testing/shot_script.h"

namespace davo::test {
namespace {

constexpr int kChunkings = 4000;

class RandomPieces {
  public:
    explicit RandomPieces(std::uint64_t seed) : random_(seed) {}

    int Between(int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random_);
    }
    // Cuts text into pieces of up to a length that differs from call to call, with idle ticks.
    void Deliver(SequenceBench& bench, const std::string& text) {
        constexpr int kLongest[] = {1, 3, 16, 40, 300, 5000};
        const int longest = kLongest[Between(0, 5)];
        std::size_t from = 0;
        while (from < text.size()) {
            const auto length = static_cast<std::size_t>(Between(1, longest));
            bench.Say(text.substr(from, length));
            from += length;
            if (Between(0, 9) == 0) bench.sequence.Timer1_Timer();
        }
    }

  private:
    std::mt19937_64 random_;
};

// The bytes of a session of the two shots.
std::string Session(const ShotScript& first, const ShotScript& second, const Delivery& delivery) {
    SequenceBench bench;
    bench.OpenFor(first.ratioOnly);
    bench.Screen().txtHVolt.text = "1200";
    bench.Screen().txtXVolt.text = "5";
    bench.sequence.txtXVolt_LostFocus();
    for (const ShotScript* script : {&first, &second}) {
        EXPECT_TRUE(PlayShot(bench, *script, delivery));
        EXPECT_EQ(bench.sequence.TestState(), kStateShotComplete);
        EXPECT_FALSE(bench.Screen().lblDamage.visible);
    }
    bench.sequence.WriteShotTrailer();
    EXPECT_EQ(bench.session.shotCount, 2);
    return bench.CaptureBytes() + bench.Screen().txtPolarity.text;
}

TEST(RandomChunksTest, TheCaptureIsTheSameInAnyPieces) {
    const std::uint64_t seed = RandomSeed(std::random_device{}());
    struct Pair {
        ShotScript first, second;
        std::string expected;
    };
    std::vector<Pair> pairs;
    std::uint64_t recorded = 1;
    for (const int readings : {2, 15, 90}) {
        for (const bool ratioOnly : {false, true}) {
            Pair pair{RecordScript(recorded, ratioOnly, readings),
                      RecordScript(recorded + 1, ratioOnly, readings),
                      {}};
            pair.expected = Session(pair.first, pair.second,
                                    [](SequenceBench& bench, const std::string& part, std::size_t) {
                                        DeliverLines(bench, part);
                                    });
            ASSERT_EQ(CapturedShots(pair.expected).size(), 2U);
            pairs.push_back(std::move(pair));
            recorded += 2;
        }
    }
    RandomPieces pieces(seed);
    for (int i = 0; i < kChunkings; ++i) {
        const Pair& pair = pairs[static_cast<std::size_t>(i) % pairs.size()];
        const std::string bytes = Session(pair.first, pair.second,
                                          [&](SequenceBench& bench, const std::string& part,
                                              std::size_t) { pieces.Deliver(bench, part); });
        ASSERT_EQ(bytes, pair.expected) << "chunking " << i << " of seed " << seed;
        if (testing::Test::HasFailure()) FAIL() << "chunking " << i << " of seed " << seed;
    }
    std::cout << kChunkings << " random chunkings of " << pairs.size()
              << " sessions of two shots each" << std::endl;
}

}  // namespace
}  // namespace davo::test
