// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "reports/renderer.h"

namespace davo {

// The first of these that this machine has: Microsoft Excel, LibreOffice Calc, the built-in
// renderer.
struct ChosenRenderer {
    std::unique_ptr<ReportRenderer> renderer;  // never null
    bool isBuiltIn = false;                    // the technician is told kBuiltInRendererText once
};
ChosenRenderer ChooseRenderer(const CalcSettings& settings = {});

// Names the program that would be looked for first on this system.
extern const char* const kBuiltInRendererText;

}  // namespace davo
