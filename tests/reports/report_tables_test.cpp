// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_tables.h"

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_file_writer.h"
#include "records/record_image.h"
#include "tests/analysis/print_kneepoint.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::FileText;
using test::HeaderText;
using test::Line;
using test::RecordParts;
using test::RecordText;

const Kneepoint kNotAvailable{"N/A", "N/A"};

ReportTables Parse(const std::string& text) {
    return ParseReportTables(text, "T0012", RecordSource::RecordFile);
}

ReportTables ParseOne(const RecordParts& parts) {
    return Parse(HeaderText() + RecordText(parts));
}

// "13 line 7" and the like; empty when nothing was thrown.
std::string ErrorOf(const std::string& text, RecordSource source = RecordSource::RecordFile) {
    const auto error = test::Thrown([&] { ParseReportTables(text, "T0012", source); });
    if (!error) return {};
    const std::string what = error->what();
    const std::size_t line = what.find("line ");
    return std::to_string(static_cast<int>(error->Number())) +
           (line == std::string::npos ? "" : " " + what.substr(line));
}

std::string Result(const ReportTables& report, ResultColumn column, int slot = 0) {
    return report.tables.Result(slot, column);
}

test::PointTexts FirstPoints(std::size_t count) {
    test::PointTexts points = test::KneeCurve();
    points.resize(count);
    return points;
}

TEST(ReportTables, ReadsTheHeader) {
    const ReportTables report = Parse(FileText(1));
    EXPECT_EQ(report.reportName, "T0012");
    EXPECT_FALSE(report.isOverlay);
    ASSERT_EQ(report.TestCount(), 1);
    const RecordFileHeader& header = report.tests[0].header;
    EXPECT_EQ(header.testNumber, "T0012");
    EXPECT_EQ(header.date, "03/07/24");
    EXPECT_EQ(header.time, "14:05");
    const std::array<std::string, kHeaderFieldCount> fields = {
        "Power & Light", "Hilltop", "Feeder 4", "Acme", "CT-600", "00012345", "a: b, c", "J. Doe"};
    EXPECT_EQ(header.fields, fields);
    EXPECT_TRUE(report.tests[0].hasRecord);
    EXPECT_EQ(report.notes, "");
}

TEST(ReportTables, ReadsTheResultLines) {
    const ReportTables report = Parse(FileText(1));
    EXPECT_EQ(Result(report, ResultColumn::TestNumber), "1");
    EXPECT_EQ(Result(report, ResultColumn::ExcitationCurrent), "0.124");
    EXPECT_EQ(Result(report, ResultColumn::ExcitationVoltage), "200.1 VOLTS");
    EXPECT_EQ(Result(report, ResultColumn::MeasuredRatio), "241.20");
    EXPECT_EQ(Result(report, ResultColumn::Polarity), "IN PHASE");
    EXPECT_EQ(Result(report, ResultColumn::Phase), "IN PHASE");
    EXPECT_EQ(Result(report, ResultColumn::NameplateRatio), "240 (1200:5)");
    EXPECT_EQ(Result(report, ResultColumn::PercentError), "0.50%");
}

TEST(ReportTables, TheKneepointColumnsHoldTheOneComputedLast) {
    const ReportTables report = Parse(FileText(1));
    const auto& tables = report.tables;
    EXPECT_EQ(tables.testResults[0][1], tables.kneeIeee30[0].voltage);
    EXPECT_EQ(tables.testResults[0][2], tables.kneeIeee30[0].current);
    EXPECT_NE(tables.kneeIeee30[0], tables.kneeIeee45[0]);
    EXPECT_NE(tables.kneeIeee30[0], tables.kneeAsa[0]);
    EXPECT_NE(tables.kneeIeee30[0], Kneepoint());
}

