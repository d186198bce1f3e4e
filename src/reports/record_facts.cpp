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
    return test;
}

// The points that the record counts take part in the search; those that it does not have are zero.
std::vector<CurvePoint> CountedPoints(const RecordTest& test) {
    std::vector<CurvePoint> counted = test.points;
    counted.resize(test.counted);
    return counted;
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
    JudgeTests(facts, judged);
    return facts;
}

RecordFacts ReadRecordFacts(const QString& path, std::size_t judged) {
    return ParseRecordFacts(ReadWholeFile(path), PageRecordNameOf(path), judged);
}

void JudgeTests(RecordFacts& facts, std::size_t count) {
    for (; facts.judged < std::min(count, facts.tests.size()); ++facts.judged) {
        RecordTest& test = facts.tests[facts.judged];
        test.knees = KneesOf(CountedPoints(test));
    }
}

void FindPrintedKneepoints(RecordFacts& facts) {
    for (RecordTest& test : facts.tests)
        test.knees = PrintedKneesOf(CountedPoints(test));
}

std::vector<RecordTest> TestsOfCapture(std::string_view capture) {
    std::vector<RecordTest> tests;
    for (const CapturedShot& shot : CapturedShots(capture)) {
        tests.push_back(TestOf(RecordOfShot(tests.size() + 1, shot), {}));
        tests.back().knees = KneesOf(CountedPoints(tests.back()));
    }
    return tests;
}

}  // namespace davo
