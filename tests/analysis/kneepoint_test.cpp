// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/kneepoint.h"

#include <limits>

#include "common/run_time_error.h"
#include "common/settings.h"
#include "tests/analysis/print_kneepoint.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using Values = std::vector<double>;

const Kneepoint kNotFound{"0", "0"};
const Kneepoint kNotAvailable{"N/A", "N/A"};

// A curve from its lowest point up, made of the ratios current/current and voltage/voltage of
// neighbouring points.
struct Curve {
    Values current;
    Values voltage;

    Curve& Grow(double currentFactor, double voltageFactor) {
        current.push_back(current.back() * currentFactor);
        voltage.push_back(voltage.back() * voltageFactor);
        return *this;
    }
};

Curve StartingAt(double current, double voltage) {
    return {{current}, {voltage}};
}

Kneepoint Find(KneeRule rule, const Curve& curve) {
    return ComputeKneepoint(rule, curve.current, curve.voltage);
}

int ErrorOf(KneeRule rule, const Values& current, const Values& voltage) {
    return test::ErrorBy([&] { ComputeKneepoint(rule, current, voltage); });
}

TEST(KneeRules, HaveTheLabelsOfTheSetting) {
    EXPECT_EQ(KneeRuleOf(kKneeAsa), KneeRule::Asa1050);
    EXPECT_EQ(KneeRuleOf(kKneeIeee45), KneeRule::Ieee45);
    EXPECT_EQ(KneeRuleOf(kKneeIeee30), KneeRule::Ieee30);
    EXPECT_EQ(KneeRuleOf("ASA 10/50"), std::nullopt);
    EXPECT_EQ(KneeRuleOf(""), std::nullopt);
}

TEST(Kneepoint, EveryPairBelowTheThresholdGivesNone) {
    const Curve flat = StartingAt(1, 100).Grow(1.1, 1.3).Grow(1.1, 1.3).Grow(1.1, 1.3);
    EXPECT_EQ(Find(KneeRule::Ieee45, flat), kNotFound);
}

TEST(Kneepoint, AFirstPairBelowAtTheThirdPointIsNotAvailable) {
    // Top pair far above, the pair under it the first below the threshold.
    const Curve curve = StartingAt(1, 100).Grow(1.1, 1.3).Grow(1.1, 1.3).Grow(5, 1.01);
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), kNotAvailable);
    EXPECT_EQ(Find(KneeRule::Ieee30, curve), kNotAvailable);
}

TEST(Kneepoint, ThreePointsBelowAreNotAvailableEvenWithoutACrossing) {
    const Curve curve = StartingAt(1, 100).Grow(1.1, 1.3).Grow(1.1, 1.3);
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), kNotAvailable);
    EXPECT_EQ(Find(KneeRule::Asa1050, curve), kNotAvailable);
}

TEST(Kneepoint, AnExactRatioOf181EndsThe30DegreeSearchWithNone) {
    // 18.1 % more current for 10 % more voltage, the pair above far steeper.
    const Curve curve =
        StartingAt(1, 100).Grow(1.1, 1.3).Grow(1.1, 1.3).Grow(1.181, 1.1).Grow(5, 1.01);
    EXPECT_EQ(Find(KneeRule::Ieee30, curve), kNotFound);
    // A hair less and there is a knee in that pair.
    const Curve below =
        StartingAt(1, 100).Grow(1.1, 1.3).Grow(1.1, 1.3).Grow(1.179, 1.1).Grow(5, 1.01);
    EXPECT_NE(Find(KneeRule::Ieee30, below), kNotFound);
}

TEST(Kneepoint, AnExactRatioOfOneIsTheMiddleOfThePair) {
    const Curve curve{{1, 1.1, 1.21, 1.331, 6}, {90, 100, 120, 132, 133}};
    // 1.21 to 1.331 is +10 %, 120 to 132 is +10 %.
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), (Kneepoint{"126.0", "1.271"}));
}

TEST(Kneepoint, AnExactRatioOfFiveIsTheLowerPointOfThePairOfEveryOther) {
    const Curve curve{{1, 1.2, 1.5, 10, 40}, {100, 105, 110, 111, 112}};
    // 1.0 to 1.5 is +50 %, 100 to 110 is +10 %; the pairs above are far steeper.
    EXPECT_EQ(Find(KneeRule::Asa1050, curve), (Kneepoint{"100.0", "1.000"}));
}

