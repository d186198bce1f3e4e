// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever pieces the line delivers a shot in, the session is the same.

#include <iostream>
#include <random>

#include "tests/support/random_rounds.h"
#include "tests/support/testing.h"
#include "tests/testing/shot_script.h"

namespace davo::test {
namespace {

class RandomPieces {
  public:
    explicit RandomPieces(std::uint64_t seed) : random_(seed) {}

    int Between(int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random_);
    }
    // Cuts text into pieces of up to a length that differs from call to call, with idle ticks.
    void Deliver(SequenceRig& rig, const std::string& text) {
        constexpr int kLongest[] = {1, 3, 16, 40, 300, 5000};
        const int longest = kLongest[Between(0, 5)];
        std::size_t from = 0;
        while (from < text.size()) {
            const auto length = static_cast<std::size_t>(Between(1, longest));
            rig.Say(text.substr(from, length));
            from += length;
            if (Between(0, 9) == 0) rig.sequence.Timer1_Timer();
        }
    }

  private:
    std::mt19937_64 random_;
};

// The bytes of a session of the two shots.
std::string Session(const ShotScript& first, const ShotScript& second, const Delivery& delivery) {
    SequenceRig rig;
    rig.OpenFor(first.ratioOnly);
    rig.Screen().txtHVolt.text = "1200";
    rig.Screen().txtXVolt.text = "5";
    rig.sequence.txtXVolt_LostFocus();
    for (const ShotScript* script : {&first, &second}) {
        EXPECT_TRUE(PlayShot(rig, *script, delivery));
        EXPECT_EQ(rig.sequence.TestState(), kStateShotComplete);
        EXPECT_FALSE(rig.Screen().lblDamage.visible);
    }
    rig.sequence.WriteShotTrailer();
    EXPECT_EQ(rig.session.shotCount, 2);
    return rig.CaptureBytes() + rig.Screen().txtPolarity.text;
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
                                    [](SequenceRig& rig, const std::string& part, std::size_t) {
                                        DeliverLines(rig, part);
                                    });
            ASSERT_EQ(CapturedShots(pair.expected).size(), 2U);
            pairs.push_back(std::move(pair));
            recorded += 2;
        }
    }
    const int chunkings = RandomRounds(4000);
    RandomPieces pieces(seed);
    for (int i = 0; i < chunkings; ++i) {
        const Pair& pair = pairs[static_cast<std::size_t>(i) % pairs.size()];
        const std::string bytes = Session(
            pair.first, pair.second, [&](SequenceRig& rig, const std::string& part, std::size_t) {
                pieces.Deliver(rig, part);
            });
        ASSERT_EQ(bytes, pair.expected) << "chunking " << i << " of seed " << seed;
        if (testing::Test::HasFailure()) FAIL() << "chunking " << i << " of seed " << seed;
    }
    std::cout << chunkings << " random chunkings of " << pairs.size()
              << " sessions of two shots each" << std::endl;
}

}  // namespace
}  // namespace davo::test
