// SPDX-License-Identifier: GPL-3.0-or-later
// Two curves beside each other: published pairs, places that can be told by hand, and sentences.

#include "analysis/comparison.h"

#include <array>
#include <cmath>

#include "analysis/log_line.h"
#include "common/numbers.h"
#include "tests/analysis/published_curves.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

CurveComparison ComparePoints(const Points& measured, const Points& reference) {
    return CompareCurves({measured, {}, {}}, {reference, {}, {}});
}

Points PublishedPoints(const std::string& name) {
    for (const test::PublishedCurve& curve : test::PublishedCurves())
        if (curve.name == name) return curve.points;
    return {};
}

// V = 1e6 I^0.5 at currents in equal ratios, times a and b; so large that no step of a
// reading explains anything.
Points Root(double from, double to, int count, double a = 1, double b = 1) {
    Points points;
    for (int k = 0; k < count; ++k) {
        const double current = from * std::pow(to / from, k / (count - 1.0));
        points.push_back({current * b, 1e6 * a * std::sqrt(current)});
    }
    return points;
}

TEST(Comparison, HasTheDeviationsThatWerePublished) {
    const CurveComparison comparison = ComparePoints(PublishedPoints("B"), PublishedPoints("A"));
    constexpr std::array kAmperes = {0.01, 0.02, 0.04, 0.08, 0.2, 0.5, 1.0, 2.0};
    constexpr std::array kPercent = {-14.29, -22.73, 0.00, 0.00, 0.52, 1.01, 0.00, -0.95};
    ASSERT_EQ(comparison.whyNot, "");
    ASSERT_EQ(comparison.voltage.places.size(), kPercent.size());
    for (std::size_t k = 0; k < kPercent.size(); ++k) {
        EXPECT_NEAR(comparison.voltage.places[k].at, kAmperes.at(k), 1e-12);
        EXPECT_NEAR(comparison.voltage.places[k].Percent(), kPercent.at(k), 0.01);
    }
    EXPECT_EQ(SentenceOf(comparison, 5),
              "At 0.020 A the voltage is 22.7 % below the reference, beyond the limit of 5 %.");
    EXPECT_EQ(SentenceOf(comparison, 25),
              "At 0.020 A the voltage is 22.7 % below the reference; the limit is 25 %.");
    EXPECT_EQ(SentenceOf(comparison, std::nullopt),
              "At 0.020 A the voltage is 22.7 % below the reference.");
}

TEST(Comparison, TheReferencesKneepointIsAPlaceBelowAndAboveItself) {
    const Points reference = Root(0.1, 10, 3);  // 0.1, 1 and 10 A
    const auto at = [&](double knee) {
        Points measured = reference;
        measured.insert(measured.begin() + 2, {2, 1.1e6 * std::sqrt(2)});
        return CompareCurves({measured, {}, {}},
                             {reference, SmoothKnee{{knee, 1e6 * std::sqrt(knee)}, 1}, {}})
            .voltage;
    };
    const auto places = [&](double knee) {
        std::vector<double> found;
        for (const Deviation& place : at(knee).places)
            found.push_back(std::round(place.at * 1e6) / 1e6);
        return found;
    };
    EXPECT_EQ(places(3), (std::vector<double>{0.1, 1, 2, 3, 10}));
    EXPECT_EQ(places(20), (std::vector<double>{0.1, 1, 2, 10}));
    const ComparedValue there = at(2);
    EXPECT_NEAR(there.below.value_or(Deviation()).at, 2, 1e-9);
    EXPECT_NEAR(there.above.value_or(Deviation()).at, 2, 1e-9);
}

TEST(Comparison, AllCurrentsAreNamedWhereNoneDiffersByATwentiethOfAPercent) {
    const auto sentence = [](double percent, std::optional<double> limit) {
        return SentenceOf(ComparePoints(Root(0.1, 10, 9, 1 + percent / 100), Root(0.1, 10, 9)),
                          limit);
    };
    for (const double percent : {0.0, 0.049}) {
        EXPECT_THAT(sentence(percent, {}), testing::StartsWith("At all common currents "))
            << percent;
        EXPECT_THAT(sentence(percent, 0.1), testing::StartsWith("At all common currents "));
        EXPECT_THAT(sentence(percent, 0.09), testing::Not(testing::StartsWith("At all ")));
    }
    EXPECT_THAT(sentence(0.051, {}), testing::Not(testing::StartsWith("At all ")));
}