TEST(ReportTables, KneepointsAreThoseOfThePointsWithoutTheGrid) {
    const ReportTables report = Parse(FileText(1));
    const std::array current = {0.05, 0.06, 0.07, 0.09, 0.15, 0.6, 3.0};
    const std::array voltage = {10.0, 15.0, 22.0, 30.0, 37.0, 42.0, 44.0};
    for (const KneeRule rule : kKneeRules)
        EXPECT_EQ(report.tables.Knee(rule, 0), ComputeKneepoint(rule, current, voltage));
}

TEST(ReportTables, PointsStandLowestFirstWithTheGridBetween) {
    ReportTables report = Parse(FileText(1));
    const std::array current = {0.05, 0.06, 0.07, 0.08, 0.09, 0.1, 0.15,
                                0.2,  0.4,  0.6,  0.8,  1.0,  2.0, 3.0};
    const std::array voltage = {10.0, 15.0, 22.0, 26.0, 30.0, 31.2, 37.0,
                                37.6, 39.8, 42.0, 42.2, 42.3, 43.2, 44.0};
    ASSERT_EQ(report.tables.PointCount(0), 14);
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(report.tables.Current(0, i), current.at(static_cast<std::size_t>(i))) << i;
        EXPECT_EQ(report.tables.Voltage(0, i), voltage.at(static_cast<std::size_t>(i))) << i;
    }
}

// The instrument's slots run from the highest current down, the file is written from the last slot
// to the first: the report has its lowest point first.
TEST(ReportTables, AnInstrumentsCurveArrivesLowestFirst) {
    RecordImage image;
    image.slots[0] = {9000, 2000};
    image.slots[1] = {5000, 1900};
    image.slots[2] = {3000, 1500};
    const std::string capture = "DATA" + EncodeRecordImage(image) +
                                "\r\nDONE\r\nMEASURED RATIO: 1\r\nNAMEPLATE RATIO: N/A\r\n"
                                "PERCENT ERROR: N/A\r\n\r\n";
    ReportTables report = Parse(ConvertCapture(capture, HeaderTable(), {"T0012", 1, ""}));
    ASSERT_EQ(report.TestCount(), 1);
    EXPECT_EQ(report.tables.Current(0, 0), 0.3);
    EXPECT_EQ(report.tables.Voltage(0, 0), 150.0);
    EXPECT_EQ(report.tables.Current(0, report.tables.PointCount(0) - 1), 0.9);
    EXPECT_EQ(Result(report, ResultColumn::NameplateRatio), "N/A");
    EXPECT_EQ(Result(report, ResultColumn::PercentError), "N/A");
}

TEST(ReportTables, PointsAreRoundedToFourDecimals) {
    RecordParts parts;
    parts.points = {{"0.50004", "50.00006"}, {"0.50006", "51.23456"}};
    ReportTables one = ParseOne(parts);
    // Insertion of the grid, from two points up, leaves voltages one decimal.
    EXPECT_EQ(one.tables.Current(0, 0), 0.5);
    EXPECT_EQ(one.tables.Current(0, 1), 0.5001);
    EXPECT_EQ(one.tables.Voltage(0, 1), 51.2);
    parts.points.resize(1);
    one = ParseOne(parts);
    EXPECT_EQ(one.tables.Voltage(0, 0), 50.0001);
}

TEST(ReportTables, ThreePointsOrFewerHaveNoKneepoint) {
    for (const std::size_t count : {0, 1, 2, 3}) {
        RecordParts parts;
        parts.points = FirstPoints(count);
        const ReportTables report = ParseOne(parts);
        for (const KneeRule rule : kKneeRules)
            EXPECT_EQ(report.tables.Knee(rule, 0), kNotAvailable) << count;
        EXPECT_EQ(report.tables.testResults[0][1], "N/A");
        EXPECT_EQ(report.tables.testResults[0][2], "N/A");
    }
    RecordParts parts;
    parts.points = {{"1", "100"}, {"1.1", "130"}, {"1.21", "170"}, {"1.33", "221"}};
    EXPECT_EQ(ParseOne(parts).tables.Knee(KneeRule::Ieee45, 0), (Kneepoint{"0", "0"}));
}

