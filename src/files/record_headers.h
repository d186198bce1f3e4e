// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "records/header_table.h"

namespace davo {

// A file with more tests than this cannot be edited.
inline constexpr std::size_t kMostTests = 100;

// What the header editor shows and changes of a record file. All texts are Windows-1252.
struct RecordHeaders {
    std::string testNumber, time;                          // lines 1 and 3, trimmed
    std::array<std::string, kHeaderFieldCount> header;     // COMPANY to OPERATOR, trimmed
    std::vector<std::string> recNumbers;                   // of each test, trimmed
    std::array<std::string, kMostTests> testDescriptions;  // trimmed, at most 20 bytes; as many
    std::array<std::string, kMostTests> testNotes;         // are used as there are tests
    std::string fileNotes;                                 // lines joined by CR LF

    bool operator==(const RecordHeaders&) const = default;
};

// The first 20 bytes of text, the width of a header field and of a test's texts.
std::string CutToField(std::string_view text);

// Reads the texts of a record file. The header lines are found by their place, 1 to 12, and a
// missing one gives an empty text; a test is a line that the rewrite takes for "REC NUMBER:".
// Throws RunTimeError 9 for more than 100 tests.
RecordHeaders ReadRecordHeaders(std::string_view file);

// The lines after the first one that holds "NOTES" but not "TEST NOTES", joined by CR LF.
std::string ReadFileNotes(std::string_view file);

// Which texts of a record file are written.
struct HeaderEdits {
    std::array<bool, kHeaderFieldCount> header{};
    std::array<bool, kMostTests> tests{};  // description or notes
    bool fileNotes = false;
};

// What is written into a record file.
struct MergedHeaders {
    RecordHeaders headers;               // of the file, with what was typed
    HeaderEdits edits;                   // what of it is written
    std::vector<std::string> testsGone;  // numbers of tests with typed texts that are not in it
};

// Of a file that is as it was read, every text is written, cut to its field.
MergedHeaders EveryText(const RecordHeaders& headers);

// Of one that another program has changed meanwhile, what the operator has typed. before: as the
// file was read; typed: as the operator has it; theirs: of the changed file. Tests are found by
// their numbers. before and typed have the same tests.
MergedHeaders MergeHeaders(const RecordHeaders& before, const RecordHeaders& typed,
                           RecordHeaders theirs);

// The record file with the texts of merged in the place of its own where they are written; every
// other line is kept. Lines are recognised by a key anywhere in them, the header's keys first, in
// the order of kHeaderKeys. Header and tests' texts are cut to 20, trimmed and filled to 20; a test
// without a text gets no line for it. Nothing after a "NOTES:" line is read. All lines end with CR
// LF. Throws RunTimeError 9 for more than 100 tests.
std::string RewriteRecord(std::string_view file, const MergedHeaders& merged);

// What is told of each text of headers that holds the key of another line; empty when none does.
QString TextsWithKeys(const RecordHeaders& headers);

// Whether the rewritten file holds what merged says and all that was measured, and can be edited
// again without a change. It does not when a text or a damaged reading holds the key of another
// line, for that line is then taken for the other one.
bool SurvivesRewrite(std::string_view file, const MergedHeaders& merged);

}  // namespace davo
