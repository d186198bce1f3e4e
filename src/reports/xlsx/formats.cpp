// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/formats.h"

#include <algorithm>

#include "reports/xlsx/text.h"

namespace davo {

namespace {

lxw_format* MakeFormat(lxw_workbook* workbook, const XlsxFormat& format) {
    lxw_format* made = workbook_add_format(workbook);
    format_set_font_name(made, Utf8(format.fontName).c_str());
    format_set_font_size(made, format.fontSize);
    if (format.bold) format_set_bold(made);
    if (format.italic) format_set_italic(made);
    if (format.fontColour) format_set_font_color(made, *format.fontColour);
    if (format.horizontal) {
        const bool isLeft = *format.horizontal == HorizontalAlignment::Left;
        format_set_align(made, isLeft ? LXW_ALIGN_LEFT : LXW_ALIGN_CENTER);
    }
    const bool isTop = format.vertical == VerticalAlignment::Top;
    format_set_align(made, isTop ? LXW_ALIGN_VERTICAL_TOP : LXW_ALIGN_VERTICAL_BOTTOM);
    if (format.wrap) format_set_text_wrap(made);
    format_set_rotation(made, static_cast<std::int16_t>(format.orientation));
    if (!format.numberFormat.empty())
        format_set_num_format(made, Utf8(format.numberFormat).c_str());
    if (format.below != LXW_BORDER_NONE) {
        format_set_bottom(made, static_cast<std::uint8_t>(format.below));
        format_set_bottom_color(made, format.lineColour);
    }
    return made;
}

}  // namespace

XlsxFormat WithStyle(XlsxFormat before, const CellStyle& style) {
    before.fontName = style.fontName.value_or(before.fontName);
    before.fontSize = style.fontSize.value_or(before.fontSize);
    before.bold = style.bold.value_or(before.bold);
    before.italic = style.italic.value_or(before.italic);
    if (style.horizontal) before.horizontal = style.horizontal;
    before.vertical = style.vertical.value_or(before.vertical);
    before.wrap = style.wrap.value_or(before.wrap);
    before.orientation = style.orientation.value_or(before.orientation);
    before.numberFormat = style.numberFormat.value_or(before.numberFormat);
    return before;
}

XlsxFormats::XlsxFormats(lxw_workbook* workbook) : workbook_(workbook) {
    // The workbook's own first format is what columns are measured by and what new cells get.
    lxw_format* preset = STAILQ_FIRST(workbook->formats);
    format_set_font_name(preset, XlsxFormat{}.fontName.c_str());
    format_set_font_size(preset, XlsxFormat{}.fontSize);
    NumberOf(XlsxFormat{});
}

std::size_t XlsxFormats::NumberOf(const XlsxFormat& format) {
    const auto known = std::find(formats_.begin(), formats_.end(), format);
    if (known != formats_.end()) return static_cast<std::size_t>(known - formats_.begin());
    formats_.push_back(format);
    handles_.push_back(MakeFormat(workbook_, format));
    return formats_.size() - 1;
}

}  // namespace davo
