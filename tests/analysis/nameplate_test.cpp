// SPDX-License-Identifier: GPL-3.0-or-later
// A winding against its nameplate: published examples, and what is never passed.

#include "analysis/nameplate.h"

#include <cmath>

#include "analysis/log_line.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;
using testing::ElementsAre;

std::vector<std::string> Sentences(const Nameplate& nameplate, const ComparedCurve& curve,
                                   std::optional<double> ratio = std::nullopt) {
    std::vector<std::string> sentences;
    for (const Finding& finding : JudgeNameplate(nameplate, curve, ratio))
        sentences.push_back(finding.sentence);
    return sentences;
}

// I = a (V / 400) + b (V / 400)^10, 1 V to 500 V: 400 V at 0.05 A.
Points Iron() {
    Points points;
    for (double volts = 1; volts <= 500.001; volts += 1)
        points.push_back({0.03 * volts / 400 + 0.02 * std::pow(volts / 400, 10), volts});
    return points;
}

TEST(Nameplate, HasTheNumbersOfThePublishedExamples) {
    // Required 20 at 0.6 ohm, rated 5 ohm, Rct 3 ohm: the factor at the rated burden.
    EXPECT_DOUBLE_EQ(AlfAtBurden(20, 3, 0.6, 5), 9.0);
    EXPECT_DOUBLE_EQ(AlfAtBurden(9, 3, 5, 0.6), 20);
    EXPECT_DOUBLE_EQ(CVoltageOf(1, 5), 100);
    EXPECT_DOUBLE_EQ(BurdenVoltage(10, 15, 5), 30);
}

// What the kneepoint of 60 V and 50 mA means: 75 mA at 66 V.
TEST(Nameplate, TenPercentMoreVoltageDrivesFiftyPercentMoreCurrent) {
    // I = a (V / 60) + b (V / 60)^10 with I(66) = 1.5 I(60) and I(60) = 0.05.
    const double steep = std::pow(1.1, 10);
    const double b = 0.05 * (1.5 - 1.1) / (steep - 1.1);
    const double a = 0.05 - b;
    Points points;
    for (double volts = 2; volts <= 90; volts *= 1.02)
        points.push_back({a * volts / 60 + b * std::pow(volts / 60, 10), volts});
    const ComparedCurve curve = CurveToCompare(KneeRule::Asa1050, points);
    ASSERT_TRUE(curve.knee.has_value());
    EXPECT_NEAR(curve.knee.value_or(SmoothKnee()).at.voltage, 60, 0.6);
    const LogLine line = CurrentLine(VoltageLine(points));
    EXPECT_NEAR(std::exp(line.At(std::log(60))), 0.050, 0.0005);
    EXPECT_NEAR(std::exp(line.At(std::log(66))), 0.075, 0.00075);
}

TEST(Nameplate, PxIsHeldAgainstWhatIsMeasured) {
    Nameplate px;
    px.kneeVoltage = 400;
    px.kneeCurrent = 0.051;
    px.turnsRatio = 240;
    const ComparedCurve curve{Iron(), SmoothKnee{{0.06, 410}, 4}, {}};
    const std::vector<Finding> findings = JudgeNameplate(px, curve, 240.24);
    ASSERT_EQ(findings.size(), 4U);
    EXPECT_EQ(findings[0].verdict, Verdict::Within);
    EXPECT_EQ(findings[1].verdict, Verdict::Within);
    EXPECT_EQ(findings[2].verdict, Verdict::Within);
    EXPECT_EQ(findings[3].verdict, Verdict::None);
    EXPECT_THAT(Sentences(px, curve, 240.24),
                ElementsAre("The knee point e.m.f. (10 % / 50 %) is between 406.0 and 414.0 V, "
                            "not less than the nameplate's 400 V.",
                            "The exciting current at the nameplate's 400 V is between 0.0499 and "
                            "0.0501 A, not more than the nameplate's 0.051 A.",
                            "The turns ratio is 0.10 % above the nameplate's; the limit is 0.25 %.",
                            "The class PX is not passed as a whole: this instrument does not "
                            "measure Rct."));
}

