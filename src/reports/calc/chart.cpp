// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/chart.h"

#include <algorithm>
#include <cmath>
#include <com/sun/star/awt/FontWeight.hpp>
#include <com/sun/star/awt/Rectangle.hpp>
#include <com/sun/star/chart/ChartAxisLabelPosition.hpp>
#include <com/sun/star/chart/ChartAxisMarks.hpp>
#include <com/sun/star/chart/X3DDisplay.hpp>
#include <com/sun/star/chart/XAxisXSupplier.hpp>
#include <com/sun/star/chart/XAxisYSupplier.hpp>
#include <com/sun/star/chart/XChartDocument.hpp>
#include <com/sun/star/chart2/Symbol.hpp>
#include <com/sun/star/chart2/XChartDocument.hpp>
#include <com/sun/star/chart2/XChartTypeContainer.hpp>
#include <com/sun/star/chart2/XCoordinateSystemContainer.hpp>
#include <com/sun/star/chart2/XDataSeriesContainer.hpp>
#include <com/sun/star/chart2/data/XDataProvider.hpp>
#include <com/sun/star/chart2/data/XDataSink.hpp>
#include <com/sun/star/chart2/data/XLabeledDataSequence.hpp>
#include <com/sun/star/document/XEmbeddedObjectSupplier.hpp>
#include <com/sun/star/drawing/FillStyle.hpp>
#include <com/sun/star/drawing/LineStyle.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/lang/XMultiComponentFactory.hpp>
#include <com/sun/star/lang/XMultiServiceFactory.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/table/XTableChartsSupplier.hpp>
#include <string>
#include <utility>
#include <vector>

namespace davo::calc {

namespace {

// What the engine writes as Excel's thin and medium line.
constexpr sal_Int32 kThinLine = 35;
constexpr sal_Int32 kMediumLine = 70;

constexpr sal_Int32 WidthOf(LineWeight weight) {
    return weight == LineWeight::Thin ? kThinLine : kMediumLine;
}

constexpr sal_Int32 kGrey = 0x808080;
constexpr sal_Int32 kLightGrey = 0xC0C0C0;
constexpr float kTitleSize = 12;
constexpr float kAxisTitleSize = 10;
constexpr float kTextSize = 9;

std::pair<const rtl::OUString, Any> FontName() {
    return Named("CharFontName", rtl::OUString("Arial"));
}

void SetTitle(const Reference<sun::uno::XInterface>& title, const std::string& text, float size) {
    SetAll(title, {Named("String", ToUno(text)), FontName(), Named("CharHeight", size),
                   Named("CharWeight", sun::awt::FontWeight::BOLD)});
}

class ChartMaker {
  public:
    ChartMaker(const Context& context, const Document& document, const Workbook& workbook,
               const Sheet& sheet, const Chart& chart)
        : context_(context),
          services_(context->getServiceManager()),
          document_(document),
          workbook_(workbook),
          sheet_(sheet),
          chart_(chart) {}
    void Make();

  private:
    void Embed();
    void SetDiagram();
    void SetTitles();
    void SetAxis(const PropertySet& axis);
    void SetGrids(const Reference<sun::chart::XAxisXSupplier>& x,
                  const Reference<sun::chart::XAxisYSupplier>& y);
    void SetSeries();
    Reference<sun::chart2::data::XLabeledDataSequence> DataOf(const SheetRange& range,
                                                              const char* role);
    void SetName(const ChartSeries& series,
                 const Reference<sun::chart2::data::XLabeledDataSequence>& values);
    void SetLook(const ChartSeries& series, const Reference<sun::chart2::XDataSeries>& target);
    Reference<sun::uno::XInterface> Create(const char* service);

