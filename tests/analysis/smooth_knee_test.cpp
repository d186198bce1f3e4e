// SPDX-License-Identifier: GPL-3.0-or-later
// The kneepoints of smooth curves that can be told by hand.

#include "analysis/smooth_knee.h"

#include <algorithm>
#include <cmath>

#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

std::optional<SmoothKnee> SmoothOf(KneeRule rule, const Points& points) {
    return SmoothKneepoint(rule, SmoothCurve(points)).knee;
}

// V = I^slope up to 1 A and 100 V, then by another slope; log-spaced.
Points Bent(double slopeBelow, double slopeAbove, int each) {
    Points points;
    for (int k = -each; k <= each; ++k) {
        const double i = static_cast<double>(k) / each;
        points.push_back(
            {std::pow(10, i), 100 * std::pow(10, i * (k < 0 ? slopeBelow : slopeAbove))});
    }
    return points;
}

TEST(SmoothKnee, LiesAtTheBendOfTwoStraightLines) {
    // At 1 A; ASA looks 10 % ahead: 110 I^1.2 = 100 (1.5 I)^0.1.
    const double asa = 100 * std::pow(std::pow(1.5, 0.1) / 1.1, 1.2 / 1.1);
    for (const KneeRule rule : kKneeRules) {
        const auto found = SmoothOf(rule, Bent(1.2, 0.1, 12));
        ASSERT_TRUE(found.has_value());
        EXPECT_NEAR(found->at.voltage, rule == KneeRule::Asa1050 ? asa : 100, 3)
            << static_cast<int>(rule);
        EXPECT_LE(found->uncertainty, 10);
    }
}

// Whatever their order, each of them counts as much as the others.
TEST(SmoothKnee, PointsOfOneCurrentAreTheirMean) {
    Points mean = Bent(1.2, 0.1, 12);
    const CurvePoint middle = mean[10];
    std::vector<double> parts = {0.96, 1, 1.08};
    mean[10].voltage *= std::cbrt(parts[0] * parts[1] * parts[2]);
    const SmoothCurve expected(mean);
    do {
        Points points = Bent(1.2, 0.1, 12);
        points[10].voltage *= parts[0];
        for (const std::size_t other : {1U, 2U})
            points.push_back({middle.current, middle.voltage * parts[other]});
        const SmoothCurve curve(points);
        for (const double lnI : {-2.0, std::log(middle.current), 0.0, 2.0})
            EXPECT_NEAR(curve.LnVoltage(lnI), expected.LnVoltage(lnI), 1e-4) << parts[0];
    } while (std::next_permutation(parts.begin(), parts.end()));
}

// log V is a parabola of log I: v = 2 - (i - 1)^2 / 2, whose slope is 1 - i: 1 at 1 A and
// 10^1.5 V, and 1 / 1.81 at i = 1 - 1 / 1.81.
TEST(SmoothKnee, LiesWhereTheSlopeOfAParabolaIsTheRules) {
    Points points;
    for (int k = -20; k <= 18; ++k) {
        const double i = k / 20.0;
        points.push_back({std::pow(10, i), std::pow(10, 2 - (i - 1) * (i - 1) / 2)});
    }
    const auto near = [](const std::optional<SmoothKnee>& found, double i) {
        ASSERT_TRUE(found.has_value());
        const double voltage = std::pow(10, 2 - (i - 1) * (i - 1) / 2);
        EXPECT_NEAR(found->at.current / std::pow(10, i), 1, 0.01);
        EXPECT_NEAR(found->at.voltage / voltage, 1, 0.01);
        EXPECT_LE(std::abs(found->at.voltage - voltage), found->uncertainty);
    };
    near(SmoothOf(KneeRule::Ieee45, points), 0);
    near(SmoothOf(KneeRule::Ieee30, points), 1 - 1 / 1.81);
    // log10 1.1 more voltage at i + log10 1.5: the chord's slope is 1 - i - log10(1.5) / 2.
    near(SmoothOf(KneeRule::Asa1050, points),
         1 - std::log10(1.5) / 2 - std::log10(1.1) / std::log10(1.5));
}