TEST(Nameplate, PxThatIsNotMetIsSaid) {
    Nameplate px;
    px.kneeVoltage = 420;
    px.kneeCurrent = 0.05;
    px.turnsRatio = 240;
    const auto verdicts = [&](const ComparedCurve& curve, std::optional<double> ratio) {
        std::vector<Verdict> all;
        for (const Finding& finding : JudgeNameplate(px, curve, ratio))
            all.push_back(finding.verdict);
        return all;
    };
    const ComparedCurve curve{Iron(), SmoothKnee{{0.06, 410}, 4}, {}};
    EXPECT_THAT(verdicts(curve, 239.3),
                ElementsAre(Verdict::Beyond, Verdict::Beyond, Verdict::Beyond, Verdict::None));
    EXPECT_EQ(Sentences(px, curve)[0],
              "The knee point e.m.f. (10 % / 50 %) is between 406.0 and 414.0 V, less than the "
              "nameplate's 420 V.");
    // The uncertainty decides nothing; neither does a range that has the number in it.
    px.kneeVoltage = 412;
    EXPECT_THAT(verdicts(curve, {}), ElementsAre(Verdict::None, Verdict::Beyond, Verdict::None));
    EXPECT_EQ(Sentences(px, curve)[0],
              "The knee point e.m.f. (10 % / 50 %) is between 406.0 and 414.0 V, which leaves the "
              "nameplate's 412 V open.");
    EXPECT_EQ(Sentences(px, {Iron(), {}, KneeRange{430, 520}})[0],
              "The knee point e.m.f. (10 % / 50 %) is between 430.0 and 520.0 V, not less than "
              "the nameplate's 412 V.");
    EXPECT_EQ(Sentences(px, {Iron(), {}, {}})[0],
              "The knee point e.m.f. (10 % / 50 %) is not known: the curve has none for certain.");
    px.kneeVoltage = 600;
    px.kneeCurrent.reset();
    EXPECT_EQ(Sentences(px, curve)[1],
              "The exciting current at the nameplate's 600 V is not known: the curve ends before "
              "it.");
    px.kneeVoltage = 0.5;
    EXPECT_EQ(Sentences(px, curve)[1],
              "The exciting current at the nameplate's 0.5 V is not known: the curve begins above "
              "it.");
    EXPECT_EQ(Sentences(px, {{{0, 0}}, {}, {}})[1],
              "The exciting current at the nameplate's 0.5 V is not known: the curve has no "
              "points.");
    px.kneeVoltage = 400;
    EXPECT_EQ(Sentences(px, curve)[1],
              "The exciting current at the nameplate's 400 V is between 0.0499 and 0.0501 A.");
    // Nothing was typed.
    EXPECT_EQ(Sentences({}, curve, 240).size(), 1U);
}

// Between two points that are far apart the current can be lower than on the straight line: neither
// passed nor condemned by what the bend leaves open.
TEST(Nameplate, TheCurrentBetweenTwoPointsIsOpen) {
    Nameplate px;
    px.kneeVoltage = 400;
    const ComparedCurve curve{{{0.01, 100}, {0.03, 300}, {0.5, 500}, {5, 550}}, {}, {}};
    const auto finding = [&](double most) {
        px.kneeCurrent = most;
        return JudgeNameplate(px, curve, {}).at(1);
    };
    // By the line of the points 0.146 A; the bend leaves as much open as they are apart.
    EXPECT_EQ(finding(0.13).verdict, Verdict::None);
    EXPECT_EQ(finding(0.13).sentence,
              "The exciting current at the nameplate's 400 V is between 0.0087 and 0.1464 A, which "
              "leaves the nameplate's 0.13 A open.");
    EXPECT_EQ(finding(0.0086).verdict, Verdict::Beyond);
    EXPECT_EQ(finding(0.15).verdict, Verdict::Within);
    // At a point only the steps of its readings are open.
    px.kneeVoltage = 500;
    EXPECT_EQ(finding(0.495).verdict, Verdict::Beyond);
    EXPECT_EQ(finding(0.505).verdict, Verdict::Within);
    EXPECT_EQ(finding(0.5).verdict, Verdict::None);
}

