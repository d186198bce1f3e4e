#pragma once

#include <QString>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "records/record_image.h"

namespace davo {

// One shot of a record file. Texts are the values after their keys; numbers stand beside those
// that are numbers, nothing where the value is "N/A" or no number.
struct TestRecord {
    int recordNumber = 0;
    std::string testDescription;  // optional line
    std::string testNotes;        // optional line
    std::vector<DataPoint> points;  // in file order: highest slot first
    int dataPointCount = 0;       // as "NUMBER OF DATA POINTS: " says
    std::string kneeVoltage, kneeCurrent, excitationCurrent, excitationVoltage;
    std::string measuredRatio, polarity, phaseAngle, nameplateRatio, percentError, kneePointType;
};

// A whole record file.
struct TestRecordFile {
    std::string testNumber, date, time, shots;
    std::array<std::string, 8> header;  // COMPANY to OPERATOR
    std::vector<TestRecord> records;
    std::optional<std::string> notes;   // what follows "NOTES:", lines joined by CR LF
};

// Reads every field back. Records written by the test window, by the download (two blanks after
// "REC NUMBER:") and by the header editor (two optional lines) are read. Throws RunTimeError 62
// when the file ends inside a header or a record, 13 when a point line is none.
TestRecordFile ParseTestRecordFile(std::string_view bytes);
TestRecordFile ReadTestRecordFile(const QString& path);

}  // namespace davo
