// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "common/numbers.h"
#include "common/text.h"
#include "reports/maker.h"
#include "reports/report_charts.h"

namespace davo {

namespace {

constexpr const char* kTemplateFile = "DAVO_Header.xls";
constexpr const char* kTemplateSheet = "HEADER";
constexpr const char* kNotAvailable = "N/A";
constexpr const char* kFontName = "Arial";
constexpr double kFontSize = 8;
constexpr double kTableColumnWidth = 20;  // characters
// The columns right of the table have a width of their own, so that charts and print areas come
// out alike whatever width an engine presets.
constexpr double kChartColumnWidth = 8.43;
constexpr const char* kChartColumns = "G1:AP1";
constexpr double kGapColumnWidth = 2;
constexpr const char* kGapColumns = "E1:F1";

enum Field : std::size_t {
    Company,
    Station,
    Circuit,
    Manufacturer,
    Model,
    SerialNumber,
    Comments,
    Operator
};

void Style(Sheet& sheet, std::string_view range, const CellStyle& style) {
    sheet.styles.push_back({RangeOf(range), style});
}

void Put(Sheet& sheet, CellPlace place, const CellValue& value) {
    sheet.cells.push_back({place, value});
}

void Put(Sheet& sheet, std::string_view address, const CellValue& value) {
    Put(sheet, PlaceOf(address), value);
}

// A label and, in the next column, its text.
void PutLabelled(Sheet& sheet, std::string_view address, const char* label,
                 const std::string& text) {
    const CellPlace place = PlaceOf(address);
    Put(sheet, place, label);
    Put(sheet, {place.row, place.column + 1}, text);
}

// How kneepoints and points are mostly written: one style of many cells is cheaper than one of
// each.
constexpr const char* kVoltageFormat = "0.0";
constexpr const char* kKneeCurrentFormat = "0.000";
constexpr const char* kCurrentFormat = "0.0000";
constexpr const char* kImpedanceFormat = "0.0";

// A number as a number that shows the decimals it is written with; any other text as it is. has is
// the format that the cell has already.
void PutAsWritten(Sheet& sheet, CellPlace place, const std::string& text,
                  std::string_view has = {}) {
    const std::optional<double> number = WholeNumericValue(text);
    const bool isPlain = number && text.find_first_not_of("-.0123456789") == std::string::npos;
    if (!isPlain) return Put(sheet, place, text);
    const std::size_t point = text.find('.');
    const std::size_t decimals = point == std::string::npos ? 0 : text.size() - point - 1;
    const std::string format = decimals == 0 ? "0" : "0." + std::string(decimals, '0');
    if (format != has) sheet.styles.push_back({{place, place}, {.numberFormat = format}});
    Put(sheet, place, *number);
}

void PutAsWritten(Sheet& sheet, std::string_view address, const std::string& text) {
    PutAsWritten(sheet, PlaceOf(address), text);
}

CellStyle Bold(bool bold) {
    return {.bold = bold};
}

CellStyle Format(const char* numberFormat) {
    return {.numberFormat = numberFormat};
}

FooterText MakerFooter() {
    return {kMakerFooterLine, kFontName, kFontSize, true, true};
}

void WriteTitle(Sheet& sheet) {
    Style(sheet, "A1:D1",
          {.fontSize = 12,
           .bold = true,
           .horizontal = HorizontalAlignment::Centre,
           .vertical = VerticalAlignment::Bottom,
           .wrap = false,
           .orientation = 0});
    sheet.merges.push_back(RangeOf("A1:D1"));
    Put(sheet, "A1", "TEST REPORT");
    Style(sheet, "A2", {.fontName = kFontName, .fontSize = kFontSize});
    Put(sheet, "A2", kMakerWebAddress);
}

void StyleBody(Sheet& sheet) {
    Style(sheet, "A4:D100",
          {.fontName = kFontName,
           .fontSize = kFontSize,
           .horizontal = HorizontalAlignment::Left,
           .columnWidth = kTableColumnWidth});
    Style(sheet, kGapColumns, {.columnWidth = kGapColumnWidth});
    Style(sheet, kChartColumns, {.columnWidth = kChartColumnWidth});
}

// The text before a unit word.
std::string WithoutUnit(const std::string& value, std::string_view unit) {
    return TrimBlanks(std::string_view(value).substr(0, value.find(unit)));
}

// The sheet of one test.
class TestSheetWriter {
  public:
    TestSheetWriter(const ReportTables& report, const ReportOptions& options, int slot)
        : report_(report),
          options_(options),
          slot_(slot),
          test_(report.tests.at(static_cast<std::size_t>(slot))) {}

    Sheet Write();

