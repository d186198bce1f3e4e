// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFile>
#include <algorithm>
#include <set>

#include "reports/renderer.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/program_output.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

// What LibreOffice Calc makes of a report, read back from the file by other programs.

namespace davo::test {
namespace {

constexpr const char* kTemplate = DAVO_TESTS_FOLDER "/../packaging/template/DAVO_Header.xls";

std::vector<std::string> ReadBack(const QString& file) {
    const QString script = QStringLiteral(DAVO_TESTS_FOLDER "/reports/read_back_xls.py");
    std::vector<std::string> lines;
    for (const QByteArray& line : OutputOf(u"/usr/bin/python3"_s, {script, file}).split('\n'))
        lines.push_back(line.toStdString());
    return lines;
}

std::vector<std::string> LinesWith(const std::vector<std::string>& lines, std::string_view part) {
    std::vector<std::string> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const std::string& line) { return line.find(part) != std::string::npos; });
    return found;
}

// "Test 1-Graph!A1 text TEST REPORT", as the script says it.
std::multiset<std::string> CellsOf(const Workbook& workbook) {
    std::multiset<std::string> cells;
    for (const Sheet& sheet : workbook.sheets) {
        for (const Cell& cell : sheet.cells) {
            std::string line = sheet.finalName + "!" + AddressOf(cell.place);
            if (const auto* text = std::get_if<std::string>(&cell.value)) {
                if (text->empty()) continue;
                QByteArray shown = QByteArray::fromStdString(*text);
                shown.replace('\\', "\\\\").replace('\n', "\\n");
                line += " text " + shown.toStdString();
            } else {
                const double number = std::get<double>(cell.value);
                line += " number " + QByteArray::number(number, 'g', 15).toStdString();
            }
            cells.insert(line);
        }
    }
    return cells;
}

std::multiset<std::string> CellsOf(const std::vector<std::string>& lines) {
    std::multiset<std::string> cells;
    for (const std::string& line : lines) {
        const std::size_t looks = line.find(" | ");
        if (looks != std::string::npos) cells.insert(line.substr(0, looks));
    }
    return cells;
}

Workbook ReportOf(const std::string& text) {
    return BuildReport(ParseFile(text), {"IEEE 30 Degree Marker", true});
}

Workbook OverlayOf(const std::string& first, const std::string& second) {
    return BuildReport(ParseGroup(first + second), {"IEEE 30 Degree Marker", true});
}

class CalcRendererTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        renderer = MakeCalcRenderer();
        if (renderer) renderer->Prepare();
    }
    static void TearDownTestSuite() { renderer.reset(); }

    void SetUp() override { ASSERT_TRUE(renderer) << "the module was built, so it must load"; }

    std::vector<std::string> Render(const Workbook& workbook) {
        const QString target = folder_.Path("T0012.xls");
        EXPECT_TRUE(renderer->Render(workbook, QLatin1String(kTemplate), target, {}, {}));
        return ReadBack(target);
    }

    static inline std::unique_ptr<ReportRenderer> renderer;
    TemporaryFolder folder_;
};

TEST_F(CalcRendererTest, MakesXls) {
    EXPECT_EQ(renderer->Extension(), u".xls"_s);
}

TEST_F(CalcRendererTest, WritesEveryCellAsTextOrNumberAndNothingElse) {
    for (const int tests : {1, 3, 4, 31}) {
        SCOPED_TRACE(tests);
        const Workbook workbook = ReportOf(FileText(tests) + Line("NOTES:") + Line("one") +
                                           Line("=1+1") + Line("'quoted \xb5 \\ \xe9"));
        const std::multiset<std::string> written = CellsOf(Render(workbook));
        EXPECT_EQ(written.size(), CellsOf(workbook).size());
        // The script speaks UTF-8.
        for (const std::string& cell : CellsOf(workbook)) {
            const std::string wanted =
                QString::fromLatin1(QByteArray::fromStdString(cell)).toUtf8().toStdString();
            EXPECT_TRUE(written.contains(wanted)) << wanted;
        }
    }
}

TEST_F(CalcRendererTest, FormatsTitleBodyAndNumbers) {
    const std::vector<std::string> lines = Render(ReportOf(FileText(1)));
    const auto looks = [&](const char* cell) {
        const auto found = LinesWith(lines, std::string("Test 1-Graph!") + cell + " ");
        return found.size() == 1 ? found.front().substr(found.front().find(" | ") + 3) : "none";
    };
    EXPECT_EQ(looks("A1"), "Arial/12/bold/center//General");
    EXPECT_EQ(looks("A4"), "Arial/8/bold/left//General");
    EXPECT_EQ(looks("B4"), "Arial/8//left//@");
    EXPECT_EQ(looks("C4"), "Arial/8/bold/left//@");
    EXPECT_EQ(looks("D8"), "Arial/8//left//@");
    EXPECT_EQ(looks("D13"), "Arial/8//left//0.00");
    EXPECT_EQ(looks("A18"), "Arial/8/bold/left//General");
    EXPECT_EQ(looks("D19"), "Arial/8//left//0.0");
    EXPECT_THAT(lines, Contains("Test 1-Graph merged A1:D1"));
    // What Excel stores for a column of 20 characters, for one of 2 and for one of 8.43.
    EXPECT_THAT(lines, IsSupersetOf({"Test 1-Graph width A 20.7", "Test 1-Graph width D 20.7",
                                     "Test 1-Graph width F 2.7", "Test 1-Graph width G 9.1"}));
}

