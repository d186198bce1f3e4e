// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/sheet.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "reports/xlsx/letterhead.h"
#include "reports/xlsx/text.h"

namespace davo {

namespace {

// Which of the workbook's formats each cell of a sheet has; 0 where none was set.
class FormatGrid {
  public:
    using Change = std::function<XlsxFormat(const XlsxFormat&)>;

    FormatGrid(const Sheet& sheet, XlsxFormats& formats) : formats_(formats) {
        const auto reach = [this](CellPlace place) {
            end_.row = std::max(end_.row, place.row);
            end_.column = std::max(end_.column, place.column);
        };
        for (const StyledRange& styled : sheet.styles)
            reach(styled.range.last);
        for (const CellRange& merge : sheet.merges)
            reach(merge.last);
        for (const Cell& cell : sheet.cells)
            reach(cell.place);
        if (sheet.fromTemplate) {
            for (const LetterheadLine& line : LetterheadLines(sheet))
                reach(line.range.last);
        }
        numbers_.resize(static_cast<std::size_t>(end_.row) * static_cast<std::size_t>(end_.column));
    }

    // Changes the formats of a range; each that it meets only once.
    void Apply(const CellRange& range, const Change& change) {
        std::map<std::size_t, std::size_t> changed;
        for (int row = range.first.row; row <= range.last.row; ++row) {
            for (int column = range.first.column; column <= range.last.column; ++column) {
                std::size_t& number = NumberAt({row, column});
                const auto [entry, isNew] = changed.try_emplace(number, 0);
                if (isNew) entry->second = formats_.NumberOf(change(formats_.At(number)));
                number = entry->second;
            }
        }
    }

    std::size_t& NumberAt(CellPlace place) {
        return numbers_.at(static_cast<std::size_t>(place.row - 1) *
                               static_cast<std::size_t>(end_.column) +
                           static_cast<std::size_t>(place.column - 1));
    }
    lxw_format* At(CellPlace place) { return formats_.Handle(NumberAt(place)); }
    const XlsxFormat& FormatAt(CellPlace place) { return formats_.At(NumberAt(place)); }

