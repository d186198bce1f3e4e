// SPDX-License-Identifier: GPL-3.0-or-later

#include "reports/choose_renderer.h"

#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST(ChooseRenderer, TheTechnicianIsToldWhatWouldMakeXls) {
    EXPECT_STREQ(kBuiltInRendererText,
                 "Reports are made as .xlsx workbooks. Install LibreOffice Calc to have them as "
                 ".xls workbooks with the letterhead of DAVO_Header.xls.");
}

}  // namespace
}  // namespace davo::test