  private:
    const std::string& Result(ResultColumn column) const {
        return report_.tables.Result(slot_, column);
    }
    const std::string& Header(Field field) const { return test_.header.fields.at(field); }
    void WriteStyles();
    void WriteHeader();
    void WriteKneepoints();
    void WriteResults();
    void WritePoints();
    void WriteChart();

    const ReportTables& report_;
    const ReportOptions& options_;
    int slot_;
    const ReportTest& test_;
    Sheet sheet_;
};

void TestSheetWriter::WriteStyles() {
    StyleBody(sheet_);
    Style(sheet_, "A4:A16", Bold(true));
    Style(sheet_, "B4:B16", Bold(false));
    Style(sheet_, "C4:C16", Bold(true));
    Style(sheet_, "D4:D16", Bold(false));
    Style(sheet_, "B4:D9", Format("@"));
    Style(sheet_, "D4:D9", Format("@"));
    Style(sheet_, "B10:B12", Format(kVoltageFormat));
    Style(sheet_, "D10:D12", Format(kKneeCurrentFormat));
    Style(sheet_, "A18:D100", {.horizontal = HorizontalAlignment::Left});
    Style(sheet_, "A18:D18", Bold(true));
    Style(sheet_, "B19:B119", Format(kCurrentFormat));
    Style(sheet_, "C19:C119", Format(kVoltageFormat));
    if (options_.showImpedance) Style(sheet_, "D19:D119", Format(kImpedanceFormat));
}

void TestSheetWriter::WriteHeader() {
    const RecordFileHeader& header = test_.header;
    PutLabelled(sheet_, "A4", "DATE & TIME: ", header.date + " - " + header.time + ":00");
    PutLabelled(sheet_, "A5", "FILENAME: ", report_.reportName);
    PutLabelled(sheet_, "A6", "TEST NUMBER: ", Result(ResultColumn::TestNumber));
    PutLabelled(sheet_, "A7", "MODEL: ", Header(Model));
    PutLabelled(sheet_, "A8", "S/N: ", Header(SerialNumber));
    PutLabelled(sheet_, "A9", "COMMENTS: ", Header(Comments));
    PutLabelled(sheet_, "C4", "COMPANY: ", Header(Company));
    PutLabelled(sheet_, "C5", "STATION: ", Header(Station));
    PutLabelled(sheet_, "C6", "CIRCUIT: ", Header(Circuit));
    PutLabelled(sheet_, "C7", "MFR: ", Header(Manufacturer));
    PutLabelled(sheet_, "C8", "OPERATOR: ", Header(Operator));
    PutLabelled(sheet_, "C9", "TEST NOTES: ", test_.notes);
}

void TestSheetWriter::WriteKneepoints() {
    struct Row {
        KneeRule rule;
        const char* name;
    };
    static constexpr std::array kRows = {Row{KneeRule::Asa1050, "ASA 10/50"},
                                         Row{KneeRule::Ieee30, "IEEE 30"},
                                         Row{KneeRule::Ieee45, "IEEE 45"}};
    for (const auto& [rule, name] : kRows) {
        const KneeCells cells = KneeCellsOf(rule);
        const Kneepoint& knee = report_.tables.Knee(rule, slot_);
        Put(sheet_, {cells.voltage.row, 1}, std::string(name) + " Vkp (Volts)");
        PutAsWritten(sheet_, cells.voltage, knee.voltage, kVoltageFormat);
        Put(sheet_, {cells.current.row, 3}, std::string(name) + " Ikp (Amps)");
        PutAsWritten(sheet_, cells.current, knee.current, kKneeCurrentFormat);
    }
}

void TestSheetWriter::WriteResults() {
    PutLabelled(sheet_, "A13", "NAMEPLATE RATIO: ", Result(ResultColumn::NameplateRatio));
    Put(sheet_, "C13", "MEASURED RATIO: ");
    PutAsWritten(sheet_, "D13", Result(ResultColumn::MeasuredRatio));
    PutLabelled(sheet_, "A14", "POLARITY: ", Result(ResultColumn::Polarity));
    PutLabelled(sheet_, "C14", "PHASE ANGLE: ", Result(ResultColumn::Phase));
    PutLabelled(sheet_, "A15", "PERCENT ERROR: ", Result(ResultColumn::PercentError));
    Put(sheet_, "A16", "EXCITATION VTG (Volts)");
    PutAsWritten(sheet_, "B16", WithoutUnit(Result(ResultColumn::ExcitationVoltage), "VOLTS"));
    Put(sheet_, "C16", "EXCITATION CUR (Amps)");
    PutAsWritten(sheet_, "D16", WithoutUnit(Result(ResultColumn::ExcitationCurrent), "AMPS"));
}

void TestSheetWriter::WritePoints() {
    constexpr const char* kImpedancePicture = "######0.0";
    Put(sheet_, "A18", "CT DATA POINTS:");
    Put(sheet_, "B18", "CUR (A)");
    Put(sheet_, "C18", "VTG (V)");
    Put(sheet_, "D18", "IMPEDANCE (OHM)");
    const int count = PointCountOf(report_, slot_);
    if (count == 0) {
        for (const char* address : {"A19", "B19", "C19"})
            Put(sheet_, address, kNotAvailable);
    }
    for (int i = 0; i < count; ++i) {
        const int row = kFirstPointRow + i;
        const auto point = static_cast<std::size_t>(i);
        const auto slot = static_cast<std::size_t>(slot_);
        const double current = report_.tables.pointCurrent.at(slot).at(point);
        const double voltage = report_.tables.pointVoltage.at(slot).at(point);
        Put(sheet_, {row, 1}, static_cast<double>(i + 1));
        Put(sheet_, {row, 2}, current);
        Put(sheet_, {row, 3}, voltage);
        if (!options_.showImpedance) continue;
        if (current == 0) {
            Put(sheet_, {row, 4}, kNotAvailable);  // a point without current has no impedance
        } else {
            Put(sheet_, {row, 4}, RoundByPicture(std::abs(voltage / current), kImpedancePicture));
        }
    }
}

void TestSheetWriter::WriteChart() {
    if (PointCountOf(report_, slot_) == 0) {
        Put(sheet_, "A20", "Graph " + std::to_string(slot_ + 1) + " has no data.");
        sheet_.page.printArea = RangeOf("A1:D20");
        return;
    }
    ChartPlace place = ChartBesideTable(LastPointRow(report_, slot_));
    place.chart.titleLines = {"Station: " + Header(Station) + " - " + "Circuit: " + Header(Circuit),
                              "Test Number " + Result(ResultColumn::TestNumber),
                              "Kneepoint Type - " + options_.kneepointType};
    place.chart.series.push_back(CurveOf(report_, slot_, kColourBlue));
    const std::optional<ChartSeries> marker = MarkerOf(report_, slot_, options_.kneepointType);
    if (marker) place.chart.series.push_back(*marker);
    sheet_.page.printArea = CellRange{{1, 1}, place.last};
    sheet_.charts.push_back(std::move(place.chart));
}

Sheet TestSheetWriter::Write() {
    const std::string number = std::to_string(slot_ + 1);
    sheet_.buildName = "Sheet" + number;
    sheet_.finalName = "Test " + number + "-Graph";
    sheet_.fromTemplate = true;
    sheet_.page.footer = MakerFooter();
    WriteTitle(sheet_);
    WriteStyles();
    WriteHeader();
    WriteKneepoints();
    WriteResults();
    WritePoints();
    WriteChart();
    return std::move(sheet_);
}

// Which of two records' tests a curve of an overlay is: "T0012, test 3, winding X1-X2".
std::string OverlaidTest(const ReportTables& report, int slot) {
    const ReportTest& test = report.tests.at(static_cast<std::size_t>(slot));
    std::string text = test.header.testNumber;
    if (const std::string& number = report.tables.Result(slot, ResultColumn::TestNumber);
        number != kNotAvailable) {
        text += ", test " + number;
    }
    if (!test.description.empty()) text += ", " + test.description;
    return text;
}

// All curves in one chart, and the kneepoints of the marked rule where a test's table would be. Of
// the template it has what is above the labels.
Sheet SummarySheet(const ReportTables& report, const ReportOptions& options) {
    constexpr int kFirstRow = 7;
    Sheet sheet;
    sheet.fromTemplate = true;
    sheet.cleared = RangeOf("A4:D100");
    sheet.buildName = sheet.finalName = "SummaryGraph";
    sheet.page.footer = MakerFooter();
    WriteTitle(sheet);
    StyleBody(sheet);
    Style(sheet, "A4:A4", Bold(true));
    Style(sheet, "A6:D6", Bold(true));
    Style(sheet, "B7:B37", Format(kVoltageFormat));
    Style(sheet, "C7:C37", Format(kKneeCurrentFormat));
    Put(sheet, "A4", "FILENAME: ");
    Put(sheet, "B4", report.reportName);
    Put(sheet, "A6", "TEST");
    Put(sheet, "B6", "Vkp (Volts)");
    Put(sheet, "C6", "Ikp (Amps)");
    const std::optional<KneeRule> rule = KneeRuleOf(options.kneepointType);
    if (report.isOverlay) Put(sheet, "D6", "RECORD, TEST, DESCRIPTION");
    ChartPlace place = ChartBesideTable(kFirstRow + report.TestCount() - 1);
    place.chart.titleLines = {"Graphs Summary", "Kneepoint Type - " + options.kneepointType};
    place.chart.legend = true;
    for (int slot = 0; slot < report.TestCount(); ++slot) {
        const std::string name = "Test #" + std::to_string(slot + 1);
        const int row = kFirstRow + slot;
        Put(sheet, {row, 1}, name);
        if (rule) {
            const Kneepoint& knee = report.tables.Knee(*rule, slot);
            PutAsWritten(sheet, {row, 2}, knee.voltage, kVoltageFormat);
            PutAsWritten(sheet, {row, 3}, knee.current, kKneeCurrentFormat);
        }
        const std::string which =
            report.isOverlay ? OverlaidTest(report, slot) : "Graph " + std::to_string(slot + 1);
        if (PointCountOf(report, slot) == 0) {
            Put(sheet, {row, 4}, which + " has no data.");
            continue;
        }
        if (report.isOverlay) Put(sheet, {row, 4}, which);
        ChartSeries curve = CurveOf(report, slot, SummaryColour(slot));
        curve.name = name;
        curve.inLegend = true;
        place.chart.series.push_back(curve);
        const std::optional<ChartSeries> marker = MarkerOf(report, slot, options.kneepointType);
        if (marker) place.chart.series.push_back(*marker);
    }
    if (!place.chart.series.empty()) {
        sheet.page.printArea = CellRange{{1, 1}, place.last};
        // Who overlays two tests wants to see them in one chart.
        if (report.isOverlay) sheet.firstVisible = place.chart.anchor;
        sheet.charts.push_back(std::move(place.chart));
    }
    return sheet;
}

// One cell with line breaks; as many cells below each other as long notes need, because a row is
// only so high.
Sheet NotesSheet(const std::string& notes) {
    constexpr double kWidth = 100;  // characters
    constexpr std::size_t kCharactersPerLine = 90;
    constexpr std::size_t kLinesPerCell = 24;
    constexpr std::size_t kMostCharacters = kCharactersPerLine * kLinesPerCell;
    Sheet sheet;
    sheet.buildName = sheet.finalName = "NOTES";
    sheet.page.landscape = false;
    sheet.page.fitPagesTall = 0;
    sheet.page.footer = MakerFooter();
    std::vector<std::string> texts(1);
    std::size_t linesOfCell = 0;
    const auto add = [&](std::string_view line) {
        const std::size_t lines = 1 + line.size() / kCharactersPerLine;
        if (linesOfCell > 0 && linesOfCell + lines > kLinesPerCell) {
            texts.emplace_back();
            linesOfCell = 0;
        }
        if (linesOfCell > 0) texts.back() += '\n';
        texts.back() += line;
        linesOfCell += lines;
    };
    for (std::size_t at = notes.find(kNotesSeparator); at < notes.size();) {
        at += kNotesSeparator.size();
        const std::size_t end = std::min(notes.find(kNotesSeparator, at), notes.size());
        std::string_view line = std::string_view(notes).substr(at, end - at);
        for (; line.size() > kMostCharacters; line.remove_prefix(kMostCharacters))
            add(line.substr(0, kMostCharacters));
        add(line);
        at = end;
    }
    for (int row = 1; const std::string& text : texts)
        Put(sheet, {row++, 1}, text);
    const CellStyle style = {.fontName = kFontName,
                             .horizontal = HorizontalAlignment::Left,
                             .vertical = VerticalAlignment::Top,
                             .wrap = true,
                             .numberFormat = "@",
                             .columnWidth = kWidth};
    sheet.styles.push_back({{{1, 1}, {static_cast<int>(texts.size()), 1}}, style});
    return sheet;
}

}  // namespace

Workbook BuildReport(const ReportTables& report, const ReportOptions& options) {
    Workbook workbook;
    workbook.templateFile = kTemplateFile;
    workbook.templateSheet = kTemplateSheet;
    for (int slot = 0; slot < report.TestCount(); ++slot)
        workbook.sheets.push_back(TestSheetWriter(report, options, slot).Write());
    if (report.TestCount() > 1) {
        workbook.sheets.push_back(SummarySheet(report, options));
        if (report.isOverlay) workbook.activeSheet = workbook.sheets.size() - 1;
    }
    if (!report.notes.empty()) workbook.sheets.push_back(NotesSheet(report.notes));
    return workbook;
}

std::string PlottingGraphText(int n, int m) {
    return "Plotting graph " + std::to_string(n) + " of " + std::to_string(m);
}

}  // namespace davo
