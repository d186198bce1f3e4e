// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxwriter.h>

#include <string>

#include "common/run_time_error.h"
#include "common/text.h"
#include "reports/workbook.h"

// What all parts of the built-in renderer share.
namespace davo {

inline constexpr double kXlsxPixelsPerPoint = 96.0 / 72.0;

// libxlsxwriter takes UTF-8.
inline std::string Utf8(const std::string& page) {
    return FromPage(page).toStdString();
}

// Throws RunTimeError 440 with the library's own words.
inline void RequireXlsx(lxw_error error) {
    if (error != LXW_NO_ERROR) throw RunTimeError(ErrorNumber::Automation, lxw_strerror(error));
}

// libxlsxwriter counts rows and columns from 0.
inline lxw_row_t XlsxRow(CellPlace place) {
    return static_cast<lxw_row_t>(place.row - 1);
}
inline lxw_col_t XlsxColumn(CellPlace place) {
    return static_cast<lxw_col_t>(place.column - 1);
}

inline lxw_color_t XlsxColour(int paletteIndex) {
    const Rgb rgb = PaletteColour(paletteIndex);
    constexpr unsigned kByte = 8;
    return (unsigned{rgb.red} << 2 * kByte) | (unsigned{rgb.green} << kByte) | unsigned{rgb.blue};
}

}  // namespace davo
