// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/chart.h"

#include <string>
#include <vector>

#include "reports/xlsx/text.h"

namespace davo {

namespace {

// What libxlsxwriter scales a chart's size from, in pixels.
constexpr double kPresetWidth = 480;
constexpr double kPresetHeight = 288;

constexpr lxw_color_t kMajorGrid = 0x808080;
constexpr lxw_color_t kMinorGrid = 0xC0C0C0;
constexpr lxw_color_t kFrame = 0x808080;  // the automatic colour of a plot area's line

lxw_chart_line LineOf(lxw_color_t colour, double width) {
    lxw_chart_line line{};
    line.color = colour;
    line.width = static_cast<float>(width);
    return line;
}

lxw_chart_fill FillOf(lxw_color_t colour) {
    lxw_chart_fill fill{};
    fill.color = colour;
    return fill;
}

lxw_chart_font FontOf(std::string& name, double size, bool bold) {
    lxw_chart_font font{};
    font.name = name.data();
    font.size = size;
    font.bold = bold ? LXW_TRUE : LXW_FALSE;
    return font;
}

std::uint8_t TickMarkOf(TickMarks marks) {
    return marks == TickMarks::Outside ? LXW_CHART_AXIS_TICK_MARK_OUTSIDE
                                       : LXW_CHART_AXIS_TICK_MARK_NONE;
}

void WriteAxis(lxw_chart_axis* axis, const ChartAxes& axes, const std::string& title) {
    std::string fontName = "Arial";
    lxw_chart_font titleFont = FontOf(fontName, 10, true);
    lxw_chart_font numberFont = FontOf(fontName, 9, false);
    chart_axis_set_name(axis, Utf8(title).c_str());
    chart_axis_set_name_font(axis, &titleFont);
    chart_axis_set_num_font(axis, &numberFont);
    chart_axis_set_num_format(axis, "General;General");  // not that of the points' cells
    constexpr std::uint16_t kLogBase = 10;
    if (axes.logarithmic) chart_axis_set_log_base(axis, kLogBase);
    chart_axis_set_major_tick_mark(axis, TickMarkOf(axes.majorTickMarks));
    chart_axis_set_minor_tick_mark(axis, TickMarkOf(axes.minorTickMarks));
    chart_axis_set_label_position(axis, LXW_CHART_AXIS_LABEL_POSITION_LOW);
    chart_axis_major_gridlines_set_visible(axis, axes.majorGridlines ? LXW_TRUE : LXW_FALSE);
    chart_axis_minor_gridlines_set_visible(axis, axes.minorGridlines ? LXW_TRUE : LXW_FALSE);
    lxw_chart_line own = LineOf(kFrame, 0.75);
    chart_axis_set_line(axis, &own);
    lxw_chart_line major = LineOf(kMajorGrid, 0.75);
    lxw_chart_line minor = LineOf(kMinorGrid, 0.5);
    if (axes.majorGridlines) chart_axis_major_gridlines_set_line(axis, &major);
    if (axes.minorGridlines) chart_axis_minor_gridlines_set_line(axis, &minor);
}

void WriteMarker(lxw_chart_series* made, const SeriesMarker& marker) {
    lxw_chart_line line = LineOf(XlsxColour(marker.foreground), 0.75);
    lxw_chart_fill fill = FillOf(XlsxColour(marker.background));
    const bool isCircle = marker.style == MarkerStyle::Circle;
    chart_series_set_marker_type(made, isCircle ? LXW_CHART_MARKER_CIRCLE : LXW_CHART_MARKER_STAR);
    chart_series_set_marker_size(made, static_cast<std::uint8_t>(marker.size));
    chart_series_set_marker_line(made, &line);
    chart_series_set_marker_fill(made, &fill);
}

void WriteSeries(const Workbook& workbook, const ChartSeries& series, lxw_chart* chart) {
    lxw_chart_series* made = chart_add_series(chart, nullptr, nullptr);
    const auto sheetName = [&](const SheetRange& range) {
        return Utf8(workbook.sheets.at(range.sheet).finalName);
    };
    const auto& [xFirst, xLast] = series.x.range;
    chart_series_set_categories(made, sheetName(series.x).c_str(), XlsxRow(xFirst),
                                XlsxColumn(xFirst), XlsxRow(xLast), XlsxColumn(xLast));
    const auto& [first, last] = series.values.range;
    chart_series_set_values(made, sheetName(series.values).c_str(), XlsxRow(first),
                            XlsxColumn(first), XlsxRow(last), XlsxColumn(last));
    if (!series.name.empty()) chart_series_set_name(made, Utf8(series.name).c_str());
    lxw_chart_line line{};
    if (series.line) {
        line = LineOf(XlsxColour(series.line->colour), LineWeightPoints(series.line->weight));
    } else {
        line.none = LXW_TRUE;
    }
    chart_series_set_line(made, &line);
    if (series.marker) {
        WriteMarker(made, *series.marker);
    } else {
        chart_series_set_marker_type(made, LXW_CHART_MARKER_NONE);
    }
    chart_series_set_smooth(made, series.smoothed ? LXW_TRUE : LXW_FALSE);
}

void WriteLegend(const Chart& chart, lxw_chart* made) {
    if (!chart.legend) {
        chart_legend_set_position(made, LXW_CHART_LEGEND_NONE);
        return;
    }
    chart_legend_set_position(made, LXW_CHART_LEGEND_RIGHT);
    std::string fontName = "Arial";
    lxw_chart_font font = FontOf(fontName, 9, false);
    chart_legend_set_font(made, &font);
    std::vector<std::int16_t> hidden;
    for (std::size_t i = 0; i < chart.series.size(); ++i) {
        if (!chart.series[i].inLegend) hidden.push_back(static_cast<std::int16_t>(i));
    }
    if (hidden.empty()) return;
    hidden.push_back(-1);  // ends the list
    RequireXlsx(chart_legend_delete_series(made, hidden.data()));
}

std::string TitleOf(const Chart& chart) {
    std::string title;
    for (const std::string& line : chart.titleLines)
        title += (title.empty() ? "" : "\n") + line;
    return Utf8(title);
}

}  // namespace

void WriteXlsxChart(const Workbook& workbook, const Chart& chart, lxw_workbook* target,
                    lxw_worksheet* onto) {
    // This kind shows what a series names and presets neither lines nor markers.
    lxw_chart* made = workbook_add_chart(target, LXW_CHART_SCATTER_STRAIGHT_WITH_MARKERS);
    for (const ChartSeries& series : chart.series)
        WriteSeries(workbook, series, made);
    WriteAxis(made->x_axis, chart.axes, chart.axes.categoryTitle);
    WriteAxis(made->y_axis, chart.axes, chart.axes.valueTitle);
    std::string fontName = "Arial";
    lxw_chart_font titleFont = FontOf(fontName, 12, true);
    chart_title_set_name(made, TitleOf(chart).c_str());
    chart_title_set_name_font(made, &titleFont);
    lxw_chart_line frame = LineOf(kFrame, LineWeightPoints(chart.plotArea.borderWeight));
    chart_plotarea_set_line(made, &frame);
    lxw_chart_fill fill = FillOf(XlsxColour(chart.plotArea.fillColour));
    if (!chart.plotArea.filled) fill.none = LXW_TRUE;
    chart_plotarea_set_fill(made, &fill);
    lxw_chart_line around = LineOf(kMinorGrid, LineWeightPoints(LineWeight::Thin));
    chart_chartarea_set_line(made, &around);
    WriteLegend(chart, made);
    lxw_chart_options options{};
    // A pixel less, or its frame falls out of the print area that ends where it ends.
    options.x_scale = (chart.width * kXlsxPixelsPerPoint - 1) / kPresetWidth;
    options.y_scale = (chart.height * kXlsxPixelsPerPoint - 1) / kPresetHeight;
    RequireXlsx(worksheet_insert_chart_opt(onto, XlsxRow(chart.anchor), XlsxColumn(chart.anchor),
                                           made, &options));
}

}  // namespace davo