TEST(ReportTables, OnePointOrNoneHasNoGrid) {
    RecordParts parts;
    parts.points = FirstPoints(1);
    EXPECT_EQ(ParseOne(parts).tables.PointCount(0), 1);
    parts.points.clear();
    EXPECT_EQ(ParseOne(parts).tables.PointCount(0), 0);
    parts.points = {{"0.3000", "10.0"}, {"0.5000", "20.0"}};
    EXPECT_EQ(ParseOne(parts).tables.PointCount(0), 3);
}

TEST(ReportTables, TheCountIsTheValueOfTheLastTwoCharacters) {
    RecordParts parts;
    parts.points = FirstPoints(6);
    const auto countOf = [&](const std::string& text) {
        parts.countText = text;
        return ParseOne(parts).tables.PointCount(0);
    };
    EXPECT_EQ(countOf(" 1"), 1);
    EXPECT_EQ(countOf(" 0"), 0);
    EXPECT_EQ(countOf(" 01"), 1);
    EXPECT_EQ(countOf(" 601"), 1);
    EXPECT_EQ(countOf(" 61 "), 1);
    EXPECT_EQ(countOf(" x"), 0);
    EXPECT_EQ(countOf(" -1"), -1);
    EXPECT_EQ(countOf(" "), 0);
}

TEST(ReportTables, EveryTestHasItsSlotAndTheOneHeader) {
    RecordParts second;
    second.number = " 2";
    second.points = FirstPoints(1);
    second.measuredRatio = "99.5";
    ReportTables report = Parse(HeaderText() + RecordText(1) + RecordText(second) + RecordText(7));
    ASSERT_EQ(report.TestCount(), 3);
    EXPECT_EQ(Result(report, ResultColumn::TestNumber, 0), "1");
    EXPECT_EQ(Result(report, ResultColumn::TestNumber, 1), "2");
    EXPECT_EQ(Result(report, ResultColumn::TestNumber, 2), "7");
    EXPECT_EQ(Result(report, ResultColumn::MeasuredRatio, 1), "99.5");
    EXPECT_EQ(report.tables.PointCount(1), 1);
    EXPECT_EQ(report.tables.Knee(KneeRule::Asa1050, 1), kNotAvailable);
    EXPECT_EQ(report.tables.Knee(KneeRule::Asa1050, 2), report.tables.Knee(KneeRule::Asa1050, 0));
    for (const ReportTest& test : report.tests)
        EXPECT_EQ(test.header.fields[1], "Hilltop");
}

TEST(ReportTables, TheNumberOfADownloadedRecordHasTwoBlanks) {
    RecordParts parts;
    parts.number = "  1";
    EXPECT_EQ(Result(ParseOne(parts), ResultColumn::TestNumber), "1");
}

TEST(ReportTables, DescriptionAndNotesOfATestMayStandOrNot) {
    const std::string description = Line("TEST DESCRIPTION: " + test::Padded("first"));
    const std::string notes = Line("TEST NOTES: " + test::Padded("dry, warm"));
    RecordParts parts;
    parts.optionalLines = description + notes;
    ReportTables report = ParseOne(parts);
    EXPECT_EQ(report.tests[0].description, "first");
    EXPECT_EQ(report.tests[0].notes, "dry, warm");
    EXPECT_EQ(report.tables.PointCount(0), test::kKneeCurvePoints);
    parts.optionalLines = notes;
    report = ParseOne(parts);
    EXPECT_EQ(report.tests[0].description, "");
    EXPECT_EQ(report.tests[0].notes, "dry, warm");
    parts.optionalLines = description;
    EXPECT_EQ(ParseOne(parts).tests[0].notes, "");
}

TEST(ReportTables, APhaseIsWordsOfItsAngle) {
    RecordParts parts;
    parts.phase = "180.0 DEG";
    parts.polarity = "N/A";
    const ReportTables report = ParseOne(parts);
    EXPECT_EQ(Result(report, ResultColumn::Phase), "OUT OF PHASE");
    EXPECT_EQ(Result(report, ResultColumn::Polarity), "N/A");
}

