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

TEST(SmoothCurveRandom, ItsSlopeIsItsDerivativeEverywhere) {
    const int curves = test::RandomRounds(2000);
    std::mt19937_64 random(test::RandomSeed(19780401));
    constexpr double kStep = 1e-5;
    for (int n = 0; n < curves; ++n) {
        const SmoothCurve curve = TakeAny(random).curve;
        std::uniform_real_distribution<double> somewhere(curve.First() + kStep,
                                                         curve.Last() - kStep);
        for (int k = 0; k < 20; ++k) {
            const double i = somewhere(random);
            EXPECT_NEAR((curve.LnVoltage(i + kStep) - curve.LnVoltage(i - kStep)) / (2 * kStep),
                        curve.Slope(i), 1e-3);
            // Nor has it steps.
            EXPECT_NEAR(curve.Slope(i + kStep), curve.Slope(i - kStep), 1e-2);
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
}

// The points scatter about it by what they are rounded by and their noise.
TEST(SmoothCurveRandom, GoesThroughThePoints) {
    const int curves = test::RandomRounds(500);
    std::mt19937_64 random(test::RandomSeed(19780404));
    for (int n = 0; n < curves; ++n) {
        const Taken taken = TakeAny(random);
        for (const CurvePoint& point : taken.points) {
            const double rounding = 0.05 / point.voltage + 2 * 0.0001 / point.current;
            EXPECT_NEAR(taken.curve.LnVoltage(std::log(point.current)), std::log(point.voltage),
                        0.025 + 2 * rounding);
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
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
