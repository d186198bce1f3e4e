// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <variant>

#include "reports/report_tables.h"
#include "reports/workbook.h"

namespace davo::test {

inline ReportTables ParseFile(const std::string& text) {
    return ParseReportTables(text, "T0012", RecordSource::RecordFile);
}

inline ReportTables ParseGroup(const std::string& text) {
    return ParseReportTables(text, kOverlayName, RecordSource::GroupFile);
}

inline const CellValue* ValueAt(const Sheet& sheet, std::string_view address) {
    const CellPlace place = PlaceOf(address);
    for (const Cell& cell : sheet.cells) {
        if (cell.place == place) return &cell.value;
    }
    return nullptr;
}

// Empty for a cell that was not written.
inline std::string CellText(const Sheet& sheet, std::string_view address) {
    const CellValue* value = ValueAt(sheet, address);
    if (value == nullptr) return {};
    if (const auto* text = std::get_if<std::string>(value)) return *text;
    return "(the number " + std::to_string(std::get<double>(*value)) + ")";
}

// -1e99 for a cell that is no number.
inline double CellNumber(const Sheet& sheet, std::string_view address) {
    const CellValue* value = ValueAt(sheet, address);
    const auto* number = value == nullptr ? nullptr : std::get_if<double>(value);
    return number == nullptr ? -1e99 : *number;
}

// What all styles of a sheet make of one cell.
inline CellStyle StyleAt(const Sheet& sheet, std::string_view address) {
    const CellPlace place = PlaceOf(address);
    CellStyle merged;
    const auto take = [](auto& into, const auto& from) {
        if (from) into = from;
    };
    for (const auto& [range, style] : sheet.styles) {
        const bool covers = place.row >= range.first.row && place.row <= range.last.row &&
                            place.column >= range.first.column && place.column <= range.last.column;
        if (!covers) continue;
        take(merged.fontName, style.fontName);
        take(merged.fontSize, style.fontSize);
        take(merged.bold, style.bold);
        take(merged.italic, style.italic);
        take(merged.horizontal, style.horizontal);
        take(merged.vertical, style.vertical);
        take(merged.wrap, style.wrap);
        take(merged.orientation, style.orientation);
        take(merged.numberFormat, style.numberFormat);
        take(merged.columnWidth, style.columnWidth);
    }
    return merged;
}

inline std::string FormatAt(const Sheet& sheet, std::string_view address) {
    return StyleAt(sheet, address).numberFormat.value_or("");
}

inline bool PlacesAreUnique(const Sheet& sheet) {
    std::vector<std::string> places;
    for (const Cell& cell : sheet.cells)
        places.push_back(AddressOf(cell.place));
    std::sort(places.begin(), places.end());
    return std::adjacent_find(places.begin(), places.end()) == places.end();
}

}  // namespace davo::test