// The parabola again, from before and after the place of its slope on: a kneepoint that is at the
// first point, or hardly above it, is open, and none is below it.
TEST(SmoothKnee, IsLookedForDownToTheFirstPoint) {
    int justAbove = 0;
    for (int start = -60; start <= 60; ++start) {
        const double first = start / 2000.0;
        Points points;
        for (int k = 0; k <= 24; ++k) {
            const double i = first + k / 12.0;
            points.push_back({std::pow(10, i), std::pow(10, 2 - (i - 1) * (i - 1) / 2)});
        }
        const SmoothCurve curve(points);
        const SmoothVerdict verdict = SmoothKneepoint(KneeRule::Ieee45, curve);
        const double excess = curve.Slope(curve.First()) - 1;
        EXPECT_EQ(verdict.isOpen || verdict.knee || verdict.range, excess >= 0) << start;
        EXPECT_NEAR(verdict.reach, points.back().current, 1e-9) << start;
        // The slope falls by 1 where the current is ten times as high.
        if (excess >= 0 && excess < 1 / 100.0) ++justAbove;
    }
    EXPECT_GT(justAbove, 5);
}

// Two points below the bend, far from each other.
TEST(SmoothKnee, WhatIsTooUncertainForANumberIsARange) {
    const Points points = {{0.01, 10}, {0.1, 120}, {1, 400}, {3, 410}, {9, 415}};
    const SmoothVerdict verdict = SmoothKneepoint(KneeRule::Ieee30, SmoothCurve(points));
    EXPECT_EQ(verdict.knee, std::nullopt);
    ASSERT_TRUE(verdict.range.has_value());
    EXPECT_GT(verdict.range->low, 120);
    EXPECT_LT(verdict.range->low * 1.1, verdict.range->high);
    // No curve that rises has its kneepoint above its highest point.
    EXPECT_LE(verdict.range->high, 415);
    EXPECT_FALSE(verdict.isOpen);
    EXPECT_GT(verdict.reach, 0);
    // With more points there it is a number.
    Points more = points;
    more.insert(more.begin() + 2, {{0.2, 235}, {0.3, 330}, {0.4, 370}, {0.6, 388}});
    const SmoothVerdict sure = SmoothKneepoint(KneeRule::Ieee30, SmoothCurve(more));
    EXPECT_EQ(sure.range, std::nullopt);
    ASSERT_TRUE(sure.knee.has_value());
    EXPECT_LE(sure.knee->uncertainty, 0.1 * sure.knee->at.voltage + 0.05);
    EXPECT_GT(sure.reach, 0);
}

// Three steep points and one far above them: a curve through them can rise anywhere between.
TEST(SmoothKnee, NoneIsAboveThePoints) {
    const Points points = {{1, 100}, {1.1, 130}, {1.21, 169}, {6.05, 170.7}};
    for (const KneeRule rule : kKneeRules) {
        const SmoothVerdict verdict = SmoothKneepoint(rule, SmoothCurve(points));
        EXPECT_EQ(verdict.knee, std::nullopt);
        EXPECT_LE(verdict.range.value_or(KneeRange()).high, 170.7);
        // Then the curve does not reach far enough.
        EXPECT_EQ(verdict.reach, 0);
    }
    for (double far = 1.4; far < 9; far *= 1.01) {
        for (const KneeRule rule : kKneeRules) {
            const Points last = {points[0], points[1], points[2], {far, 170.7}};
            const SmoothVerdict verdict = SmoothKneepoint(rule, SmoothCurve(last));
            EXPECT_LT(verdict.knee.value_or(SmoothKnee()).at.voltage, 1.05 * 170.7) << far;
        }
    }
}

// One point between two that are far from each other, nearer to one or to the other.
TEST(SmoothKnee, ANumberIsUncertainByATenthAtMost) {
    int numbers = 0;
    int ranges = 0;
    for (double current = 0.12; current < 1; current *= 1.005) {
        const double voltage = 400 * std::tanh(current / 0.3);
        const Points points = {{0.01, 10}, {0.1, 120}, {current, voltage},
                               {1, 400},   {3, 410},   {9, 415}};
        const SmoothVerdict verdict = SmoothKneepoint(KneeRule::Ieee30, SmoothCurve(points));
        if (verdict.knee) {
            ++numbers;
            EXPECT_LE(verdict.knee->uncertainty, 0.1 * verdict.knee->at.voltage) << current;
        }
        ranges += verdict.range ? 1 : 0;
    }
    EXPECT_GT(numbers, 100);
    EXPECT_GT(ranges, 100);
}

