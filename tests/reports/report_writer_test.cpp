// SPDX-License-Identifier: GPL-3.0-or-later
// The sheet of one test: every label, value and format.

#include "reports/report_writer.h"

#include <algorithm>

#include "common/settings.h"
#include "reports/maker.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::CellText;
using test::FileText;
using test::FormatAt;
using test::HeaderText;
using test::Line;
using test::RecordParts;
using test::RecordText;
using test::StyleAt;

const ReportOptions kOptions{kKneeIeee30, false};

Workbook BookOf(const std::string& text, const ReportOptions& options = kOptions) {
    return BuildReport(test::ParseFile(text), options);
}

Sheet SheetOf(const RecordParts& parts, const ReportOptions& options = kOptions) {
    return BookOf(HeaderText() + RecordText(parts), options).sheets.at(0);
}

Sheet SheetOfOne(const ReportOptions& options = kOptions) {
    return SheetOf({}, options);
}

TEST(ReportSheet, IsACopyOfTheTemplatesModel) {
    const Workbook book = BookOf(FileText(1));
    EXPECT_EQ(book.templateFile, "DAVO_Header.xls");
    EXPECT_EQ(book.templateSheet, "HEADER");
    ASSERT_EQ(book.sheets.size(), 1U);
    EXPECT_EQ(book.activeSheet, 0U);
    const Sheet& sheet = book.sheets[0];
    EXPECT_TRUE(sheet.fromTemplate);
    EXPECT_EQ(sheet.buildName, "Sheet1");
    EXPECT_EQ(sheet.finalName, "Test 1-Graph");
}

TEST(ReportSheet, HasEveryLabelAtItsPlace) {
    const Sheet sheet = SheetOfOne();
    const std::vector<std::pair<const char*, const char*>> labels = {
        {"A1", "TEST REPORT"},
        {"A4", "DATE & TIME: "},
        {"A5", "FILENAME: "},
        {"A6", "TEST NUMBER: "},
        {"A7", "MODEL: "},
        {"A8", "S/N: "},
        {"A9", "COMMENTS: "},
        {"A10", "ASA 10/50 Vkp (Volts)"},
        {"C10", "ASA 10/50 Ikp (Amps)"},
        {"A11", "IEEE 30 Vkp (Volts)"},
        {"C11", "IEEE 30 Ikp (Amps)"},
        {"A12", "IEEE 45 Vkp (Volts)"},
        {"C12", "IEEE 45 Ikp (Amps)"},
        {"C4", "COMPANY: "},
        {"C5", "STATION: "},
        {"C6", "CIRCUIT: "},
        {"C7", "MFR: "},
        {"C8", "OPERATOR: "},
        {"C9", "TEST NOTES: "},
        {"A13", "NAMEPLATE RATIO: "},
        {"C13", "MEASURED RATIO: "},
        {"A14", "POLARITY: "},
        {"C14", "PHASE ANGLE: "},
        {"A15", "PERCENT ERROR: "},
        {"A16", "EXCITATION VTG (Volts)"},
        {"C16", "EXCITATION CUR (Amps)"},
        {"A18", "CT DATA POINTS:"},
        {"B18", "CUR (A)"},
        {"C18", "VTG (V)"},
        {"D18", "IMPEDANCE (OHM)"},
    };
    for (const auto& [address, label] : labels)
        EXPECT_EQ(CellText(sheet, address), label) << address;
}

TEST(ReportSheet, HasEveryValueAtItsPlace) {
    RecordParts parts;
    parts.optionalLines = Line("TEST NOTES: " + test::Padded("dry"));
    const Sheet sheet = SheetOf(parts);
    const std::vector<std::pair<const char*, const char*>> values = {
        {"B4", "03/07/24 - 14:05:00"},
        {"B5", "T0012"},
        {"B6", "1"},
        {"B7", "CT-600"},
        {"B8", "00012345"},
        {"B9", "a: b, c"},
        {"D4", "Power & Light"},
        {"D5", "Hilltop"},
        {"D6", "Feeder 4"},
        {"D7", "Acme"},
        {"D8", "J. Doe"},
        {"D9", "dry"},
        {"B13", "240 (1200:5)"},
        {"B14", "IN PHASE"},
        {"D14", "IN PHASE"},
        {"B15", "0.50%"},
    };
    for (const auto& [address, value] : values)
        EXPECT_EQ(CellText(sheet, address), value) << address;
    EXPECT_EQ(CellText(sheet, "C15"), "");
    EXPECT_EQ(CellText(sheet, "D15"), "");
    EXPECT_EQ(CellText(SheetOfOne(), "D9"), "");
}

