// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "common/text.h"
#include "reports/workbook.h"

// The lines that read_back_xlsx.py has to print for a workbook, straight from the plain value:
// styles are looked up cell by cell.
namespace davo::test {

inline std::string Number(double value, const char* picture = "%.15g") {
    char text[64];
    std::snprintf(text, sizeof text, picture, value);
    return text;
}

inline std::string Shown(const std::string& page) {
    std::string shown;
    for (const char c : FromPage(page).toStdString()) {
        if (c == '\n') {
            shown += "\\n";
        } else {
            shown += c == '\\' ? "\\\\" : std::string(1, c);
        }
    }
    return shown;
}

inline bool Holds(const CellRange& range, CellPlace place) {
    return range.first.row <= place.row && place.row <= range.last.row &&
           range.first.column <= place.column && place.column <= range.last.column;
}

inline std::string LooksOf(const Sheet& sheet, CellPlace place) {
    std::string font = "Arial", format = "General", horizontal, vertical = "bottom";
    double size = 10;
    bool bold = false, italic = false, wrap = false;
    int turn = 0;
    for (const auto& [range, style] : sheet.styles) {
        if (!Holds(range, place)) continue;
        if (style.fontName) font = *style.fontName;
        if (style.fontSize) size = *style.fontSize;
        if (style.bold) bold = *style.bold;
        if (style.italic) italic = *style.italic;
        if (style.horizontal)
            horizontal = *style.horizontal == HorizontalAlignment::Left ? "left" : "center";
        if (style.vertical) vertical = *style.vertical == VerticalAlignment::Top ? "top" : "bottom";
        if (style.wrap) wrap = *style.wrap;
        if (style.orientation) turn = *style.orientation;
        if (style.numberFormat) format = *style.numberFormat;
    }
    return font + "/" + Number(size) + "/" + (bold ? "bold" : "") + "/" + (italic ? "italic" : "") +
           "/" + horizontal + "/" + vertical + "/" + (wrap ? "wrap" : "") + "/" +
           std::to_string(turn) + "/" + format;
}

// The cells that hold something, and those that the letterhead draws a line below.
inline void AddCells(const Sheet& sheet, std::vector<std::string>& lines) {
    constexpr int kLastRow = 200, kLastColumn = 26;
    for (int row = 1; row <= kLastRow; ++row) {
        for (int column = 1; column <= kLastColumn; ++column) {
            const CellPlace place{row, column};
            std::string value;
            const bool isRuled =
                row == 2 || (IsTestSheet(sheet) && ((row >= 4 && row <= 16) || row == 18));
            if (sheet.fromTemplate && column <= 4 && isRuled) value = "empty";
            for (const Cell& cell : sheet.cells) {
                if (cell.place != place) continue;
                const auto* text = std::get_if<std::string>(&cell.value);
                if (text == nullptr) {
                    value = "number " + Number(std::get<double>(cell.value));
                } else {
                    value = text->empty() ? "empty" : "text " + Shown(*text);
                }
            }
            if (!value.empty())
                lines.emplace_back("cell " + AddressOf(place) + " " + value + " | " +
                                   LooksOf(sheet, place));
        }
    }
}

inline std::string Dollars(CellPlace place) {
    const std::string address = AddressOf(place);
    const std::size_t digits = address.find_first_of("0123456789");
    return "$" + address.substr(0, digits) + "$" + address.substr(digits);
}

inline std::string Dollars(const CellRange& range) {
    if (range.first == range.last) return Dollars(range.first);
    return Dollars(range.first) + ":" + Dollars(range.last);
}

inline std::string Hex(int colour) {
    const Rgb rgb = PaletteColour(colour);
    char text[8];
    std::snprintf(text, sizeof text, "%02X%02X%02X", rgb.red, rgb.green, rgb.blue);
    return text;
}

inline void AddSeries(const Workbook& workbook, const ChartSeries& series,
                      std::vector<std::string>& lines) {
    const auto reference = [&](const SheetRange& range) {
        return "'" + workbook.sheets.at(range.sheet).finalName + "'!" + Dollars(range.range);
    };
    lines.emplace_back("series " + series.name);
    lines.emplace_back("  x " + reference(series.x) + " values " + reference(series.values));
    lines.emplace_back(series.line ? "  line " + Hex(series.line->colour) + " 2pt" : "  line none");
    lines.emplace_back(series.marker ? "  marker star " + std::to_string(series.marker->size) +
                                           " " + Hex(series.marker->foreground) + " 0.75pt fill " +
                                           Hex(series.marker->background)
                                     : "  marker none");
    lines.emplace_back(series.smoothed ? "  smooth" : "  straight");
}

inline void AddChart(const Workbook& workbook, const Sheet& sheet, const Chart& chart,
                     std::vector<std::string>& lines) {
    lines.emplace_back("chart ScatterChart lineMarker from " + AddressOf(chart.anchor) + " to " +
                       AddressOf(sheet.page.printArea->last));
    std::string title;
    for (const std::string& line : chart.titleLines)
        title += (title.empty() ? "" : "\\n") + Shown(line);
    lines.emplace_back("title " + title);
    const std::string axis =
        " log 10 minMax min None max None units None None crosses autoZero None labels low "
        "marks out none major minor ";
    lines.emplace_back("axis x" + axis + chart.axes.categoryTitle);
    lines.emplace_back("axis y" + axis + chart.axes.valueTitle);
    std::string hidden;
    for (std::size_t i = 0; i < chart.series.size(); ++i) {
        if (!chart.series[i].inLegend) hidden += (hidden.empty() ? "" : ",") + std::to_string(i);
    }
    lines.emplace_back(chart.legend ? "legend r without " + hidden : "legend none");
    for (const ChartSeries& series : chart.series)
        AddSeries(workbook, series, lines);
}

inline void AddSheet(const Workbook& workbook, const Sheet& sheet,
                     std::vector<std::string>& lines) {
    lines.emplace_back("sheet " + sheet.finalName);
    for (const auto& [range, style] : sheet.styles) {
        // A file counts the 5 pixels between columns too; a character has 7.
        if (style.columnWidth)
            lines.emplace_back("columns " + std::to_string(range.first.column) + "-" +
                               std::to_string(range.last.column) + " " +
                               Number(*style.columnWidth + 5.0 / 7.0, "%.2f"));
    }
    lines.emplace_back("rows 12.75");
    if (sheet.finalName == "NOTES") {
        lines.emplace_back("row 1 39");  // three lines of 10 points
    } else {
        lines.emplace_back(sheet.fromTemplate ? "row 1 48" : "row 1 15.6");
    }
    if (!sheet.charts.empty()) lines.insert(lines.end(), {"row 42 12.75", "row 43 12.75"});
    for (const CellRange& merge : sheet.merges)
        lines.emplace_back("merged " + AddressOf(merge));
    AddCells(sheet, lines);
    lines.emplace_back(std::string("page ") + (sheet.page.landscape ? "landscape" : "portrait") +
                       " fit 1 " + std::to_string(sheet.page.fitPagesTall) + " paper 9");
    lines.emplace_back("print area " +
                       (sheet.page.printArea ? Dollars(*sheet.page.printArea) : "none") +
                       " titles None None");
    lines.emplace_back("footer Arial,Bold Italic 8 " + sheet.page.footer->text);
    lines.emplace_back("selected A1");
    for (const Chart& chart : sheet.charts)
        AddChart(workbook, sheet, chart, lines);
}

inline std::vector<std::string> ExpectedLines(const Workbook& workbook) {
    std::vector<std::string> lines{"font Arial 10",
                                   "active " + workbook.sheets.at(workbook.activeSheet).finalName};
    std::vector<std::string> areas, drawings;
    bool hasPicture = false;
    for (const Sheet& sheet : workbook.sheets) {
        AddSheet(workbook, sheet, lines);
        areas.insert(areas.end(), sheet.charts.size(),
                     "plot area 0.75pt 808080 fill FFFFFF, chart 0.75pt C0C0C0, axes 0.75pt "
                     "808080, Arial 9 Arial bold "
                     "10 Arial bold 12");
        hasPicture = hasPicture || sheet.fromTemplate;
        if (sheet.fromTemplate || !sheet.charts.empty())
            drawings.emplace_back(sheet.fromTemplate ? "drawing with 1 pictures"
                                                     : "drawing with 0 pictures");
    }
    lines.insert(lines.end(), areas.begin(), areas.end());
    lines.insert(lines.end(), drawings.begin(), drawings.end());
    lines.emplace_back(hasPicture ? "media 1" : "media 0");
    return lines;
}

}  // namespace davo::test
