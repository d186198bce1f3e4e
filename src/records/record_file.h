// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "records/record_image.h"
#include "records/record_keys.h"

namespace davo {

// The lines in front of a session's records.
struct RecordFileHeader {
    std::string testNumber;                             // the name of the record file
    std::string date;                                   // "MM/DD/YY"
    std::string time;                                   // "HH:MM"
    std::string shots;                                  // "03"
    std::array<std::string, kHeaderFieldCount> fields;  // COMPANY to OPERATOR

    // The same without blanks around its texts.
    RecordFileHeader Trimmed() const;
};

// One shot of a record file. Texts are what follows "KEY: ", units included ("152.3 VOLTS").
struct TestRecord {
    std::size_t header = 0;         // of TestRecordFile::headers
    std::string recordNumber;       // a number's text without blanks
    std::string testDescription;    // optional line
    std::string testNotes;          // optional line
    std::vector<DataPoint> points;  // in file order: highest slot first, which is the lowest point
    std::int16_t dataPointCount = 0;  // the value of its line's last two characters
    std::string kneeVoltage, kneeCurrent, excitationCurrent, excitationVoltage;
    std::string measuredRatio, polarity, phaseAngle, nameplateRatio, percentError, kneePointType;
};

struct ResultLine {
    std::string_view key;
    std::string TestRecord::*text;
};
// The lines behind a record's points, in their order.
inline constexpr std::array kResultLines = {
    ResultLine{kKneeVoltageKey, &TestRecord::kneeVoltage},
    ResultLine{kKneeCurrentKey, &TestRecord::kneeCurrent},
    ResultLine{kExcitationCurrentKey, &TestRecord::excitationCurrent},
    ResultLine{kExcitationVoltageKey, &TestRecord::excitationVoltage},
    ResultLine{kMeasuredRatioKey, &TestRecord::measuredRatio},
    ResultLine{kPolarityKey, &TestRecord::polarity},
    ResultLine{kPhaseAngleKey, &TestRecord::phaseAngle},
    ResultLine{kNameplateRatioKey, &TestRecord::nameplateRatio},
    ResultLine{kPercentErrorKey, &TestRecord::percentError},
    ResultLine{kKneeTypeKey, &TestRecord::kneePointType}};

// A whole record file. There is one header as a rule; two files joined into one have two.
struct TestRecordFile {
    std::vector<RecordFileHeader> headers;
    std::vector<TestRecord> records;  // in file order; a header may have none
    std::vector<std::string> notes;   // the bytes behind each "NOTES:"
    std::size_t controls = 0;         // control characters in its texts, which have "?" for each
    std::size_t recordsLeft = 0;      // that were not read
};

enum class RecordSource {
    RecordFile,
    GroupFile,  // two records, each behind its own header: "2Graphs.GRP"
};

// Reads every field back. Records written by the test window, by the download (two blanks after
// "REC NUMBER:") and by the header editor (two optional lines, fields padded to 20) are read.
// Passed over are empty lines between header, records and notes, and lines between the results and
// "KNEE POINT TYPE:". A header serves all records up to the next one. The notes run to the end of a
// record file; in a group file the next header ends them. The lines of a group file are fields that
// a comma has cut: a line that is not the one expected belongs to the text before it, and texts
// have no blanks around them. A file of a session without a complete shot has no header and no
// records.
//
// Throws RunTimeError 62 when the file ends inside a header or a record; 13 when a line is not the
// one that belongs there or its number is none (the error's text names the line); 6 for a count
// that is too large. Behind mostRecords records nothing is read; the others are counted.
TestRecordFile ParseTestRecordFile(
    std::string_view bytes, RecordSource source = RecordSource::RecordFile,
    std::size_t mostRecords = std::numeric_limits<std::size_t>::max());

// What shows tests has nothing to show of a file without a header: throws RunTimeError 62 for it.
void RequireHeader(const TestRecordFile& file);

// The number's text of a phase angle ("1.5 DEG"): "1.5"; empty for a text without "DEG" or without
// a number before it.
std::string PhaseDegrees(std::string_view value);

// What reports and panel show of a phase angle's text: "IN PHASE", "OUT OF PHASE" or "N/A" by the
// rule of PolarityOfPhase; "N/A" for a text without degrees.
std::string PhaseText(std::string_view value);

}  // namespace davo
