// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file.h"

#include <algorithm>
#include <optional>

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"

namespace davo {

namespace {

constexpr std::string_view WithoutColon(std::string_view key) {
    return key.substr(0, key.size() - 1);
}

std::string HeaderKey(std::size_t field) {
    return std::string(kHeaderKeys.at(field)) + ":";
}

// Reads from the first line to the last; line_ is the line in hand.
class RecordFileReader {
  public:
    RecordFileReader(std::string_view bytes, RecordSource source, std::size_t mostRecords)
        : bytes_(bytes),
          isGroup_(source == RecordSource::GroupFile),
          mostRecords_(mostRecords),
          lines_(bytes) {
        Advance();
    }

    TestRecordFile Read() {
        while (!atEnd_) {
            if (StartsWith(kRecordKey) && file_.records.size() == mostRecords_) {
                CountTheRest();
                break;
            }
            if (StartsWith(kTestNumberKey)) {
                ReadHeader();
            } else if (StartsWith(kRecordKey)) {
                ReadRecord();
            } else if (line_ == kNotesKey) {
                ReadNotes();
            } else if (TrimBlanks(line_).empty()) {
                Advance();
            } else {
                Fail(ErrorNumber::TypeMismatch);
            }
        }
        return std::move(file_);
    }

  private:
    void Advance() {
        lineStart_ = lines_.Offset();
        atEnd_ = !lines_.Next(line_);
        ++lineNumber_;
    }

    bool StartsWith(std::string_view key) const { return !atEnd_ && line_.starts_with(key); }

    // A header, a record or the notes begin here, or the file ends.
    bool AtBlockStart() const {
        return atEnd_ || StartsWith(kTestNumberKey) || StartsWith(kRecordKey) || line_ == kNotesKey;
    }

    // A line of the notes may look like the first of a header; the two first together do not occur.
    bool AtHeader() const {
        if (!StartsWith(kTestNumberKey)) return false;
        LineCursor ahead = lines_;
        std::string_view next;
        return ahead.Next(next) && next.starts_with(kDateKey);
    }

    bool AtKnownKey() const {
        static constexpr std::array kKeys = {kDateKey,
                                             kTimeKey,
                                             kShotsKey,
                                             kDescriptionKey,
                                             kTestNotesKey,
                                             kCurrentKey,
                                             WithoutColon(kPointCountKey)};
        const auto isHere = [this](std::string_view key) { return StartsWith(key); };
        if (AtBlockStart() || std::ranges::any_of(kKeys, isHere)) return true;
        for (std::size_t i = 0; i < kHeaderKeys.size(); ++i) {
            if (StartsWith(HeaderKey(i))) return true;
        }
        return false;
    }

    [[noreturn]] void Fail(ErrorNumber number) const {
        throw RunTimeError(number, "line " + std::to_string(lineNumber_));
    }

    double NumberFrom(std::string_view text) const {
        const std::optional<double> number = WholeNumericValue(text);
        if (!number) Fail(ErrorNumber::TypeMismatch);
        return *number;
    }

    // The text of the line in hand behind its key.
    std::string Behind(std::string_view key) {
        std::string_view value = Middle(line_, key.size());
        if (value.starts_with(' ')) value.remove_prefix(1);
        std::string text = isGroup_ ? TrimBlanks(value) : std::string(value);
        Clean(text);
        return text;
    }

    // A workbook cannot hold them; lines and tabs are of the notes.
    void Clean(std::string& text) { file_.controls += ReplaceControls(text, "\t\r\n"); }

    // The same of a line that must have this key. Goes to the next line.
    std::string Take(std::string_view key) {
        if (atEnd_) Fail(ErrorNumber::InputPastEnd);
        if (!StartsWith(key)) Fail(ErrorNumber::TypeMismatch);
        std::string value = Behind(key);
        Advance();
        return value;
    }

    // What a comma cut off the text before: the lines up to the next that begins with a known key.
    void TakePieces(std::string& text) {
        while (isGroup_ && !AtKnownKey()) {
            std::string piece(line_);
            Clean(piece);
            text += ", ";
            text += piece;
            Advance();
        }
    }

    void TakeHeaderText(std::string_view key, std::string& text) {
        // Pieces behind a comma take the place of a group file's last header lines.
        if (isGroup_ && AtBlockStart()) return;
        text = Take(key);
    }

