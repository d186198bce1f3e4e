// SPDX-License-Identifier: GPL-3.0-or-later
// The reply to "d": of any text, what is listed is written and loaded again, and each entry makes
// the header of a record file.
#include "common/files.h"
#include "fuzz/fuzzing.h"
#include "records/directory_file.h"
#include "records/record_file.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_reply.h"

namespace {

using namespace davo;
using fuzz::Require;

void CheckEntry(const std::string& entry) {
    Require(entry.find_first_of("\r\n") == std::string::npos, "an entry is one line");
    const auto name = EntryName(entry);
    Require(name && name->starts_with("TST_"), "an entry has a name");
    const std::string lines = RecordHeaderLines(entry, *name);
    const TestRecordFile file = ParseTestRecordFile(lines);
    Require(file.headers.size() == 1 && file.records.empty(), "a header and no record");
    Require(file.headers.front().testNumber == *name, "the header has the name");
    // The entry of the file that was made of it.
    const std::string again =
        SummariseRecord(*name + ".txt", SplitLines(lines)).entry.substr(0, name->size() + 9);
    Require(entry.starts_with(again), "its date is that of the entry");
}

void CheckLoaded(const MemoryDirectory& directory) {
    const fuzz::Folder folder;
    ReplaceFile(folder.Path(kDirectoryFileName), DirectoryFileText(directory.entries));
    DirectoryTables tables;
    LoadDirectoryFile(folder.Path(), tables);
    Require(tables.dirEntries == directory.entries, "the entries are loaded as they were written");
    const auto rows = RowsForList(tables, tables.recordCount);
    Require(rows.size() == directory.entries.size(), "a row for each");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string reply = input.Rest();
    const CutRecordsResult cut = CutRecords(reply);
    Require(cut.records.size() == cut.entries.size(), "an entry for a record");
    Require(cut.records.size() <= kMostMemoryRecords, "no more than fit the list");
    Require(cut.damaged >= 0 && cut.beyond >= 0, "counts are counts");
    std::size_t taken = 0;
    for (const std::string& record : cut.records)
        taken += record.size();
    Require(taken <= reply.size(), "no character is in two records");

    const MemoryDirectory directory = BuildEntries(reply);
    Require(directory.entries.size() == cut.entries.size(), "no entry is lost");
    Require(directory.damaged == cut.damaged && directory.beyond == cut.beyond, "counts agree");
    Require(directory.dates.size() == directory.entries.size(), "a date for each");
    Require(std::is_sorted(directory.dates.rbegin(), directory.dates.rend()), "newest first");
    for (const std::string& entry : directory.entries)
        CheckEntry(entry);
    if (!directory.entries.empty()) CheckLoaded(directory);
    return 0;
}
