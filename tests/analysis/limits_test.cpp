// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers against a limit, and their texts.

#include "analysis/limits.h"

#include <cmath>

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(Limits, TheVerdictGoesByTheUnroundedNumber) {
    EXPECT_EQ(VerdictOf(5.0, 5.0), Verdict::Within);
    EXPECT_EQ(VerdictOf(-5.0, 5.0), Verdict::Within);
    EXPECT_EQ(VerdictOf(-5.000001, 5.0), Verdict::Beyond);
    EXPECT_EQ(VerdictOf(100 * (1.05 - 1), 5.0), Verdict::Within);  // a hair above 5 in doubles
    EXPECT_EQ(VerdictOf(99, std::nullopt), Verdict::None);
    EXPECT_EQ(VerdictOf(0, 0), Verdict::Within);
}

TEST(Limits, WhatIsNoNumberHasNoVerdict) {
    for (const double none : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        EXPECT_EQ(VerdictOf(none, 5), Verdict::None) << none;
        EXPECT_EQ(VerdictOf(3, none), Verdict::None) << none;
        EXPECT_EQ(VerdictOf(none, none), Verdict::None) << none;
    }
    EXPECT_EQ(VerdictOf(0, -1), Verdict::None);
    EXPECT_EQ(LimitEnd(VerdictOf(3, HUGE_VAL), HUGE_VAL), ".");
}

TEST(Limits, TheShownNumberIsOnTheSameSideOfTheLimit) {
    const auto text = [](double percent, std::optional<double> limit, std::size_t decimals = 1) {
        return DifferenceText(percent, "it", limit, decimals);
    };
    EXPECT_EQ(text(-3.14, std::nullopt), "3.1 % below it");
    EXPECT_EQ(text(5.04, 5), "5.04 % above it");
    EXPECT_EQ(text(5.06, 5), "5.1 % above it");
    EXPECT_EQ(text(4.96, 4.98), "4.96 % above it");
    EXPECT_EQ(text(-4.96, 5), "4.96 % below it");
    EXPECT_EQ(text(5, 5), "5.0 % above it");
    EXPECT_EQ(text(100 * (1.05 - 1), 5), "5.0 % above it");
    EXPECT_EQ(text(0.2504, 0.25, 2), "0.2504 % above it");
    EXPECT_EQ(text(1e300, std::nullopt), "1000000.0 % above it");
    EXPECT_EQ(LimitEnd(Verdict::Beyond, 5), ", beyond the limit of 5 %.");
    EXPECT_EQ(LimitEnd(Verdict::Within, 5.5), "; the limit is 5.5 %.");
    EXPECT_EQ(LimitEnd(Verdict::None, std::nullopt), ".");
}

TEST(Limits, NothingIsZeroPercentAboveAnything) {
    const auto text = [](double percent, std::optional<double> limit, std::size_t decimals = 1) {
        return DifferenceText(percent, "it", limit, decimals);
    };
    EXPECT_EQ(text(0.049, std::nullopt), "within 0.1 % of it");
    EXPECT_EQ(text(-0.049, 0.1), "within 0.1 % of it");
    EXPECT_EQ(text(0, std::nullopt), "within 0.1 % of it");
    EXPECT_EQ(text(0.004, 0.25, 2), "within 0.01 % of it");
    EXPECT_EQ(text(0.05, std::nullopt), "0.1 % above it");
    // A limit that is lower needs the number.
    EXPECT_EQ(text(-0.03, 0.05), "0.03 % below it");
    EXPECT_EQ(text(0, 0.05), "exactly it");
}

TEST(Limits, TwoNumbersThatDifferAreShownSo) {
    EXPECT_EQ(NumberText(1000.4, 0, 1000), "1000.4");
    EXPECT_EQ(NumberText(999.96, 1, 1000), "999.96");
    EXPECT_EQ(NumberText(1000, 0, 1000), "1000");
    EXPECT_EQ(NumberText(1244.4, 0, 1000), "1244");
    EXPECT_EQ(NumberText(0.00003, 4), "0.00003");
    EXPECT_EQ(NumberText(0, 1), "0.0");
    EXPECT_EQ(NumberText(1.0004, 1), "1.0");
    EXPECT_EQ(NumberText(5 + 1e-10, 1, 5), "5.0");
    EXPECT_EQ(NumberText(5 + 4e-9, 1, 5), "5.000000004");
    // Nine decimals are the most, whatever they tell.
    EXPECT_EQ(NumberText(33 + 1.3e-9, 1, 33), "33.000000001");
}