TEST(SmoothKnee, NeedsFourPoints) {
    const Points whole = {{0.1, 10}, {0.2, 30}, {0.3, 50}, {3, 52}, {9, 53}};
    EXPECT_NE(SmoothOf(KneeRule::Ieee30, whole), std::nullopt);
    EXPECT_EQ(SmoothOf(KneeRule::Ieee30, {}), std::nullopt);
    EXPECT_FALSE(SmoothKneepoint(KneeRule::Ieee30, SmoothCurve(Points())).isBent);
    EXPECT_TRUE(SmoothCurve(Points(whole.begin(), whole.begin() + 4)).Exists());
    EXPECT_FALSE(SmoothCurve(Points(whole.begin(), whole.begin() + 3)).Exists());
    EXPECT_EQ(SmoothOf(KneeRule::Ieee30, {whole[0], whole[1], whole[3]}), std::nullopt);
    Points zero = whole;
    zero[1] = {0, 30};
    zero[2] = {0.3, 0};
    EXPECT_EQ(SmoothOf(KneeRule::Ieee30, zero), std::nullopt);
}

TEST(SmoothKnee, FallingPointsAreScatter) {
    Points points;
    for (int k = 0; k < 26; ++k) {
        const double current = 0.003 * std::pow(1.3, k);
        points.push_back({current, 200 * current / (0.04 + current)});
    }
    const auto smooth = SmoothOf(KneeRule::Ieee30, points);
    for (std::size_t k = 0; k < points.size(); ++k)
        points[k].voltage *= 1 + (k % 2 == 0 ? 0.004 : -0.004);
    ASSERT_LT(points[25].voltage, points[24].voltage);
    const auto scattered = SmoothOf(KneeRule::Ieee30, points);
    ASSERT_TRUE(smooth.has_value());
    ASSERT_TRUE(scattered.has_value());
    EXPECT_NEAR(scattered->at.voltage / smooth->at.voltage, 1, 0.01);
    EXPECT_GT(scattered->uncertainty, smooth->uncertainty);
}

// A reading that was disturbed, wherever it is.
TEST(SmoothKnee, OneWrongPointMovesItLittle) {
    Points clean;
    for (int k = 0; k < 16; ++k) {
        const double current = 0.003 * std::pow(1.6, k);
        clean.push_back({current, std::round(2000 * current / (0.04 + current)) / 10});
    }
    int numbers = 0;
    for (const KneeRule rule : {KneeRule::Asa1050, KneeRule::Ieee30}) {
        const double voltage = SmoothOf(rule, clean).value_or(SmoothKnee()).at.voltage;
        ASSERT_GT(voltage, 0);
        for (std::size_t k = 1; k + 1 < clean.size(); ++k) {
            for (const double factor : {0.6, 1.5}) {
                Points points = clean;
                points[k].voltage *= factor;
                const SmoothVerdict verdict = SmoothKneepoint(rule, SmoothCurve(points));
                if (!verdict.knee) continue;
                ++numbers;
                EXPECT_NEAR(verdict.knee->at.voltage / voltage, 1, 0.03)
                    << static_cast<int>(rule) << ", point " << k << " * " << factor;
            }
        }
    }
    EXPECT_GT(numbers, 50);  // of 56
}

// Whether it was left out shows in the highest voltage: it is above all others.
TEST(SmoothKnee, APointIsLeftOutThatIsFartherOffThanPointsScatter) {
    const auto isLeftOut = [](int count, double off, bool isStraight) {
        Points points;
        for (int k = 0; k < count; ++k) {
            const double current = 0.01 * std::pow(1000, k / (count - 1.0));
            const double bent = std::tanh(std::pow(current / 0.3, 0.9)) * std::pow(current, 0.03);
            points.push_back({current, 5000 * (isStraight ? std::pow(current, 0.8) : bent)});
        }
        CurvePoint& wrong = points[points.size() - (isStraight ? 4 : 3)];
        if (isStraight) wrong.voltage = points.back().voltage;
        wrong.voltage *= off;
        EXPECT_GT(wrong.voltage, points.back().voltage);
        return SmoothCurve(points).HighestLnVoltage() < std::log(wrong.voltage) - 1e-9;
    };
    EXPECT_FALSE(isLeftOut(16, 1.039, false));
    EXPECT_TRUE(isLeftOut(16, 1.042, false));
    EXPECT_FALSE(isLeftOut(32, 1.053, false));
    EXPECT_TRUE(isLeftOut(32, 1.056, false));
    // One curve less a point is hardly likelier than the whole of ten.
    EXPECT_FALSE(isLeftOut(10, 1.055, false));
    // Of seven none tells which of them is wrong.
    EXPECT_FALSE(isLeftOut(7, 3, true));
    EXPECT_TRUE(isLeftOut(8, 3, true));
}

