// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/knee_doubt.h"
#include "records/record_file.h"

namespace davo {

// One test of a record file, as the record panel and the exports show it. Texts are bytes of
// Windows-1252, as everywhere.
struct RecordTest {
    std::string recordName;          // the file's name, "T0012"; empty for a shot that has no file
    std::string testNumber;          // what follows "REC NUMBER:", a number's text
    std::size_t header = 0;          // of RecordFacts::headers
    std::vector<CurvePoint> points;  // as the record has them, from the lowest; no grid points
    std::size_t counted = 0;         // points that take part in the search for kneepoints
    std::vector<KneeFact> knees;     // in the order of kKneeRules; none before they are found
    std::string nameplateRatio;      // the report's texts
    std::string measuredRatio;
    std::string percentError;
    std::string polarity;
    std::string phase;
    std::string phaseAngle;  // in degrees, as the record has it: "1.5"; empty where it has none
    std::string excitationVoltage;  // without its unit
    std::string excitationCurrent;
    std::string description;  // what was added to the record later
    std::string notes;
    std::vector<std::string> compared;  // what a row of it has of a comparison, if any
};

// A record file: its headers, one as a rule, without padding, and its tests.
struct RecordFacts {
    std::string name;
    std::vector<RecordFileHeader> headers;
    std::vector<RecordTest> tests;
    std::vector<std::string> notes;  // lines behind "NOTES:"
    std::size_t testsLeft = 0;       // of the file, beyond kMostFactTests
    std::size_t controls = 0;        // TestRecordFile::controls
};

// So many tests of a file are read: more would keep a window from answering.
inline constexpr std::size_t kMostFactTests = 200;

// Reads the bytes of a record file and judges its first tests; name is the file's, without ".txt".
// Points,
// kneepoints and texts are those of its report, without a report's limits: there may be up to
// kMostFactTests tests, and a curve that the grid points do not fit is read, too. A header without
// a record behind it gives no tests. Throws what ParseTestRecordFile throws; RunTimeError 62 when
// there is no header; 9 for more than 101 points of a test; 6 when a value is too large.
RecordFacts ParseRecordFacts(std::string_view bytes, std::string_view name,
                             std::size_t judged = kMostFactTests);

// ParseRecordFacts of a file, named after it; throws the errors of ReadWholeFile too.
RecordFacts ReadRecordFacts(const QString& path, std::size_t judged = kMostFactTests);

// Finds the kneepoints of the tests from first up to end, as far as there are so many, of each
// once: the judgement takes most of the time that a record takes. RunTimeError 6 when a value is
// too large.
void JudgeTests(RecordFacts& facts, std::size_t first = 0, std::size_t end = kMostFactTests);

// Finds the printed kneepoints of all tests without judging them. RunTimeError 6 as JudgeTests.
void FindPrintedKneepoints(RecordFacts& facts);

// The tests of a running session as its record file will have them: capture is the bytes of a
// capture file or of one shot (ShotSequence::ShotTrailer). They are numbered from 1 and have no
// name. A record without its "DONE" is no test.
std::vector<RecordTest> TestsOfCapture(std::string_view capture);

}  // namespace davo
