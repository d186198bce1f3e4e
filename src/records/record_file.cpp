// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file.h"

#include <cmath>
#include <limits>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"

namespace davo {

namespace {

// Reads a record file from its first line to its last; line_ is the line in hand.
class RecordFileReader {
  public:
    explicit RecordFileReader(std::string_view bytes) : lines_(bytes) { Advance(); }

    TestRecordFile ReadFile();

  private:
    void Advance();
    void ReadHeader(TestRecordFile& file);
    TestRecord ReadRecord();
    void ReadPoints(TestRecord& record);
    DataPoint PointOfLine() const;
    std::string ReadNotes();

    bool StartsWith(std::string_view key) const { return !atEnd_ && line_.starts_with(key); }
    // The text behind key and one blank; key ends with its colon. Goes to the next line.
    std::string Take(std::string_view key);
    int TakeCount(std::string_view key);
    double NumberFrom(std::string_view text) const;
    [[noreturn]] void Fail(ErrorNumber number) const;

    LineCursor lines_;
    std::string_view line_;
    int lineNumber_ = 0;
    bool atEnd_ = false;
};

void RecordFileReader::Advance() {
    atEnd_ = !lines_.Next(line_);
    ++lineNumber_;
}

void RecordFileReader::Fail(ErrorNumber number) const {
    throw RunTimeError(number, "line " + std::to_string(lineNumber_));
}

std::string RecordFileReader::Take(std::string_view key) {
    if (atEnd_) Fail(ErrorNumber::InputPastEnd);
    if (!StartsWith(key)) Fail(ErrorNumber::TypeMismatch);
    std::string_view value = line_.substr(key.size());
    if (value.starts_with(' ')) value.remove_prefix(1);
    Advance();
    return std::string(value);
}

double RecordFileReader::NumberFrom(std::string_view text) const {
    const std::optional<double> number = WholeNumericValue(text);
    if (!number) Fail(ErrorNumber::TypeMismatch);
    return *number;
}

int RecordFileReader::TakeCount(std::string_view key) {
    if (atEnd_) Fail(ErrorNumber::InputPastEnd);
    if (!StartsWith(key)) Fail(ErrorNumber::TypeMismatch);
    const double number = NumberFrom(line_.substr(key.size()));
    const bool isCount = number >= 0 && number <= std::numeric_limits<std::int16_t>::max() &&
                         number == std::floor(number);
    if (!isCount) Fail(ErrorNumber::TypeMismatch);
    Advance();
    return static_cast<int>(number);
}

void RecordFileReader::ReadHeader(TestRecordFile& file) {
    file.testNumber = Take("TEST NUMBER:");
    file.date = Take("DATE:");
    file.time = Take("TIME:");
    file.shots = Take("# OF SHOTS:");
    for (std::size_t i = 0; i < file.header.size(); ++i) {
        file.header.at(i) = Take(std::string(kHeaderKeys.at(i)) + ":");
    }
}

DataPoint RecordFileReader::PointOfLine() const {
    constexpr std::string_view kColon = ": ";
    constexpr std::string_view kVoltage = "VOLTAGE:";
    const std::size_t colon = line_.find(kColon);
    const std::size_t current = colon + kColon.size();
    const std::size_t voltage =
        colon == std::string_view::npos ? colon : line_.find(kVoltage, current);
    if (voltage == std::string_view::npos) Fail(ErrorNumber::TypeMismatch);
    return {NumberFrom(line_.substr(current, voltage - current)),
            NumberFrom(line_.substr(voltage + kVoltage.size()))};
}

void RecordFileReader::ReadPoints(TestRecord& record) {
    constexpr std::string_view kCount = "NUMBER OF DATA POINTS:";
    while (!StartsWith(kCount)) {
        if (atEnd_) Fail(ErrorNumber::InputPastEnd);
        record.points.push_back(PointOfLine());
        Advance();
    }
    record.dataPointCount = TakeCount(kCount);
}

TestRecord RecordFileReader::ReadRecord() {
    TestRecord record;
    record.recordNumber = TakeCount("REC NUMBER:");
    if (StartsWith("TEST DESCRIPTION:")) record.testDescription = Take("TEST DESCRIPTION:");
    if (StartsWith("TEST NOTES:")) record.testNotes = Take("TEST NOTES:");
    ReadPoints(record);
    record.kneeVoltage = Take("KNEE VOLTAGE:");
    record.kneeCurrent = Take("KNEE CURRENT:");
    record.excitationCurrent = Take("EXCITATION CUR:");
    record.excitationVoltage = Take("EXCITATION VTG:");
    record.measuredRatio = Take("MEASURED RATIO:");
    record.polarity = Take("POLARITY:");
    record.phaseAngle = Take("PHASE ANGLE:");
    record.nameplateRatio = Take("NAMEPLATE RATIO:");
    record.percentError = Take("PERCENT ERROR:");
    record.kneePointType = Take("KNEE POINT TYPE:");
    return record;
}

std::string RecordFileReader::ReadNotes() {
    std::string notes;
    for (Advance(); !atEnd_; Advance()) {
        notes += line_;
        notes += kLineEnd;
    }
    if (!notes.empty()) notes.resize(notes.size() - kLineEnd.size());
    return notes;
}

TestRecordFile RecordFileReader::ReadFile() {
    constexpr std::string_view kNotes = "NOTES:";
    TestRecordFile file;
    if (!atEnd_ && line_ != kNotes) ReadHeader(file);
    while (!atEnd_) {
        if (line_ == kNotes) {
            file.notes = ReadNotes();
        } else {
            file.records.push_back(ReadRecord());
        }
    }
    return file;
}

}  // namespace

TestRecordFile ParseTestRecordFile(std::string_view bytes) {
    return RecordFileReader(bytes).ReadFile();
}

TestRecordFile ReadTestRecordFile(const QString& path) {
    return ParseTestRecordFile(ReadWholeFile(path));
}

std::optional<double> ResultNumber(std::string_view text) {
    text = text.substr(0, text.find(" ("));
    for (const std::string_view unit : {" VOLTS", " AMPS", " DEG", "%"}) {
        if (!text.ends_with(unit)) continue;
        text.remove_suffix(unit.size());
        break;
    }
    return WholeNumericValue(text);
}

}  // namespace davo