TEST(SmoothKnee, TheFirstPointCanBeTheWrongOne) {
    Points points;
    for (int k = 0; k < 12; ++k) {
        const double current = 0.01 * std::pow(1000, k / 11.0);
        points.push_back(
            {current, 5000 * std::tanh(std::pow(current / 0.3, 0.9)) * std::pow(current, 0.03)});
    }
    points[0].voltage *= 2.5;
    EXPECT_DOUBLE_EQ(SmoothCurve(points).First(), std::log(points[1].current));
}

TEST(SmoothKnee, PointsOfOneCurrentAreOne) {
    const Points once = {{0.1, 10}, {0.2, 25}, {0.3, 50}, {3, 52}, {9, 53}};
    Points twice = once;
    twice.insert(twice.begin() + 1, {0.2, 25});
    EXPECT_EQ(SmoothOf(KneeRule::Ieee30, twice), SmoothOf(KneeRule::Ieee30, once));
}

// In logarithms, as all of the curve.
TEST(SmoothKnee, TwoReadingsOfOneCurrentAreTheirMean) {
    const Points once = {{0.1, 10}, {0.2, 25}, {0.3, 50}, {3, 52}, {9, 53}};
    for (const double factor : {1.02, 0.98}) {
        Points twice = once;
        twice[1].voltage *= factor;
        twice.insert(twice.begin() + 1, {0.2, 25 / factor});
        const SmoothCurve mean(once);
        const SmoothCurve curve(twice);
        for (const CurvePoint& point : once) {
            const double lnI = std::log(point.current);
            EXPECT_NEAR(curve.LnVoltage(lnI), mean.LnVoltage(lnI), 1e-4) << point.current;
        }
    }
}

// Over five decades of current, all of the bend is in the last fifth of a step of ln I.
TEST(SmoothKnee, ItsLastStepIsNotTheOneBeforeContinued) {
    Points points;
    for (int k = 0; k <= 30; ++k)
        points.push_back({8.5 * std::pow(10, (k - 30) / 6.0), 850 * std::pow(10, (k - 30) / 6.0)});
    for (const double current : {8.8, 9.1, 9.4, 9.7, 10.0})
        points.push_back({current, 850});
    const SmoothCurve curve(points);
    EXPECT_NEAR(curve.LnVoltage(curve.Last()), std::log(850), 0.02);
}

TEST(SmoothKnee, WildPointsHaveACurve) {
    Points points;
    for (int k = 0; k < 48; ++k)
        points.push_back({0.01 * std::pow(1.2, k), k % 2 == 0 ? 1.0 : 1000.0});
    const SmoothCurve curve(points);
    for (const CurvePoint& point : points) {
        EXPECT_TRUE(std::isfinite(curve.LnVoltage(std::log(point.current))));
        EXPECT_TRUE(std::isfinite(curve.Slope(std::log(point.current))));
    }
}

Points LineOf(double slope, double volts, int count = 13) {
    Points points;
    for (int k = 0; k < count; ++k)
        points.push_back({std::exp(k), volts * std::exp(slope * k)});
    return points;
}