TEST(Comparison, AtItsEndsALineHasAValue) {
    const LogLine line = VoltageLine({{0.1, 10}, {0.2, 20}, {0.3, 25}});
    EXPECT_EQ(line.WhyNotAt(line.First()), "");
    EXPECT_EQ(line.WhyNotAt(line.Last()), "");
    EXPECT_EQ(line.WhyNotAt(line.First() - 1e-6), "the curve begins above it.");
    EXPECT_EQ(line.WhyNotAt(line.Last() + 1e-6), "the curve ends before it.");
}

TEST(Comparison, TheWorstPlaceCanBeAtOneAmpere) {
    Points measured = Root(0.1, 10, 3);
    measured[1].voltage *= 1.1;
    measured[2].voltage *= 1.02;
    EXPECT_EQ(ComparePoints(measured, Root(0.1, 10, 3)).voltage.all.value_or(Deviation()).at, 1);
}

// Both have points where the other has none: at 0.02 and 0.05 A the line between the neighbours.
TEST(Comparison, IsStraightBetweenThePointsOfBoth) {
    const Points measured = {{0.01, 100}, {0.04, 400}, {0.16, 800}};
    const Points reference = {{0.01, 100}, {0.02, 200}, {0.05, 480}, {0.2, 900}};
    const CurveComparison comparison = ComparePoints(measured, reference);
    ASSERT_EQ(comparison.voltage.places.size(), 5U);
    EXPECT_NEAR(comparison.voltage.places[1].Percent(), 0, 1e-9);
    const double at = 400 * std::pow(2, std::log(0.05 / 0.04) / std::log(4));
    EXPECT_NEAR(comparison.voltage.places[3].Percent(), 100 * (at / 480 - 1), 1e-9);
    EXPECT_NEAR(comparison.voltage.places.back().at, 0.16, 1e-12);
    const LogLine line = VoltageLine(measured);
    EXPECT_NEAR(line.At(std::log(0.05)), std::log(at), 1e-12);
    EXPECT_NEAR(CurrentLine(line).At(std::log(at)), std::log(0.05), 1e-12);
    EXPECT_EQ(line.WhyNotAt(std::log(0.16)), "");
    EXPECT_EQ(line.WhyNotAt(std::log(0.2)), "the curve ends before it.");
    EXPECT_EQ(line.WhyNotAt(std::log(0)), "the curve begins above it.");
    EXPECT_EQ(VoltageLine({}).WhyNotAt(0), "the curve has no points.");
    EXPECT_EQ(VoltageLine({{9e11, 1}, {1.05e12, 1}, {1, 9e11}, {1, 1.05e12}}).nodes.size(), 2U);
}

TEST(Comparison, HasTheWorstBelowAndAboveTheKneeOfTheReference) {
    Points reference = Root(1e4, 1e6, 9);
    Points measured = reference;
    measured[1].voltage *= 1.03;
    measured[6].voltage *= 0.98;
    measured[7].voltage *= 1.01;
    const SmoothKnee knee{{1e5, 1e6 * std::sqrt(1e5)}, 0.5};
    const CurveComparison comparison =
        CompareCurves({measured, {}, {}}, {reference, knee, std::nullopt});
    ASSERT_TRUE(comparison.voltage.below.has_value());
    ASSERT_TRUE(comparison.voltage.above.has_value());
    EXPECT_NEAR(comparison.voltage.below.value_or(Deviation()).Percent(), 3, 1e-9);
    const Deviation above = comparison.voltage.above.value_or(Deviation());
    EXPECT_NEAR(above.Percent(), -2, 1e-9);
    EXPECT_NEAR(above.at, measured[6].current, 1e-3);
    // 3 % more voltage of V ~ I^0.5 is 5.7 % less current.
    ASSERT_TRUE(comparison.current.all.has_value());
    const ComparedValue& current = comparison.current;
    EXPECT_NEAR(current.below.value_or(Deviation()).Percent(), 100 * (1 / (1.03 * 1.03) - 1), 0.5);
    // Without a kneepoint there is no below and no above.
    const CurveComparison without = ComparePoints(measured, reference);
    EXPECT_EQ(without.voltage.below, std::nullopt);
    EXPECT_EQ(without.voltage.above, std::nullopt);
    EXPECT_NEAR(without.voltage.all.value_or(Deviation()).Percent(), 3, 1e-9);
}

