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

TEST(ChooseRenderer, TheTechnicianIsToldWhatWouldMakeXls) {
    EXPECT_STREQ(kBuiltInRendererText,
                 "Reports are made as .xlsx workbooks. Install LibreOffice Calc to have them as "
                 ".xls workbooks with the letterhead of DAVO_Header.xls.");
}

}  // namespace
}  // namespace davo::test