// Exact points over 12 of ln I: what is left open is a step of 0.1 V at 1 V, and at 1000 V the
// little by which such points may scatter.
TEST(SmoothKnee, WhatIsSurelySteepOrFlatIsNotExplainedByTheSteps) {
    const SmoothCurve low(LineOf(0.5, 1));
    EXPECT_TRUE(low.IsSurelySteeper(0.4975, 12));
    EXPECT_TRUE(low.IsSurelyFlatter(0.5025, 0));
    EXPECT_FALSE(low.IsSurelySteeper(0.4995, 12));
    EXPECT_FALSE(low.IsSurelyFlatter(0.5005, 0));
    const SmoothCurve high(LineOf(0.5, 1000));
    EXPECT_TRUE(high.IsSurelySteeper(0.4995, 12));
    EXPECT_TRUE(high.IsSurelyFlatter(0.5005, 0));
    EXPECT_FALSE(high.IsSurelySteeper(0.4997, 12));
    EXPECT_FALSE(high.IsSurelyFlatter(0.5003, 0));
    // Falling to 2.5 V the step is at the upper point.
    const SmoothCurve falling(LineOf(-0.5, 1000));
    EXPECT_FALSE(falling.IsSurelySteeper(-0.5, 12));
    EXPECT_FALSE(falling.IsSurelyFlatter(-0.5, 0));
}

// Four points at 1 mA and one at the other end: a step of the current is a tenth or a fifth of
// what the slope is taken from.
TEST(SmoothKnee, TheStepsAreTwiceAsLargeWhereSixteenBitsWouldNotDo) {
    for (const double last : {6.0, 6.5535, 6.56, 7.0}) {
        Points points;
        for (const double current : {0.001, 0.0011, 0.0012, 0.0013, last})
            points.push_back({current, 1000 * std::sqrt(1000 * current)});
        const SmoothCurve curve(points);
        EXPECT_EQ(curve.IsSurelySteeper(0.4953, 9), last < 6.554) << last;
        EXPECT_EQ(curve.IsSurelyFlatter(0.5048, -9), last < 6.554) << last;
    }
}

// 1.0 and 1.1 mA, one step apart, may both be 1.05 mA.
TEST(SmoothKnee, TheStepsOfBothPointsAreOpen) {
    const SmoothCurve curve(Points{{0.001, 1000}, {0.0011, 1000}, {0.01, 10000}, {0.1, 100000}});
    EXPECT_FALSE(curve.IsSurelyFlatter(0.9, -9));
    EXPECT_TRUE(curve.IsSurelyFlatter(1.1, -9));
}

TEST(SmoothKnee, BeyondItsEndsACurveIsAsAtThem) {
    const SmoothCurve curve(Bent(1.2, 0.1, 12));
    for (const double off : {0.01, 1.0}) {
        EXPECT_EQ(curve.Slope(curve.Last() + off), curve.Slope(curve.Last()));
        EXPECT_EQ(curve.LnVoltage(curve.Last() + off), curve.LnVoltage(curve.Last()));
        EXPECT_EQ(curve.Slope(curve.First() - off), curve.Slope(curve.First()));
        EXPECT_EQ(curve.LnVoltage(curve.First() - off), curve.LnVoltage(curve.First()));
    }
}

TEST(SmoothKnee, TwoPointsCountOnTheSideOfTheirMiddle) {
    const Points points = LineOf(0.5, 1000);
    const SmoothCurve curve(points);
    const auto middle = [&](std::size_t k) {
        return (std::log(points[k].current) + std::log(points[k + 1].current)) / 2;
    };
    for (const double place : {1.0, 4.0, 11.0}) {
        EXPECT_TRUE(curve.IsSurelySteeper(0.4, place)) << place;
        EXPECT_TRUE(curve.IsSurelyFlatter(0.6, place)) << place;
    }
    EXPECT_FALSE(curve.IsSurelySteeper(0.4, middle(0)));
    EXPECT_TRUE(curve.IsSurelySteeper(0.4, middle(0) + 0.01));
    EXPECT_FALSE(curve.IsSurelyFlatter(0.6, middle(11)));
    EXPECT_TRUE(curve.IsSurelyFlatter(0.6, middle(11) - 0.01));
    // The first two points alone are steeper, or flatter, than the others.
    for (const double off : {0.5, 1.5}) {
        Points first = points;
        first[0].voltage *= off;
        EXPECT_EQ(SmoothCurve(first).IsSurelySteeper(0.8, 1), off < 1);
        EXPECT_EQ(SmoothCurve(first).IsSurelyFlatter(0.3, 0), off > 1);
    }
}