TEST(ReportSheet, HasTheKneepointsOfAllRulesAsNumbers) {
    const ReportTables report = test::ParseFile(FileText(1));
    const Sheet sheet = BuildReport(report, kOptions).sheets.at(0);
    const auto expect = [&](const char* address, const std::string& text, const char* format) {
        EXPECT_EQ(test::CellNumber(sheet, address), std::stod(text)) << address;
        EXPECT_EQ(FormatAt(sheet, address), format) << address;
    };
    const auto& tables = report.tables;
    expect("B10", tables.kneeAsa[0].voltage, "0.0");
    expect("D10", tables.kneeAsa[0].current, "0.000");
    expect("B11", tables.kneeIeee30[0].voltage, "0.0");
    expect("D11", tables.kneeIeee30[0].current, "0.000");
    expect("B12", tables.kneeIeee45[0].voltage, "0.0");
    expect("D12", tables.kneeIeee45[0].current, "0.000");
    EXPECT_NE(test::CellNumber(sheet, "B11"), test::CellNumber(sheet, "B12"));
    EXPECT_NE(test::CellNumber(sheet, "B11"), test::CellNumber(sheet, "B10"));
}

TEST(ReportSheet, ShowsResultsWithTheDecimalsTheyAreWrittenWith) {
    const Sheet sheet = SheetOfOne();
    EXPECT_EQ(test::CellNumber(sheet, "D13"), 241.2);
    EXPECT_EQ(FormatAt(sheet, "D13"), "0.00");
    EXPECT_EQ(test::CellNumber(sheet, "B16"), 200.1);
    EXPECT_EQ(FormatAt(sheet, "B16"), "0.0");
    EXPECT_EQ(test::CellNumber(sheet, "D16"), 0.124);
    EXPECT_EQ(FormatAt(sheet, "D16"), "0.000");
}

TEST(ReportSheet, CutsUnitsOffAndKeepsWhatIsNoNumber) {
    RecordParts parts;
    parts.excitationVoltage = "12 VOLTS";
    parts.excitationCurrent = "N/A";
    parts.measuredRatio = "N/A";
    parts.nameplate = "N/A";
    parts.percentError = "N/A";
    Sheet sheet = SheetOf(parts);
    EXPECT_EQ(test::CellNumber(sheet, "B16"), 12);
    EXPECT_EQ(FormatAt(sheet, "B16"), "0");
    EXPECT_EQ(CellText(sheet, "D16"), "N/A");
    EXPECT_EQ(CellText(sheet, "D13"), "N/A");
    EXPECT_EQ(CellText(sheet, "B13"), "N/A");
    EXPECT_EQ(CellText(sheet, "B15"), "N/A");
    parts.measuredRatio = "1200:5";
    parts.excitationVoltage = "1E+15 VOLTS";
    parts.excitationCurrent = "1.5 AMPS";
    sheet = SheetOf(parts);
    EXPECT_EQ(CellText(sheet, "D13"), "1200:5");
    EXPECT_EQ(CellText(sheet, "B16"), "1E+15");
    EXPECT_EQ(test::CellNumber(sheet, "D16"), 1.5);
}

TEST(ReportSheet, TitleStandsInOneCellOverTheTable) {
    const Sheet sheet = SheetOfOne();
    EXPECT_EQ(sheet.merges, std::vector<CellRange>{RangeOf("A1:D1")});
    const CellStyle title = StyleAt(sheet, "A1");
    EXPECT_EQ(title.fontSize, 12);
    EXPECT_EQ(title.horizontal, HorizontalAlignment::Centre);
    EXPECT_EQ(title.vertical, VerticalAlignment::Bottom);
    EXPECT_EQ(title.bold, true);
    EXPECT_EQ(title.wrap, false);
    EXPECT_EQ(title.orientation, 0);
    EXPECT_EQ(StyleAt(sheet, "D1").fontSize, 12);
}

