// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/record_facts.h"

#include <algorithm>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/capture_file.h"
#include "records/record_file_writer.h"
#include "records/record_name.h"

namespace davo {

namespace {

RecordTest TestOf(const TestRecord& record, std::string_view recordName) {
    if (record.points.size() > kPointsPerTest) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    RecordTest test;
    test.recordName = recordName;
    test.testNumber = record.recordNumber;
    test.header = record.header;
    for (const DataPoint& point : record.points)
        test.points.push_back(PointByPicture(point.current, point.voltage));
    test.counted = static_cast<std::size_t>(std::max<int>(record.dataPointCount, 0));
    test.nameplateRatio = TrimBlanks(record.nameplateRatio);
    test.measuredRatio = TrimBlanks(record.measuredRatio);
    test.percentError = TrimBlanks(record.percentError);
    test.polarity = TrimBlanks(record.polarity);
    test.phase = PhaseText(record.phaseAngle);
    test.phaseAngle = PhaseDegrees(record.phaseAngle);
    const auto withoutUnit = [](const std::string& text, std::string_view unit) {
        return TrimBlanks(std::string_view(text).substr(0, text.find(unit)));
    };
    test.excitationVoltage = withoutUnit(record.excitationVoltage, "VOLTS");
    test.excitationCurrent = withoutUnit(record.excitationCurrent, " AMP");
    test.description = TrimBlanks(record.testDescription);
    test.notes = TrimBlanks(record.testNotes);
    return test;
}

// The points that the record counts take part in the search; those that it does not have are zero.
template <class KneesOfPoints>
void FindKnees(RecordTest& test, const KneesOfPoints& kneesOf) {
    std::vector<CurvePoint> counted = test.points;
    counted.resize(test.counted);
    const auto knees = kneesOf(counted);
    test.knees.assign(knees.begin(), knees.end());
}

}  // namespace

RecordFacts ParseRecordFacts(std::string_view bytes, std::string_view name, std::size_t judged) {
    const TestRecordFile file =
        ParseTestRecordFile(bytes, RecordSource::RecordFile, kMostFactTests);
    RequireHeader(file);
    RecordFacts facts;
    facts.name = name;
    facts.testsLeft = file.recordsLeft;
    facts.controls = file.controls;
    for (const RecordFileHeader& header : file.headers)
        facts.headers.push_back(header.Trimmed());
    for (const TestRecord& record : file.records)
        facts.tests.push_back(TestOf(record, name));
    for (const std::string& notes : file.notes) {
        const std::vector<std::string> lines = SplitLines(notes);
        facts.notes.insert(facts.notes.end(), lines.begin(), lines.end());
    }
    JudgeTests(facts, 0, judged);
    return facts;
}

RecordFacts ReadRecordFacts(const QString& path, std::size_t judged) {
    return ParseRecordFacts(ReadWholeFile(path), PageRecordNameOf(path), judged);
}

void JudgeTests(RecordFacts& facts, std::size_t first, std::size_t end) {
    for (std::size_t i = first; i < std::min(end, facts.tests.size()); ++i) {
        if (facts.tests[i].knees.empty()) FindKnees(facts.tests[i], KneesOf);
    }
}

void FindPrintedKneepoints(RecordFacts& facts) {
    for (RecordTest& test : facts.tests)
        FindKnees(test, PrintedKneesOf);
}

std::vector<RecordTest> TestsOfCapture(std::string_view capture) {
    std::vector<RecordTest> tests;
    for (const CapturedShot& shot : CapturedShots(capture)) {
        tests.push_back(TestOf(RecordOfShot(tests.size() + 1, shot), {}));
        FindKnees(tests.back(), KneesOf);
    }
    return tests;
}

}  // namespace davo
