// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_tests.h"

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"
#include "records/record_file_writer.h"
#include "reports/test_file_reader.h"

namespace davo {

namespace {

// A report passes over empty lines between the blocks of a file; behind "NOTES:" they are text.
std::string WithoutEmptyLines(std::string_view bytes) {
    std::string kept;
    kept.reserve(bytes.size());
    LineCursor lines(bytes);
    std::size_t from = 0;
    for (std::string_view line; lines.Next(line); from = lines.Offset()) {
        if (line == "NOTES:") break;
        if (!TrimBlanks(line).empty()) kept += bytes.substr(from, lines.Offset() - from);
    }
    kept += bytes.substr(from);
    return kept;
}

// The points that take part in the search: as many as the record says, those that it does not
// have are zero.
std::vector<CurvePoint> CountedPoints(std::vector<CurvePoint> points, int dataPointCount) {
    constexpr int kDigits = 100;  // the count is the last two characters of its line
    points.resize(static_cast<std::size_t>(dataPointCount % kDigits));
    return points;
}

// The number that PhaseText goes by.
std::string AngleText(std::string_view phase) {
    const std::size_t unit = phase.find("DEG");
    if (unit == std::string_view::npos) return {};
    const std::string_view degrees = phase.substr(0, unit);
    return WholeNumericValue(degrees) ? std::string(TrimBlanks(degrees)) : std::string();
}

}  // namespace

RecordTest TestOf(const TestRecord& record, std::string_view recordName) {
    if (record.points.size() > kPointsPerTest) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    RecordTest test;
    test.recordName = recordName;
    test.testNumber = record.recordNumber;
    for (const DataPoint& point : record.points)
        test.points.push_back(PointByPicture(point.current, point.voltage));
    test.knees = KneesOf(CountedPoints(test.points, record.dataPointCount));
    test.nameplateRatio = TrimBlanks(record.nameplateRatio);
    test.measuredRatio = TrimBlanks(record.measuredRatio);
    test.percentError = TrimBlanks(record.percentError);
    test.polarity = TrimBlanks(record.polarity);
    test.phase = PhaseText(TrimBlanks(record.phaseAngle));
    test.phaseAngle = AngleText(record.phaseAngle);
    return test;
}

RecordFacts ParseRecordFacts(std::string_view bytes, std::string_view name) {
    const std::string lines = WithoutEmptyLines(bytes);
    const TestRecordFile file = ParseTestRecordFile(lines);
    if (!lines.starts_with("TEST NUMBER:")) {
        throw RunTimeError(ErrorNumber::InputPastEnd, "no test in the file");
    }
    RecordFacts facts;
    facts.name = name;
    facts.date = TrimBlanks(file.date);
    facts.time = TrimBlanks(file.time);
    for (std::size_t i = 0; i < facts.header.size(); ++i)
        facts.header.at(i) = TrimBlanks(file.header.at(i));
    for (const TestRecord& record : file.records)
        facts.tests.push_back(TestOf(record, name));
    return facts;
}

RecordFacts ReadRecordFacts(const QString& path) {
    const QString name = ReportNameOf(path);
    // A name typed in this program fits the page; one given outside it may not.
    return ParseRecordFacts(ReadWholeFile(path),
                            ToPage(name).value_or(name.toLatin1().toStdString()));
}

std::vector<RecordTest> TestsOfCapture(std::string_view capture) {
    // No count of shots: all of them.
    const std::string file = ConvertCapture(capture, HeaderTable(), RecordFileContent());
    std::vector<RecordTest> tests;
    for (const TestRecord& record : ParseTestRecordFile(file).records)
        tests.push_back(TestOf(record, {}));
    return tests;
}

}  // namespace davo