TEST(ReportSheet, BodyHasItsStyles) {
    const Sheet sheet = SheetOfOne();
    for (const char* address : {"A4", "D4", "A17", "C60", "D100"}) {
        const CellStyle style = StyleAt(sheet, address);
        EXPECT_EQ(style.fontName, "Arial") << address;
        EXPECT_EQ(style.fontSize, 8) << address;
        EXPECT_EQ(style.columnWidth, 20) << address;
        EXPECT_EQ(style.horizontal, HorizontalAlignment::Left) << address;
    }
    EXPECT_EQ(StyleAt(sheet, "A101").fontSize, std::nullopt);
    EXPECT_EQ(StyleAt(sheet, "E4").fontSize, std::nullopt);
    for (const char* address : {"A4", "A16", "C4", "C16", "A18", "B18", "D18"})
        EXPECT_EQ(StyleAt(sheet, address).bold, true) << address;
    for (const char* address : {"B4", "B16", "D4", "D16"})
        EXPECT_EQ(StyleAt(sheet, address).bold, false) << address;
    EXPECT_EQ(StyleAt(sheet, "A19").bold, std::nullopt);
    for (const char* address : {"B4", "B9", "C5", "D4", "D9"})
        EXPECT_EQ(FormatAt(sheet, address), "@") << address;
    EXPECT_EQ(FormatAt(sheet, "A4"), "");
    EXPECT_EQ(FormatAt(sheet, "B13"), "");
    EXPECT_EQ(StyleAt(sheet, "G1").columnWidth, 8.43);
}

TEST(ReportSheet, NamesItsMaker) {
    const Sheet sheet = SheetOfOne();
    EXPECT_EQ(CellText(sheet, "A2"), kMakerWebAddress);
    ASSERT_TRUE(sheet.page.footer);
    EXPECT_EQ(sheet.page.footer->text, kMakerFooterLine);
    EXPECT_EQ(FooterCode(*sheet.page.footer),
              std::string("&\"Arial,Bold Italic\"&8") + kMakerFooterLine);
    EXPECT_TRUE(std::string(kMakerFooterLine).starts_with("DAVO Current-Transformer Test Sets"));
    EXPECT_STREQ(kMakerWebAddress, "www.davo.example");
}

TEST(ReportSheet, PrintsOnOneLandscapePage) {
    const Sheet sheet = SheetOfOne();
    EXPECT_TRUE(sheet.page.landscape);
    EXPECT_EQ(sheet.page.fitPagesWide, 1);
    EXPECT_EQ(sheet.page.fitPagesTall, 1);
    EXPECT_EQ(sheet.selected, PlaceOf("A1"));
    ASSERT_TRUE(sheet.page.printArea);
    EXPECT_EQ(sheet.page.printArea->first, PlaceOf("A1"));
    EXPECT_EQ(AddressOf(*sheet.page.printArea), "A1:W71");
}

TEST(ReportSheet, ListsThePoints) {
    const ReportTables report = test::ParseFile(FileText(1));
    const Sheet sheet = BuildReport(report, kOptions).sheets.at(0);
    for (int i = 0; i < test::kKneeCurvePoints; ++i) {
        const auto point = static_cast<std::size_t>(i);
        const std::string row = std::to_string(19 + i);
        EXPECT_EQ(test::CellNumber(sheet, "A" + row), i + 1);
        EXPECT_EQ(test::CellNumber(sheet, "B" + row), report.tables.pointCurrent[0].at(point));
        EXPECT_EQ(test::CellNumber(sheet, "C" + row), report.tables.pointVoltage[0].at(point));
        EXPECT_EQ(CellText(sheet, "D" + row), "");
    }
    EXPECT_EQ(test::CellNumber(sheet, "B19"), 0.05);
    EXPECT_EQ(test::CellNumber(sheet, "C32"), 44.0);
    EXPECT_EQ(CellText(sheet, "A33"), "");
}

TEST(ReportSheet, ShowsThePointsOfAColumnWithTheSameDecimals) {
    const Sheet sheet = SheetOfOne({kKneeAsa, true});
    for (const char* row : {"19", "32", "119"}) {  // the first, the last here, the last of all
        EXPECT_EQ(FormatAt(sheet, std::string("A") + row), "");
        EXPECT_EQ(FormatAt(sheet, std::string("B") + row), "0.0000");
        EXPECT_EQ(FormatAt(sheet, std::string("C") + row), "0.0");
        EXPECT_EQ(FormatAt(sheet, std::string("D") + row), "0.0");
    }
}

