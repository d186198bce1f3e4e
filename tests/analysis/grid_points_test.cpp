// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/grid_points.h"

#include <limits>

#include "common/run_time_error.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {

void PrintTo(const CurvePoint& point, std::ostream* out) {
    *out << point.current << " A " << point.voltage << " V";
}

namespace {

using Values = std::vector<double>;
using Curve = std::vector<CurvePoint>;

int ErrorOf(const Values& current, const Values& voltage) {
    return test::ErrorBy([&] { WithGridPoints(current, voltage); });
}

TEST(GridPoints, TheGridHasThirteenCurrentsAndAZero) {
    EXPECT_EQ(kGridCurrents, (std::array<double, 14>{0.01, 0.02, 0.04, 0.08, 0.1, 0.2, 0.4, 0.8, 1,
                                                     2, 4, 8, 10, 0}));
}

TEST(GridPoints, StandBetweenThePointsOnTheLineThroughThem) {
    const Curve expected = {{0.3, 100}, {0.4, 120}, {0.5, 140}};
    EXPECT_EQ(WithGridPoints(Values{0.3, 0.5}, Values{100, 140}), expected);
}

TEST(GridPoints, SeveralStandInOnePairAndNoneOutside) {
    const Curve expected = {{0.015, 10}, {0.02, 12.6}, {0.04, 23.1}, {0.05, 28.4}, {0.07, 30}};
    EXPECT_EQ(WithGridPoints(Values{0.015, 0.05, 0.07}, Values{10, 28.4, 30}), expected);
}

TEST(GridPoints, APointThatTheWalkMeetsOnTheGridStandsOnce) {
    const Curve expected = {{0.1, 10}, {0.2, 20}, {0.4, 30}};
    EXPECT_EQ(WithGridPoints(Values{0.1, 0.2, 0.4}, Values{10, 20, 30}), expected);
}

// The grid current at the upper end of a pair belongs to that pair, and the point follows as well.
TEST(GridPoints, APointOnTheGridAfterOneOffTheGridStandsTwice) {
    EXPECT_EQ(WithGridPoints(Values{0.15, 0.2, 0.3}, Values{10, 20, 30}),
              (Curve{{0.15, 10}, {0.2, 20}, {0.2, 20}, {0.3, 30}}));
    EXPECT_EQ(WithGridPoints(Values{0.15, 0.2}, Values{10, 20}),
              (Curve{{0.15, 10}, {0.2, 20}, {0.2, 20}}));
}

TEST(GridPoints, AreRoundedLikeEveryPoint) {
    const Curve expected = {{0.0123, 10.1}, {0.02, 15.5}, {0.0346, 26}};
    EXPECT_EQ(WithGridPoints(Values{0.01234, 0.03456}, Values{10.06, 25.96}), expected);
}

TEST(GridPoints, AreNotInsertedIntoAFallingPair) {
    // The walk has passed 0.4 at the first point and does not go back for the rising pair.
    EXPECT_EQ(WithGridPoints(Values{0.5, 0.3, 0.5}, Values{50, 60, 70}),
              (Curve{{0.5, 50}, {0.3, 60}, {0.5, 70}}));
    EXPECT_EQ(WithGridPoints(Values{0.3, 0.3, 0.5}, Values{50, 60, 70}),
              (Curve{{0.3, 50}, {0.3, 60}, {0.4, 65}, {0.5, 70}}));
}

TEST(GridPoints, OnePointStays) {
    EXPECT_EQ(WithGridPoints(Values{0.5}, Values{50}), (Curve{{0.5, 50}}));
}

TEST(GridPoints, ALastPairAcrossTenAmperesEndsTheWalk) {
    const Curve expected = {{9, 100}, {10, 110}, {12, 130}};
    EXPECT_EQ(WithGridPoints(Values{9, 12}, Values{100, 130}), expected);
    EXPECT_EQ(WithGridPoints(Values{7, 9, 12}, Values{90, 100, 130}),
              (Curve{{7, 90}, {8, 95}, {9, 100}, {10, 110}, {12, 130}}));
}

// The end rule leaves the lower point of a last pair above 10 A out.
TEST(GridPoints, ALastPairAboveTenAmperesKeepsItsUpperPointOnly) {
    EXPECT_EQ(WithGridPoints(Values{12, 15}, Values{100, 130}), (Curve{{15, 130}}));
}

TEST(GridPoints, ACurrentAboveTenAmperesBeforeTheLastPairIsASubscriptError) {
    EXPECT_EQ(ErrorOf({9, 12, 15}, {100, 130, 140}), 9);
    EXPECT_EQ(ErrorOf({11, 12, 15}, {100, 130, 140}), 9);
    EXPECT_EQ(ErrorOf({9, 10, 15}, {100, 130, 140}), 9);
    EXPECT_EQ(test::MessageThrownBy([] {
                  WithGridPoints(Values{9, 12, 15}, Values{1, 2, 3});
              }),
              "Run-time error '9': Subscript out of range: the points of a test at 10 A or above "
              "do not fit a report. The record panel and its CSV file show the test.");
    // A point of exactly 10 A that the walk meets on the grid has not used it up.
    EXPECT_EQ(ErrorOf({4, 8, 10, 15}, {90, 100, 130, 140}), 0);
}

TEST(GridPoints, ACurveWithoutPointsIsASubscriptError) {
    EXPECT_EQ(ErrorOf({}, {}), 9);
    EXPECT_EQ(ErrorOf({1, 2}, {1}), 9);
}

TEST(GridPoints, AHundredAndOnePointsAreTheMost) {
    Values current;
    Values voltage;
    for (int i = 0; i < 101; ++i) {
        current.push_back(0.5 + 0.001 * i);
        voltage.push_back(100.0 + i);
    }
    EXPECT_EQ(WithGridPoints(current, voltage).size(), 101U);
    current.back() = 0.9;  // 0.8 comes in
    EXPECT_EQ(ErrorOf(current, voltage), 9);
    current.erase(current.begin());
    voltage.erase(voltage.begin());
    EXPECT_EQ(WithGridPoints(current, voltage).size(), 101U);
}

TEST(GridPoints, AValueThatIsNotFiniteIsAnOverflow) {
    constexpr double kHuge = std::numeric_limits<double>::max();
    EXPECT_EQ(ErrorOf({0.5, 0.9}, {-kHuge, kHuge}), 6);
    EXPECT_EQ(ErrorOf({-kHuge, kHuge}, {1, 2}), 6);
}

}  // namespace
}  // namespace davo
