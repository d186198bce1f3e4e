// SPDX-License-Identifier: GPL-3.0-or-later
// The charts of a report: of one test, of several, of an overlay; and the notes.

#include "reports/report_charts.h"

#include <set>

#include "common/run_time_error.h"
#include "common/settings.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::CellText;
using test::FileText;
using test::HeaderText;
using test::RecordParts;
using test::RecordText;

Workbook BookOf(const std::string& text, const char* kneepointType = kKneeIeee30) {
    return BuildReport(test::ParseFile(text), {kneepointType, false});
}

Chart ChartOfOne(const char* kneepointType = kKneeIeee30) {
    return BookOf(FileText(1), kneepointType).sheets.at(0).charts.at(0);
}

// "sheet 0 R19C2:R32C2", sheets counted from 0.
std::string Where(const SheetRange& range) {
    return "sheet " + std::to_string(range.sheet) + " " + RowColumnAddressOf(range.range);
}

void ExpectReportAxes(const Chart& chart) {
    EXPECT_TRUE(chart.axes.logarithmic);
    EXPECT_EQ(chart.axes.majorTickMarks, TickMarks::Outside);
    EXPECT_EQ(chart.axes.minorTickMarks, TickMarks::None);
    EXPECT_TRUE(chart.axes.majorGridlines);
    EXPECT_TRUE(chart.axes.minorGridlines);
    EXPECT_EQ(chart.axes.categoryTitle, "Amperes");
    EXPECT_EQ(chart.axes.valueTitle, "Volts");
    EXPECT_EQ(chart.plotArea.borderWeight, LineWeight::Thin);
    EXPECT_TRUE(chart.plotArea.filled);
    EXPECT_EQ(chart.plotArea.fillColour, 2);
    EXPECT_EQ(AddressOf(chart.anchor), "G42");
}

void ExpectRedStar(const ChartSeries& series) {
    EXPECT_FALSE(series.line);
    ASSERT_TRUE(series.marker);
    EXPECT_EQ(series.marker->style, MarkerStyle::Star);
    EXPECT_EQ(series.marker->size, 4);
    EXPECT_EQ(series.marker->foreground, 3);
    EXPECT_EQ(series.marker->background, 3);
    EXPECT_FALSE(series.marker->shadow);
    EXPECT_TRUE(series.smoothed);
}

TEST(ReportChart, HasLogarithmicAxesAndAWhitePlotArea) {
    const Chart chart = ChartOfOne();
    ExpectReportAxes(chart);
    EXPECT_FALSE(chart.legend);
}

TEST(ReportChart, HasItsTitle) {
    EXPECT_EQ(ChartOfOne().titleLines,
              (std::vector<std::string>{"Station: Hilltop - Circuit: Feeder 4", "Test Number 1",
                                        "Kneepoint Type - IEEE 30 Degree Marker"}));
}

TEST(ReportChart, DrawsTheCurveFromThePointTable) {
    const Chart chart = ChartOfOne();
    ASSERT_EQ(chart.series.size(), 2U);
    const ChartSeries& curve = chart.series[0];
    EXPECT_EQ(Where(curve.x), "sheet 0 R19C2:R32C2");
    EXPECT_EQ(Where(curve.values), "sheet 0 R19C3:R32C3");
    ASSERT_TRUE(curve.line);
    EXPECT_EQ(curve.line->weight, LineWeight::Medium);
    EXPECT_FALSE(curve.marker);
    EXPECT_FALSE(curve.smoothed);
    EXPECT_EQ(curve.name, "");
}

TEST(ReportChart, MarksTheKneepointOfTheChosenRule) {
    const std::vector<std::pair<const char*, const char*>> rows = {
        {kKneeAsa, "10"}, {kKneeIeee45, "12"}, {kKneeIeee30, "11"}};
    for (const auto& [type, row] : rows) {
        const Chart chart = ChartOfOne(type);
        ASSERT_EQ(chart.series.size(), 2U) << type;
        ExpectRedStar(chart.series[1]);
        EXPECT_EQ(Where(chart.series[1].x), std::string("sheet 0 R") + row + "C4");
        EXPECT_EQ(Where(chart.series[1].values), std::string("sheet 0 R") + row + "C2");
        EXPECT_EQ(chart.titleLines.back(), std::string("Kneepoint Type - ") + type);
    }
}

