// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/choose_renderer.h"

namespace davo {

const char* const kBuiltInRendererText =
    "Reports are made as .xlsx workbooks. Install LibreOffice Calc to have them as .xls workbooks "
    "with the letterhead of DAVO_Header.xls.";

}  // namespace davo
