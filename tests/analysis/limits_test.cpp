// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers against a limit, and their texts.

#include "analysis/limits.h"

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(Limits, TheVerdictGoesByTheUnroundedNumber) {
    EXPECT_EQ(VerdictOf(5.0, 5.0), Verdict::Within);
    EXPECT_EQ(VerdictOf(-5.0, 5.0), Verdict::Within);
    EXPECT_EQ(VerdictOf(-5.000001, 5.0), Verdict::Beyond);
    EXPECT_EQ(VerdictOf(100 * (1.05 - 1), 5.0), Verdict::Within);  // a hair above 5 in doubles
    EXPECT_EQ(VerdictOf(99, std::nullopt), Verdict::None);
}

TEST(Limits, TheShownNumberIsOnTheSameSideOfTheLimit) {
    EXPECT_EQ(PercentText(-3.14), "3.1 %");
    EXPECT_EQ(PercentText(5.04, 5), "5.04 %");
    EXPECT_EQ(PercentText(5.06, 5), "5.1 %");
    EXPECT_EQ(PercentText(4.96, 4.98), "4.96 %");
    EXPECT_EQ(PercentText(4.96, 5), "5.0 %");
    EXPECT_EQ(PercentText(0.2504, 0.25, 2), "0.2504 %");
    EXPECT_EQ(PercentText(1e300), "1000000.0 %");
    EXPECT_EQ(LimitEnd(5.04, 5), ", beyond the limit of 5 %.");
    EXPECT_EQ(LimitEnd(-4.9, 5.5), "; the limit is 5.5 %.");
    EXPECT_EQ(LimitEnd(4.9, std::nullopt), ".");
}

TEST(Limits, TextsOfValues) {
    EXPECT_EQ(AmperesText(0.0012), "0.0012 A");
    EXPECT_EQ(AmperesText(0.02), "0.020 A");
    EXPECT_EQ(AmperesText(0.2), "0.20 A");
    EXPECT_EQ(AmperesText(12.345), "12.35 A");
    EXPECT_EQ(VoltsText(99.94), "99.9 V");
    EXPECT_EQ(VoltsText(824.6), "825 V");
    EXPECT_EQ(SideOf(-1), "below");
    EXPECT_EQ(SideOf(1), "above");
}

}  // namespace
}  // namespace davo
