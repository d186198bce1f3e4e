// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <string>

#include "records/capture_file.h"
#include "records/header_table.h"
#include "records/record_file.h"

namespace davo {

// What a record file is made of besides the capture file.
struct RecordFileContent {
    std::string testNumber;  // file name without its last four characters
    std::int16_t shotCount = 0;
    std::string testNotes;  // empty: no "NOTES:" line
};

// The record of a shot as its record file will say it, number from 1.
TestRecord RecordOfShot(std::size_t number, const CapturedShot& shot);

// The bytes of the record file that a capture file's bytes convert to. A capture without a
// complete shot yields no header lines. Conversion stops after shotCount shots.
std::string ConvertCapture(std::string_view capture, const HeaderTable& header,
                           const RecordFileContent& content);

// Converts the capture file into dataPath + fileName, replacing any file there atomically. Throws
// the errors of ReadWholeFile and ReplaceFile; an earlier file of that name is then untouched.
void WriteTestRecordFile(const QString& fileName, const QString& dataPath,
                         const QString& capturePath, const HeaderTable& header,
                         std::int16_t shotCount, const std::string& testNotes);

}  // namespace davo
