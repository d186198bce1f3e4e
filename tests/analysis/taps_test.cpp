// SPDX-License-Identifier: GPL-3.0-or-later
// Taps of one core: what was published, and what a wrong connection looks like.

#include "analysis/taps.h"

#include <cmath>
#include <sstream>

#include "common/files.h"
#include "tests/analysis/published_curves.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

struct PublishedTap {
    double turns = 0;
    CurvePoint knee;
};

// The first is the full winding.
std::vector<PublishedTap> PublishedTaps() {
    std::vector<PublishedTap> taps;
    const QString folder = QString::fromUtf8(DAVO_TESTS_FOLDER);
    for (const std::string& line :
         ReadLines(folder + QStringLiteral("/analysis/data/published_taps.csv"))) {
        std::istringstream in(line);
        PublishedTap tap;
        char comma = 0;
        if (in >> tap.turns >> comma >> tap.knee.voltage >> comma >> tap.knee.current)
            taps.push_back(tap);
    }
    return taps;
}

Points CurveD() {
    for (const test::PublishedCurve& curve : test::PublishedCurves())
        if (curve.name == "D") return curve.points;
    return {};
}

ComparedCurve KneeAt(double amperes, double volts) {
    return {{}, SmoothKnee{{amperes, volts}, 1}, {}};
}

TEST(Taps, ThePublishedOnesFollowFromTheFullWinding) {
    const std::vector<PublishedTap> taps = PublishedTaps();
    ASSERT_EQ(taps.size(), 5U);
    const ComparedCurve full = KneeAt(taps[0].knee.current, taps[0].knee.voltage);
    for (const PublishedTap& tap : taps) {
        const SmoothKnee knee =
            ScaledToTurns(full, taps[0].turns, tap.turns).knee.value_or(SmoothKnee());
        EXPECT_NEAR(knee.at.voltage / tap.knee.voltage, 1, 0.006) << tap.turns;
        EXPECT_NEAR(knee.at.current / tap.knee.current, 1, 0.006) << tap.turns;
    }
}

// 400 V on 1200:5 of a 1500:5.
TEST(Taps, ATapTellsTheFullWinding) {
    const ComparedCurve tap = KneeAt(0.05, 400);
    const ComparedCurve full = ScaledToTurns(tap, 240, 300);
    EXPECT_NEAR(full.knee.value_or(SmoothKnee()).at.voltage, 500, 1e-9);
    EXPECT_NEAR(full.knee.value_or(SmoothKnee()).at.current, 0.04, 1e-12);
    EXPECT_NEAR(full.knee.value_or(SmoothKnee()).uncertainty, 1.25, 1e-12);
    const ComparedCurve range{{{0.1, 10}}, {}, KneeRange{100, 120}};
    const ComparedCurve scaled = ScaledToTurns(range, 100, 50);
    EXPECT_EQ(scaled.range, (KneeRange{50, 60}));
    EXPECT_EQ(scaled.points, (Points{{0.2, 5}}));
}

TEST(Taps, AreTypedAsNameplateCurrents) {
    const auto taps = ParseTaps(" 1200:5, 600 / 5;300:1\r\n");
    ASSERT_TRUE(taps.has_value());
    EXPECT_EQ(taps.value_or(std::vector<Tap>()), (std::vector<Tap>{{1200, 5}, {600, 5}, {300, 1}}));
    EXPECT_EQ((Tap{1200, 5}).Turns(), 240);
    EXPECT_EQ((Tap{0.5, 5}).Name(), "0.5:5");
    for (const char* text : {"",          " , ",     "1200",      "1200:",           ":5",
                             "1200:0",    "-1200:5", "1200:5, x", "1200:5:5",        "1200/5/5",
                             "1e400:5",   "1e300:5", "100001:5",  "5:5e-300",        "0.09:5",
                             "1200:0.09", "1200:21", "5:1200",    "1200:5, 1e300:5", "nan:5",
                             "inf:5"})
        EXPECT_EQ(ParseTaps(text), std::nullopt) << text;
    EXPECT_TRUE(ParseTaps("100000:0.1, 0.1:20").has_value());
}