// The verdict has more digits than the picture, and the sentence has as many as it takes.
TEST(Nameplate, NumbersThatDifferAreShownSo) {
    Nameplate px;
    px.kneeVoltage = 400;
    const auto knee = [&](double low, double high) {
        return JudgeNameplate(px, {Iron(), {}, KneeRange{low, high}}, {}).at(0);
    };
    EXPECT_EQ(knee(390, 399.98).verdict, Verdict::Beyond);
    EXPECT_EQ(knee(390, 399.98).sentence,
              "The knee point e.m.f. (10 % / 50 %) is between 390.0 and 399.98 V, less than the "
              "nameplate's 400 V.");
    EXPECT_EQ(knee(400, 410).verdict, Verdict::Within);
    EXPECT_EQ(knee(399.999, 410).verdict, Verdict::None);
    EXPECT_EQ(knee(399.999, 410).sentence,
              "The knee point e.m.f. (10 % / 50 %) is between 399.999 and 410.0 V, which leaves "
              "the nameplate's 400 V open.");
    px.kneeCurrent = 0.0499;
    EXPECT_EQ(Sentences(px, {Iron(), {}, {}})[1],
              "The exciting current at the nameplate's 400 V is between 0.04992 and 0.0501 A, "
              "more than the nameplate's 0.0499 A.");
}

TEST(Nameplate, NoNumberIsAboveABillion) {
    const auto sentences = [](double number) {
        Nameplate px;
        px.kneeVoltage = number;
        Nameplate p;
        p.kind = AccuracyClass::P5;
        p.burdenVa = 10;
        p.rct = number;
        Nameplate secondary = p;
        secondary.rct = 1;
        secondary.secondary = number;
        std::size_t count = 0;
        for (const Nameplate& one : {px, p, secondary}) {
            for (const std::string& sentence : Sentences(one, {Iron(), {}, {}}))
                count += sentence.find("takes Rct") == std::string::npos ? 1 : 0;
        }
        return count;
    };
    EXPECT_GT(sentences(1e9), sentences(1.01e9) + 3);
    EXPECT_EQ(sentences(1.01e9), 3U);
}

TEST(Nameplate, WhatNoNameplateHasIsNotJudged) {
    const ComparedCurve curve{Iron(), SmoothKnee{{0.06, 410}, 4}, {}};
    for (const double none : {0.0, -400.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 1e300}) {
        SCOPED_TRACE(none);
        Nameplate bad;
        for (auto* value : {&bad.kneeVoltage, &bad.kneeCurrent, &bad.turnsRatio, &bad.alf,
                            &bad.burdenVa, &bad.cVoltage})
            *value = none;
        for (const AccuracyClass kind :
             {AccuracyClass::Px, AccuracyClass::P5, AccuracyClass::P10, AccuracyClass::C}) {
            bad.kind = kind;
            bad.rct = none > 0 ? none : -1;
            bad.connectedOhm = bad.rct;
            EXPECT_THAT(ClassName(bad), testing::AnyOf("PX", "5P", "10P", "C"));
            for (const Finding& finding : JudgeNameplate(bad, curve, none)) {
                EXPECT_EQ(finding.verdict, Verdict::None) << finding.sentence;
                EXPECT_THAT(finding.sentence, testing::AnyOf(testing::StartsWith("The class "),
                                                             testing::HasSubstr("takes Rct")));
            }
            // Without a rated current there is no estimate either.
            bad.rct = 1;
            bad.burdenVa = 10;
            bad.secondary = none;
            EXPECT_EQ(JudgeNameplate(bad, curve, 240).size(), 1U);
            bad.burdenVa = none;
            bad.secondary = 5;
        }
        // A limit that is none is no verdict.
        Nameplate px;
        px.turnsRatio = 240;
        px.ratioLimitPercent = none;
        if (none != 0 && none != 1e300) {
            EXPECT_EQ(JudgeNameplate(px, curve, 240.5).at(0).verdict, Verdict::None);
        }
        px.kneeVoltage = 400;
        px.kneeCurrent = none;
        EXPECT_EQ(JudgeNameplate(px, curve, {}).at(1).verdict, Verdict::None);
    }
}