TEST(Comparison, OrderZerosAndRepeatedCurrentsDoNotMatter) {
    const Points reference = Root(0.01, 1, 9);
    Points mixed = {{0, 10}, {0.5, 0}, {-1, -1}, {0.3, std::nan("")}, {INFINITY, 100}};
    mixed.insert(mixed.begin(), reference.rbegin(), reference.rend());
    mixed.push_back(reference[4]);
    const CurveComparison comparison = ComparePoints(mixed, reference);
    ASSERT_EQ(comparison.whyNot, "");
    EXPECT_NEAR(comparison.voltage.all.value_or(Deviation()).Percent(), 0, 1e-9);
    EXPECT_EQ(comparison.voltage.places.size(), reference.size());
    // Two readings of one current are one, their mean.
    Points twice = reference;
    twice[4].voltage *= 1.02;
    twice.push_back({reference[4].current, reference[4].voltage / 1.02});
    EXPECT_NEAR(ComparePoints(twice, reference).voltage.all.value_or(Deviation()).Percent(), 0,
                1e-9);
}

// The pair that falls is drawn together for the current at equal voltage only.
TEST(Comparison, AFallingPairIsOnePlaceForTheCurrent) {
    const Points falling = {{0.01, 100}, {0.04, 402}, {0.05, 400}, {0.2, 800}};
    const LogLine line = VoltageLine(falling);
    EXPECT_DOUBLE_EQ(line.At(std::log(0.04)), std::log(402));
    const LogLine rising = CurrentLine(line);
    EXPECT_NEAR(rising.At(std::log(402.0 * 400) / 2), std::log(0.04 * 0.05) / 2, 1e-12);
    double last = -HUGE_VAL;
    for (double volts = 100; volts < 800; volts += 0.5) {
        const double current = rising.At(std::log(volts));
        EXPECT_GT(current, last) << volts;
        last = current;
    }
    // One that falls all the way has no current at a voltage.
    const Points down = {{0.1, 3}, {0.2, 2}, {0.4, 1}, {0.8, 0.5}};
    const CurveComparison comparison = ComparePoints(down, down);
    EXPECT_EQ(comparison.whyNot, "");
    EXPECT_EQ(comparison.current.all, std::nullopt);
    EXPECT_TRUE(comparison.current.places.empty());
}

TEST(Comparison, CurvesWithTooLittleInCommonAreNotCompared) {
    const Points reference = Root(0.1, 10, 21);
    const auto whyNot = [&](const Points& measured) {
        const CurveComparison comparison = ComparePoints(measured, reference);
        EXPECT_EQ(ComparePoints(reference, measured).whyNot, comparison.whyNot);
        EXPECT_EQ(VerdictOf(comparison, 5) == Verdict::None, !comparison.whyNot.empty());
        EXPECT_EQ(comparison.voltage.places.empty(), !comparison.whyNot.empty());
        return comparison.whyNot;
    };
    const std::string few = "one has fewer than three points of different currents where both are.";
    EXPECT_EQ(whyNot({}), few);
    EXPECT_EQ(whyNot({{0.2, 50}, {0.9, 90}}), few);
    EXPECT_EQ(whyNot({{0.2, 50}, {0.5, 70}, {0.9, 90}}), "");
    EXPECT_EQ(whyNot(Root(0.001, 0.09, 20)), few);
    EXPECT_EQ(whyNot(Root(0.001, 0.11, 20)), few);
    EXPECT_EQ(whyNot({{0.2, 50}, {0.2, 51}, {0.2, 52}, {0.9, 90}, {0.9, 91}}), few);
    // A quarter of a decade is a factor of 1.778.
    EXPECT_THAT(whyNot(Root(1, 1.77, 9)), testing::StartsWith("their common currents, "));
    EXPECT_EQ(whyNot(Root(1, 1.79, 9)), "");
    EXPECT_EQ(whyNot(Root(1, std::pow(10, 0.25), 9)), "");
    EXPECT_EQ(SentenceOf(ComparePoints({}, reference), 5), "The curves are not compared: " + few);
    EXPECT_EQ(SentenceOf(ComparePoints({}, reference), 5, " of 600:5", "what its turns give"),
              "The curves of 600:5 are not compared: " + few);
    EXPECT_EQ(SentenceOf(ComparePoints(Root(1, 1.7, 9), reference), 5),
              "The curves are not compared: their common currents, 1.00 A to 1.70 A, are less "
              "than a quarter of a decade.");
}

