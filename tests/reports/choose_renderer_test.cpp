// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/choose_renderer.h"

#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST(ChooseRenderer, TheBuiltInOneWhereCalcIsNotInstalled) {
    CalcSettings settings;
    settings.programFolder = u"/nowhere/libreoffice/program"_s;
    const ChosenRenderer chosen = ChooseRenderer(settings);
    ASSERT_NE(chosen.renderer, nullptr);
    EXPECT_TRUE(chosen.isBuiltIn);
    EXPECT_EQ(chosen.renderer->Extension(), u".xlsx"_s);
}

TEST(ChooseRenderer, CalcWhereItIs) {
    const CalcSettings settings;
    const std::unique_ptr<ReportRenderer> calc = MakeCalcRenderer(settings);
    if (calc == nullptr) GTEST_SKIP() << "this machine or this build has no LibreOffice Calc";
    const ChosenRenderer chosen = ChooseRenderer(settings);
    ASSERT_NE(chosen.renderer, nullptr);
    EXPECT_FALSE(chosen.isBuiltIn);
    EXPECT_EQ(chosen.renderer->Extension(), u".xls"_s);
}

}  // namespace
}  // namespace davo::test