TEST(ReportTables, ACurrentIsCutBeforeItsUnitAndKeepsItsDecimals) {
    RecordParts parts;
    parts.excitationCurrent = "1.500 AMPS";
    EXPECT_EQ(Result(ParseOne(parts), ResultColumn::ExcitationCurrent), "1.500");
    parts.excitationCurrent = "2 AMP";
    EXPECT_EQ(Result(ParseOne(parts), ResultColumn::ExcitationCurrent), "2");
    parts.excitationCurrent = "N/A";
    EXPECT_EQ(Result(ParseOne(parts), ResultColumn::ExcitationCurrent), "N/A");
}

TEST(ReportTables, NotesAreFieldsThatACommaParts) {
    EXPECT_EQ(
        Parse(FileText(1) + "NOTES:\r\nfirst line\r\nsecond, third\r\n\r\n\"a, b\"\r\nend").notes,
        ":::first line:::second:::third::::::a, b:::end");
    EXPECT_EQ(Parse(FileText(1) + "NOTES:\r\n").notes, "");
    EXPECT_EQ(Parse(FileText(1) + "NOTES:").notes, "");
    // Nothing in the notes of a record file begins another test.
    const ReportTables report = Parse(FileText(1) + "NOTES:\r\n" + FileText(2));
    EXPECT_EQ(report.TestCount(), 1);
    EXPECT_TRUE(report.notes.starts_with(":::TEST NUMBER: T0012:::DATE: 03/07/24:::"));
}

TEST(ReportTables, LineEndsMayBeOfOneCharacterAndTheLastMayLack) {
    std::string text = FileText(2);
    std::erase(text, '\r');
    text.pop_back();
    EXPECT_EQ(Parse(text).TestCount(), 2);
    EXPECT_EQ(Parse(FileText(1) + "\r\n \r\n").TestCount(), 1);
}

TEST(ReportTables, LinesBeforeTheKneePointTypeArePassedOver) {
    std::string text = FileText(1);
    text.insert(text.find("KNEE POINT TYPE"), "SOMETHING NEW: 5\r\n");
    EXPECT_EQ(Parse(text).TestCount(), 1);
}

TEST(ReportTables, AHeaderWithoutARecordIsATestWithoutData) {
    ReportTables report = Parse(HeaderText());
    ASSERT_EQ(report.TestCount(), 1);
    EXPECT_FALSE(report.tests[0].hasRecord);
    EXPECT_EQ(report.tests[0].header.fields[1], "Hilltop");
    EXPECT_EQ(Result(report, ResultColumn::TestNumber), "N/A");
    EXPECT_EQ(report.tables.PointCount(0), 0);
    EXPECT_EQ(report.tables.Knee(KneeRule::Ieee30, 0), kNotAvailable);
}

TEST(ReportTables, AFileWithoutATestIsAnEndTooSoon) {
    for (const char* text : {"", "\r\n", "NOTES:\r\nonly notes\r\n"})
        EXPECT_EQ(ErrorOf(text), "62") << text;
    EXPECT_EQ(test::MessageThrownBy([&] { Parse(""); }),
              "Run-time error '62': Input past end of file: no test in the file");
}

TEST(ReportTables, ThirtyOneTestsAreTheMost) {
    EXPECT_EQ(Parse(FileText(31)).TestCount(), 31);
    EXPECT_EQ(ErrorOf(FileText(32)), "9");
    // Of a test without a kneepoint as well.
    RecordParts none;
    none.points.clear();
    EXPECT_EQ(ErrorOf(FileText(31) + RecordText(none)), "9");
    EXPECT_EQ(ErrorOf(FileText(31) + HeaderText()), "9");
    EXPECT_EQ(ErrorOf(FileText(150)), "9");
}