TEST_F(CalcRendererTest, SetsUpThePage) {
    const Workbook workbook = ReportOf(FileText(2) + Line("NOTES:") + Line("a note"));
    const std::vector<std::string> lines = Render(workbook);
    for (const Sheet& sheet : workbook.sheets) {
        EXPECT_THAT(
            lines, IsSupersetOf({sheet.finalName + " sheet", sheet.finalName + " fit True",
                                 sheet.finalName + (sheet.page.landscape ? " page landscape 1x1"
                                                                         : " page portrait 1x0"),
                                 sheet.finalName + " footer &C" + FooterCode(*sheet.page.footer)}));
        EXPECT_THAT(LinesWith(lines, sheet.finalName + " header"), IsEmpty());
        const auto areas = LinesWith(lines, sheet.finalName + " print area");
        if (sheet.page.printArea) {
            EXPECT_THAT(areas, ElementsAre(sheet.finalName + " print area " + sheet.finalName +
                                           "!" + AddressOf(*sheet.page.printArea)));
        }
    }
    EXPECT_THAT(lines, Contains("active Test 1-Graph"));
    EXPECT_THAT(LinesWith(lines, " sheet"), SizeIs(4));
}

TEST_F(CalcRendererTest, DrawsTheCurveAndTheStarOnLogarithmicAxes) {
    const Workbook workbook = ReportOf(FileText(3));
    const std::vector<std::string> lines = Render(workbook);
    const std::string last =
        std::to_string(workbook.sheets.at(0).charts.at(0).series.at(0).x.range.last.row);
    const std::string currents = "B19:B" + last;
    const std::string voltages = "C19:C" + last;
    for (int n = 1; n <= 3; ++n) {
        const std::string sheet = "Test " + std::to_string(n) + "-Graph";
        const auto from = std::find(lines.begin(), lines.end(), sheet + " chart");
        ASSERT_NE(from, lines.end());
        const std::string ownValues = "values " + sheet + "!";
        const std::string ownX = "x " + sheet + "!";
        std::vector<std::string> wanted = {
            "chart",          ownValues + voltages,      ownX + currents, ownValues + "B11:B11",
            ownX + "D11:D11", "marker 5 0000ff 0000ff 4"};  // a star, blue-green-red
        for (int axis = 0; axis < 2; ++axis) {
            wanted.insert(wanted.end(),
                          {"axis logarithmic automatic", "ticks major 2 minor 0 labels 1", "line 0",
                           "line 1", "line 2"});
        }
        wanted.insert(wanted.end(),
                      {"text Amperes", "text Volts",
                       "text Station: Hilltop - Circuit: Feeder 4\\nTest Number " +
                           std::to_string(n) + "\\nKneepoint Type - IEEE 30 Degree Marker"});
        for (std::string& line : wanted)
            line.insert(0, sheet + " ");
        const auto size = static_cast<std::ptrdiff_t>(wanted.size());
        ASSERT_GE(lines.end() - from, size);
        EXPECT_THAT(std::vector<std::string>(from, from + size), ElementsAreArray(wanted));
    }
}

TEST_F(CalcRendererTest, HasTheLettersAndGreysOfTheBuiltInRenderer) {
    const std::vector<std::string> lines = Render(ReportOf(FileText(1)));
    EXPECT_THAT(LinesWith(lines, " looks "),
                ElementsAre("Test 1-Graph looks Arial 9 Arial bold 10 Arial bold 12, 0000ff 808080 "
                            "c0c0c0 ff0000"));
}