  private:
    XlsxFormats& formats_;
    CellPlace end_{0, 0};
    std::vector<std::size_t> numbers_;
};

void ApplyLetterhead(const Sheet& sheet, FormatGrid& grid) {
    for (const LetterheadLine& line : LetterheadLines(sheet)) {
        grid.Apply(line.range, [&](XlsxFormat format) {
            format.below = line.line;
            format.lineColour = line.colour;
            return format;
        });
    }
    grid.Apply(RangeOf(kLetterheadWebCell), [](XlsxFormat format) {
        format.fontColour = kLetterheadGrey;
        return format;
    });
}

// A column has the looks that came with its width too: so every cell of it that is empty looks
// like the rest when something is typed there.
void WriteColumns(const Sheet& sheet, XlsxFormats& formats, lxw_worksheet* target) {
    for (const auto& [range, style] : sheet.styles) {
        if (!style.columnWidth) continue;
        const std::size_t looks = formats.NumberOf(WithStyle(XlsxFormat{}, style));
        RequireXlsx(worksheet_set_column(target, XlsxColumn(range.first), XlsxColumn(range.last),
                                         *style.columnWidth, formats.Handle(looks)));
    }
}

double ColumnWidth(const Sheet& sheet, int column) {
    constexpr double kPreset = 8.43;  // characters
    double width = kPreset;
    for (const auto& [range, style] : sheet.styles) {
        const bool isWithin = range.first.column <= column && column <= range.last.column;
        if (isWithin && style.columnWidth) width = *style.columnWidth;
    }
    return width;
}

// How many lines a wrapped text takes in a column, rather one more than one less.
double WrappedLines(std::string_view text, double width) {
    const auto perLine = static_cast<std::size_t>(std::max(width * 0.9, 1.0));
    std::size_t lines = 0;
    for (;;) {
        const std::size_t end = text.find('\n');
        const std::size_t length = std::min(end, text.size());
        lines += std::max<std::size_t>(1, (length + perLine - 1) / perLine);
        if (end == std::string_view::npos) return static_cast<double>(lines);
        text.remove_prefix(end + 1);
    }
}

// The height that a cell's value needs, in points. Not every program finds it for wrapped texts.
double NeededHeight(const Sheet& sheet, const Cell& cell, const XlsxFormat& format) {
    constexpr double kHeightOfLetters = 1.3;
    constexpr double kHighest = 409;  // of any row
    const auto* text = std::get_if<std::string>(&cell.value);
    const double lines = format.wrap && text != nullptr
                             ? WrappedLines(*text, ColumnWidth(sheet, cell.place.column))
                             : 1;
    return std::min(lines * format.fontSize * kHeightOfLetters, kHighest);
}

// Charts and print areas count on rows of one height.
void WriteRowHeights(const Sheet& sheet, FormatGrid& grid, lxw_worksheet* target) {
    worksheet_set_default_row(target, kXlsxRowHeight, LXW_FALSE);
    std::map<int, double> heights;
    for (const Cell& cell : sheet.cells) {
        const double height = NeededHeight(sheet, cell, grid.FormatAt(cell.place));
        if (height <= std::max(kXlsxRowHeight, heights[cell.place.row]) + 0.5) continue;
        heights[cell.place.row] = height;
    }
    std::erase_if(heights, [](const auto& row) { return row.second == 0; });
    if (sheet.fromTemplate) heights[1] = kXlsxLetterheadRowHeight;
    // The library finds a chart's last row by heights that were set row by row only.
    for (const Chart& chart : sheet.charts) {
        const int rows = static_cast<int>(std::ceil(chart.height / kXlsxRowHeight));
        for (int row = chart.anchor.row; row < chart.anchor.row + rows; ++row)
            heights.emplace(row, kXlsxRowHeight);
    }
    for (const auto& [row, height] : heights)
        RequireXlsx(worksheet_set_row(target, XlsxRow({row, 1}), height, nullptr));
}

// The lines of the letterhead go on through cells without a value.
void WriteBlanks(const Sheet& sheet, FormatGrid& grid, lxw_worksheet* target) {
    for (const LetterheadLine& line : LetterheadLines(sheet)) {
        const auto& [first, last] = line.range;
        for (int row = first.row; row <= last.row; ++row) {
            for (int column = first.column; column <= last.column; ++column) {
                const CellPlace place{row, column};
                RequireXlsx(worksheet_write_blank(target, XlsxRow(place), XlsxColumn(place),
                                                  grid.At(place)));
            }
        }
    }
}

void WriteCells(const Sheet& sheet, FormatGrid& grid, lxw_worksheet* target) {
    for (const auto& [place, value] : sheet.cells) {
        const lxw_row_t row = XlsxRow(place);
        const lxw_col_t column = XlsxColumn(place);
        if (const auto* text = std::get_if<std::string>(&value)) {
            RequireXlsx(
                worksheet_write_string(target, row, column, Utf8(*text).c_str(), grid.At(place)));
        } else {
            RequireXlsx(worksheet_write_number(target, row, column, std::get<double>(value),
                                               grid.At(place)));
        }
    }
    // Serial numbers and the like are texts on purpose.
    constexpr const char* kAll = "A1:IV65536";
    RequireXlsx(worksheet_ignore_errors(target, LXW_IGNORE_NUMBER_STORED_AS_TEXT, kAll));
}

void WritePage(const Sheet& sheet, lxw_worksheet* target) {
    const PageSetup& page = sheet.page;
    if (page.landscape) worksheet_set_landscape(target);
    constexpr std::uint8_t kA4 = 9;  // as the template
    worksheet_set_paper(target, kA4);
    // As wide as printers go, because the page is fitted; inches. Room for the footer below.
    worksheet_set_margins(target, 0.4, 0.4, 0.4, 0.6);
    worksheet_fit_to_pages(target, static_cast<std::uint16_t>(page.fitPagesWide),
                           static_cast<std::uint16_t>(page.fitPagesTall));
    if (page.printArea) {
        const auto& [first, last] = *page.printArea;
        RequireXlsx(worksheet_print_area(target, XlsxRow(first), XlsxColumn(first), XlsxRow(last),
                                         XlsxColumn(last)));
    }
    if (page.footer) {
        const std::string code = "&C" + Utf8(FooterCode(*page.footer));
        RequireXlsx(worksheet_set_footer(target, code.c_str()));
    }
    worksheet_set_selection(target, XlsxRow(sheet.selected), XlsxColumn(sheet.selected),
                            XlsxRow(sheet.selected), XlsxColumn(sheet.selected));
}

}  // namespace

void WriteXlsxSheet(const Sheet& sheet, const QByteArray& picture, XlsxFormats& formats,
                    lxw_worksheet* target) {
    FormatGrid grid(sheet, formats);
    for (const StyledRange& styled : sheet.styles) {
        grid.Apply(styled.range,
                   [&](const XlsxFormat& format) { return WithStyle(format, styled.style); });
    }
    if (sheet.fromTemplate) ApplyLetterhead(sheet, grid);
    WriteColumns(sheet, formats, target);
    WriteRowHeights(sheet, grid, target);
    if (sheet.fromTemplate) WriteBlanks(sheet, grid, target);
    for (const auto& [first, last] : sheet.merges) {
        RequireXlsx(worksheet_merge_range(target, XlsxRow(first), XlsxColumn(first), XlsxRow(last),
                                          XlsxColumn(last), "", grid.At(first)));
    }
    WriteCells(sheet, grid, target);
    if (sheet.fromTemplate) PutLetterheadPicture(target, picture);
    WritePage(sheet, target);
}

}  // namespace davo
