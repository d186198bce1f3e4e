// SPDX-License-Identifier: GPL-3.0-or-later
// Smooth curves and their kneepoints over random records: what every cubic spline is, what every
// kneepoint is, and what a smooth curve must not depend on.

#include <algorithm>
#include <cmath>

#include "analysis/smooth_knee.h"
#include "tests/analysis/true_curves.h"
#include "tests/support/random_rounds.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

struct Taken {
    Points points;
    SmoothCurve curve;
};

Taken TakeAny(std::mt19937_64& random) {
    std::uniform_int_distribution<std::size_t> family(0, test::kFamilies.size() - 1);
    std::uniform_int_distribution<int> count(6, 32);
    std::uniform_real_distribution<double> noise(0, 0.005);
    const test::TrueCurve curve = test::RandomTrueCurve(test::kFamilies.at(family(random)), random);
    const Points points = test::TakeRecord(curve, {count(random), noise(random), 20}, random);
    return {points, SmoothCurve(points)};
}

TEST(SmoothCurveRandom, IsAPolynomialBetweenTwoPointsAndSmoothAtThem) {
    const int curves = test::RandomRounds(2000);
    std::mt19937_64 random(test::RandomSeed(19780401));
    for (int n = 0; n < curves; ++n) {
        const Taken taken = TakeAny(random);
        const SmoothCurve& curve = taken.curve;
        for (std::size_t k = 0; k + 1 < taken.points.size(); ++k) {
            const double from = std::log(taken.points[k].current);
            const double to = std::log(taken.points[k + 1].current);
            // The sixth difference of a polynomial of the fifth degree is 0.
            const auto at = [&](int part) {
                return curve.LnVoltage(from + part * (to - from) / 6);
            };
            EXPECT_NEAR(
                at(0) - 6 * at(1) + 15 * at(2) - 20 * at(3) + 15 * at(4) - 6 * at(5) + at(6), 0,
                1e-6);
            // Five points of its slope, which is of the fourth, have its rise (Boole's rule).
            const auto slope = [&](int part) { return curve.Slope(from + part * (to - from) / 4); };
            const double rise =
                (7 * slope(0) + 32 * slope(1) + 12 * slope(2) + 32 * slope(3) + 7 * slope(4)) *
                (to - from) / 90;
            EXPECT_NEAR(at(6) - at(0), rise, 1e-6);
            ASSERT_FALSE(testing::Test::HasFailure()) << n;
        }
    }
}

TEST(SmoothKneeRandom, IsTheHighestPlaceOfItsDefinition) {
    const int curves = test::RandomRounds(2000);
    std::mt19937_64 random(test::RandomSeed(19780402));
    std::array<int, 3> found{};
    for (int n = 0; n < curves; ++n) {
        const Taken taken = TakeAny(random);
        const SmoothCurve& curve = taken.curve;
        for (const KneeRule rule : kKneeRules) {
            const auto knee = SmoothKneepoint(rule, curve).knee;
            if (!knee) continue;
            ++found.at(static_cast<std::size_t>(rule));
            // In volts for 10 % more voltage, or as 1 / slope.
            const auto bent = [&](double i) {
                if (rule != KneeRule::Asa1050) return 1 / std::max(curve.Slope(i), 1e-9);
                const double v = curve.LnVoltage(i);
                const double more = std::exp(curve.LnVoltage(i + std::log(1.5)) - v) - 1;
                return 5 * 0.1 / std::max(more, 1e-9);
            };
            const double limit = KneeThreshold(rule);
            const double i = std::log(knee->at.current);
            // The current has four decimals.
            const double near = 0.00006 / knee->at.current + 1e-6;
            EXPECT_LE(bent(i - near), limit);
            EXPECT_GE(bent(i + near), limit);
            const double end = curve.Last() - (rule == KneeRule::Asa1050 ? std::log(1.5) : 0);
            for (int k = 1; i + k / 20.0 < end; ++k)
                EXPECT_GT(bent(i + k / 20.0), limit);
            EXPECT_NEAR(std::exp(curve.LnVoltage(i)) / knee->at.voltage, 1,
                        1.5 * near + 0.06 / knee->at.voltage);
            ASSERT_FALSE(testing::Test::HasFailure()) << n << " " << static_cast<int>(rule);
        }
    }
    for (const int count : found)
        EXPECT_GT(count, curves / 4);
}

// The order of the points, and points that are zero, say nothing.
TEST(SmoothKneeRandom, OrderAndZerosDoNotMatter) {
    constexpr int kCurves = 50;
    std::mt19937_64 random(test::RandomSeed(19780403));
    for (int n = 0; n < kCurves; ++n) {
        Taken taken = TakeAny(random);
        Points mixed = taken.points;
        mixed.push_back({0, 100});
        mixed.push_back({0.1, 0});
        std::shuffle(mixed.begin(), mixed.end(), random);
        for (const KneeRule rule : kKneeRules) {
            EXPECT_EQ(SmoothKneepoint(rule, SmoothCurve(mixed)).knee,
                      SmoothKneepoint(rule, taken.curve).knee);
        }
    }
}

}  // namespace
}  // namespace davo
