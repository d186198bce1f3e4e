// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "common/run_time_error.h"

namespace davo {

// A workbook as a plain value, free of any spreadsheet engine. A renderer writes it step by step:
//   1. the template's model sheet is formatted or copied once for every sheet with fromTemplate;
//   2. per sheet: styles in their order (a later one changes only what it names), merges, cells,
//      charts, page setup, selected cell;
//   3. sheets get their final names, the template's model sheet is removed, the file is saved.
// All texts are bytes of Windows-1252; a line break inside a text is '\n'. Rows and columns count
// from 1.

struct CellPlace {
    int row = 1;
    int column = 1;
    bool operator==(const CellPlace&) const = default;
};

// Both corners belong to it.
struct CellRange {
    CellPlace first;
    CellPlace last;
    bool operator==(const CellRange&) const = default;
};

// The place of an address such as "G42"; capital letters, no "$". Only for addresses known when
// the program is written: throws std::invalid_argument for anything else.
CellPlace PlaceOf(std::string_view address);
// The range of "A4:D100"; a single address is a range of one cell. Throws like PlaceOf.
CellRange RangeOf(std::string_view addresses);
// "G42".
std::string AddressOf(CellPlace place);
// "A4:D100"; a range of one cell gives one address.
std::string AddressOf(const CellRange& range);
// "R19C2:R58C2"; a range of one cell gives "R10C4".
std::string RowColumnAddressOf(const CellRange& range);

// A text stays a text, even one that looks like a number, a formula or begins with a quote.
using CellValue = std::variant<std::string, double>;

struct Cell {
    CellPlace place;
    CellValue value;
    bool operator==(const Cell&) const = default;
};

enum class HorizontalAlignment { Left, Centre };
enum class VerticalAlignment { Top, Bottom };

// A partial style: only what has a value is set.
struct CellStyle {
    std::optional<std::string> fontName = {};
    std::optional<double> fontSize = {};  // points
    std::optional<bool> bold = {};
    std::optional<bool> italic = {};
    std::optional<HorizontalAlignment> horizontal = {};
    std::optional<VerticalAlignment> vertical = {};
    std::optional<bool> wrap = {};
    std::optional<int> orientation = {};           // degrees
    std::optional<std::string> numberFormat = {};  // as Excel writes it: "@", "0.0"
    std::optional<double> columnWidth = {};        // characters of the default font
    bool operator==(const CellStyle&) const = default;
};

struct StyledRange {
    CellRange range;
    CellStyle style;
    bool operator==(const StyledRange&) const = default;
};

// A range on a sheet of the workbook, by the sheet's index in Workbook::sheets (from 0).
struct SheetRange {
    std::size_t sheet = 0;
    CellRange range;
    bool operator==(const SheetRange&) const = default;
};

// Colours are indices of Excel's palette (1 to 56).
struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    bool operator==(const Rgb&) const = default;
};

inline constexpr int kColourWhite = 2;
inline constexpr int kColourRed = 3;

// The colour of an index of Excel's default palette, for the indices that reports use (2, 3, 4, 5,
// 8, 26, 29, 46, 50, 53, 56). Throws std::invalid_argument for another index.
Rgb PaletteColour(int index);

enum class LineWeight { Thin, Medium };  // 0.75 pt, 2 pt
constexpr double LineWeightPoints(LineWeight weight) {
    return weight == LineWeight::Thin ? 0.75 : 2.0;
}

struct SeriesLine {
    LineWeight weight = LineWeight::Medium;
    int colour = kColourRed;
    bool operator==(const SeriesLine&) const = default;
};

enum class MarkerStyle { Star, Circle };

struct SeriesMarker {
    MarkerStyle style = MarkerStyle::Star;
    int size = 4;  // points
    int foreground = kColourRed;
    int background = kColourRed;
    bool shadow = false;
    bool operator==(const SeriesMarker&) const = default;
};

// A series of an XY chart. Without a line it shows its markers only, and the other way round.
struct ChartSeries {
    std::string name;  // empty: none
    SheetRange x;
    SheetRange values;
    std::optional<SeriesLine> line;
    std::optional<SeriesMarker> marker;
    bool smoothed = false;
    bool inLegend = false;  // has an entry in the legend when the chart shows one
    bool operator==(const ChartSeries&) const = default;
};

enum class TickMarks { None, Outside };

// Both axes of a chart are alike. Minimum, maximum, major and minor unit and the crossing are
// automatic, the direction is not reversed, labels are at the low end next to the axis.
struct ChartAxes {
    bool logarithmic = true;
    TickMarks majorTickMarks = TickMarks::Outside;
    TickMarks minorTickMarks = TickMarks::None;
    bool majorGridlines = true;
    bool minorGridlines = true;
    std::string categoryTitle;  // X
    std::string valueTitle;     // Y
    bool operator==(const ChartAxes&) const = default;
};

// The line around it has an automatic style.
struct PlotArea {
    LineWeight borderWeight = LineWeight::Thin;
    bool filled = true;
    int fillColour = kColourWhite;
    bool operator==(const PlotArea&) const = default;
};

// An XY chart on a sheet.
struct Chart {
    std::vector<std::string> titleLines;
    ChartAxes axes;
    PlotArea plotArea;
    bool legend = false;
    std::vector<ChartSeries> series;  // in the order of drawing
    CellPlace anchor;                 // the cell of its upper left corner
    double width = 0;                 // points
    double height = 0;                // points
    bool operator==(const Chart&) const = default;
};

// A line of the page footer, in the middle of it.
struct FooterText {
    std::string text;
    std::string fontName;
    double fontSize = 8;
    bool bold = false;
    bool italic = false;
    bool operator==(const FooterText&) const = default;
};

// The footer as Excel's format code: &"Arial,Bold Italic"&8 and the text, with "&" doubled. A text
// that begins with a digit is parted from the size by a blank.
std::string FooterCode(const FooterText& footer);

// Print titles (repeated rows or columns) are never set; the zoom is off, the page fitted instead.
struct PageSetup {
    bool landscape = true;
    int fitPagesWide = 1;
    int fitPagesTall = 1;                // 0: as many as it takes
    std::optional<CellRange> printArea;  // none: all that the sheet holds
    std::optional<FooterText> footer;
    bool operator==(const PageSetup&) const = default;
};

struct Sheet {
    std::string buildName;      // "Sheet1": what the sheet is called while the workbook is made
    std::string finalName;      // at most 31 characters, unique and legal in Excel
    bool fromTemplate = false;  // a copy of the template's model sheet, else a fresh one
    // What a copy does not keep of the model; none for the sheet of a test.
    std::optional<CellRange> cleared;
    std::vector<StyledRange> styles;
    std::vector<CellRange> merges;
    std::vector<Cell> cells;  // no place twice
    std::vector<Chart> charts;
    PageSetup page;
    CellPlace selected;
    CellPlace firstVisible;  // the upper left corner of what is seen first; not in .xlsx
    bool operator==(const Sheet&) const = default;
};

struct Workbook {
    std::string templateFile;   // without folder: "DAVO_Header.xls", in the folder of the reports
    std::string templateSheet;  // the model sheet: "HEADER"
    std::vector<Sheet> sheets;  // in the order of their tabs
    std::size_t activeSheet = 0;
    bool operator==(const Workbook&) const = default;
};

// Whether a sheet is a test's.
bool IsTestSheet(const Sheet& sheet);
// How many of a workbook's sheets are tests'.
int TestSheetsOf(const Workbook& workbook);
// The error of a template without the model sheet.
RunTimeError NoModelSheet(const Workbook& workbook);

}  // namespace davo
