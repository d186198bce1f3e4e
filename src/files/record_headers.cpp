// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/record_headers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"
#include "records/record_keys.h"
#include "records/record_lines.h"

namespace davo {

namespace {

constexpr std::size_t kRecNumberValue = kRecordKey.size() + 1;
constexpr std::size_t kTestNumberLine = 0;
constexpr std::size_t kTimeLine = 2;
constexpr std::size_t kFirstHeaderLine = 4;

// What begins a line that holds a test or when it was, and that no edit changes.
constexpr std::array kMeasuredKeys = {kTestNumberKey,
                                      kDateKey,
                                      kTimeKey,
                                      kShotsKey,
                                      kRecordKey,
                                      kCurrentKey,
                                      kPointCountKey,
                                      kKneeVoltageKey,
                                      kKneeCurrentKey,
                                      kExcitationCurrentKey,
                                      kExcitationVoltageKey,
                                      kMeasuredRatioKey,
                                      kPolarityKey,
                                      kPhaseAngleKey,
                                      kNameplateRatioKey,
                                      kPercentErrorKey,
                                      kKneeTypeKey};

enum class LineKind { Header, RecNumber, TestText, Notes, Other };

struct LineRole {
    LineKind kind = LineKind::Other;
    std::size_t field = kHeaderFieldCount;  // of a header line
};

// What the rewrite takes line for. Every key ends with a colon, so what is before the line's
// colons decides: the header's keys in their order, then the others in that of LineKind.
LineRole RoleOf(std::string_view line) {
    LineRole role;
    for (std::size_t colon = line.find(':'); colon != std::string_view::npos;
         colon = line.find(':', colon + 1)) {
        const std::string_view before = line.substr(0, colon);
        const std::string_view behind = line.substr(colon + 1);
        for (std::size_t i = 0; i < role.field; ++i) {
            if (before.ends_with(kHeaderKeys.at(i))) role = {LineKind::Header, i};
        }
        LineKind kind = LineKind::Other;
        if (before.ends_with("NOTES")) kind = LineKind::Notes;
        const bool isTestKey =
            before.ends_with("TEST NOTES") || before.ends_with("TEST DESCRIPTION");
        if (isTestKey && behind.starts_with(' ')) kind = LineKind::TestText;
        if (before.ends_with("REC NUMBER")) kind = LineKind::RecNumber;
        role.kind = std::min(role.kind, kind);
    }
    return role;
}

bool OpensNotes(std::string_view line) {
    return Contains(line, "NOTES") && !Contains(line, "TEST NOTES");
}

std::string Field(std::string_view text) {
    return TrimBlanks(CutToField(text));
}

// What is behind the first colon.
std::string ValueOf(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return {};
    return TrimBlanks(line.substr(colon + 1));
}

// What is told of text in the line of key, unless that is read back as the line that it is.
QString TextWithKey(const std::string& text, const std::string& key, const std::string& place) {
    if (text.empty()) return {};
    const std::string line = key + ": " + text;
    const LineRole role = RoleOf(line);
    std::string readBack = key;
    if (role.kind == LineKind::Header) readBack = kHeaderKeys.at(role.field);
    if (role.kind == LineKind::RecNumber) readBack = kRecordKey.substr(0, kRecordKey.size() - 1);
    if (readBack == key && OpensNotes(line)) readBack = kNotesKey.substr(0, kNotesKey.size() - 1);
    return readBack == key ? QString() : ReadBackText(text, key + place, readBack);
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
    const auto behind = [line](std::string_view key) {
        const std::size_t at = line.find(std::string(key) + ' ');
        return at == std::string_view::npos ? at : at + key.size() + 1;
    };
    const std::size_t description = behind(kDescriptionKey);
    const std::size_t notes = behind(kTestNotesKey);
    if (headers.recNumbers.empty() || description == notes) return;
    const std::size_t test = headers.recNumbers.size() - 1;
    const bool isDescription = description < notes;
    std::string& text =
        isDescription ? headers.testDescriptions.at(test) : headers.testNotes.at(test);
    if (text.empty()) text = Field(TrimBlanks(line.substr(std::min(description, notes))));
}

void PutTestTexts(std::string& file, const RecordHeaders& headers, std::size_t test) {
    const auto put = [&file](std::string_view key, const std::string& text) {
        if (!text.empty()) PutRecordLine(file, key, PadRight(Field(text), kHeaderFieldWidth));
    };
    put(kDescriptionKey, headers.testDescriptions.at(test));
    put(kTestNotesKey, headers.testNotes.at(test));
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

// The lines of what was measured, up to the notes; one that is taken for the notes' own, too.
std::string MeasuredLines(std::string_view file) {
    std::string measured;
    LineCursor lines(file);
    LineKind kind = LineKind::Other;
    for (std::string_view line; kind != LineKind::Notes && lines.Next(line);) {
        kind = RoleOf(line).kind;
        const auto begins = [line](std::string_view key) { return line.starts_with(key); };
        if (std::ranges::any_of(kMeasuredKeys, begins)) PutLine(measured, line);
    }
    return measured;
}

// Where headers has the test of that number, which was the one at place; else the number of tests.
std::size_t PlaceOfTest(const RecordHeaders& headers, std::size_t place,
                        const std::string& number) {
    const std::vector<std::string>& numbers = headers.recNumbers;
    if (place < numbers.size() && numbers[place] == number) return place;
    return static_cast<std::size_t>(std::find(numbers.begin(), numbers.end(), number) -
                                    numbers.begin());
}

}  // namespace

std::string RewriteRecord(std::string_view file, const MergedHeaders& merged) {
    const auto& [headers, edits, testsGone] = merged;
    std::string written;
    written.reserve(file.size() + headers.fileNotes.size() + 512);
    LineCursor lines(file);
    std::string_view line;
    std::size_t test = 0;
    bool isTestEdited = true;  // in front of the tests there is no text of one
    std::size_t lineStart = 0;
    for (; lines.Next(line); lineStart = lines.Offset()) {
        const LineRole role = RoleOf(line);
        if (role.kind == LineKind::Notes) break;
        if (role.kind == LineKind::Header && edits.header.at(role.field)) {
            PutRecordLine(written, std::string(kHeaderKeys.at(role.field)) + ":",
                          PadRight(Field(headers.header.at(role.field)), kHeaderFieldWidth));
        } else if (role.kind == LineKind::RecNumber) {
            PutLine(written, line);
            if (test >= kMostTests) FailTooManyTests();
            isTestEdited = edits.tests.at(test);
            if (isTestEdited) PutTestTexts(written, headers, test);
            ++test;
        } else if (role.kind != LineKind::TestText || !isTestEdited) {
            PutLine(written, line);
        }
    }
    if (!edits.fileNotes) return written.append(file.substr(std::min(lineStart, file.size())));
    if (!headers.fileNotes.empty()) {
        PutLine(written, kNotesKey);
        PutLine(written, headers.fileNotes);
    }
    return written;
}

bool SurvivesRewrite(std::string_view file, const MergedHeaders& merged) {
    const std::size_t notesLine = FirstLine(file, OpensNotes);
    const std::size_t stopLine =
        FirstLine(file, [](std::string_view line) { return RoleOf(line).kind == LineKind::Notes; });
    if (notesLine != stopLine) return false;
    const std::string written = RewriteRecord(file, merged);
    return ReadRecordHeaders(written) == merged.headers &&
           RewriteRecord(written, merged) == written &&
           MeasuredLines(written) == MeasuredLines(file);
}

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
        const LineKind kind = RoleOf(line).kind;
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

MergedHeaders EveryText(const RecordHeaders& headers) {
    MergedHeaders every{headers, {}, {}};
    std::ranges::transform(headers.header, every.headers.header.begin(), Field);
    every.edits.header.fill(true);
    every.edits.tests.fill(true);
    every.edits.fileNotes = true;
    return every;
}

MergedHeaders MergeHeaders(const RecordHeaders& before, const RecordHeaders& typed,
                           RecordHeaders theirs) {
    MergedHeaders merged = {std::move(theirs), {}, {}};
    RecordHeaders& headers = merged.headers;
    for (std::size_t i = 0; i < headers.header.size(); ++i) {
        // A box has what fits into it.
        if (typed.header.at(i) == Field(before.header.at(i))) continue;
        headers.header.at(i) = typed.header.at(i);
        merged.edits.header.at(i) = true;
    }
    for (std::size_t i = 0; i < before.recNumbers.size(); ++i) {
        const bool described = typed.testDescriptions.at(i) != before.testDescriptions.at(i);
        const bool noted = typed.testNotes.at(i) != before.testNotes.at(i);
        if (!described && !noted) continue;
        const std::size_t test = PlaceOfTest(headers, i, before.recNumbers[i]);
        if (test == headers.recNumbers.size()) {
            merged.testsGone.push_back(before.recNumbers[i]);
            continue;
        }
        if (described) headers.testDescriptions.at(test) = typed.testDescriptions.at(i);
        if (noted) headers.testNotes.at(test) = typed.testNotes.at(i);
        merged.edits.tests.at(test) = true;
    }
    merged.edits.fileNotes = typed.fileNotes != before.fileNotes;
    if (merged.edits.fileNotes) headers.fileNotes = typed.fileNotes;
    return merged;
}

QString TextsWithKeys(const RecordHeaders& headers) {
    QString told;
    for (std::size_t i = 0; i < headers.header.size(); ++i)
        told += TextWithKey(headers.header.at(i), kHeaderKeys.at(i), {});
    for (std::size_t i = 0; i < headers.recNumbers.size(); ++i) {
        const std::string place = ' ' + headers.recNumbers[i];
        told += TextWithKey(headers.testDescriptions.at(i), "TEST DESCRIPTION", place);
        told += TextWithKey(headers.testNotes.at(i), "TEST NOTES", place);
    }
    return told;
}

}  // namespace davo
