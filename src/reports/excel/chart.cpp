// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/chart.h"

#include <string>

#include "common/text.h"
#include "reports/excel/names.h"

namespace davo::excel {

namespace {

constexpr int kGrey40 = 15;  // of the palette: C0C0C0
constexpr int kGrey50 = 16;  // 808080

constexpr int WeightOf(LineWeight weight) {
    return weight == LineWeight::Thin ? kThin : kMedium;
}

constexpr int MarksOf(TickMarks marks) {
    return marks == TickMarks::Outside ? kTickMarkOutside : kNone;
}

// "=Sheet1!R19C2:R58C2"; build names need no quotes.
QString FormulaOf(const Workbook& workbook, const SheetRange& range) {
    return FromPage("=" + workbook.sheets.at(range.sheet).buildName + "!" +
                    RowColumnAddressOf(range.range));
}

// The numbers of the first series, which the chart is made of; the series say the rest.
void SetSource(const Object& book, const Object& target, const Workbook& workbook,
               const ChartSeries& series) {
    const Object sheet =
        book.Get("Sheets").Get("Item", {FromPage(workbook.sheets.at(series.x.sheet).buildName)});
    const CellRange both{series.x.range.first, series.values.range.last};
    const Object range = sheet.Get("Range", {FromPage(AddressOf(both))});
    target.Call("SetSourceData", {range, kColumns});
}

void SetLook(const Object& target, const ChartSeries& series) {
    const Object border = target.Get("Border");
    if (series.line) {
        border.Set("Weight", WeightOf(series.line->weight));
        border.Set("ColorIndex", series.line->colour);
    } else {
        border.Set("LineStyle", kNone);
    }
    if (series.marker) {
        const bool isCircle = series.marker->style == MarkerStyle::Circle;
        target.Set("MarkerStyle", isCircle ? kMarkerStyleCircle : kMarkerStyleStar);
        target.Set("MarkerSize", series.marker->size);
        target.Set("MarkerForegroundColorIndex", series.marker->foreground);
        target.Set("MarkerBackgroundColorIndex", series.marker->background);
        target.Set("Shadow", series.marker->shadow);
    } else {
        target.Set("MarkerStyle", kNone);
    }
    target.Set("Smooth", series.smoothed);
}

void SetSeries(const Object& target, const Workbook& workbook, const Chart& chart) {
    const Object all = target.Get("SeriesCollection");
    // What Excel made of the source is its guess.
    for (int surplus = all.Count(); surplus > 1; --surplus)
        all.Get("Item", {surplus}).Call("Delete");
    bool isFirst = all.Count() == 1;
    for (const ChartSeries& series : chart.series) {
        const Object made = isFirst ? all.Get("Item", {1}) : all.Get("NewSeries");
        isFirst = false;
        if (!series.name.empty()) made.Set("Name", FromPage(series.name));
        made.Set("XValues", FormulaOf(workbook, series.x));
        made.Set("Values", FormulaOf(workbook, series.values));
        SetLook(made, series);
    }
}

constexpr int kTextSize = 9;

void SetFont(const Object& target, int size, bool bold) {
    const Object font = target.Get("Font");
    font.Set("Name", QStringLiteral("Arial"));
    font.Set("Size", size);
    font.Set("Bold", bold);
}

void SetTitle(const Object& title, const std::string& text, int size) {
    title.Set("Text", FromPage(text));
    SetFont(title, size, true);
}

void SetAxis(const Object& axis, const ChartAxes& axes, const std::string& title) {
    axis.Set("ScaleType", axes.logarithmic ? kScaleLogarithmic : kScaleLinear);
    for (const char* automatic :
         {"MinimumScaleIsAuto", "MaximumScaleIsAuto", "MajorUnitIsAuto", "MinorUnitIsAuto"})
        axis.Set(automatic, true);
    axis.Set("Crosses", kAutomatic);
    axis.Set("ReversePlotOrder", false);
    axis.Set("MajorTickMark", MarksOf(axes.majorTickMarks));
    axis.Set("MinorTickMark", MarksOf(axes.minorTickMarks));
    // Next to the axis, which on a logarithmic scale may cross the plot in its middle.
    axis.Set("TickLabelPosition", kTickLabelPositionLow);
    axis.Set("HasMajorGridlines", axes.majorGridlines);
    axis.Set("HasMinorGridlines", axes.minorGridlines);
    if (axes.majorGridlines) axis.Get("MajorGridlines").Get("Border").Set("ColorIndex", kGrey50);
    if (axes.minorGridlines) axis.Get("MinorGridlines").Get("Border").Set("ColorIndex", kGrey40);
    axis.Get("Border").Set("ColorIndex", kGrey50);
    axis.Set("HasTitle", true);
    constexpr int kTitleSize = 10;
    SetTitle(axis.Get("AxisTitle"), title, kTitleSize);
    // Not that of the points' cells.
    const Object labels = axis.Get("TickLabels");
    labels.Set("NumberFormat", QStringLiteral("General"));
    SetFont(labels, kTextSize, false);
}

void SetPlotArea(const Object& target, const PlotArea& area) {
    const Object plot = target.Get("PlotArea");
    const Object border = plot.Get("Border");
    border.Set("Weight", WeightOf(area.borderWeight));
    border.Set("LineStyle", kAutomatic);
    const Object fill = plot.Get("Fill");
    fill.Set("Visible", area.filled);
    if (area.filled) fill.Get("ForeColor").Set("SchemeColor", area.fillColour);
    const Object frame = target.Get("ChartArea").Get("Border");
    frame.Set("Weight", kThin);
    frame.Set("ColorIndex", kGrey40);
}

void SetTitleAndLegend(const Object& target, const Chart& chart) {
    constexpr int kTitleSize = 12;
    std::string title;
    for (const std::string& line : chart.titleLines)
        title += (title.empty() ? "" : "\n") + line;
    target.Set("HasTitle", !title.empty());
    if (!title.empty()) SetTitle(target.Get("ChartTitle"), title, kTitleSize);
    target.Set("HasLegend", chart.legend);
    if (!chart.legend) return;
    const Object legend = target.Get("Legend");
    // From the last, because the others' numbers move up.
    for (auto i = static_cast<int>(chart.series.size()); i > 0; --i) {
        if (chart.series[static_cast<std::size_t>(i - 1)].inLegend) continue;
        legend.Get("LegendEntries", {i}).Call("Delete");
    }
    SetFont(legend, kTextSize, false);
    legend.Get("Border").Set("LineStyle", kNone);
}

// The copy becomes the last chart of the sheet; Excel gives it a size of its own.
void Paste(const Object& target, const Object& sheet, const Chart& chart) {
    const Object anchor = sheet.Get("Range", {FromPage(AddressOf(chart.anchor))});
    target.Get("ChartArea").Call("Copy");
    sheet.Call("Activate");
    sheet.Call("Paste", {anchor});
    const Object charts = sheet.Get("ChartObjects");
    const Object pasted = charts.Get("Item", {charts.Count()});
    pasted.Set("Left", anchor.Number("Left"));
    pasted.Set("Top", anchor.Number("Top"));
    pasted.Set("Width", chart.width);
    pasted.Set("Height", chart.height);
}

}  // namespace

void AddChart(const Object& book, const Object& sheet, const Workbook& workbook, const Chart& chart,
              const std::function<void()>& beforeStep) {
    const Object target = book.Get("Charts").Get("Add");
    if (!chart.series.empty()) SetSource(book, target, workbook, chart.series.front());
    target.Set("ChartType", kXyScatterLinesNoMarkers);
    beforeStep();
    SetSeries(target, workbook, chart);
    beforeStep();
    for (const auto& [kind, title] : {std::pair(kCategory, chart.axes.categoryTitle),
                                      std::pair(kValue, chart.axes.valueTitle)}) {
        SetAxis(target.Get("Axes", {kind}), chart.axes, title);
    }
    SetPlotArea(target, chart.plotArea);
    SetTitleAndLegend(target, chart);
    beforeStep();
    Paste(target, sheet, chart);
    target.Call("Delete");
}

}  // namespace davo::excel