TEST(Comparison, TheVerdictGoesByTheUnroundedNumber) {
    const Points reference = Root(1e4, 1e6, 9);
    const auto of = [&](double factor) {
        return ComparePoints(Root(1e4, 1e6, 9, factor), reference);
    };
    EXPECT_EQ(VerdictOf(of(1.05), 5), Verdict::Within);
    EXPECT_EQ(VerdictOf(of(1.0500001), 5), Verdict::Beyond);
    EXPECT_EQ(VerdictOf(of(0.95), 5), Verdict::Within);
    EXPECT_EQ(VerdictOf(of(0.9499), 5), Verdict::Beyond);
    EXPECT_EQ(VerdictOf(of(0.5), std::nullopt), Verdict::None);
    // The number never contradicts the verdict.
    EXPECT_THAT(
        SentenceOf(of(1.0504), 5),
        testing::EndsWith("the voltage is 5.04 % above the reference, beyond the limit of 5 %."));
    EXPECT_THAT(
        SentenceOf(of(1.0496), 4.98),
        testing::EndsWith("the voltage is 4.96 % above the reference; the limit is 4.98 %."));
    EXPECT_EQ(
        SentenceOf(of(1.0001), 5),
        "At all common currents the voltage is within 0.1 % of the reference; the limit is 5 %.");
    EXPECT_EQ(SentenceOf(of(1.0001), 0.12),
              "At all common currents the voltage is within 0.1 % of the reference; the limit is "
              "0.12 %.");
    EXPECT_EQ(SentenceOf(of(1), std::nullopt),
              "At all common currents the voltage is within 0.1 % of the reference.");
    EXPECT_THAT(SentenceOf(of(1.0004), 0.01),
                testing::EndsWith(
                    "the voltage is 0.04 % above the reference, beyond the limit of 0.01 %."));
}

// 8 % at 1 mA is little more than a step; 1 % at 1 A is a difference.
TEST(Comparison, TheStepsOfTheReadingsAreNoDifference) {
    const Points reference = {{0.001, 50}, {0.01, 200}, {0.1, 400}, {1, 500}};
    const Points measured = {{0.001, 54}, {0.01, 200}, {0.1, 400}, {1, 505}};
    const CurveComparison comparison = ComparePoints(measured, reference);
    EXPECT_NEAR(comparison.voltage.places[0].Percent(), 8, 1e-9);
    EXPECT_NEAR(comparison.voltage.places[0].open, 0.1 + 0.05 / 50 + 0.05 / 54, 1e-12);
    EXPECT_EQ(comparison.voltage.places[0].CertainPercent(), 0);
    EXPECT_EQ(SentenceOf(comparison, 5),
              "At 1.00 A the voltage is 1.0 % above the reference; the limit is 5 %.");
    EXPECT_EQ(VerdictOf(comparison, 5), Verdict::Within);
    // Where they explain what is beyond the limit, the sentence says it.
    Points only = reference;
    only[0].voltage = 45;
    EXPECT_EQ(VerdictOf(ComparePoints(only, reference), 5), Verdict::Within);
    EXPECT_EQ(SentenceOf(ComparePoints(only, reference), 5),
              "At 0.0010 A the voltage is 10.0 % below the reference, of which the readings leave "
              "9.7 % open; the limit is 5 %.");
    only[0].voltage = 40;
    EXPECT_EQ(VerdictOf(ComparePoints(only, reference), 5), Verdict::Beyond);
}