    void ReadHeader() {
        RecordFileHeader& header = file_.headers.emplace_back();
        header.testNumber = Take(kTestNumberKey);
        TakePieces(header.testNumber);
        TakeHeaderText(kDateKey, header.date);
        TakeHeaderText(kTimeKey, header.time);
        TakeHeaderText(kShotsKey, header.shots);
        for (std::size_t i = 0; i < header.fields.size(); ++i) {
            TakeHeaderText(HeaderKey(i), header.fields.at(i));
            TakePieces(header.fields.at(i));
        }
    }

    void TakeOptional(std::string_view key, std::string& text) {
        if (!StartsWith(key)) return;
        text = Take(key);
        TakePieces(text);
    }

    void ReadRecord() {
        if (file_.headers.empty()) Fail(ErrorNumber::TypeMismatch);
        TestRecord& record = file_.records.emplace_back();
        record.header = file_.headers.size() - 1;
        record.recordNumber = TrimBlanks(Take(kRecordKey));
        NumberFrom(record.recordNumber);
        TakeOptional(kDescriptionKey, record.testDescription);
        TakeOptional(kTestNotesKey, record.testNotes);
        ReadPoints(record);
        ReadResults(record);
    }

    void ReadPoints(TestRecord& record) {
        constexpr std::string_view kColon = ": ";
        constexpr std::size_t kCountWidth = 2;
        for (; !Contains(line_, WithoutColon(kPointCountKey)); Advance()) {
            if (atEnd_) Fail(ErrorNumber::InputPastEnd);
            const std::size_t colon = line_.find(kColon);
            const std::size_t current = colon + kColon.size();
            const std::size_t voltage =
                colon == std::string_view::npos ? colon : line_.find(kVoltageKey, current);
            if (voltage == std::string_view::npos) Fail(ErrorNumber::TypeMismatch);
            record.points.push_back({NumberFrom(line_.substr(current, voltage - current)),
                                     NumberFrom(line_.substr(voltage + kVoltageKey.size()))});
        }
        record.dataPointCount = ToInteger16(NumericValue(line_.substr(line_.size() - kCountWidth)));
        Advance();
    }

    void ReadResults(TestRecord& record) {
        for (const auto& [key, text] : kResultLines) {
            if (key != kKneeTypeKey) record.*text = Take(key);
        }
        while (!StartsWith(WithoutColon(kKneeTypeKey))) {
            if (atEnd_) Fail(ErrorNumber::InputPastEnd);
            if (AtBlockStart()) Fail(ErrorNumber::TypeMismatch);
            Advance();
        }
        record.kneePointType = Behind(kKneeTypeKey);
        Advance();
    }

    void ReadNotes() {
        Advance();
        const std::size_t begin = lineStart_;
        while (!atEnd_ && !(isGroup_ && AtHeader()))
            Advance();
        Clean(file_.notes.emplace_back(bytes_.substr(begin, lineStart_ - begin)));
    }

    // The records that are not read, up to the notes.
    void CountTheRest() {
        for (; !atEnd_ && line_ != kNotesKey; Advance()) {
            if (StartsWith(kRecordKey)) ++file_.recordsLeft;
        }
    }

    std::string_view bytes_;
    bool isGroup_;
    std::size_t mostRecords_;
    LineCursor lines_;
    std::string_view line_;
    std::size_t lineStart_ = 0;
    int lineNumber_ = 0;
    bool atEnd_ = false;
    TestRecordFile file_;
};

}  // namespace

RecordFileHeader RecordFileHeader::Trimmed() const {
    RecordFileHeader trimmed = {
        TrimBlanks(testNumber), TrimBlanks(date), TrimBlanks(time), TrimBlanks(shots), {}};
    std::transform(fields.begin(), fields.end(), trimmed.fields.begin(), TrimBlanks);
    return trimmed;
}

TestRecordFile ParseTestRecordFile(std::string_view bytes, RecordSource source,
                                   std::size_t mostRecords) {
    return RecordFileReader(bytes, source, mostRecords).Read();
}

void RequireHeader(const TestRecordFile& file) {
    if (file.headers.empty()) throw RunTimeError(ErrorNumber::InputPastEnd, "no test in the file");
}

std::string PhaseDegrees(std::string_view value) {
    const std::size_t unit = value.find("DEG");
    if (unit == std::string_view::npos) return {};
    const std::string degrees = TrimBlanks(value.substr(0, unit));
    return WholeNumericValue(degrees) ? degrees : std::string();
}

std::string PhaseText(std::string_view value) {
    const std::optional<double> degrees = WholeNumericValue(PhaseDegrees(value));
    return degrees ? PolarityOfPhase(*degrees) : "N/A";
}

}  // namespace davo