TEST(ReportChart, AnUnknownRuleIsNamedAndNotMarked) {
    const Chart chart = ChartOfOne("Something else");
    EXPECT_EQ(chart.series.size(), 1U);
    EXPECT_EQ(chart.titleLines.back(), "Kneepoint Type - Something else");
}

TEST(ReportChart, AKneepointThatWasNotFoundIsNotMarked) {
    RecordParts parts;
    parts.points = {{"0.1100", "10"}, {"0.1210", "13"}, {"0.1330", "17"}, {"0.1460", "22"}};
    const Sheet sheet = BookOf(HeaderText() + RecordText(parts), kKneeIeee45).sheets.at(0);
    EXPECT_EQ(test::CellNumber(sheet, "B12"), 0);
    EXPECT_EQ(test::CellNumber(sheet, "D12"), 0);
    EXPECT_EQ(sheet.charts.at(0).series.size(), 1U);
}

TEST(ReportChart, AKneepointThatLogarithmsCannotShowIsNotMarked) {
    ReportTables report = test::ParseFile(FileText(1));
    const auto seriesWith = [&](const Kneepoint& knee) {
        report.tables.kneeIeee45[0] = knee;
        return BuildReport(report, {kKneeIeee45, false}).sheets.at(0).charts.at(0).series.size();
    };
    EXPECT_EQ(seriesWith({"0.3", "0.004"}), 2U);
    EXPECT_EQ(seriesWith({"0.3", "0.000"}), 1U);
    EXPECT_EQ(seriesWith({"0.0", "0.004"}), 1U);
    EXPECT_EQ(seriesWith({"-0.3", "0.004"}), 1U);
}

// Table and chart together have about the shape of a landscape page, whatever the table's length.
TEST(ReportChart, FillsTheLandscapePageBesideTheTable) {
    for (const int last : {19, 30, 63, 64, 80, 119}) {
        const ChartPlace place = ChartBesideTable(last);
        const double left = 4 * 108.75 + 2 * 14.25;
        const double top = 41 * 12.75;
        const double width = left + place.chart.width;
        const double height = top + place.chart.height;
        EXPECT_NEAR(width / height, 1.4, 0.03) << last;
        EXPECT_GE(place.chart.width, 780) << last;
        EXPECT_GE(place.chart.height, 380) << last;
        EXPECT_GE(place.last.row, last) << last;
        EXPECT_EQ(place.last.row, 41 + std::lround(place.chart.height / 12.75)) << last;
        EXPECT_EQ(place.last.column, 6 + std::lround(place.chart.width / 48)) << last;
        EXPECT_LE(place.last.column, PlaceOf("AP1").column) << "columns of a set width end there";
    }
}

class ReportOf : public testing::TestWithParam<int> {};

TEST_P(ReportOf, HasASheetPerTestAndASummary) {
    const int tests = GetParam();
    const Workbook book = BookOf(FileText(tests) + "NOTES:\r\nwet\r\n");
    const auto count = static_cast<std::size_t>(tests);
    ASSERT_EQ(book.sheets.size(), count + (tests > 1 ? 2 : 1));
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i + 1);
        const Sheet& sheet = book.sheets[i];
        EXPECT_EQ(sheet.buildName, "Sheet" + number);
        EXPECT_EQ(sheet.finalName, "Test " + number + "-Graph");
        EXPECT_EQ(CellText(sheet, "B6"), number);
        const Chart& chart = sheet.charts.at(0);
        EXPECT_EQ(chart.titleLines.at(1), "Test Number " + number);
        EXPECT_EQ(chart.series.at(0).x.sheet, i);
        EXPECT_EQ(chart.series.at(0).values.sheet, i);
        EXPECT_EQ(chart.series.at(1).x.sheet, i);
    }
    EXPECT_EQ(book.sheets.back().finalName, "NOTES");
    EXPECT_EQ(book.activeSheet, 0U);
    std::set<std::string> names;
    for (const Sheet& sheet : book.sheets) {
        EXPECT_TRUE(names.insert(sheet.finalName).second) << sheet.finalName;
        EXPECT_LE(sheet.finalName.size(), 31U);
        EXPECT_EQ(sheet.finalName.find_first_of(":\\/?*[]'"), std::string::npos);
    }
}

