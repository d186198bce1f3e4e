#include "files/record_headers.h"

#include <optional>

#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"
#include "records/record_lines.h"

namespace davo {

namespace {

constexpr std::string_view kRecNumber = "REC NUMBER:";
constexpr std::string_view kDescription = "TEST DESCRIPTION: ";
constexpr std::string_view kTestNotes = "TEST NOTES: ";
constexpr std::string_view kNotes = "NOTES:";
constexpr std::size_t kRecNumberValue = 12;  // where the number stands in its line
constexpr std::size_t kTestNumberLine = 0;
constexpr std::size_t kTimeLine = 2;
constexpr std::size_t kFirstHeaderLine = 4;

enum class LineKind { Header, RecNumber, TestText, Notes, Other };

// The header field whose key stands in line, the first in their order.
std::optional<std::size_t> FieldOf(std::string_view line) {
    for (std::size_t i = 0; i < kHeaderKeys.size(); ++i) {
        if (Contains(line, std::string(kHeaderKeys.at(i)) + ':')) return i;
    }
    return std::nullopt;
}

LineKind KindOf(std::string_view line) {
    if (FieldOf(line)) return LineKind::Header;
    if (Contains(line, kRecNumber)) return LineKind::RecNumber;
    if (Contains(line, kTestNotes) || Contains(line, kDescription)) return LineKind::TestText;
    if (Contains(line, kNotes)) return LineKind::Notes;
    return LineKind::Other;
}

bool OpensNotes(std::string_view line) {
    return Contains(line, "NOTES") && !Contains(line, "TEST NOTES");
}

std::string Field(std::string_view text) {
    return TrimBlanks(CutToField(text));
}

// What stands behind the first colon.
std::string ValueOf(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return {};
    return TrimBlanks(line.substr(colon + 1));
}

[[noreturn]] void FailTooManyTests() {
    throw RunTimeError(ErrorNumber::SubscriptOutOfRange,
                       "the file holds more than " + std::to_string(kMostTests) + " tests");
}

void TakeHeaderLine(RecordHeaders& headers, std::size_t number, std::string_view line) {
    if (number == kTestNumberLine) headers.testNumber = ValueOf(line);
    if (number == kTimeLine) headers.time = ValueOf(line);
    if (number >= kFirstHeaderLine && number < kFirstHeaderLine + kHeaderKeys.size()) {
        headers.header.at(number - kFirstHeaderLine) = ValueOf(line);
    }
}

// Takes the description or the notes of the last test so far; the first of each counts.
void TakeTestText(RecordHeaders& headers, std::string_view line) {
    const std::size_t description = line.find(kDescription);
    const std::size_t notes = line.find(kTestNotes);
    if (headers.recNumbers.empty() || description == notes) return;
    const std::size_t test = headers.recNumbers.size() - 1;
    const bool isDescription = description < notes;
    std::string& text =
        isDescription ? headers.testDescriptions.at(test) : headers.testNotes.at(test);
    const std::size_t start =
        isDescription ? description + kDescription.size() : notes + kTestNotes.size();
    if (text.empty()) text = Field(TrimBlanks(line.substr(start)));
}

void PutTestTexts(std::string& file, const RecordHeaders& headers, std::size_t test) {
    if (test >= kMostTests) FailTooManyTests();
    const auto put = [&file](std::string_view key, const std::string& text) {
        if (!text.empty()) PutRecordLine(file, key, PadRight(Field(text), kHeaderFieldWidth));
    };
    put(kDescription, headers.testDescriptions.at(test));
    put(kTestNotes, headers.testNotes.at(test));
}

// The number of the first line of file for which is holds; the number of lines when there is none.
template <class Condition>
std::size_t FirstLine(std::string_view file, const Condition& is) {
    LineCursor lines(file);
    std::string_view line;
    std::size_t number = 0;
    while (lines.Next(line) && !is(line))
        ++number;
    return number;
}

}  // namespace

std::string CutToField(std::string_view text) {
    return std::string(text.substr(0, kHeaderFieldWidth));
}

std::string ReadFileNotes(std::string_view file) {
    LineCursor lines(file);
    std::string_view line;
    while (lines.Next(line) && !OpensNotes(line))
        continue;
    std::string notes;
    while (lines.Next(line)) {
        notes += line;
        notes += kLineEnd;
    }
    if (notes.size() >= kLineEnd.size()) notes.resize(notes.size() - kLineEnd.size());
    return notes;
}

RecordHeaders ReadRecordHeaders(std::string_view file) {
    RecordHeaders headers;
    headers.fileNotes = ReadFileNotes(file);
    LineCursor lines(file);
    std::string_view line;
    for (std::size_t number = 0; lines.Next(line); ++number) {
        TakeHeaderLine(headers, number, line);
        const LineKind kind = KindOf(line);
        if (kind == LineKind::Notes) break;
        if (kind != LineKind::RecNumber) {
            TakeTestText(headers, line);
            continue;
        }
        if (headers.recNumbers.size() == kMostTests) FailTooManyTests();
        headers.recNumbers.push_back(TrimBlanks(Middle(line, kRecNumberValue)));
    }
    return headers;
}

std::string RewriteRecord(std::string_view file, const RecordHeaders& headers) {
    std::string written;
    written.reserve(file.size() + headers.fileNotes.size() + 512);
    LineCursor lines(file);
    std::string_view line;
    std::size_t test = 0;
    bool stop = false;
    while (!stop && lines.Next(line)) {
        switch (KindOf(line)) {
            case LineKind::Header: {
                const std::size_t field = FieldOf(line).value();
                PutRecordLine(written, std::string(kHeaderKeys.at(field)) + ": ",
                              PadRight(Field(headers.header.at(field)), kHeaderFieldWidth));
                break;
            }
            case LineKind::RecNumber:
                PutRecordLine(written, line, {});
                PutTestTexts(written, headers, test++);
                break;
            case LineKind::TestText:
                break;
            case LineKind::Notes:
                stop = true;
                break;
            case LineKind::Other:
                PutRecordLine(written, line, {});
                break;
        }
    }
    if (!headers.fileNotes.empty()) {
        PutRecordLine(written, kNotes, {});
        PutRecordLine(written, headers.fileNotes, {});
    }
    return written;
}

bool SurvivesRewrite(std::string_view file, const RecordHeaders& headers) {
    const std::size_t notesLine = FirstLine(file, OpensNotes);
    const std::size_t stopLine =
        FirstLine(file, [](std::string_view line) { return KindOf(line) == LineKind::Notes; });
    if (notesLine != stopLine) return false;
    const std::string written = RewriteRecord(file, headers);
    RecordHeaders expected = headers;
    for (std::string& text : expected.header)
        text = Field(text);
    return ReadRecordHeaders(written) == expected && RewriteRecord(written, headers) == written;
}

}  // namespace davo