TEST(Limits, TextsOfValues) {
    EXPECT_EQ(AmperesText(0.0012), "0.0012 A");
    EXPECT_EQ(AmperesText(0.01), "0.010 A");
    EXPECT_EQ(AmperesText(0.02), "0.020 A");
    EXPECT_EQ(AmperesText(0.1), "0.10 A");
    EXPECT_EQ(AmperesText(0.2), "0.20 A");
    EXPECT_EQ(AmperesText(12.345), "12.35 A");
    EXPECT_EQ(VoltsText(99.94), "99.9 V");
    EXPECT_EQ(VoltsText(100), "100 V");
    EXPECT_EQ(VoltsText(824.6), "825 V");
}

TEST(RatioError, HasASign) {
    EXPECT_NEAR(RatioErrorOf(241.2, 240).value_or(0), 0.5, 1e-12);
    EXPECT_NEAR(RatioErrorOf(238.8, 240).value_or(0), -0.5, 1e-12);
    EXPECT_NEAR(RatioErrorOf(0.505, 0.5).value_or(0), 1, 1e-12);
    EXPECT_EQ(RatioErrorOf(0, 240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(240, 0), std::nullopt);
    EXPECT_EQ(RatioErrorOf(240, -240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(std::nan(""), 240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(1e308, 1e-308), std::nullopt);
}

TEST(RatioError, IsReadFromARecordsTexts) {
    const auto sentence = [](const char* measured, const char* nameplate) {
        const std::vector<Finding> found = RatioFindings(measured, nameplate, "", std::nullopt);
        return found.empty() ? "" : found.front().sentence;
    };
    EXPECT_EQ(sentence("238.8:1", "240 (1200:5)"),
              "The turns ratio is 0.50 % below the nameplate's.");
    EXPECT_EQ(sentence(" 241.200", "240.000"), "The turns ratio is 0.50 % above the nameplate's.");
    EXPECT_EQ(sentence("241.2", "N/A"), "");
    EXPECT_EQ(sentence("", "240"), "");
}

TEST(RatioError, IsShownWithItsSign) {
    EXPECT_EQ(SignedPercentText(0.5), "+0.50 %");
    EXPECT_EQ(SignedPercentText(-0.5), "-0.50 %");
    EXPECT_EQ(SignedPercentText(0.004), "0.00 %");
    EXPECT_EQ(SignedPercentText(-0.004), "0.00 %");
    EXPECT_EQ(RatioFinding(-0.5, 0.25).sentence,
              "The turns ratio is 0.50 % below the nameplate's, beyond the limit of 0.25 %.");
    EXPECT_EQ(RatioFinding(0.2512, 0.25).sentence,
              "The turns ratio is 0.251 % above the nameplate's, beyond the limit of 0.25 %.");
    EXPECT_EQ(RatioFinding(0.2, 0.25).sentence,
              "The turns ratio is 0.20 % above the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioFinding(0.2, std::nullopt).sentence,
              "The turns ratio is 0.20 % above the nameplate's.");
    EXPECT_EQ(RatioFinding(0.2504, 0.25).sentence,
              "The turns ratio is 0.2504 % above the nameplate's, beyond the limit of 0.25 %.");
}

TEST(RatioError, NoneIsSaidAsNone) {
    EXPECT_EQ(RatioFinding(0, 0.25).sentence,
              "The turns ratio is within 0.01 % of the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioFinding(0, 0.001).sentence,
              "The turns ratio is exactly the nameplate's; the limit is 0.001 %.");
    EXPECT_EQ(RatioFinding(-0.004, 0.25).sentence,
              "The turns ratio is within 0.01 % of the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioFinding(0.004, 0.001).sentence,
              "The turns ratio is 0.004 % above the nameplate's, beyond the limit of 0.001 %.");
}

TEST(RatioError, HasTheVerdictThatItsSentenceSays) {
    EXPECT_EQ(RatioFinding(0.2504, 0.25).verdict, Verdict::Beyond);
    EXPECT_EQ(RatioFinding(-0.25, 0.25).verdict, Verdict::Within);
    EXPECT_EQ(RatioFinding(-0.25, std::nullopt).verdict, Verdict::None);
    const std::vector<Finding> both = RatioFindings("239.4", "240 (1200:5)", "IN PHASE", 0.2);
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0].verdict, Verdict::Beyond);
    EXPECT_EQ(both[0].sentence, RatioFinding(-0.25, 0.2).sentence);
    EXPECT_EQ(both[1].verdict, Verdict::None);
    EXPECT_EQ(both[1].sentence, "The polarity is in phase (+).");
    EXPECT_TRUE(RatioFindings("N/A", "240", "UNDETERMINED", 1).empty());
}

TEST(RatioError, PolarityHasItsSign) {
    const std::vector<Finding> out = RatioFindings("", "", "OUT OF PHASE ", 1);
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].verdict, Verdict::None);
    EXPECT_EQ(out[0].sentence, "The polarity is out of phase (-).");
    EXPECT_TRUE(RatioFindings("", "", "N/A", 1).empty());
}

}  // namespace
}  // namespace davo
