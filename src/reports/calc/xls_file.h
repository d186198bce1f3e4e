// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "reports/workbook.h"

namespace davo::calc {

// Puts into the bytes of an Excel 97 file that the engine made of workbook what the engine leaves
// out: which sheet is seen first, from which cell, which cell is selected, because the engine works
// without a window, and that a series has no entry in the legend. Nothing outside a series changes
// its place. Leaves alone what has not the shape that the engine gives it. [MS-CFB], [MS-XLS].
void FinishXls(std::string& bytes, const Workbook& workbook);

}  // namespace davo::calc
