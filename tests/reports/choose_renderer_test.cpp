// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/choose_renderer.h"

#include <gtest/gtest.h>

namespace davo::test {
namespace {

TEST(ChooseRenderer, TheBuiltInOneWhereCalcIsNotInstalled) {
    CalcSettings settings;
    settings.programFolder = QStringLiteral("/nowhere/libreoffice/program");
    const ChosenRenderer chosen = ChooseRenderer(settings);
    ASSERT_NE(chosen.renderer, nullptr);
    EXPECT_TRUE(chosen.isBuiltIn);
    EXPECT_EQ(chosen.renderer->Extension(), QStringLiteral(".xlsx"));
}

TEST(ChooseRenderer, CalcWhereItIs) {
    const CalcSettings settings;
    const std::unique_ptr<ReportRenderer> calc = MakeCalcRenderer(settings);
    if (calc == nullptr) GTEST_SKIP() << "this machine or this build has no LibreOffice Calc";
    const ChosenRenderer chosen = ChooseRenderer(settings);
    ASSERT_NE(chosen.renderer, nullptr);
    EXPECT_FALSE(chosen.isBuiltIn);
    EXPECT_EQ(chosen.renderer->Extension(), QStringLiteral(".xls"));
}

}  // namespace
}  // namespace davo::test