TEST_P(ReportOf, SummaryShowsEveryTestInItsColour) {
    const int tests = GetParam();
    const Workbook book = BookOf(FileText(tests), kKneeAsa);
    const auto count = static_cast<std::size_t>(tests);
    if (tests == 1) {
        EXPECT_EQ(book.sheets.size(), 1U) << "one test has no summary";
        return;
    }
    const Sheet& sheet = book.sheets.at(count);
    EXPECT_EQ(sheet.finalName, "SummaryGraph");
    EXPECT_TRUE(sheet.fromTemplate);
    EXPECT_EQ(sheet.cleared, RangeOf("A4:D100")) << "the labels of a test";
    EXPECT_EQ(sheet.firstVisible, PlaceOf("A1"));
    const Chart& chart = sheet.charts.at(0);
    ExpectReportAxes(chart);
    EXPECT_TRUE(chart.legend);
    EXPECT_EQ(chart.titleLines,
              (std::vector<std::string>{"Graphs Summary", "Kneepoint Type - ASA 10/50 Marker"}));
    constexpr std::array kColours = {3, 5, 50, 8, 53, 56, 4, 26, 46, 29};
    ASSERT_EQ(chart.series.size(), 2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        const ChartSeries& curve = chart.series[2 * i];
        EXPECT_EQ(curve.name, "Test #" + std::to_string(i + 1));
        EXPECT_TRUE(curve.inLegend);
        EXPECT_EQ(Where(curve.x), "sheet " + std::to_string(i) + " R19C2:R32C2");
        EXPECT_EQ(Where(curve.values), "sheet " + std::to_string(i) + " R19C3:R32C3");
        ASSERT_TRUE(curve.line);
        EXPECT_EQ(curve.line->weight, LineWeight::Medium);
        EXPECT_EQ(curve.line->colour, kColours.at(i % 10));
        const ChartSeries& marker = chart.series[2 * i + 1];
        ExpectRedStar(marker);
        EXPECT_FALSE(marker.inLegend);
        EXPECT_EQ(Where(marker.x), "sheet " + std::to_string(i) + " R10C4");
        EXPECT_EQ(Where(marker.values), "sheet " + std::to_string(i) + " R10C2");
        EXPECT_NO_THROW(PaletteColour(curve.line->colour));
    }
    EXPECT_TRUE(sheet.page.landscape);
    EXPECT_EQ(sheet.page.fitPagesWide, 1);
    EXPECT_EQ(sheet.page.fitPagesTall, 1);
    EXPECT_EQ(sheet.page.printArea->first, PlaceOf("A1"));
    EXPECT_GE(sheet.page.printArea->last.row, 6 + tests) << "all kneepoints";
    EXPECT_TRUE(sheet.page.footer);
    EXPECT_EQ(sheet.selected, PlaceOf("A1"));
}

INSTANTIATE_TEST_SUITE_P(Tests, ReportOf, testing::Values(1, 3, 4, 31));

TEST(ReportOfThirtyTwo, HasNone) {
    ReportTables report = test::ParseFile(FileText(31));
    report.tests.push_back(report.tests.back());
    EXPECT_EQ(test::NumberThrownBy([&] {
                  BuildReport(report, {kKneeAsa, false});
              }),
              ErrorNumber::SubscriptOutOfRange);
}

