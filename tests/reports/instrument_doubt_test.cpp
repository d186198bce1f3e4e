// SPDX-License-Identifier: GPL-3.0-or-later
// Shots of the simulated instrument: what is doubtful about them, and what is not.

#include <cmath>
#include <iostream>

#include "instrument/transformer.h"
#include "records/record_image.h"
#include "reports/record_facts.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// Where I(V) = Ik / 2 (w^low + w^high), w = V / Vk, has its kneepoint by the rule's definition.
double TrueVoltage(KneeRule rule, const instrument::Transformer& t) {
    const double slope = KneeThreshold(rule);  // d(ln I) / d(ln V) = (low + high x) / (1 + x)
    double x = (slope - t.lowExponent) / (t.highExponent - slope);
    if (rule == KneeRule::Asa1050)
        x = (1.5 - std::pow(1.1, t.lowExponent)) / (std::pow(1.1, t.highExponent) - 1.5);
    return t.kneeVoltage * std::pow(x, 1 / (t.highExponent - t.lowExponent));
}

TEST(InstrumentDoubt, ATestSetsOwnRecordsAreDoubtfulWhereTheRuleIsWrongOnly) {
    constexpr int kShots = 40;
    instrument::Random random(test::RandomSeed(4714));
    int right = 0;
    int wrong = 0;
    int withoutSmooth = 0;
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
                const auto at = knee.At();
                if (!at) continue;
                const double truth = TrueVoltage(knee.rule, transformer);
                const double off = std::abs(at->voltage / truth - 1);
                const double tolerated = knee.rule == KneeRule::Asa1050 ? 0.05 : 0.1;
                withoutSmooth += knee.smooth ? 0 : 1;
                const SmoothKnee same{{0, truth}};
                EXPECT_NEAR(knee.smooth.value_or(same).at.voltage / truth, 1, tolerated);
                if (off > tolerated) {
                    ++wrong;
                    EXPECT_NE(knee.doubt, "") << transformer.name << " " << off;
                } else if (off < 0.02) {
                    ++right;
                    EXPECT_EQ(knee.doubt, "") << transformer.name << " " << off;
                }
            }
        }
    }
    std::cout << wrong << " wrong, " << right << " right, " << withoutSmooth << " without smooth\n";
    EXPECT_GT(wrong, kShots);
    EXPECT_GT(right, kShots);
    EXPECT_LT(withoutSmooth, kShots);
}

}  // namespace
}  // namespace davo
