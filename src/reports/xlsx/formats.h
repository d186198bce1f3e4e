// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxwriter.h>

#include <optional>
#include <string>
#include <vector>

#include "reports/workbook.h"

namespace davo {

// All that the built-in renderer says of a cell's looks. What no style names is as in the
// template: Arial of 10 points.
struct XlsxFormat {
    std::string fontName = "Arial";
    double fontSize = 10;
    bool bold = false;
    bool italic = false;
    std::optional<HorizontalAlignment> horizontal;
    VerticalAlignment vertical = VerticalAlignment::Bottom;
    bool wrap = false;
    int orientation = 0;
    std::string numberFormat;  // empty: General
    // The letterhead's part.
    std::optional<lxw_color_t> fontColour;
    lxw_format_borders below = LXW_BORDER_NONE;
    lxw_color_t lineColour = 0;
    bool operator==(const XlsxFormat&) const = default;
};

// before with what style names.
XlsxFormat WithStyle(XlsxFormat before, const CellStyle& style);

// The formats of a workbook, each made once however many cells share it. Format 0 is the preset.
class XlsxFormats {
  public:
    explicit XlsxFormats(lxw_workbook* workbook);

    std::size_t NumberOf(const XlsxFormat& format);
    const XlsxFormat& At(std::size_t number) const { return formats_.at(number); }
    lxw_format* Handle(std::size_t number) const { return handles_.at(number); }

  private:
    lxw_workbook* workbook_;
    std::vector<XlsxFormat> formats_;
    std::vector<lxw_format*> handles_;  // owned by workbook_
};

}  // namespace davo