// Read at 10 A, ten percent of twenty times 5 A; the curve's ends belong to it.
TEST(Nameplate, ACVoltageIsToldFromEndToEndOfTheCurve) {
    const auto told = [](const Points& points) {
        return ExpectedCVoltage(points, 5, 0.5).value_or(Estimate{-1, false});
    };
    EXPECT_NEAR(told({{10, 100}, {20, 120}}).value, 50, 1e-9);
    EXPECT_FALSE(told({{10, 100}, {20, 120}}).isAtLeast);
    EXPECT_NEAR(told({{5, 80}, {10, 100}}).value, 50, 1e-9);
    EXPECT_FALSE(told({{5, 80}, {10, 100}}).isAtLeast);
    EXPECT_TRUE(told({{5, 80}, {9.9, 100}}).isAtLeast);
    EXPECT_EQ(told({{10.1, 100}, {20, 120}}).value, -1);
}

// The factor at which the curve meets the straight line of the burden, by bisection on the formula.
TEST(Nameplate, TheFactorIsWhereTheCurveMeetsTheBurden) {
    Nameplate p;
    p.kind = AccuracyClass::P10;
    p.alf = 10;
    p.burdenVa = 15;
    p.rct = 0.4;
    const double ohms = 0.4 + 0.6;
    const auto current = [](double volts) {
        return 0.03 * volts / 400 + 0.02 * std::pow(volts / 400, 10);
    };
    double low = 1;
    double high = 1000;
    while (high - low > 1e-9) {
        const double factor = (low + high) / 2;
        const double error = current(factor * 5 * ohms) / (factor * 5);
        (error > 0.1 ? high : low) = factor;
    }
    Points whole;
    for (double volts = 1; volts <= 1000; volts += 0.5)
        whole.push_back({current(volts), volts});
    const std::optional<Estimate> expected = ExpectedAlf(whole, 0.1, 5, ohms);
    ASSERT_TRUE(expected.has_value());
    EXPECT_NEAR(expected.value_or(Estimate()).value / low, 1, 1e-4);
    EXPECT_FALSE(expected.value_or(Estimate()).isAtLeast);
    // The curve that ends at 500 V and 0.22 A tells a lower bound.
    const std::optional<Estimate> bound = ExpectedAlf(Iron(), 0.1, 5, ohms);
    ASSERT_TRUE(bound.has_value());
    EXPECT_TRUE(bound.value_or(Estimate()).isAtLeast);
    EXPECT_LT(bound.value_or(Estimate()).value, low);
    EXPECT_EQ(ExpectedAlf({}, 0.1, 5, ohms), std::nullopt);
    // Rct is as large as the connected burden, then both are zero.
    p.connectedOhm = p.rct;
    EXPECT_THAT(Sentences(p, {whole, {}, {}}),
                testing::Contains("At the connected burden the nameplate's accuracy limit factor "
                                  "of 10 becomes 12.5."));
    p.connectedOhm = p.rct = 0;
    EXPECT_THAT(Sentences(p, {whole, {}, {}}),
                testing::Not(testing::Contains(testing::HasSubstr("connected burden"))));
    EXPECT_EQ(ExpectedAlf({{5, 1}, {10, 2}}, 0.1, 5, ohms), std::nullopt);
    EXPECT_EQ(ExpectedAlf(whole, 0.1, 5, 0), std::nullopt);
    // One reading alone is as high as it must be, 1 V at 1 A.
    const std::optional<Estimate> touched =
        ExpectedAlf({{0.5, 0.1}, {1, 1}, {2, 1.5}}, 0.1, 1, 0.1);
    EXPECT_NEAR(touched.value_or(Estimate()).value, 10, 1e-9);
    const std::optional<Estimate> last = ExpectedAlf({{0.5, 0.8}, {1, 1}}, 0.1, 1, 0.1);
    EXPECT_NEAR(last.value_or(Estimate()).value, 10, 1e-9);
    EXPECT_TRUE(last.value_or(Estimate()).isAtLeast);
}