// A difference that cannot be told from a step is not none, and is not passed over for a tiny one
// that can.
TEST(Comparison, WhatIsOpenIsSaidAsOpen) {
    const Points reference = {{0.001, 50}, {0.01, 200}, {0.1, 400}, {1, 5000}};
    Points measured = reference;
    measured[0].voltage = 52;
    measured[3].voltage = 5000.8;
    const auto sentence = [&](std::optional<double> limit) {
        const CurveComparison comparison = ComparePoints(measured, reference);
        EXPECT_NE(VerdictOf(comparison, limit), Verdict::Beyond);
        return SentenceOf(comparison, limit);
    };
    EXPECT_EQ(
        sentence(5),
        "At 0.0010 A the voltage is 4.0 % above the reference, of which the readings leave 4.0 % "
        "open; the limit is 5 %.");
    EXPECT_EQ(
        sentence(3),
        "At 0.0010 A the voltage is 4.0 % above the reference, of which the readings leave 4.0 % "
        "open; the limit is 3 %.");
    EXPECT_EQ(sentence(std::nullopt),
              "At 0.0010 A the voltage is 4.0 % above the reference, of which the readings leave "
              "4.0 % open.");
    measured[3].voltage = 5000;
    EXPECT_EQ(
        sentence(5),
        "At 0.0010 A the voltage is 4.0 % above the reference, of which the readings leave 4.0 % "
        "open; the limit is 5 %.");
    // What is certain is named where it is a twentieth of a percent.
    measured[3].voltage = 5003.2;
    EXPECT_EQ(sentence(5), "At 1.00 A the voltage is 0.1 % above the reference; the limit is 5 %.");
    // By a limit that is lower than what is shown of a number.
    measured = reference;
    measured[3].voltage = 5001;
    EXPECT_EQ(sentence(0.05),
              "At 1.00 A the voltage is 0.02 % above the reference; the limit is 0.05 %.");
    measured = reference;
    EXPECT_EQ(sentence(0), "At 0.0010 A the voltage is exactly the reference; the limit is 0 %.");
}

// Between two points of the reference is its bend: the straight line is no certain value there.
TEST(Comparison, ABendBetweenTwoPointsIsOpen) {
    const Points reference = {{0.01, 1e5}, {0.1, 1e6}, {1, 2e6}, {10, 2.2e6}};
    Points measured = reference;
    measured.insert(measured.begin() + 2, {std::sqrt(0.1), 1.6e6});  // sqrt(2) * 1e6 by the line
    const CurveComparison comparison = ComparePoints(measured, reference);
    ASSERT_EQ(comparison.voltage.places.size(), 5U);
    const Deviation& bend = comparison.voltage.places[2];
    EXPECT_NEAR(bend.Percent(), 100 * (1.6 / std::sqrt(2) - 1), 1e-9);
    // The bend at 0.1 A is the sharper one, and more than what the two points are apart.
    ASSERT_GT((1 - std::log10(2)) * std::log(10) / 2, std::log(2));
    EXPECT_NEAR(bend.open, std::log(2), 4e-4);
    EXPECT_EQ(VerdictOf(comparison, 5), Verdict::Within);
    EXPECT_EQ(SentenceOf(comparison, 5),
              "At 0.32 A the voltage is 13.1 % above the reference, of which the readings leave "
              "13.1 % open; the limit is 5 %.");
    // At the points themselves nothing is open but their steps.
    measured[1].voltage *= 0.9;
    EXPECT_EQ(SentenceOf(ComparePoints(measured, reference), 5),
              "At 0.10 A the voltage is 10.0 % below the reference, beyond the limit of 5 %.");
}

// Nodes of equal distance.
LogLine LineOf(const std::vector<double>& values) {
    LogLine line;
    for (std::size_t k = 0; k < values.size(); ++k)
        line.nodes.push_back({static_cast<double>(k), values[k]});
    return line;
}

TEST(Comparison, TheSharperOfTwoBendsIsOpenToTheNearerNode) {
    const auto openAt = [](const std::vector<double>& values, double x) {
        return LineOf(values).OpenAt(x);
    };
    EXPECT_NEAR(openAt({0, 1, 2, 2.5}, 1.25), 0.5 * 0.25, 1e-12);
    EXPECT_NEAR(openAt({0, 1, 2, 2.5}, 1.75), 0.5 * 0.25, 1e-12);
    EXPECT_NEAR(openAt({0, 1.5, 2.5, 3.25}, 1.5), 0.5 * 0.5, 1e-12);
    EXPECT_NEAR(openAt({0.5, 1, 2, 2.25}, 1.5), 0.75 * 0.5, 1e-12) << "they turn";
    EXPECT_NEAR(openAt({0, 1, 2, 3}, 1.25), 0, 1e-12) << "straight";
    // At an end there is one bend, and of two nodes none.
    EXPECT_NEAR(openAt({0, 2.5, 4.5}, 0.25), 0.5 * 0.25, 1e-12);
    EXPECT_NEAR(openAt({0, 2.5, 4.5}, 1.75), 0.5 * 0.25, 1e-12);
    EXPECT_EQ(openAt({0, 1}, 0.5), 0);
    // No farther than the nodes are apart; nothing at a node and outside them.
    EXPECT_NEAR(openAt({0, 9, 9.1, 19}, 1.5), 0.1, 1e-12);
    for (const double x : {-1.0, 0.0, 1.0, 3.0, 4.0})
        EXPECT_EQ(openAt({0, 1, 3, 2}, x), 0) << x;
}

