// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/renderer.h"

namespace davo {

std::unique_ptr<ReportRenderer> MakeExcelRenderer() {
    return nullptr;
}

}  // namespace davo
