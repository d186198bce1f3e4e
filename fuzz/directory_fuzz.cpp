// SPDX-License-Identifier: GPL-3.0-or-later
// A data folder of any record files and directory file: what is listed is in "DIRDNLD.DNL", is
// loaded from it alike, and every record file is listed or said.
#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "records/directory_file.h"
#include "records/record_name.h"

namespace {

using namespace davo;
using fuzz::Require;

bool SameTables(const DirectoryTables& one, const DirectoryTables& other) {
    return one.recordCount == other.recordCount && one.dirEntries == other.dirEntries &&
           one.dirFileNames == other.dirFileNames;
}

// A file name of the letters of an input.
QString NameOf(const std::string& text, int number) {
    QString name = FromPage(text.substr(0, 20));
    for (QChar& c : name) {
        if (c == QLatin1Char('/') || c.isNull()) c = QLatin1Char('-');
    }
    return name + QString::number(number) + QStringLiteral(".txt");
}

void CheckLoad(const QString& folder) {
    DirectoryTables tables;
    tables.recordCount = 7;
    tables.dirEntries = {"before"};
    const DirectoryTables before = tables;
    if (!fuzz::Runs({9, 13, 62}, [&] { LoadDirectoryFile(folder, tables); })) {
        Require(SameTables(tables, before), "a refused file changes nothing");
        return;
    }
    if (!FileExists(folder + QLatin1String(kDirectoryFileName))) return;
    Require(tables.recordCount >= 0 && tables.recordCount <= kMostListedRecords, "0 to 250");
    Require(static_cast<int>(tables.dirEntries.size()) == tables.recordCount, "as many as it says");
    Require(static_cast<int>(RowsForList(tables, tables.recordCount).size()) <= tables.recordCount,
            "a row for an entry");
}

void CheckListing(const QString& folder, std::size_t files) {
    DirectoryTables tables;
    const RebuildResult result = ListFolder(folder, tables);
    Require(result.unread.isEmpty() && result.notSaved.isEmpty(), "it is read and written");
    const auto count = static_cast<std::size_t>(result.count);
    Require(count + result.skipped.size() + static_cast<std::size_t>(result.notListed) == files,
            "every record file is listed or said");
    Require(tables.dirEntries.size() == count && tables.dirFileNames.size() == count,
            "as many entries and files as records");
    Require(RowsForList(tables, tables.recordCount).size() == count, "a row for each");
    for (const std::string& entry : tables.dirEntries)
        Require(entry.find_first_of("\r\n") == std::string::npos, "an entry is one line");
    for (std::size_t i = 0; i < count; ++i)
        Require(FileExists(folder + RecordFileOf(tables, i)), "a row has its file");

    DirectoryTables loaded;
    LoadDirectoryFile(folder, loaded);
    Require(loaded.dirEntries == tables.dirEntries, "what is written is loaded");
    DirectoryTables again;
    ListFolder(folder, again);
    Require(SameTables(again, tables), "the same folder is listed alike");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostFiles = 6;
    fuzz::Input input(data, size);
    const fuzz::Folder folder;
    if (input.Flag()) ReplaceFile(folder.Path(kDirectoryFileName), input.Text());
    std::size_t files = 0;
    while (!input.AtEnd() && files < kMostFiles) {
        const QString name = NameOf(input.Text(), static_cast<int>(files));
        ReplaceFile(folder.Path() + name, input.Text());
        ++files;
    }
    CheckLoad(folder.Path());
    CheckListing(folder.Path(), files);
    return 0;
}
