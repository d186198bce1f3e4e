// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_charts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/numbers.h"

namespace davo {

namespace {

constexpr const char* kChartAnchor = "G42";
constexpr int kCurrentColumn = 2;
constexpr int kVoltageColumn = 3;

// Sizes in points. Rows are at least this high in every engine; the chart's columns have this
// width, those of the table the four times 20 characters, the two between them 2 characters.
constexpr double kRowHeight = 12.75;
constexpr double kColumnWidth = 48;
constexpr double kTableWidth = 4 * 108.75;
constexpr double kGapWidth = 2 * 14.25;
constexpr double kPageShape = 1.4;  // width to height of what a landscape page prints

SheetRange PointsOf(const ReportTables& report, int slot, int column) {
    return {static_cast<std::size_t>(slot),
            {{kFirstPointRow, column}, {LastPointRow(report, slot), column}}};
}

// rows and columns: how many of them the chart covers.
ChartPlace ChartOf(int rows, int columns) {
    ChartPlace place;
    Chart& chart = place.chart;
    chart.anchor = PlaceOf(kChartAnchor);
    chart.width = columns * kColumnWidth;
    chart.height = rows * kRowHeight;
    chart.axes.categoryTitle = "Amperes";
    chart.axes.valueTitle = "Volts";
    place.last = {chart.anchor.row + rows - 1, chart.anchor.column + columns - 1};
    return place;
}

}  // namespace

KneeCells KneeCellsOf(KneeRule rule) {
    switch (rule) {
        case KneeRule::Asa1050:
            return {PlaceOf("B10"), PlaceOf("D10")};
        case KneeRule::Ieee45:
            return {PlaceOf("B12"), PlaceOf("D12")};
        case KneeRule::Ieee30:
            break;
    }
    return {PlaceOf("B11"), PlaceOf("D11")};
}

int PointCountOf(const ReportTables& report, int slot) {
    return std::max<int>(report.tables.pointCount.at(static_cast<std::size_t>(slot)), 0);
}

int LastPointRow(const ReportTables& report, int slot) {
    return kFirstPointRow + std::max(PointCountOf(report, slot), 1) - 1;
}

ChartSeries CurveOf(const ReportTables& report, int slot, int colour) {
    ChartSeries curve;
    curve.line = SeriesLine{LineWeight::Medium, colour};
    // One point has no line.
    if (PointCountOf(report, slot) == 1)
        curve.marker = SeriesMarker{
            .style = MarkerStyle::Circle, .size = 6, .foreground = colour, .background = colour};
    curve.x = PointsOf(report, slot, kCurrentColumn);
    curve.values = PointsOf(report, slot, kVoltageColumn);
    return curve;
}

std::optional<ChartSeries> MarkerOf(const ReportTables& report, int slot,
                                    std::string_view kneepointType) {
    const std::optional<KneeRule> rule = KneeRuleOf(kneepointType);
    if (!rule) return std::nullopt;
    const Kneepoint& knee = report.tables.Knee(*rule, slot);
    const bool isShown = NumericValue(knee.voltage) > 0 && NumericValue(knee.current) > 0;
    if (!isShown) return std::nullopt;
    const KneeCells cells = KneeCellsOf(*rule);
    const auto sheet = static_cast<std::size_t>(slot);
    ChartSeries series;
    series.x = {sheet, {cells.current, cells.current}};
    series.values = {sheet, {cells.voltage, cells.voltage}};
    series.marker = SeriesMarker{};
    series.smoothed = true;
    return series;
}

int SummaryColour(int slot) {
    static constexpr std::array kColours = {3, 5, 50, 8, 53, 56, 4, 26, 46, 29};
    return kColours.at(static_cast<std::size_t>(slot) % kColours.size());
}

ChartPlace ChartBesideTable(int lastTableRow) {
    // Fewer make the chart hard to read off, more make the print of the table too small.
    constexpr int kLeastRows = 30;
    const CellPlace anchor = PlaceOf(kChartAnchor);
    const int rows = std::max(kLeastRows, lastTableRow - anchor.row + 1);
    const double height = (anchor.row - 1 + rows) * kRowHeight;
    const double width = height * kPageShape - kTableWidth - kGapWidth;
    const int columns = static_cast<int>(std::lround(width / kColumnWidth));
    return ChartOf(rows, columns);
}

}  // namespace davo
