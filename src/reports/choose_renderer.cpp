// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/choose_renderer.h"

#include "reports/excel/renderer.h"
#include "reports/xlsx/renderer.h"

namespace davo {

ChosenRenderer ChooseRenderer(const CalcSettings& settings) {
    if (std::unique_ptr<ReportRenderer> excel = MakeExcelRenderer())
        return {std::move(excel), false};
    if (std::unique_ptr<ReportRenderer> calc = MakeCalcRenderer(settings))
        return {std::move(calc), false};
    return {std::make_unique<XlsxRenderer>(), true};
}

}  // namespace davo
