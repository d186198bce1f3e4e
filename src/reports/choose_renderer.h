#pragma once

#include <memory>

#include "reports/renderer.h"

namespace davo {

// The first of these that this machine has: LibreOffice Calc, the built-in renderer. Another
// program that writes ".xls" would be asked for in front of them.
struct ChosenRenderer {
    std::unique_ptr<ReportRenderer> renderer;  // never null
    bool isBuiltIn = false;                    // the technician is told kBuiltInRendererText once
};
ChosenRenderer ChooseRenderer(const CalcSettings& settings = {});

inline constexpr const char* kBuiltInRendererText =
    "Reports are made as .xlsx workbooks. Install LibreOffice Calc to have them as .xls workbooks "
    "with the letterhead of DAVO_Header.xls.";

}  // namespace davo
