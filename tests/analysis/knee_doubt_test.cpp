// SPDX-License-Identifier: GPL-3.0-or-later
// Why there is no kneepoint and why one is doubtful, in words.

#include "analysis/knee_doubt.h"

#include <sstream>

#include "analysis/smooth_knee.h"
#include "common/files.h"
#include "common/numbers.h"
#include "tests/analysis/published_curves.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

KneeFact FactOf(KneeRule rule, const Points& points) {
    for (const KneeFact& fact : KneesOf(points)) {
        if (fact.rule == rule) return fact;
    }
    return {};
}

void ExpectNone(const KneeFact& fact, const char* printed, const std::string& reason) {
    EXPECT_EQ(fact.printed.voltage, printed);
    EXPECT_EQ(fact.reason, reason);
    EXPECT_EQ(fact.doubt, "");
}

// Points from current/voltage factors.
Points Growing(std::initializer_list<CurvePoint> factors) {
    Points points = {{1, 100}};
    for (const CurvePoint& factor : factors) {
        points.push_back(
            {points.back().current * factor.current, points.back().voltage * factor.voltage});
    }
    return points;
}

TEST(KneeDoubt, TooFewPoints) {
    const Points points = {{0.1, 10}, {0.2, 20}, {0.3, 30}};
    for (const KneeRule rule : kKneeRules) {
        ExpectNone(FactOf(rule, {}), "N/A", "There is no excitation curve.");
        ExpectNone(FactOf(rule, {points[0]}), "N/A", "Only 1 point: a kneepoint needs at least 4.");
        ExpectNone(FactOf(rule, points), "N/A", "Only 3 points: a kneepoint needs at least 4.");
    }
}

TEST(KneeDoubt, NoPairAboveTheLimit) {
    const Points points = Growing({{1.1, 1.3}, {1.1, 1.3}, {1.1, 1.3}});
    ExpectNone(FactOf(KneeRule::Ieee45, points), "0",
               "The core did not saturate: no pair of points lies above the rule's limit. Raise "
               "the voltage further.");
    EXPECT_EQ(FactOf(KneeRule::Ieee45, points).smooth, std::nullopt);
}

// The digits of small currents bend the smooth curve; the rule sees no bend at all.
TEST(KneeDoubt, ACurveThatIsNowhereBentHasNoSmoothKneepoint) {
    const Points points = {{0.0011, 80},  {0.0012, 90},  {0.0014, 100}, {0.0015, 120},
                           {0.0016, 140}, {0.0018, 170}, {0.0020, 210}, {0.0023, 260},
                           {0.0026, 320}, {0.0029, 390}};
    ExpectNone(FactOf(KneeRule::Ieee30, points), "0",
               "The core did not saturate: no pair of points lies above the rule's limit. Raise "
               "the voltage further.");
    EXPECT_EQ(FactOf(KneeRule::Ieee30, points).smooth, std::nullopt);
}

TEST(KneeDoubt, EveryPairAboveTheLimit) {
    const Points points = Growing({{2, 1.05}, {2, 1.05}, {2, 1.05}, {2, 1.05}});
    for (const KneeRule rule : kKneeRules) {
        ExpectNone(FactOf(rule, points), "0",
                   "The curve is bent from its first point on: every pair of points lies above the "
                   "rule's limit. Take points at lower voltages.");
    }
}

TEST(KneeDoubt, OnlyTheHighestPairBelowTheLimit) {
    const Points points = Growing({{2, 1.05}, {2, 1.05}, {2, 1.05}, {1.05, 1.2}});
    ExpectNone(FactOf(KneeRule::Ieee45, points), "0",
               "Only the highest points lie below the rule's limit, all others above it. Check the "
               "highest points.");
}

TEST(KneeDoubt, BentAtTheFirstPoints) {
    const Points points = Growing({{1.1, 1.3}, {1.1, 1.3}, {5, 1.01}});
    const KneeFact fact = FactOf(KneeRule::Ieee45, points);
    ASSERT_TRUE(fact.smooth.has_value());
    ExpectNone(fact, "N/A",
               "The curve bends at its first three points already. Take more points at lower "
               "voltages. A smooth curve through the points has its kneepoint at " +
                   Picture(fact.smooth->voltage, "###0.0") + " V, " +
                   Picture(fact.smooth->current, "###0.0000") + " A.");
}

TEST(KneeDoubt, AnExactHitOfThe30DegreeRule) {
    Points points = Growing({{1.1, 1.3}, {1.1, 1.3}, {1.181, 1.1}, {5, 1.01}});
    const KneeFact fact = FactOf(KneeRule::Ieee30, points);
    EXPECT_EQ(fact.printed, Kneepoint());
    EXPECT_TRUE(fact.reason.starts_with(
        "The points at 169.0 V and 185.9 V meet the limit of 1.81 exactly; this rule has no "
        "kneepoint then. A smooth curve through the points has its kneepoint at "))
        << fact.reason;
}

