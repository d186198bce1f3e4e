// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxwriter.h>

#include <QByteArray>
#include <string_view>
#include <vector>

#include "reports/workbook.h"
#include "reports/xlsx/formats.h"

// The letterhead of the built-in renderer: the picture, the high first row and the lines that the
// template has too.
namespace davo {

inline constexpr double kXlsxRowHeight = 12.75;         // points
inline constexpr double kXlsxLetterheadRowHeight = 48;  // of row 1

struct LetterheadLine {
    CellRange range;
    lxw_format_borders line = LXW_BORDER_NONE;
    lxw_color_t colour = 0;
};
// Those of a sheet from the template.
std::vector<LetterheadLine> LetterheadLines(const Sheet& sheet);

// The web address below the title is as quiet as in the template.
inline constexpr std::string_view kLetterheadWebCell = "A2";
inline constexpr lxw_color_t kLetterheadGrey = 0x4A6478;

// The PNG of letterhead.svg.
QByteArray LetterheadPicture();

// Puts the picture on a sheet.
void PutLetterheadPicture(lxw_worksheet* sheet, const QByteArray& picture);

}  // namespace davo