TEST(SmoothKnee, NoVoltageIsKnownBetterThanAStep) {
    Points points;
    for (int k = 0; k < 48; ++k) {
        const double current = 0.05 * std::pow(1.12, k);
        points.push_back({current, 6 * std::tanh(std::pow(current / 0.5, 1.4))});
    }
    for (const KneeRule rule : kKneeRules) {
        const auto found = SmoothOf(rule, points);
        ASSERT_TRUE(found.has_value());
        EXPECT_EQ(found->uncertainty, 0.1) << static_cast<int>(rule);
    }
}

TEST(SmoothKnee, ManyPointsAreThinned) {
    const auto few = SmoothOf(KneeRule::Ieee30, Bent(1.2, 0.1, 12));
    const auto many = SmoothOf(KneeRule::Ieee30, Bent(1.2, 0.1, 500));
    ASSERT_TRUE(few.has_value());
    ASSERT_TRUE(many.has_value());
    EXPECT_NEAR(many->at.voltage, few->at.voltage, 10);
}

TEST(SmoothKnee, ThinnedPointsKeepTheirEnds) {
    for (const std::size_t count : {48U, 49U, 50U, 100U, 500U}) {
        Points points;
        for (std::size_t k = 1; k <= count; ++k)
            points.push_back({0.01 * static_cast<double>(k), static_cast<double>(k)});
        const SmoothCurve curve(points);
        EXPECT_DOUBLE_EQ(curve.First(), std::log(points.front().current)) << count;
        EXPECT_DOUBLE_EQ(curve.Last(), std::log(points.back().current)) << count;
    }
}

// The highest voltage is that of the last point but one.
TEST(SmoothKnee, OneOfFortyNinePointsIsLeftOut) {
    const auto highest = [](int count) {
        Points points;
        for (int k = 0; k < count; ++k)
            points.push_back({0.05 * std::pow(1.12, k), 600 * std::tanh(std::pow(1.12, k) / 10)});
        points[points.size() - 2].voltage = 601;
        return std::exp(SmoothCurve(points).HighestLnVoltage());
    };
    EXPECT_NEAR(highest(48), 601, 1e-6);
    EXPECT_NEAR(highest(49), 600, 0.01);
}

TEST(SmoothKnee, ACurveThatEndsTooSoonHasNoneByAsa) {
    Points points = Bent(1.2, 0.02, 20);
    points.resize(23);  // up to 1.26 A
    EXPECT_NE(SmoothOf(KneeRule::Ieee45, points), std::nullopt);
    EXPECT_EQ(SmoothOf(KneeRule::Asa1050, points), std::nullopt);
    const Points steep = Bent(1.2, 1.1, 20);
    for (const KneeRule rule : kKneeRules) {
        EXPECT_EQ(SmoothOf(rule, steep), std::nullopt);
        EXPECT_FALSE(SmoothKneepoint(rule, SmoothCurve(steep)).isBent);
        EXPECT_TRUE(SmoothKneepoint(rule, SmoothCurve(Bent(1.2, 0.02, 20))).isBent);
    }
}

// 25 to 26 steps of 0.1 mA: the steepest pair rises by anything from 40 to 50 degrees.
TEST(SmoothKnee, OneStepOfTheCurrentMakesNoKneepoint) {
    Points points;
    for (int k = 0; k < 12; ++k) {
        const double current = 0.001 * std::pow(2, k);
        points.push_back({current, std::round(2000 * current / (0.3 + current) * 10) / 10});
    }
    points[0].current -= 0.00005;
    const SmoothVerdict verdict = SmoothKneepoint(KneeRule::Ieee45, SmoothCurve(points));
    EXPECT_EQ(verdict.knee, std::nullopt);
    EXPECT_NE(SmoothOf(KneeRule::Ieee30, points), std::nullopt);
}

TEST(SmoothKnee, NumbersThatAreFarTooLargeHaveNone) {
    const Points wild = {{1e-300, 1e-300}, {1e-200, 1e300}, {1, 1e308}, {1e300, 1e308}, {1e308, 1}};
    for (const KneeRule rule : kKneeRules)
        EXPECT_NO_THROW(SmoothOf(rule, wild));
}

}  // namespace
}  // namespace davo