TEST(KneeDoubt, NoTwoPointsToCompare) {
    ExpectNone(FactOf(KneeRule::Ieee45, {{0, 1}, {0, 2}, {0, 3}, {4, 5}}), "0",
               "No two points can be compared: current or voltage is zero.");
}

TEST(KneeDoubt, AFallThatHidesTheKneepointIsNamed) {
    Points points = Growing({{1.2, 1.05}, {1.2, 1.05}, {1.2, 1.05}, {1.2, 1.05}, {1.1, 0.9}});
    ExpectNone(
        FactOf(KneeRule::Ieee45, points), "0",
        "Only the highest points lie below the rule's limit, all others above it. Check the "
        "highest points. From point 5 (121.6 V, 2.0736 A) to point 6 (109.4 V, 2.2810 A) the "
        "voltage falls; one wrong point can hide the kneepoint.");
    points.back() = {2, 125};
    EXPECT_TRUE(FactOf(KneeRule::Ieee45, points)
                    .reason.ends_with("From point 5 (121.6 V, 2.0736 A) to point 6 (125.0 V, "
                                      "2.0000 A) the current falls; one wrong point can hide the "
                                      "kneepoint."));
    points.back() = {2, 120};
    EXPECT_TRUE(FactOf(KneeRule::Ieee45, points)
                    .reason.ends_with("From point 5 (121.6 V, 2.0736 A) to point 6 (120.0 V, "
                                      "2.0000 A) current and voltage fall; one wrong point can "
                                      "hide the kneepoint."));
}

TEST(KneeDoubt, AFallThatMovesTheKneepointIsNamed) {
    // Every pair is steep up to 100 V, bent above; one voltage in the bent part is too low.
    Points points = {{0.01, 20}, {0.02, 45}, {0.03, 70}, {0.04, 100},
                     {0.1, 110}, {0.2, 114}, {0.4, 112}, {0.8, 117}};
    const KneeFact fact = FactOf(KneeRule::Ieee45, points);
    EXPECT_TRUE(fact.At().has_value());
    EXPECT_EQ(fact.reason, "");
    EXPECT_EQ(fact.doubt,
              "From point 6 (114.0 V, 0.2000 A) to point 7 (112.0 V, 0.4000 A) the voltage falls; "
              "one wrong point can move the kneepoint.");
    EXPECT_EQ(fact.smooth, std::nullopt);
    // Right again, nothing is doubtful.
    points[6].voltage = 115.5;
    EXPECT_EQ(FactOf(KneeRule::Ieee45, points).doubt, "");
}

TEST(KneeDoubt, AFallThatMovesNothingIsNotNamed) {
    // The highest pair only: the search passes it over.
    const Points points = {{0.01, 20}, {0.02, 45}, {0.03, 70}, {0.04, 100},
                           {0.1, 110}, {0.2, 114}, {0.4, 117}, {0.8, 116}};
    const KneeFact fact = FactOf(KneeRule::Ieee45, points);
    EXPECT_TRUE(fact.At().has_value());
    EXPECT_EQ(fact.doubt, "");
}

// Every other point is compared: the fall is between two neighbours.
TEST(KneeDoubt, AFallBetweenThePointsOfAPairIsNamed) {
    Points points = {{0.01, 20}, {0.02, 45}, {0.03, 70}, {0.04, 100}};
    for (int i = 0; i < 12; ++i)
        points.push_back({points.back().current * 1.1, points.back().voltage * 1.013});
    EXPECT_EQ(FactOf(KneeRule::Asa1050, points).doubt, "");
    points[11].voltage *= 0.98;
    ASSERT_GT(points[11].voltage, points[9].voltage);
    const KneeFact fact = FactOf(KneeRule::Asa1050, points);
    ASSERT_TRUE(fact.At().has_value());
    EXPECT_EQ(
        fact.doubt,
        "From point 11 (109.5 V, 0.0779 A) to point 12 (108.7 V, 0.0857 A) the voltage falls; "
        "one wrong point can move the kneepoint.");
}

TEST(KneeDoubt, ACoreWhoseVoltageFellIsNotSaidToBeUnsaturated) {
    const Points points = {{0.01, 20}, {0.02, 45}, {0.03, 70}, {0.04, 100}, {0.1, 99}};
    ExpectNone(FactOf(KneeRule::Ieee45, points), "0",
               "No pair of points lies above the rule's limit. From point 4 (100.0 V, 0.0400 A) "
               "to point 5 (99.0 V, 0.1000 A) the voltage falls; one wrong point can hide the "
               "kneepoint.");
}

