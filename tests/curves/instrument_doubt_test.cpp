// SPDX-License-Identifier: GPL-3.0-or-later
// Shots of the simulated instrument: what is doubtful about them, and what is not.

#include "curves/record_facts.h"
#include "instrument/transformer.h"
#include "records/record_image.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// The records of a test set raise no false alarm: many points, and the rules agree with a smooth
// curve.
TEST(InstrumentDoubt, ATestSetsOwnRecordsAreNotDoubtful) {
    constexpr int kShots = 40;
    instrument::Random random(test::RandomSeed(4714));
    int kneepoints = 0;
    for (const instrument::Transformer& transformer : instrument::TransformerPresets()) {
        for (int n = 0; n < kShots; ++n) {
            const instrument::Shot shot =
                instrument::MeasureShot(transformer, false, instrument::Polarity::AsWired, random);
            const RecordTest test =
                TestsOfCapture("DATA" + EncodeRecordImage(shot.image) +
                               "\r\nDONE\r\nMEASURED RATIO: 1\r\nNAMEPLATE RATIO: N/A\r\n"
                               "PERCENT ERROR: N/A\r\n\r\n")
                    .at(0);
            for (const KneeFact& knee : test.knees) {
                kneepoints += knee.At() ? 1 : 0;
                EXPECT_EQ(knee.doubt, "") << transformer.name;
                EXPECT_EQ(knee.smooth, std::nullopt) << transformer.name;
            }
        }
    }
    EXPECT_GT(kneepoints, 6 * kShots * 3);
}

}  // namespace
}  // namespace davo