TEST(Kneepoint, AnExactHitIsRounded) {
    const Curve curve{{1, 1.2, 1.5, 10, 40}, {123.46, 130, 135.806, 136, 136.1}};
    EXPECT_EQ(Find(KneeRule::Asa1050, curve).voltage, "123.5");
}

TEST(Kneepoint, AnInterpolatedVoltageIsCut) {
    EXPECT_EQ(CutToOneDecimal("123.460"), "123.4");
    EXPECT_EQ(CutToOneDecimal("123.999"), "123.9");
    EXPECT_EQ(CutToOneDecimal("0.050"), "0.0");
    EXPECT_EQ(CutToOneDecimal("-1.990"), "-1.9");
    EXPECT_EQ(CutToOneDecimal("123,460"), "1");
    EXPECT_EQ(CutToOneDecimal("7."), "7.");
    EXPECT_EQ(CutToOneDecimal(""), "");
}

// The pair 2 V to 3 V, ratio (1.5-1)/1 : (3-2)/2 = 1, would be an exact hit under the 45 degree
// rule; under the 30 degree rule it is below 1.81, and the pair above has 2/1.5 : 0.5/3 = 7.98.
TEST(Kneepoint, The30DegreeKneeLiesFromTheMiddleOfThePairOnward) {
    const Curve curve{{0.5, 0.8, 1, 1.5, 3.5}, {0.9, 1.5, 2, 3, 3.5}};
    // relI 1.333, relV 0.167: 7.98. f = (1.81 - 1) / (7.98 - 1) = 0.11605
    // V = 2.5 + f * 1 = 2.616, cut to 2.6; I = 1.25 + f * 0.5 = 1.308
    EXPECT_EQ(Find(KneeRule::Ieee30, curve), (Kneepoint{"2.6", "1.308"}));
}

TEST(Kneepoint, TheAsaKneeLiesBetweenTheLowerAndTheMiddlePoint) {
    const Curve curve{{1, 1.1, 1.2, 1.6, 9}, {100, 106, 110, 115, 116}};
    // Pair 4-2: relI 6.5, relV 0.055: 118.18. Pair 3-1: 0.455 / 0.085 = 5.35.
    // Pair 2-0: 0.2 / 0.1 = 2, upper 2 with no pair below before: not available.
    EXPECT_EQ(Find(KneeRule::Asa1050, curve), kNotAvailable);
    Curve longer{{0.5, 1, 1.1, 1.2, 1.6, 9}, {50, 100, 106, 110, 115, 116}};
    // Now pair 3-1 has the 2: f = (5 - 2) / (5.35 - 2) = 0.89552;
    // V = 100 + f * 6 = 105.373, I = 1 + f * 0.1 = 1.090
    EXPECT_EQ(Find(KneeRule::Asa1050, longer), (Kneepoint{"105.3", "1.090"}));
}

TEST(Kneepoint, AZeroPointIsPassedOverAndThePairSpansIt) {
    // Under the 30 degree rule: pair 4-3 is skipped (point 3 has no voltage), pair 4-2 is next,
    // reached with upper 3: 4.0/1.0 / (12/100) = 33.33 above. Pair 2-1 below.
    const Curve zeroVoltage{{0.8, 0.9, 1, 2, 5}, {60, 80, 100, 0, 112}};
    // upper 3, lower 2, held point 4: above 33.33; then upper 2, lower 1: 0.111 / 0.25 = 0.44,
    // the first below at upper 2: not available.
    EXPECT_EQ(Find(KneeRule::Ieee30, zeroVoltage), kNotAvailable);

    const Curve zeroCurrent{{0.7, 0.8, 0.9, 1, 0, 5}, {40, 60, 80, 100, 110, 112}};
    // upper 4 lower 3 held point 5: 4 / 0.12 = 33.33; upper 3 lower 2: 0.111 / 0.25 = 0.44.
    // f = (1.81 - 0.44) / (33.33 - 0.44) = 0.041654; V = 90 + f * 20 = 90.833; I = 0.95 + f * 0.1
    EXPECT_EQ(Find(KneeRule::Ieee30, zeroCurrent), (Kneepoint{"90.8", "0.954"}));
}