TEST(Taps, SomeTakeMoreThanTheInstrumentGives) {
    const auto sentence = [](const ComparedCurve& curve) {
        return TooMuchSentenceOf("2000:5", curve);
    };
    EXPECT_EQ(sentence(KneeAt(0.05, 908)), "");
    EXPECT_NE(sentence(KneeAt(0.05, 911)), "");
    EXPECT_EQ(sentence(KneeAt(8.7, 20)), "");
    EXPECT_NE(sentence(KneeAt(8.8, 20)), "");
    EXPECT_EQ(sentence({}), "");
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 905}}), "");
    EXPECT_EQ(sentence(KneeAt(0.05, 1131)),
              "This instrument cannot saturate 2000:5: it takes at least 1243 V, and there are "
              "1000 V.");
    EXPECT_EQ(sentence(KneeAt(9, 14)),
              "This instrument cannot saturate 2000:5: it takes 13.50 A, and a record holds 13.107 "
              "A.");
    // Two numbers of which one is higher are shown so.
    EXPECT_EQ(sentence({{}, {}, KneeRange{909.4, 950}}),
              "This instrument cannot saturate 2000:5: it takes at least 1000.3 V, and there are "
              "1000 V.");
    EXPECT_EQ(sentence(KneeAt(8.7382, 14)),
              "This instrument cannot saturate 2000:5: it takes 13.11 A, and a record holds "
              "13.107 A.");
    // What the kneepoint leaves open is no certainty.
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 915}}),
              "Whether this instrument saturates 2000:5 is open: it takes 880 to 1007 V, and there "
              "are 1000 V.");
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 909.2}}),
              "Whether this instrument saturates 2000:5 is open: it takes 880 to 1000.1 V, and "
              "there are 1000 V.");
}

// Two parts of one curve, from its lower end and to its upper end.
TEST(Taps, TheProportionIsToldWhereSixTenthsOfTheShorterOneAreCommon) {
    const auto part = [](double from, double to) {
        Points points;
        for (int k = 0; k <= 60; ++k) {
            const double i = from + (to - from) * k / 60;
            points.push_back({std::exp(i), 1e5 * std::exp(i - std::log1p(std::exp(3 * i)) / 3)});
        }
        return points;
    };
    constexpr double kLength = 4;
    for (const double common : {0.58, 0.59, 0.61, 0.65}) {
        const double from = kLength * (common / 2 - 1);
        const auto shift = ShiftBetween(part(from, from + kLength), part(-from - kLength, -from));
        const bool isTold = shift && std::abs(shift->lnCurrent) < 0.01;
        EXPECT_EQ(isTold, common > 0.6) << common;
    }
}

// ln V = x - bend x^2 / 2 + turn x^3 / 6, x being ln I, from one end to the other.
Points CubicOf(double bend, double turn, double end) {
    Points points;
    constexpr int kEach = 400;  // from 0 to 1
    for (int k = static_cast<int>(-end * kEach); k <= end * kEach; ++k) {
        const double x = static_cast<double>(k) / kEach;
        points.push_back(
            {std::exp(x), 100 * std::exp(x - bend * x * x / 2 + turn * x * x * x / 6)});
    }
    return points;
}

// With 5 % more current the distance from a parabola rises as bend ln 1.05 x, over what both have
// in common: its standard deviation at 41 places must be 0.005.
TEST(Taps, TheProportionIsToldWhereFivePercentWouldShow) {
    const double more = std::log(1.05);
    const double least = 0.005 / (more * (2 - more) * std::sqrt(42.0 / 40 / 12));
    for (const double part : {0.9, 0.996, 1.004, 1.1}) {
        const Points points = CubicOf(part * least, 0, 1);
        EXPECT_EQ(ShiftBetween(points, points).has_value(), part > 1) << part;
    }
}

// The bend grows, or falls, to where one end of the shorter curve goes with 5 % more current.
TEST(Taps, FivePercentMoreCurrentAndLessMustBothShow) {
    int told = 0;
    constexpr int kBends = 40;
    for (int k = 0; k < kBends; ++k) {
        const double bend = 0.16 + k * 0.001;
        const auto isTold = [&](double turn) {
            return ShiftBetween(CubicOf(bend, turn * bend, 1.5), CubicOf(bend, turn * bend, 1))
                .has_value();
        };
        EXPECT_EQ(isTold(0.5), isTold(-0.5)) << bend;
        told += isTold(0.5) ? 1 : 0;
    }
    EXPECT_GT(told, 5);
    EXPECT_LT(told, kBends - 5);
}

// A curve with a ripple of whole waves, whose peaks are this part of the voltage.
Points RippledOf(double bend, double part) {
    Points points = CubicOf(bend, 0, 1);
    for (CurvePoint& point : points)
        point.voltage *= std::exp(part * std::cos(10 * std::acos(-1) * std::log(point.current)));
    return points;
}

// The standard deviation of a wave is its peak by the root of two.
TEST(Taps, ACurveThatScattersByMoreThanFivePercentHasAnotherShape) {
    constexpr double kBend = 2;
    for (const double deviation : {0.0455, 0.049, 0.051, 0.0545}) {
        const auto shift =
            ShiftBetween(RippledOf(kBend, deviation * std::sqrt(2)), CubicOf(kBend, 0, 1));
        EXPECT_EQ(shift.has_value(), deviation < 0.05) << deviation;
    }
}

