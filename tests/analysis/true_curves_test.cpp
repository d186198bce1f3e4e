// SPDX-License-Identifier: GPL-3.0-or-later
// The kneepoints of the true curves where they can be written down, and their slopes.

#include "tests/analysis/true_curves.h"

#include <cmath>

#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// ln V of Vs, which the curve approaches.
double Highest(const test::TrueCurve& curve) {
    return curve.voltageAt(curve.bend + 30);
}

TEST(TrueCurves, FroehlichHasItsKneepointsWhereTheyAreWrittenDown) {
    std::mt19937_64 random(test::RandomSeed(1882));
    const test::TrueCurve curve = test::RandomTrueCurve(test::Family::Froehlich, random);
    const double vs = std::exp(Highest(curve));
    const double ih = std::exp(curve.bend);
    // The slope is Ih / (Ih + I); with x = I / Ih the other is 1.1 x / (1 + x) = 1.5 x / (1 + 1.5
    // x).
    EXPECT_EQ(test::TrueKneepoint(KneeRule::Ieee45, curve), std::nullopt);
    const CurvePoint at30 = test::TrueKneepoint(KneeRule::Ieee30, curve).value_or(CurvePoint());
    EXPECT_NEAR(at30.current / ih, 0.81, 1e-9);
    EXPECT_NEAR(at30.voltage / vs, 0.81 / 1.81, 1e-9);
    const CurvePoint asa = test::TrueKneepoint(KneeRule::Asa1050, curve).value_or(CurvePoint());
    EXPECT_NEAR(asa.current / ih, 8.0 / 3, 1e-9);
    EXPECT_NEAR(asa.voltage / vs, 8.0 / 11, 1e-9);
}

TEST(TrueCurves, ArctangentAndStraightHaveNoneAt45Degrees) {
    std::mt19937_64 random(test::RandomSeed(1882));
    const auto none = [&](test::Family family, KneeRule rule) {
        return !test::TrueKneepoint(rule, test::RandomTrueCurve(family, random));
    };
    EXPECT_TRUE(none(test::Family::Arctangent, KneeRule::Ieee45));
    EXPECT_FALSE(none(test::Family::Arctangent, KneeRule::Ieee30));
    for (const KneeRule rule : kKneeRules)
        EXPECT_TRUE(none(test::Family::Straight, rule));
}

TEST(TrueCurves, ASlopeIsTheDerivative) {
    std::mt19937_64 random(test::RandomSeed(1883));
    constexpr double kStep = 1e-4;
    for (const test::Family family : test::kFamilies) {
        const test::TrueCurve curve = test::RandomTrueCurve(family, random);
        for (int n = -50; n < 50; ++n) {
            const double i = curve.bend + n / 10.0;
            EXPECT_NEAR(curve.slopeAt(i),
                        (curve.voltageAt(i + kStep) - curve.voltageAt(i - kStep)) / (2 * kStep),
                        2e-4)
                << test::NameOf(family);
        }
    }
}

TEST(TrueCurves, TheHighestCrossingIsTheKneepoint) {
    std::mt19937_64 random(test::RandomSeed(1884));
    for (const test::Family family : test::kFamilies) {
        const test::TrueCurve curve = test::RandomTrueCurve(family, random);
        for (const KneeRule rule : {KneeRule::Ieee30, KneeRule::Ieee45}) {
            const auto knee = test::TrueKneepoint(rule, curve);
            if (!knee) continue;
            const double i = std::log(knee->current);
            EXPECT_NEAR(1 / curve.slopeAt(i), rule == KneeRule::Ieee45 ? 1 : 1.81, 1e-6);
            EXPECT_GT(curve.slopeAt(i - 0.01), curve.slopeAt(i + 0.01));
        }
        const auto asa = test::TrueKneepoint(KneeRule::Asa1050, curve);
        if (!asa) continue;
        EXPECT_NEAR(std::exp(curve.voltageAt(std::log(1.5 * asa->current))) / asa->voltage, 1.1,
                    1e-9)
            << test::NameOf(family);
    }
}

TEST(TrueCurves, ARecordHasTheInstrumentsSteps) {
    std::mt19937_64 random(test::RandomSeed(1885));
    for (const test::Family family : test::kFamilies) {
        const test::TrueCurve curve = test::RandomTrueCurve(family, random);
        const auto points = test::TakeRecord(curve, {32, 0.002, 20}, random);
        ASSERT_GE(points.size(), 8U);
        EXPECT_LE(points.size(), 32U);
        const double step = points.back().current > 6.6 ? 0.0002 : 0.0001;
        for (std::size_t k = 0; k < points.size(); ++k) {
            EXPECT_NEAR(std::remainder(points[k].current, step), 0, 1e-9);
            EXPECT_NEAR(std::remainder(points[k].voltage, 0.1), 0, 1e-9);
            if (k == 0) continue;
            EXPECT_GT(points[k].current, points[k - 1].current);
        }
    }
}

}  // namespace
}  // namespace davo
