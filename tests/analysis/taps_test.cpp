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
    EXPECT_EQ(sentence({}), "");
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 905}}), "");
    EXPECT_EQ(sentence(KneeAt(0.05, 1131)),
              "This instrument cannot saturate 2000:5: it takes at least 1243 V, and there are "
              "1000 V.");
    // Two numbers of which one is higher are shown so.
    EXPECT_EQ(sentence({{}, {}, KneeRange{909.4, 950}}),
              "This instrument cannot saturate 2000:5: it takes at least 1000.3 V, and there are "
              "1000 V.");
    // What the kneepoint leaves open is no certainty.
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 915}}),
              "Whether this instrument saturates 2000:5 is open: it takes 880 to 1007 V, and there "
              "are 1000 V.");
    EXPECT_EQ(sentence({{}, {}, KneeRange{800, 909.2}}),
              "Whether this instrument saturates 2000:5 is open: it takes 880 to 1000.1 V, and "
              "there are 1000 V.");
}

// 120 of 240 turns, measured as each mistake gives it.
TEST(Taps, AWrongProportionIsSaid) {
    const Points full = CurveD();
    const ComparedCurve expected = ScaledToTurns({full, {}, {}}, 240, 120);
    const auto with = [&](double voltage, double current) {
        Points points = full;
        for (CurvePoint& point : points) {
            point.voltage *= voltage;
            point.current *= current;
        }
        return TapFinding("600:5", points, expected);
    };
    EXPECT_EQ(with(0.5, 2).verdict, Verdict::Within);
    EXPECT_EQ(with(0.5, 2).sentence,
              "At all common currents the voltage of 600:5 is within 0.1 % of what its turns give; "
              "the limit is 5 %.");
    // I ~ N in the place of 1 / N, the current or the voltage not scaled, the full winding again.
    for (const auto& [voltage, current] :
         {std::pair(0.5, 0.5), std::pair(0.5, 1.0), std::pair(1.0, 2.0), std::pair(1.0, 1.0)}) {
        const Finding wrong = with(voltage, current);
        EXPECT_EQ(wrong.verdict, Verdict::Beyond) << voltage << ' ' << current;
        EXPECT_THAT(wrong.sentence,
                    testing::EndsWith(" % above what its turns give, beyond the limit of 5 %."));
    }
    EXPECT_EQ(with(0.5 * 1.049, 2).verdict, Verdict::Within);
    EXPECT_EQ(with(0.5 * 1.06, 2).verdict, Verdict::Beyond);
}

TEST(Taps, WhatCannotBeToldIsSaidToBeUnknown) {
    const ComparedCurve expected{{{0.01, 10}, {0.02, 20}}, {}, {}};
    EXPECT_EQ(TapFinding("600:5", CurveD(), expected).verdict, Verdict::None);
    EXPECT_EQ(TapFinding("600:5", CurveD(), expected).sentence,
              "The curves of 600:5 are not compared: one has fewer than three points of different "
              "currents where both are.");
}

}  // namespace
}  // namespace davo