// The count of the record is larger than its points: the missing ones are zero.
TEST(KneeDoubt, PointsThatARecordOnlyCountsAreNotABend) {
    EXPECT_TRUE(FactOf(KneeRule::Ieee30, {{0.1, 10}, {0.2, 20}, {0, 0}, {0, 0}})
                    .reason.starts_with("Only 2 points: a kneepoint needs at least 4."));
}

TEST(KneeDoubt, AFallBelowTheKneepointIsNotNamed) {
    const Points points = {{0.005, 21}, {0.01, 20}, {0.02, 45}, {0.03, 70},
                           {0.04, 100}, {0.1, 110}, {0.2, 114}, {0.8, 117}};
    const KneeFact fact = FactOf(KneeRule::Ieee45, points);
    EXPECT_TRUE(fact.At().has_value());
    EXPECT_EQ(fact.doubt, "");
}

TEST(KneeDoubt, ASmoothKneepointIsToldFromMoreThan15PercentOn) {
    const KneeFact sparse = FactOf(KneeRule::Asa1050, test::PublishedCurves().at(0).points);
    EXPECT_EQ(sparse.printed.voltage, "491.1");
    EXPECT_EQ(sparse.smooth, (CurvePoint{0.043, 818.8}));
    EXPECT_EQ(sparse.doubt,
              "The points are too few or too uneven for this rule: a smooth curve through them has "
              "its kneepoint at 818.8 V, 0.0430 A.");
    // 394.3 V beside 363.2 V: 9 %.
    const KneeFact dense = FactOf(KneeRule::Asa1050, test::PublishedCurves().at(3).points);
    EXPECT_EQ(dense.printed.voltage, "363.2");
    EXPECT_EQ(dense.doubt, "");
    EXPECT_EQ(dense.smooth, std::nullopt);
}

// A printed kneepoint is passed in: the limit itself.
TEST(KneeDoubt, FifteenPercentAreTrusted) {
    const Points points = test::PublishedCurves().at(3).points;  // smooth 394.3 V
    SearchPath path;
    path.metAbove = true;
    KneeFact fact;
    fact.rule = KneeRule::Asa1050;
    fact.printed = {"342.9", "0.1"};  // 394.3 / 342.9 = 1.1499
    AddDoubts(fact, path, points);
    EXPECT_EQ(fact.smooth, std::nullopt);
    fact.printed = {"342.8", "0.1"};  // 1.1502
    AddDoubts(fact, path, points);
    EXPECT_NE(fact.smooth, std::nullopt);
    fact = {};
    fact.rule = KneeRule::Asa1050;
    fact.printed = {"463.8", "0.1"};  // 394.3 / 463.8 = 0.8502
    AddDoubts(fact, path, points);
    EXPECT_EQ(fact.smooth, std::nullopt);
    fact.printed = {"463.9", "0.1"};  // 0.84997
    AddDoubts(fact, path, points);
    EXPECT_NE(fact.smooth, std::nullopt);
}

std::string Shown(const std::optional<CurvePoint>& point) {
    if (!point) return "none";
    return Picture(point->voltage, "###0.0") + " V, " + Picture(point->current, "###0.0000") + " A";
}

TEST(PublishedSmoothKnees, StandInTheDocumentAndAsaLiesInTheBand) {
    const std::string document =
        ReadWholeFile(QString::fromUtf8(DAVO_TESTS_FOLDER) + u"/../docs/kneepoints.md"_s);
    const std::vector<test::PublishedCurve> curves = test::PublishedCurves();
    ASSERT_EQ(curves.size(), 4U);
    for (const test::PublishedCurve& curve : curves) {
        const auto smooth = [&](KneeRule rule) { return SmoothKneepoint(rule, curve.points); };
        const auto asa = smooth(KneeRule::Asa1050);
        ASSERT_TRUE(asa.has_value());
        EXPECT_GE(asa->voltage, curve.bandLow) << curve.name;
        EXPECT_LE(asa->voltage, curve.bandHigh) << curve.name;
        std::ostringstream row;
        row << "| " << curve.name << " | " << curve.bandLow << " to " << curve.bandHigh << " | "
            << Shown(asa) << " | " << Shown(smooth(KneeRule::Ieee30)) << " | "
            << Shown(smooth(KneeRule::Ieee45)) << " |";
        EXPECT_NE(document.find(row.str()), std::string::npos)
            << "not in the document: " << row.str();
    }
}

}  // namespace
}  // namespace davo
