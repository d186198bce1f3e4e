// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "reports/calc/uno.h"

namespace davo::calc {

// The engine is told a width in hundredths of a millimetre and writes one in characters of the
// file's default font: this is what makes a pixel of Excel's in the file. It is a little more than
// the pixel's own length, and charts have to be wider alike to cover the same columns.
inline constexpr double kColumnLengthPerPixel = 4055.0 / 145;
inline constexpr double kPixelLength = 2540.0 / 96;

// Puts a chart on a sheet; all sheets have their final names, numbers and widths.
void AddChart(const Context& context, const Document& document, const Workbook& workbook,
              const Sheet& sheet, const Chart& chart);

}  // namespace davo::calc
