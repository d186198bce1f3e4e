// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/header_table.h"
#include "records/record_image.h"

namespace davo {

// One shot of a record file. Texts are what stands behind "KEY: ", units included ("152.3 VOLTS");
// ResultNumber gives their numbers.
struct TestRecord {
    int recordNumber = 0;
    std::string testDescription;    // optional line
    std::string testNotes;          // optional line
    std::vector<DataPoint> points;  // in file order: highest slot first
    int dataPointCount = 0;         // as "NUMBER OF DATA POINTS: " says
    std::string kneeVoltage, kneeCurrent, excitationCurrent, excitationVoltage;
    std::string measuredRatio, polarity, phaseAngle, nameplateRatio, percentError, kneePointType;
};

// A whole record file.
struct TestRecordFile {
    std::string testNumber, date, time, shots;
    std::array<std::string, kHeaderFieldCount> header;  // COMPANY to OPERATOR
    std::vector<TestRecord> records;
    std::optional<std::string> notes;  // what follows "NOTES:", lines joined by CR LF
};

// Reads every field back. Records written by the test window, by the download (two blanks after
// "REC NUMBER:") and by the header editor (two optional lines, fields padded to 20) are read; a
// file of a session without a complete shot has no header and no records. Throws RunTimeError 62
// when the file ends inside a header or a record, 13 when a line is not the one that belongs there
// or its number is none; the error's text names the line.
TestRecordFile ParseTestRecordFile(std::string_view bytes);

// ParseTestRecordFile of a file; throws the errors of ReadWholeFile too.
TestRecordFile ReadTestRecordFile(const QString& path);

// The number of a result's text, its unit (" VOLTS", " AMPS", " DEG", "%") or what stands in
// brackets ("240 (1200:5)") passed over; nothing for "N/A" and for a text that is no number.
std::optional<double> ResultNumber(std::string_view text);

}  // namespace davo
