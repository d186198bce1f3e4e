// SPDX-License-Identifier: GPL-3.0-or-later
// The kneepoints of smooth curves that can be told by hand.

#include "analysis/smooth_knee.h"

#include <cmath>

#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

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
    for (const KneeRule rule : kKneeRules) {
        const auto found = SmoothKneepoint(rule, Bent(1.2, 0.1, 20));
        ASSERT_TRUE(found.has_value());
        // Between the point below the bend and the bend; ASA looks 10 % ahead, which is more.
        EXPECT_LE(found->voltage, 100.5);
        EXPECT_GE(found->voltage, 100 * std::pow(10, -1.2 / 20)) << static_cast<int>(rule);
    }
}

// log V is a parabola of log I: v = 2 - (i - 1)^2 / 2, whose slope is 1 - i: 1 at 1 A, and
// 0.57735 at 10^0.42265 A.
TEST(SmoothKnee, LiesWhereTheSlopeOfAParabolaIsTheRules) {
    Points points;
    for (int k = -40; k <= 36; ++k) {
        const double i = k / 40.0;
        points.push_back({std::pow(10, i), std::pow(10, 2 - (i - 1) * (i - 1) / 2)});
    }
    const auto at45 = SmoothKneepoint(KneeRule::Ieee45, points);
    ASSERT_TRUE(at45.has_value());
    EXPECT_NEAR(at45->current, 1, 0.005);
    EXPECT_NEAR(at45->voltage, std::pow(10, 1.5), 0.2);
    const auto at30 = SmoothKneepoint(KneeRule::Ieee30, points);
    ASSERT_TRUE(at30.has_value());
    EXPECT_NEAR(at30->current, std::pow(10, 0.42265), 0.02);
    EXPECT_NEAR(at30->voltage, std::pow(10, 2 - 1.0 / 6), 0.4);
    // log10 1.1 more voltage at i + log10 1.5: the chord's slope is 1 - i - log10(1.5) / 2.
    const double chord = std::log10(1.1) / std::log10(1.5);
    const double i = 1 - std::log10(1.5) / 2 - chord;
    const auto asa = SmoothKneepoint(KneeRule::Asa1050, points);
    ASSERT_TRUE(asa.has_value());
    EXPECT_NEAR(asa->current, std::pow(10, i), 0.03);
    EXPECT_NEAR(asa->voltage, std::pow(10, 2 - (i - 1) * (i - 1) / 2), 0.4);
}

TEST(SmoothKnee, NeedsFourPointsThatRise) {
    const Points whole = {{0.1, 10}, {0.2, 30}, {0.3, 50}, {3, 52}, {9, 53}};
    EXPECT_NE(SmoothKneepoint(KneeRule::Ieee45, whole), std::nullopt);
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, {}), std::nullopt);
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, {whole[0], whole[1], whole[3]}), std::nullopt);
    Points zero = whole;
    zero[1] = {0, 30};
    zero[2] = {0.3, 0};
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, zero), std::nullopt);
}

TEST(SmoothKnee, AFallIsTakenUpToTheRulesRounding) {
    const Points whole = {{0.1, 1000}, {0.2, 3000}, {0.3, 5000}, {3, 5200}, {9, 5210}};
    Points fallen = whole;
    fallen[4].voltage = 5200 * (1 - 0.0004);
    EXPECT_NE(SmoothKneepoint(KneeRule::Ieee45, fallen), std::nullopt);
    fallen[4].voltage = 5200 * (1 - 0.0006);
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, fallen), std::nullopt);
    fallen = whole;
    fallen[4].current = 3 * (1 - 0.0006);
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, fallen), std::nullopt);
}

TEST(SmoothKnee, PointsOfTheSameCurrentCountAsTheHighest) {
    const Points once = {{0.1, 10}, {0.2, 30}, {0.3, 50}, {3, 52}, {9, 53}};
    Points twice = once;
    twice.insert(twice.begin() + 1, {0.2, 25});
    EXPECT_EQ(SmoothKneepoint(KneeRule::Ieee45, twice), SmoothKneepoint(KneeRule::Ieee45, once));
}

TEST(SmoothKnee, ACurveThatEndsTooSoonHasNoneByAsa) {
    Points points = Bent(1.2, 0.02, 20);
    points.resize(35);  // up to 5 A and 103 V
    EXPECT_NE(SmoothKneepoint(KneeRule::Ieee45, points), std::nullopt);
    const Points steep = Bent(1.2, 1.1, 20);
    for (const KneeRule rule : kKneeRules)
        EXPECT_EQ(SmoothKneepoint(rule, steep), std::nullopt);
}

}  // namespace
}  // namespace davo