TEST(ReportSheet, HasFewStylesOfItsOwn) {
    const Workbook book = BookOf(FileText(3));
    const auto& first = book.sheets[0].styles;
    for (const Sheet* sheet : {&book.sheets[1], &book.sheets[2]})
        EXPECT_EQ(sheet->styles, first) << "sheets with the same styles are copied with them";
    EXPECT_EQ(std::count_if(first.begin(), first.end(),
                            [](const StyledRange& styled) {
                                return styled.range.first == styled.range.last &&
                                       styled.style.numberFormat;
                            }),
              3)
        << "ratio, excitation voltage and current";
}

TEST(ReportSheet, ShowsTheImpedanceOnlyWhenItIsWanted) {
    RecordParts parts;
    parts.points = {{"0.3000", "100.1"}, {"0.3500", "-12.0"}};
    const Sheet sheet = SheetOf(parts, {kKneeAsa, true});
    EXPECT_EQ(test::CellNumber(sheet, "D19"), 333.7);
    EXPECT_EQ(test::CellNumber(sheet, "D20"), 34.3);
    EXPECT_EQ(FormatAt(sheet, "D19"), "0.0");
    EXPECT_EQ(FormatAt(sheet, "D20"), "0.0");
    EXPECT_EQ(FormatAt(SheetOf(parts), "D19"), "");
    EXPECT_EQ(CellText(sheet, "D21"), "");
    EXPECT_EQ(CellText(SheetOf(parts), "D19"), "");
    EXPECT_EQ(CellText(SheetOf(parts), "D18"), "IMPEDANCE (OHM)");
    parts.points = {{"0.0000", "100.1"}};
    EXPECT_EQ(CellText(SheetOf(parts, {kKneeAsa, true}), "D19"), "N/A");
}

TEST(ReportSheet, ThreePointsOrFewerHaveNoKneepointAndNoMark) {
    RecordParts parts;
    parts.points.resize(3);
    for (const char* type : {kKneeAsa, kKneeIeee30, kKneeIeee45}) {
        const Sheet sheet = SheetOf(parts, {type, false});
        for (const char* address : {"B10", "B11", "B12", "D10", "D11", "D12"})
            EXPECT_EQ(CellText(sheet, address), "N/A") << address;
        ASSERT_EQ(sheet.charts.size(), 1U);
        EXPECT_EQ(sheet.charts[0].series.size(), 1U);
    }
}

TEST(ReportSheet, NoPointsAreNotAvailable) {
    RecordParts parts;
    parts.points.clear();
    const Sheet sheet = SheetOf(parts, {kKneeAsa, true});
    for (const char* address : {"A19", "B19", "C19", "B10", "D10"})
        EXPECT_EQ(CellText(sheet, address), "N/A") << address;
    EXPECT_EQ(CellText(sheet, "D19"), "");
    EXPECT_EQ(CellText(sheet, "A20"), "Graph 1 has no data.");
    EXPECT_TRUE(sheet.charts.empty());
    EXPECT_EQ(AddressOf(*sheet.page.printArea), "A1:D20");
    EXPECT_EQ(CellText(sheet, "B6"), "1");
    EXPECT_EQ(test::CellNumber(sheet, "D13"), 241.2);
}

TEST(ReportSheet, WritesNoPlaceTwice) {
    EXPECT_TRUE(test::PlacesAreUnique(SheetOfOne({kKneeAsa, true})));
    RecordParts none;
    none.points.clear();
    EXPECT_TRUE(test::PlacesAreUnique(SheetOf(none)));
}

TEST(ReportSheet, TextsThatLookLikeSomethingElseStayTexts) {
    std::string text = FileText(1);
    text.replace(text.find("a: b, c"), 7, "=1+1;'x");
    const Sheet sheet = BookOf(text).sheets.at(0);
    EXPECT_EQ(CellText(sheet, "B9"), "=1+1;'x");
}

TEST(PlottingGraph, SaysWhichOfHowMany) {
    EXPECT_EQ(PlottingGraphText(2, 7), "Plotting graph 2 of 7");
}

}  // namespace
}  // namespace davo
