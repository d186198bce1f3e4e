// SPDX-License-Identifier: GPL-3.0-or-later
// The header editor on any file: no test and no point of it is lost, and what is said to survive
// does.
#include "common/text.h"
#include "files/record_headers.h"
#include "fuzz/fuzzing.h"
#include "records/line_cursor.h"
#include "records/record_file.h"

namespace {

using namespace davo;
using fuzz::Require;

constexpr std::size_t kMostLineBytes = 64;  // of a text with its key, filled

std::string PointsOf(const std::string& file) {
    std::string points;
    LineCursor lines(file);
    for (std::string_view line; lines.Next(line);) {
        if (line == kNotesKey) break;
        if (line.starts_with(kCurrentKey) && line.find(':', kCurrentKey.size() + 9) + 2 > 2)
            points.append(line).append("\n");
    }
    return points;
}

RecordHeaders Typed(fuzz::Input& input, RecordHeaders headers) {
    while (!input.AtEnd()) {
        const int what = input.Below(4);
        const auto at = input.Byte();
        const std::string text = input.Text();
        // A box of one line has no line ends.
        const std::string line = CutToField(text.substr(0, text.find_first_of("\r\n")));
        const std::size_t tests = std::max<std::size_t>(headers.recNumbers.size(), 1);
        if (what == 0) headers.header.at(at % kHeaderFieldCount) = TrimBlanks(line);
        if (what == 1) headers.testDescriptions.at(at % tests) = TrimBlanks(line);
        if (what == 2) headers.testNotes.at(at % tests) = TrimBlanks(line);
        if (what == 3) headers.fileNotes = text;
    }
    return headers;
}

void CheckRewrite(const std::string& file, const MergedHeaders& merged) {
    const std::string written = RewriteRecord(file, merged);
    std::size_t texts = kHeaderFieldCount * kMostLineBytes + merged.headers.fileNotes.size();
    texts += merged.headers.recNumbers.size() * 2 * kMostLineBytes;
    // A bare line end becomes two characters; a header's key may be in any line.
    Require(written.size() <= file.size() * kMostLineBytes + texts + kMostLineBytes, "bounded");
    if (!SurvivesRewrite(file, merged)) return;
    Require(ReadRecordHeaders(written) == merged.headers, "every text is read back");
    Require(RewriteRecord(written, merged) == written, "a second time changes nothing");
    TestRecordFile before;
    if (!fuzz::Runs({6, 13, 62}, [&] { before = ParseTestRecordFile(file); })) return;
    TestRecordFile after;
    if (!fuzz::Runs({6, 13, 62}, [&] { after = ParseTestRecordFile(written); })) return;
    Require(before.records.size() == after.records.size(), "no test is lost");
    Require(PointsOf(file) == PointsOf(written), "no point is lost");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string file = input.Text();
    const std::string theirs = input.Flag() ? input.Text() : file;
    RecordHeaders before;
    if (!fuzz::Runs({9}, [&] { before = ReadRecordHeaders(file); })) return 0;
    Require(before.recNumbers.size() <= kMostTests, "100 tests at most");
    const RecordHeaders typed = Typed(input, before);
    TextsWithKeys(typed);
    CheckRewrite(file, EveryText(typed));

    RecordHeaders changed;
    if (!fuzz::Runs({9}, [&] { changed = ReadRecordHeaders(theirs); })) return 0;
    const MergedHeaders merged = MergeHeaders(before, typed, changed);
    Require(merged.testsGone.size() <= before.recNumbers.size(), "a test that was there is gone");
    CheckRewrite(theirs, merged);
    return 0;
}