TEST_F(CalcRendererTest, DrawsAllCurvesInTheSummary) {
    const std::vector<std::string> lines = Render(ReportOf(FileText(3)));
    for (int n = 1; n <= 3; ++n) {
        const std::string sheet = "Test " + std::to_string(n) + "-Graph";
        EXPECT_THAT(LinesWith(lines, "SummaryGraph values " + sheet), SizeIs(2));
        EXPECT_THAT(LinesWith(lines, "SummaryGraph x " + sheet), SizeIs(2));
        EXPECT_THAT(lines, Contains("SummaryGraph name SummaryGraph!A" + std::to_string(6 + n) +
                                    ":A" + std::to_string(6 + n)));
    }
    EXPECT_THAT(LinesWith(lines, "SummaryGraph marker 5"), SizeIs(3));
    EXPECT_THAT(LinesWith(lines, "SummaryGraph text Vkp"), SizeIs(3)) << "names of the stars";
    EXPECT_THAT(LinesWith(lines, "SummaryGraph axis logarithmic automatic"), SizeIs(2));
    EXPECT_THAT(lines, IsSupersetOf({std::string("SummaryGraph legend"),
                                     std::string("SummaryGraph text Graphs Summary\\nKneepoint "
                                                 "Type - IEEE 30 Degree Marker")}));
}

TEST_F(CalcRendererTest, HasTheTestsInTheLegendAndNotTheirStars) {
    for (const int tests : {2, 4, 31}) {
        EXPECT_THAT(LinesWith(Render(ReportOf(FileText(tests))), "legend entries"),
                    ElementsAre("SummaryGraph legend entries " + std::to_string(tests)));
    }
}

TEST_F(CalcRendererTest, HasTheLetterheadAndNoLabelsOfATestInTheSummary) {
    const std::vector<std::string> lines = Render(ReportOf(FileText(2)));
    EXPECT_THAT(LinesWith(lines, "SummaryGraph merged"), ElementsAre("SummaryGraph merged A1:D1"));
    EXPECT_THAT(LinesWith(lines, "COMMENTS: "), SizeIs(2)) << "of the two tests";
    EXPECT_THAT(LinesWith(lines, "SummaryGraph picture"), SizeIs(1));
}

TEST_F(CalcRendererTest, ShowsThePointOfATestOfOne) {
    RecordParts parts;
    parts.points.resize(1);
    const std::vector<std::string> lines = Render(ReportOf(HeaderText() + RecordText(parts)));
    EXPECT_THAT(LinesWith(lines, "Test 1-Graph marker"),
                ElementsAre("Test 1-Graph marker 8 ff0000 ff0000 6"));  // a circle, blue-green-red
}

TEST_F(CalcRendererTest, OpensAnOverlayOnItsChart) {
    const std::vector<std::string> lines =
        Render(OverlayOf(HeaderText("T1") + RecordText(3), HeaderText("T2") + RecordText(4)));
    EXPECT_THAT(LinesWith(lines, "active "), ElementsAre("active SummaryGraph"));
    EXPECT_THAT(LinesWith(lines, "SummaryGraph seen from"),
                ElementsAre("SummaryGraph seen from G42"))
        << "the chart's first cell";
    EXPECT_THAT(LinesWith(lines, "SummaryGraph selected"), ElementsAre("SummaryGraph selected A1"));
    EXPECT_THAT(LinesWith(lines, "Test 1-Graph seen from"),
                ElementsAre("Test 1-Graph seen from A1"));
}

TEST_F(CalcRendererTest, LeavesOutTheStarOfATestOfThreePoints) {
    RecordParts parts;
    parts.points.resize(3);
    const std::vector<std::string> lines = Render(ReportOf(HeaderText() + RecordText(parts)));
    EXPECT_THAT(LinesWith(lines, "Test 1-Graph values"), SizeIs(1));
    EXPECT_THAT(LinesWith(lines, " marker "), IsEmpty());
    EXPECT_THAT(LinesWith(lines, "Test 1-Graph!B11 text N/A"), SizeIs(1));
}

TEST_F(CalcRendererTest, HasNoChartForATestWithoutPoints) {
    RecordParts parts;
    parts.points.clear();
    const std::vector<std::string> lines = Render(ReportOf(HeaderText() + RecordText(parts)));
    EXPECT_THAT(LinesWith(lines, " chart"), IsEmpty());
    for (const char* cell : {"A19", "B19", "C19", "B10", "D10"}) {
        EXPECT_THAT(LinesWith(lines, std::string("Test 1-Graph!") + cell + " text N/A"), SizeIs(1));
    }
}

TEST_F(CalcRendererTest, MakesWhatGnumericOpens) {
    Render(ReportOf(FileText(3)));
    const QString text = folder_.Path("out.csv");
    OutputOf(u"/usr/bin/ssconvert"_s, {folder_.Path("T0012.xls"), text});
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("TEST REPORT"));
}

TEST_F(CalcRendererTest, TellsWhichTestIsBegun) {
    std::vector<std::pair<int, int>> told;
    EXPECT_TRUE(renderer->Render(ReportOf(FileText(3)), QLatin1String(kTemplate),
                                 folder_.Path("T0012.xls"),
                                 [&](int n, int m) { told.emplace_back(n, m); }, {}));
    EXPECT_THAT(told, ElementsAre(std::pair(1, 3), std::pair(2, 3), std::pair(3, 3)));
}

}  // namespace
}  // namespace davo::test
