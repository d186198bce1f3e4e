// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "reports/workbook.h"

namespace davo::calc {

// A workbook as bytes, for another process that has loaded the same module.
std::string Packed(const Workbook& workbook);
// Throws std::invalid_argument for bytes that are not all of a workbook, or more.
Workbook Unpacked(std::string_view bytes);

}  // namespace davo::calc