TEST(Summary, ListsTheMarkedKneepoints) {
    RecordParts three;
    three.number = " 2";
    three.points.resize(3);
    const ReportTables report = test::ParseFile(HeaderText() + RecordText(1) + RecordText(three));
    const Sheet sheet = BuildReport(report, {kKneeIeee45, false}).sheets.at(2);
    const Kneepoint& knee = report.tables.kneeIeee45[0];
    EXPECT_EQ(CellText(sheet, "A1"), "TEST REPORT");
    EXPECT_EQ(CellText(sheet, "B4"), "T0012");
    EXPECT_EQ(CellText(sheet, "A6"), "TEST");
    EXPECT_EQ(CellText(sheet, "B6"), "Vkp (Volts)");
    EXPECT_EQ(CellText(sheet, "C6"), "Ikp (Amps)");
    EXPECT_EQ(CellText(sheet, "A7"), "Test #1");
    EXPECT_EQ(test::CellNumber(sheet, "B7"), std::stod(knee.voltage));
    EXPECT_EQ(test::CellNumber(sheet, "C7"), std::stod(knee.current));
    EXPECT_EQ(CellText(sheet, "A8"), "Test #2");
    EXPECT_EQ(CellText(sheet, "B8"), "N/A");
    EXPECT_EQ(CellText(sheet, "C8"), "N/A");
    EXPECT_TRUE(test::PlacesAreUnique(sheet));
    EXPECT_EQ(sheet.charts.at(0).series.size(), 3U) << "two curves, one mark";
}

TEST(Overlay, OpensWithBothCurves) {
    const Workbook book = BuildReport(test::ParseGroup(HeaderText("T1", "Hill") + RecordText(3) +
                                                       HeaderText("T2", "Valley") + RecordText(3)),
                                      {kKneeAsa, false});
    ASSERT_EQ(book.sheets.size(), 3U);
    EXPECT_EQ(book.activeSheet, 2U);
    EXPECT_EQ(CellText(book.sheets[0], "B5"), "2Graphs");
    EXPECT_EQ(CellText(book.sheets[1], "B5"), "2Graphs");
    EXPECT_EQ(CellText(book.sheets[0], "B6"), "3");
    EXPECT_EQ(CellText(book.sheets[1], "B6"), "3");
    EXPECT_EQ(CellText(book.sheets[0], "D5"), "Hill");
    EXPECT_EQ(CellText(book.sheets[1], "D5"), "Valley");
    const Chart& chart = book.sheets[2].charts.at(0);
    EXPECT_EQ(chart.series.at(0).name, "Test #1");
    EXPECT_EQ(chart.series.at(2).name, "Test #2");
    EXPECT_EQ(chart.titleLines.at(0), "Graphs Summary");
    EXPECT_EQ(book.sheets[2].firstVisible, chart.anchor);
    EXPECT_EQ(book.sheets[2].selected, PlaceOf("A1"));
}

TEST(Overlay, NamesBothTests) {
    const std::string described = RecordText(3, test::Line("TEST DESCRIPTION: X1-X2"));
    const Workbook book = BuildReport(test::ParseGroup(HeaderText("T1", "Hill") + described +
                                                       HeaderText("T2", "Valley") + RecordText(4)),
                                      {kKneeAsa, false});
    const Sheet& sheet = book.sheets.at(2);
    EXPECT_EQ(CellText(sheet, "D6"), "RECORD, TEST, DESCRIPTION");
    EXPECT_EQ(CellText(sheet, "D7"), "T1, test 3, X1-X2");
    EXPECT_EQ(CellText(sheet, "D8"), "T2, test 4");
    EXPECT_EQ(CellText(BookOf(FileText(2)).sheets.at(2), "D6"), "") << "one file needs no names";
}

TEST(Overlay, AGraphWithoutARecordSaysSo) {
    const Workbook book =
        BuildReport(test::ParseGroup(HeaderText("T1") + RecordText(1) + HeaderText("T2", "Valley")),
                    {kKneeAsa, true});
    ASSERT_EQ(book.sheets.size(), 3U);
    const Sheet& sheet = book.sheets[1];
    EXPECT_EQ(CellText(sheet, "A20"), "Graph 2 has no data.");
    EXPECT_TRUE(sheet.charts.empty());
    EXPECT_EQ(CellText(sheet, "D5"), "Valley");
    for (const char* address : {"B6", "B10", "D10", "B11", "D12", "A19", "B19", "C19"})
        EXPECT_EQ(CellText(sheet, address), "N/A") << address;
    EXPECT_EQ(book.sheets[2].charts.at(0).series.size(), 2U);
    EXPECT_EQ(CellText(book.sheets[2], "D8"), "T2 has no data.");
}