TEST(ReportTables, AHundredAndOnePointsAreTheMost) {
    RecordParts parts;
    parts.points.assign(101, {"0.5000", "50.0"});
    parts.countText = " 1";
    EXPECT_EQ(ErrorOf(HeaderText() + RecordText(parts)), "");
    parts.points.assign(102, {"0.5000", "50.0"});
    EXPECT_EQ(ErrorOf(HeaderText() + RecordText(parts)), "9");
}

TEST(ReportTables, ACurveAboveTenAmperesBeforeItsEndIsASubscriptError) {
    RecordParts parts;
    parts.points = {{"9.0000", "100.0"}, {"11.0000", "110.0"}, {"12.0000", "111.0"}};
    EXPECT_EQ(ErrorOf(HeaderText() + RecordText(parts)), "9");
    parts.points.pop_back();
    EXPECT_EQ(ErrorOf(HeaderText() + RecordText(parts)), "");
}

TEST(ReportTables, DamageIsNamedByItsLine) {
    const std::string header = HeaderText();
    EXPECT_EQ(ErrorOf("garbage\r\n"), "13 line 1");
    EXPECT_EQ(ErrorOf(RecordText()), "13 line 1") << "a record without a header";
    EXPECT_EQ(ErrorOf("TEST NUMBER: x\r\nDATE: 1\r\n"), "62 line 3");
    EXPECT_EQ(ErrorOf("TEST NUMBER: x\r\nTIME: 1\r\n"), "13 line 2");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\n"), "62 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: one\r\n"), "13 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\nCURRENT: 1.0\r\n"), "13 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\nCURRENT 1.0VOLTAGE: 2\r\n"), "13 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\nCURRENT: xVOLTAGE: 2\r\n"), "13 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\nCURRENT: 1VOLTAGE: \r\n"), "13 line 14");
    EXPECT_EQ(ErrorOf(header + "REC NUMBER: 1\r\nCURRENT: 1,5VOLTAGE: 2\r\n"), "13 line 14");
    std::string swapped = FileText(1);
    swapped.replace(swapped.find("POLARITY:"), 9, "POLARITI:");
    EXPECT_EQ(ErrorOf(swapped), "13 line 27");
    std::string cut = FileText(2);
    cut.erase(cut.find("KNEE POINT TYPE"), std::string("KNEE POINT TYPE").size());
    EXPECT_EQ(ErrorOf(cut), "13 line 32") << "the next record must not be passed over";
    EXPECT_EQ(ErrorOf(FileText(1) + "more\r\n"), "13 line 32");
}

TEST(ReportTables, AFileThatEndsAnywhereNeverDoesHarm) {
    const std::string whole = FileText(2) + "NOTES:\r\nfirst, second\r\n";
    int errors62 = 0;
    int errors13 = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string error = ErrorOf(whole.substr(0, size));
        errors62 += error.starts_with("62") ? 1 : 0;
        errors13 += error.starts_with("13") ? 1 : 0;
        ASSERT_TRUE(error.empty() || error.starts_with("62") || error.starts_with("13"))
            << size << " " << error;
    }
    EXPECT_GT(errors62, 20);
    EXPECT_GT(errors13, 100);
}

TEST(ReportTables, ReadsAFileAndItsName) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("CT 7.txt"), FileText(1));
    EXPECT_EQ(ReadReportTables(folder.Path("CT 7.txt"), RecordSource::RecordFile).reportName,
              "CT 7");
    ReplaceFile(folder.Path("2Graphs.GRP"), HeaderText() + RecordText(1));
    EXPECT_EQ(ReadReportTables(folder.Path("2Graphs.GRP"), RecordSource::GroupFile).reportName,
              "2Graphs");
    EXPECT_EQ(test::NumberThrownBy(
                  [&] { ReadReportTables(folder.Path("none.txt"), RecordSource::RecordFile); }),
              ErrorNumber::FileNotFound);
}

}  // namespace
}  // namespace davo