TEST(Comparison, SaysHowFarTheKneepointsAreApart) {
    const SmoothKnee knee{{0.1, 400}, 4};
    const SmoothKnee other{{0.12, 380}, 3.8};
    const KneeRange range{300, 420};
    const auto sentence = [](const ComparedCurve& measured, const ComparedCurve& reference) {
        return KneeSentenceOf(CompareCurves(measured, reference).knee);
    };
    EXPECT_EQ(sentence({{}, other, {}}, {{}, knee, {}}),
              "The kneepoint is 5.0 % below the reference's, give or take 1.4 %.");
    EXPECT_EQ(sentence({{}, SmoothKnee{{0.1, 400.1}, 4}, {}}, {{}, knee, {}}),
              "The kneepoint is within 0.1 % of the reference's, give or take 1.4 %.");
    const std::string none = "The kneepoints are not compared: one of them is not certain.";
    EXPECT_EQ(sentence({{}, knee, {}}, {{}, {}, range}), none);
    EXPECT_EQ(sentence({{}, {}, range}, {{}, knee, {}}), none);
    EXPECT_EQ(sentence({{}, {}, {}}, {{}, knee, {}}), none);
    const auto difference = CompareCurves({{}, other, {}}, {{}, knee, {}}).knee;
    ASSERT_TRUE(difference.has_value());
    EXPECT_NEAR(difference->percent, -5, 1e-9);
    EXPECT_NEAR(difference->uncertainPercent, std::sqrt(2), 1e-9);
    EXPECT_FALSE(CompareCurves({{}, knee, {}}, {{}, {}, range}).knee.has_value());
}

TEST(Comparison, TakesTheSmoothKneepointNotTheRules) {
    const ComparedCurve curve = CurveToCompare(KneeRule::Asa1050, PublishedPoints("D"));
    ASSERT_TRUE(curve.knee.has_value());
    const SmoothKnee knee = curve.knee.value_or(SmoothKnee());
    EXPECT_NEAR(knee.at.voltage, 397, 4);  // the rule has 363.2 V
    const ComparedCurve open = CurveToCompare(KneeRule::Ieee45, PublishedPoints("B"));
    EXPECT_EQ(open.knee, std::nullopt);
    EXPECT_TRUE(open.range.has_value());
    EXPECT_EQ(CompareCurves(curve, curve).knee.value_or(KneeDifference{1}).percent, 0);
    // What is judged by is not what is shown.
    EXPECT_NE(knee.at.voltage, RoundByPicture(knee.at.voltage, kPointPicture));
    EXPECT_NE(open.range.value_or(KneeRange()).low,
              RoundByPicture(open.range.value_or(KneeRange()).low, kPointPicture));
    EXPECT_EQ(KneeRangeOf(curve),
              (KneeRange{knee.at.voltage - knee.uncertainty, knee.at.voltage + knee.uncertainty}));
    EXPECT_EQ(KneeRangeOf(open), open.range);
    EXPECT_EQ(KneeRangeOf({}), std::nullopt);
}

TEST(Comparison, NumbersThatAreFarTooLargeHaveASentence) {
    const Points wild = {{1e-300, 1e-300}, {1e-200, 1e300}, {1, 1e308}, {1e300, 1e308}};
    const Points tiny = {{1e-300, 1e-300}, {1e-200, 1e-300}, {1, 1e-308}, {1e300, 5e-324}};
    EXPECT_NO_THROW(SentenceOf(ComparePoints(wild, tiny), 5));
    EXPECT_NO_THROW(SentenceOf(ComparePoints(tiny, wild), 5));
}

}  // namespace
}  // namespace davo