TEST(Nameplate, OfAPClassThereAreEstimatesOnly) {
    Nameplate p;
    p.kind = AccuracyClass::P5;
    p.alf = 9;
    p.burdenVa = 125;  // 5 ohm
    p.rct = 3;
    p.connectedOhm = 0.6;
    const ComparedCurve curve{{{0.1, 100}, {1, 200}, {5, 220}}, {}, {}};
    // 8 ohm / 0.05 = 160 ohm: V = 160 I between 1 A, 200 V and 5 A, 220 V.
    const double slope = std::log(220.0 / 200) / std::log(5.0);
    const double amperes = std::exp(std::log(200.0 / 160) / (1 - slope));
    EXPECT_NEAR(ExpectedAlf(curve.points, 0.05, 5, 8).value_or(Estimate()).value, amperes / 0.25,
                1e-9);
    EXPECT_THAT(Sentences(p, curve),
                ElementsAre("The nameplate asks for 225.0 V at the rated burden.",
                            "The accuracy limit factor at the rated burden is about 5.1, from the "
                            "secondary excitation curve; leakage flux is not seen.",
                            "At the connected burden the nameplate's accuracy limit factor of 9 "
                            "becomes 20.0.",
                            "The class 5P9 is not judged: this instrument measures the turns ratio "
                            "by voltage, not the error of the current."));
    for (const Finding& finding : JudgeNameplate(p, curve, 240))
        EXPECT_EQ(finding.verdict, Verdict::None);
    EXPECT_EQ(Sentences(p, {})[1],
              "The accuracy limit factor at the rated burden is not estimated: the curve has no "
              "points.");
    EXPECT_EQ(Sentences(p, {{{5, 1}, {10, 2}}, {}, {}})[1],
              "The accuracy limit factor at the rated burden is not estimated: the curve begins "
              "above it.");
    p.rct.reset();
    EXPECT_EQ(
        Sentences(p, curve)[1],
        "The accuracy limit factor at the rated burden is not estimated: it takes Rct, which this "
        "instrument does not measure.");
    p.burdenVa.reset();
    EXPECT_EQ(Sentences(p, curve).size(), 1U);
}

TEST(Nameplate, OfACClassThereIsAnEstimateOnly) {
    Nameplate c;
    c.kind = AccuracyClass::C;
    c.cVoltage = 400;
    c.rct = 0.5;
    const Points points = {{0.1, 300}, {1, 450}, {10, 500}, {20, 510}};
    EXPECT_THAT(
        Sentences(c, {points, {}, {}}),
        ElementsAre("The C voltage is about 450.0 V, from the secondary excitation curve; "
                    "leakage flux is not seen.",
                    "The class C400 is not judged: this instrument measures the turns ratio "
                    "by voltage, not the error of the current."));
    EXPECT_EQ(
        Sentences(c, {{{0.1, 300}, {1, 450}, {5, 480}}, {}, {}})[0],
        "The C voltage is at least 430.0 V, from the secondary excitation curve; leakage flux "
        "is not seen.");
    EXPECT_EQ(Sentences(c, {{{11, 500}, {20, 510}}, {}, {}})[0],
              "The C voltage is not estimated: the curve begins above it.");
    EXPECT_EQ(ExpectedCVoltage({{11, 500}, {20, 510}}, 5, 0.5), std::nullopt);
    EXPECT_EQ(ExpectedCVoltage({{1, 5}, {20, 51}}, 5, 5).value_or(Estimate{1, false}).value, 0);
    // 1 A secondary: at 2 A, less 20 A times Rct.
    EXPECT_NEAR(
        ExpectedCVoltage({{0.1, 300}, {2, 450}, {5, 480}}, 1, 0.5).value_or(Estimate()).value, 440,
        1e-9);
    c.rct.reset();
    EXPECT_EQ(Sentences(c, {points, {}, {}})[0],
              "The C voltage is not estimated: it takes Rct, which this instrument does not "
              "measure.");
    for (const Finding& finding : JudgeNameplate(c, {points, {}, {}}, 240))
        EXPECT_EQ(finding.verdict, Verdict::None);
}

TEST(Nameplate, AClassHasItsName) {
    Nameplate nameplate;
    EXPECT_EQ(ClassName(nameplate), "PX");
    nameplate.kind = AccuracyClass::P10;
    EXPECT_EQ(ClassName(nameplate), "10P");
    nameplate.alf = 10;
    EXPECT_EQ(ClassName(nameplate), "10P10");
    nameplate.kind = AccuracyClass::C;
    nameplate.cVoltage = 100;
    EXPECT_EQ(ClassName(nameplate), "C100");
}

}  // namespace
}  // namespace davo