TEST(Overlay, TwoGraphsWithoutDataHaveNoChart) {
    const Workbook book =
        BuildReport(test::ParseGroup(HeaderText("T1") + HeaderText("T2")), {kKneeAsa, false});
    ASSERT_EQ(book.sheets.size(), 3U);
    EXPECT_TRUE(book.sheets[2].charts.empty());
    EXPECT_EQ(CellText(book.sheets[2], "D7"), "T1 has no data.");
}

TEST(Notes, StandOnTheirSheetWithLineBreaks) {
    const Workbook book = BookOf(FileText(1) + "NOTES:\r\nfirst\r\nsecond, third\r\n\r\nlast\r\n");
    ASSERT_EQ(book.sheets.size(), 2U);
    const Sheet& sheet = book.sheets[1];
    EXPECT_EQ(sheet.finalName, "NOTES");
    EXPECT_FALSE(sheet.fromTemplate);
    EXPECT_EQ(CellText(sheet, "A1"), "first\nsecond\nthird\n\nlast");
    EXPECT_EQ(test::FormatAt(sheet, "A1"), "@");
    EXPECT_EQ(test::StyleAt(sheet, "A1").wrap, true);
    EXPECT_EQ(test::StyleAt(sheet, "A1").vertical, VerticalAlignment::Top);
    EXPECT_EQ(sheet.cells.size(), 1U);
    EXPECT_FALSE(sheet.page.landscape);
    EXPECT_EQ(sheet.page.fitPagesWide, 1);
    EXPECT_EQ(sheet.page.fitPagesTall, 0) << "as many pages as it takes";
}

TEST(ReportChart, ATestOfOnePointShowsIt) {
    RecordParts parts;
    parts.points.resize(1);
    const Workbook book = BookOf(HeaderText() + RecordText(1) + RecordText(parts));
    for (const auto& [sheet, series, colour] : {std::tuple(1, 0, 5), std::tuple(2, 2, 5)}) {
        const Chart& chart = book.sheets.at(static_cast<std::size_t>(sheet)).charts.at(0);
        const auto& marker = chart.series.at(static_cast<std::size_t>(series)).marker;
        ASSERT_TRUE(marker);
        EXPECT_EQ(marker->style, MarkerStyle::Circle) << "no star, which is a kneepoint";
        EXPECT_EQ(marker->foreground, colour);
    }
    EXPECT_FALSE(book.sheets.at(0).charts.at(0).series.at(0).marker) << "more have a line";
}

TEST(Notes, HaveNoSheetWhenThereAreNone) {
    EXPECT_EQ(BookOf(FileText(1)).sheets.size(), 1U);
    EXPECT_EQ(BookOf(FileText(1) + "NOTES:\r\n").sheets.size(), 1U);
}

TEST(Notes, LongOnesTakeSeveralCellsAndLoseNothing) {
    std::string lines;
    std::string expected;
    for (int i = 1; i <= 60; ++i) {
        lines += "note " + std::to_string(i) + "\r\n";
        expected += "note " + std::to_string(i) + "\n";
    }
    lines += std::string(40000, 'x') + "\r\n";
    expected += std::string(40000, 'x') + "\n";
    const Sheet sheet = BookOf(FileText(1) + "NOTES:\r\n" + lines).sheets.at(1);
    std::string all;
    for (const Cell& cell : sheet.cells) {
        const std::string& text = std::get<std::string>(cell.value);
        EXPECT_LE(text.size(), 32767U);
        EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 23);
        all += text + "\n";
    }
    std::erase(all, '\n');
    std::erase(expected, '\n');
    EXPECT_EQ(all, expected);
    EXPECT_TRUE(CellText(sheet, "A1").starts_with("note 1\nnote 2\n"));
    EXPECT_TRUE(CellText(sheet, "A2").starts_with("note 25\n"));
}

}  // namespace
}  // namespace davo