// The differences span the skipped point, the middle of the pair does not.
TEST(Kneepoint, ASkippedPointIsStillTheUpperOneOfTheMiddle) {
    const Curve curve{{0.5, 0.6, 0.7, 1, 0, 1.1, 6}, {40, 50, 60, 100, 0, 150, 151}};
    // upper 6 lower 5: 4.455 / 0.007 = 636.43. upper 5: point 4 is zero. upper 4, lower 3, held
    // point 5: 0.1 / 0.5 = 0.2. f = (1 - 0.2) / (636.43 - 0.2) = 0.0012574;
    // V = (100 + 0) / 2 + f * 50 = 50.063; I = (1 + 0) / 2 + f * 0.1 = 0.500
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), (Kneepoint{"50.0", "0.500"}));
}

TEST(Kneepoint, ACurveAboveTheThresholdDownToItsFirstPointGivesNone) {
    const Curve steep = StartingAt(1, 100).Grow(2, 1.05).Grow(2, 1.05).Grow(2, 1.05).Grow(2, 1.05);
    for (const KneeRule rule : kKneeRules)
        EXPECT_EQ(Find(rule, steep), kNotFound);
}

TEST(Kneepoint, AnUnchangedVoltageKeepsTheRatioOfThePairBefore) {
    // Top pair: no change of voltage, ratio 0, which is below and only clears the first-below mark.
    const Curve curve{{0.5, 1, 1.1, 1.2, 6, 9}, {50, 100, 120, 140, 141, 141}};
    // upper 4: 4 / 0.007 = 571.43. upper 3: 0.091 / 0.167 = 0.54.
    // f = (1 - 0.54) / (571.43 - 0.54) = 0.00080576; V = 130 + f * 20 = 130.016
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), (Kneepoint{"130.0", "1.150"}));
}

TEST(Kneepoint, APairBelowAboveTheKneeIsForgotten) {
    // Below at the very top, above under it, below again: the second crossing counts.
    const Curve curve{{0.8, 0.9, 1, 6, 6.1}, {60, 80, 100, 101, 130}};
    // upper 4: 0.017 / 0.287 = 0.06; upper 3: 5 / 0.01 = 500; upper 2: 0.111 / 0.25 = 0.44 below,
    // and a pair below has been met: f = (1 - 0.44) / (500 - 0.44) = 0.001121
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), (Kneepoint{"90.0", "0.950"}));
}

TEST(Kneepoint, ShortCurvesWithoutAPairGiveNone) {
    EXPECT_EQ(ComputeKneepoint(KneeRule::Asa1050, Values{1, 2}, Values{1, 2}), kNotFound);
    EXPECT_EQ(ComputeKneepoint(KneeRule::Ieee45, Values{1}, Values{1}), kNotFound);
}

TEST(Kneepoint, ACurveWithoutPointsIsASubscriptError) {
    EXPECT_EQ(ErrorOf(KneeRule::Asa1050, {}, {}), 9);
    EXPECT_EQ(ErrorOf(KneeRule::Asa1050, {1, 2}, {1}), 9);
}

TEST(Kneepoint, AResultThatIsNotFiniteIsAnOverflow) {
    constexpr double kHuge = std::numeric_limits<double>::max();
    EXPECT_EQ(ErrorOf(KneeRule::Ieee45, {-kHuge, kHuge}, {1, 2}), 6);
    EXPECT_EQ(ErrorOf(KneeRule::Ieee45, {1, 2}, {1e-300, 1e300}), 6);
    EXPECT_EQ(ErrorOf(KneeRule::Ieee45, {1, 2, 3, 1e300, 2e300}, {1, 2, 3, 4, 5}), 0);
}

TEST(Kneepoint, LeavesOutTheLeadingZeroNowhere) {
    const Curve curve{{0.001, 0.002, 0.0031, 0.0042, 0.9}, {0.05, 0.1, 0.2, 0.4, 0.41}};
    // upper 4: 213.286 / 0.025 = 8531.44; upper 3: 0.355 / 1 = 0.36;
    // f = 0.000075; V = 0.3 + f * 0.2 = 0.300; I = 0.00365 + f * 0.0011 = 0.004
    EXPECT_EQ(Find(KneeRule::Ieee45, curve), (Kneepoint{"0.3", "0.004"}));
}

}  // namespace
}  // namespace davo
