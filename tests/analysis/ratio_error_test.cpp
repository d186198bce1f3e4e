// SPDX-License-Identifier: GPL-3.0-or-later
// The sign that a record's percent error has not.

#include "analysis/ratio_error.h"

#include <cmath>

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(RatioError, HasASign) {
    EXPECT_NEAR(RatioErrorOf(241.2, 240).value_or(0), 0.5, 1e-12);
    EXPECT_NEAR(RatioErrorOf(238.8, 240).value_or(0), -0.5, 1e-12);
    EXPECT_EQ(RatioErrorOf(0, 240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(240, 0), std::nullopt);
    EXPECT_EQ(RatioErrorOf(240, -240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(std::nan(""), 240), std::nullopt);
    EXPECT_EQ(RatioErrorOf(1e308, 1e-308), std::nullopt);
}

TEST(RatioError, IsReadFromARecordsTexts) {
    EXPECT_NEAR(RatioErrorOf("238.8:1", "240 (1200:5)").value_or(0), -0.5, 1e-12);
    EXPECT_NEAR(RatioErrorOf(" 241.200", "240.000").value_or(0), 0.5, 1e-12);
    EXPECT_EQ(RatioErrorOf("241.2", "N/A"), std::nullopt);
    EXPECT_EQ(RatioErrorOf("", "240"), std::nullopt);
}

TEST(RatioError, IsShownWithItsSign) {
    EXPECT_EQ(SignedPercentText(0.5), "+0.50 %");
    EXPECT_EQ(SignedPercentText(-0.5), "-0.50 %");
    EXPECT_EQ(SignedPercentText(0.004), "0.00 %");
    EXPECT_EQ(SignedPercentText(-0.004), "0.00 %");
    EXPECT_EQ(RatioSentenceOf(-0.5, 0.25),
              "The turns ratio is 0.50 % below the nameplate's, beyond the limit of 0.25 %.");
    EXPECT_EQ(RatioSentenceOf(0.2512, 0.25),
              "The turns ratio is 0.251 % above the nameplate's, beyond the limit of 0.25 %.");
    EXPECT_EQ(RatioSentenceOf(0.2, 0.25),
              "The turns ratio is 0.20 % above the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioSentenceOf(0.2, std::nullopt),
              "The turns ratio is 0.20 % above the nameplate's.");
    EXPECT_EQ(RatioSentenceOf(0.2504, 0.25),
              "The turns ratio is 0.2504 % above the nameplate's, beyond the limit of 0.25 %.");
}

TEST(RatioError, NoneIsSaidAsNone) {
    EXPECT_EQ(RatioSentenceOf(0, 0.25),
              "The turns ratio is exactly the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioSentenceOf(0, std::nullopt), "The turns ratio is exactly the nameplate's.");
    EXPECT_EQ(RatioSentenceOf(-0.004, 0.25),
              "The turns ratio is within 0.01 % of the nameplate's; the limit is 0.25 %.");
    EXPECT_EQ(RatioSentenceOf(0.004, 0.001),
              "The turns ratio is 0.004 % above the nameplate's, beyond the limit of 0.001 %.");
}

TEST(RatioError, PolarityHasItsSign) {
    EXPECT_EQ(PolaritySentenceOf("IN PHASE"), "The polarity is in phase (+).");
    EXPECT_EQ(PolaritySentenceOf("OUT OF PHASE "), "The polarity is out of phase (-).");
    EXPECT_EQ(PolaritySentenceOf("N/A"), "");
    EXPECT_EQ(PolaritySentenceOf("UNDETERMINED"), "");
}

}  // namespace
}  // namespace davo