// However much a curve scatters: what counts is by how much more it does with 5 % more current.
TEST(Taps, AScatterThatIsTheSameAtEveryCurrentTellsNothing) {
    for (const double peak : {0.02, 0.03})
        EXPECT_EQ(ShiftBetween(RippledOf(0, peak), CubicOf(0, 0, 1)), std::nullopt) << peak;
}

// A curve that is moved along itself, by more than 5 %, until both ends of what is common are this
// part of the voltage apart.
TEST(Taps, WhatIsApartByAPercentAtMostIsNoOtherProportion) {
    constexpr double kBend = 0.19;
    for (const double part : {0.0097, 0.0102, 0.0107}) {
        const double move = 1 - std::sqrt(1 - 2 * part / kBend);  // bend (move - move^2 / 2)
        ASSERT_GT(std::expm1(move), 0.05);
        Points expected = CubicOf(kBend, 0, 1);
        for (CurvePoint& point : expected)
            point.voltage *= 1000;  // of which no step of a reading explains anything
        Points measured = expected;
        for (CurvePoint& point : measured) {
            point.current *= std::exp(move);
            point.voltage *= std::exp(move);
        }
        const auto shift = ShiftBetween(measured, expected);
        EXPECT_EQ(VerdictOf(shift), part > 0.01 ? Verdict::Beyond : Verdict::None) << part;
    }
}

// 120 of 240 turns, measured as each mistake gives it.
TEST(Taps, AWrongProportionIsSaid) {
    const Points full = CurveD();
    const Points expected = ScaledToTurns({full, {}, {}}, 240, 120).points;
    const auto with = [&](double voltage, double current) {
        Points points = full;
        for (CurvePoint& point : points) {
            point.voltage *= voltage;
            point.current *= current;
        }
        return ShiftBetween(points, expected);
    };
    const auto sentence = [&](double voltage, double current) {
        return ShiftSentenceOf("600:5", with(voltage, current));
    };
    const std::optional<Shift> right = with(0.5, 2);
    ASSERT_TRUE(right.has_value());
    EXPECT_NEAR(right.value_or(Shift{1, 1}).lnVoltage, 0, 1e-9);
    EXPECT_NEAR(right.value_or(Shift{1, 1}).lnCurrent, 0, 1e-9);
    EXPECT_EQ(VerdictOf(right), Verdict::Within);
    // I ~ N in the place of 1 / N.
    EXPECT_EQ(VerdictOf(with(0.5, 0.5)), Verdict::Beyond);
    EXPECT_THAT(sentence(0.5, 0.5),
                testing::EndsWith(", its current 75.0 % below what they give, beyond the limit of "
                                  "5 %."));
    EXPECT_EQ(sentence(0.5, 2),
              "The voltage of 600:5 is within 0.1 % of what its turns give, its current within "
              "0.1 % of what they give; the limit is 5 %.");
    // The current was not scaled at all, or the voltage was not.
    EXPECT_EQ(VerdictOf(with(0.5, 1)), Verdict::Beyond);
    EXPECT_EQ(VerdictOf(with(1, 2)), Verdict::Beyond);
    // The full winding was measured again.
    EXPECT_EQ(sentence(1, 1),
              "The voltage of 600:5 is 100.0 % above what its turns give, its current 50.0 % below "
              "what they give, beyond the limit of 5 %.");
    EXPECT_EQ(
        sentence(0.51, 1.98),
        "The voltage of 600:5 is 2.0 % above what its turns give, its current 1.0 % below what "
        "they give; the limit is 5 %.");
    EXPECT_EQ(VerdictOf(with(0.5 * 1.049, 2 / 1.05)), Verdict::Within);
    EXPECT_EQ(VerdictOf(with(0.5 * 1.051, 2)), Verdict::Beyond);
}

TEST(Taps, WhatCannotBeToldIsSaidToBeUnknown) {
    Points straight;
    for (int k = 0; k < 20; ++k)
        straight.push_back({0.01 * std::pow(1.3, k), 10 * std::pow(1.3, 0.8 * k)});
    EXPECT_EQ(ShiftBetween(straight, straight), std::nullopt);
    Points scattered = straight;
    for (std::size_t k = 0; k < scattered.size(); ++k)
        scattered[k].voltage *= k % 2 == 0 ? 1.01 : 0.99;
    EXPECT_EQ(ShiftBetween(scattered, straight), std::nullopt);
    EXPECT_EQ(ShiftBetween({}, straight), std::nullopt);
    EXPECT_EQ(ShiftBetween(CurveD(), {{0.01, 10}, {0.02, 20}}), std::nullopt);
    // Another core: a slow bend against a sharp one.
    EXPECT_EQ(VerdictOf(ShiftBetween(straight, CurveD())), Verdict::None);
    EXPECT_EQ(ShiftSentenceOf("600:5", std::nullopt),
              "Whether the curve of 600:5 is what its turns give cannot be told: the curves have "
              "too few points, or are too short, too straight or too different.");
}

}  // namespace
}  // namespace davo
