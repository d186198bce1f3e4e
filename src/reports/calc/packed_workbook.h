// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "reports/workbook.h"

namespace davo::calc {

// A workbook as bytes, for another process of this program's version on this computer.
std::string Packed(const Workbook& workbook);
// Throws std::invalid_argument for bytes that Packed of this version has not made.
Workbook Unpacked(std::string_view bytes);

}  // namespace davo::calc