    const Context& context_;
    Reference<sun::lang::XMultiComponentFactory> services_;
    const Document& document_;
    const Workbook& workbook_;
    const Sheet& sheet_;
    const Chart& chart_;
    Reference<sun::chart::XChartDocument> old_;
    Reference<sun::chart2::XChartDocument> new_;
    Reference<sun::chart::XDiagram> diagram_;
    Reference<sun::chart2::data::XDataProvider> provider_;
};

void ChartMaker::Make() {
    Embed();
    const Reference<sun::frame::XModel> model(old_, UNO_QUERY_THROW);
    model->lockControllers();
    SetSeries();
    SetDiagram();
    SetTitles();
    model->unlockControllers();
}

// With the first series' numbers: a chart that is made of nothing has no source of data.
void ChartMaker::Embed() {
    const Reference<sun::sheet::XSpreadsheet> sheet(
        document_->getSheets()->getByName(ToUno(sheet_.finalName)), UNO_QUERY_THROW);
    const Reference<sun::table::XTableChartsSupplier> supplier(sheet, UNO_QUERY_THROW);
    const auto charts = supplier->getCharts();
    const PropertySet anchor(
        sheet->getCellByPosition(chart_.anchor.column - 1, chart_.anchor.row - 1), UNO_QUERY_THROW);
    const auto corner = Get<sun::awt::Point>(anchor, "Position");
    const double stretch = kColumnLengthPerPixel / kPixelLength;
    const sun::awt::Rectangle place(
        corner.X, corner.Y, static_cast<sal_Int32>(std::lround(LengthOf(chart_.width) * stretch)),
        LengthOf(chart_.height));
    Sequence<sun::table::CellRangeAddress> ranges;
    if (!chart_.series.empty()) {
        const SheetRange& first = chart_.series.front().values;
        const CellRange& range = first.range;
        ranges = SequenceOf({sun::table::CellRangeAddress(
            static_cast<sal_Int16>(first.sheet), range.first.column - 1, range.first.row - 1,
            range.last.column - 1, range.last.row - 1)});
    }
    // Unique in the whole document.
    const rtl::OUString name = ToUno(sheet_.finalName) + " chart " +
                               rtl::OUString::number(charts->getElementNames().getLength() + 1);
    charts->addNewByName(name, place, ranges, false, false);
    const Reference<sun::document::XEmbeddedObjectSupplier> embedded(charts->getByName(name),
                                                                     UNO_QUERY_THROW);
    old_.set(embedded->getEmbeddedObject(), UNO_QUERY_THROW);
    new_.set(old_, UNO_QUERY_THROW);
    const Reference<sun::lang::XMultiServiceFactory> factory(old_, UNO_QUERY_THROW);
    diagram_.set(factory->createInstance("com.sun.star.chart.XYDiagram"), UNO_QUERY_THROW);
    old_->setDiagram(diagram_);
    provider_ = new_->getDataProvider();
}

void ChartMaker::SetTitles() {
    std::string text;
    for (const std::string& line : chart_.titleLines)
        text += (text.empty() ? "" : "\n") + line;
    SetAll(old_, {Named("HasMainTitle", !text.empty()), Named("HasLegend", chart_.legend)});
    if (!text.empty()) SetTitle(old_->getTitle(), text, kTitleSize);
    const Reference<sun::chart::XAxisXSupplier> x(diagram_, UNO_QUERY_THROW);
    const Reference<sun::chart::XAxisYSupplier> y(diagram_, UNO_QUERY_THROW);
    SetTitle(x->getXAxisTitle(), chart_.axes.categoryTitle, kAxisTitleSize);
    SetTitle(y->getYAxisTitle(), chart_.axes.valueTitle, kAxisTitleSize);
    SetAxis(x->getXAxis());
    SetAxis(y->getYAxis());
    SetGrids(x, y);
    if (!chart_.legend) return;
    SetAll(old_->getLegend(), {FontName(), Named("CharHeight", kTextSize),
                               Named("FillStyle", sun::drawing::FillStyle_NONE),
                               Named("LineStyle", sun::drawing::LineStyle_NONE)});
}

void ChartMaker::SetAxis(const PropertySet& axis) {
    const auto marksOf = [](TickMarks marks) {
        return marks == TickMarks::Outside ? sun::chart::ChartAxisMarks::OUTER
                                           : sun::chart::ChartAxisMarks::NONE;
    };
    Properties properties = {
        Named("LineColor", kGrey),
        Named("Logarithmic", chart_.axes.logarithmic),
        Named("Marks", marksOf(chart_.axes.majorTickMarks)),
        Named("HelpMarks", marksOf(chart_.axes.minorTickMarks)),
        Named("DisplayLabels", true),
        Named("LabelPosition", sun::chart::ChartAxisLabelPosition_OUTSIDE_START),
        Named("ReverseDirection", false),
        Named("LinkNumberFormatToSource", false),
        Named("NumberFormat", sal_Int32{0}),
        FontName(),
        Named("CharHeight", kTextSize),
    };
    for (const char* automatic :
         {"AutoMin", "AutoMax", "AutoStepMain", "AutoStepHelp", "AutoOrigin"})
        properties.insert(Named(automatic, true));
    SetAll(axis, properties);
}

void ChartMaker::SetGrids(const Reference<sun::chart::XAxisXSupplier>& x,
                          const Reference<sun::chart::XAxisYSupplier>& y) {
    if (chart_.axes.majorGridlines) {
        Set(x->getXMainGrid(), "LineColor", kGrey);
        Set(y->getYMainGrid(), "LineColor", kGrey);
    }
    if (chart_.axes.minorGridlines) {
        Set(x->getXHelpGrid(), "LineColor", kLightGrey);
        Set(y->getYHelpGrid(), "LineColor", kLightGrey);
    }
}

// What the diagram has must be there before it is given its looks.
void ChartMaker::SetDiagram() {
    const ChartAxes& axes = chart_.axes;
    SetAll(diagram_,
           {Named("HasXAxisTitle", true), Named("HasYAxisTitle", true),
            Named("HasXAxisGrid", axes.majorGridlines), Named("HasYAxisGrid", axes.majorGridlines),
            Named("HasXAxisHelpGrid", axes.minorGridlines),
            Named("HasYAxisHelpGrid", axes.minorGridlines)});
    const Reference<sun::chart::X3DDisplay> display(diagram_, UNO_QUERY_THROW);
    const PlotArea& area = chart_.plotArea;
    Properties wall = {
        Named("FillStyle",
              area.filled ? sun::drawing::FillStyle_SOLID : sun::drawing::FillStyle_NONE),
        Named("LineStyle", sun::drawing::LineStyle_SOLID),
        Named("LineWidth", WidthOf(area.borderWeight)),
        Named("LineColor", kGrey),
    };
    if (area.filled) wall.insert(Named("FillColor", ColourOf(area.fillColour)));
    SetAll(display->getWall(), wall);
    SetAll(old_->getArea(), {Named("LineStyle", sun::drawing::LineStyle_SOLID),
                             Named("LineWidth", kThinLine), Named("LineColor", kLightGrey)});
}

Reference<sun::uno::XInterface> ChartMaker::Create(const char* service) {
    return services_->createInstanceWithContext(rtl::OUString::createFromAscii(service), context_);
}

Reference<sun::chart2::data::XLabeledDataSequence> ChartMaker::DataOf(const SheetRange& range,
                                                                      const char* role) {
    const Sheet& sheet = workbook_.sheets.at(range.sheet);
    const auto values =
        provider_->createDataSequenceByRangeRepresentation(RangeText(sheet.finalName, range.range));
    Set(PropertySet(values, UNO_QUERY_THROW), "Role", rtl::OUString::createFromAscii(role));
    Reference<sun::chart2::data::XLabeledDataSequence> labelled(
        Create("com.sun.star.chart2.data.LabeledDataSequence"), UNO_QUERY_THROW);
    labelled->setValues(values);
    return labelled;
}

// The engine takes names from cells only: the first one of the chart's sheet that holds the name.
// One that is not in the legend has two cells for a name, in whose place FinishXls says so.
void ChartMaker::SetName(const ChartSeries& series,
                         const Reference<sun::chart2::data::XLabeledDataSequence>& values) {
    rtl::OUString range;
    if (series.name.empty()) {
        if (!chart_.legend || series.inLegend) return;
        const CellPlace first{series.values.range.first.row, 1};
        const std::string& sheet = workbook_.sheets.at(series.values.sheet).finalName;
        range = RangeText(sheet, {first, first}) + "," +
                RangeText(sheet, {series.values.range.first, series.values.range.first});
    } else {
        const auto cell =
            std::find_if(sheet_.cells.begin(), sheet_.cells.end(), [&](const Cell& candidate) {
                const auto* text = std::get_if<std::string>(&candidate.value);
                return text != nullptr && *text == series.name;
            });
        if (cell == sheet_.cells.end()) return;
        range = RangeText(sheet_.finalName, {cell->place, cell->place});
    }
    const auto label = provider_->createDataSequenceByRangeRepresentation(range);
    if (!label.is()) return;  // a legend with an entry too many is better than no report
    Set(PropertySet(label, UNO_QUERY_THROW), "Role", rtl::OUString("label"));
    values->setLabel(label);
}

void ChartMaker::SetLook(const ChartSeries& series,
                         const Reference<sun::chart2::XDataSeries>& target) {
    // A series of one point has no line to draw, but its markers get the line's colour.
    int colour = kColourRed;
    if (series.line) {
        colour = series.line->colour;
    } else if (series.marker) {
        colour = series.marker->foreground;
    }
    sun::chart2::Symbol symbol;
    symbol.Style = sun::chart2::SymbolStyle_NONE;
    if (series.marker) {
        constexpr sal_Int32 kStar = 12;
        constexpr sal_Int32 kCircle = 8;
        symbol.Style = sun::chart2::SymbolStyle_STANDARD;
        symbol.StandardSymbol = series.marker->style == MarkerStyle::Circle ? kCircle : kStar;
        const sal_Int32 size = LengthOf(series.marker->size);
        symbol.Size = {size, size};
        symbol.BorderColor = ColourOf(series.marker->foreground);
        symbol.FillColor = ColourOf(series.marker->background);
    }
    SetAll(target,
           {Named("Color", ColourOf(colour)), Named("LineStyle", sun::drawing::LineStyle_SOLID),
            Named("LineWidth", series.line ? WidthOf(series.line->weight) : kThinLine),
            Named("Symbol", symbol), Named("ShowLegendEntry", series.inLegend)});
}

void ChartMaker::SetSeries() {
    std::vector<Reference<sun::chart2::XDataSeries>> made;
    for (const ChartSeries& series : chart_.series) {
        const Reference<sun::chart2::XDataSeries> target(Create("com.sun.star.chart2.DataSeries"),
                                                         UNO_QUERY_THROW);
        const auto x = DataOf(series.x, "values-x");
        const auto values = DataOf(series.values, "values-y");
        SetName(series, values);
        const Reference<sun::chart2::data::XDataSink> sink(target, UNO_QUERY_THROW);
        sink->setData(SequenceOf({x, values}));
        SetLook(series, target);
        made.push_back(target);
    }
    const Reference<sun::chart2::XCoordinateSystemContainer> systems(new_->getFirstDiagram(),
                                                                     UNO_QUERY_THROW);
    const Reference<sun::chart2::XChartTypeContainer> types(systems->getCoordinateSystems()[0],
                                                            UNO_QUERY_THROW);
    const Reference<sun::chart2::XDataSeriesContainer> container(types->getChartTypes()[0],
                                                                 UNO_QUERY_THROW);
    container->setDataSeries(Sequence<Reference<sun::chart2::XDataSeries>>(
        made.data(), static_cast<sal_Int32>(made.size())));
}

}  // namespace

void AddChart(const Context& context, const Document& document, const Workbook& workbook,
              const Sheet& sheet, const Chart& chart) {
    ChartMaker(context, document, workbook, sheet, chart).Make();
}

}  // namespace davo::calc
