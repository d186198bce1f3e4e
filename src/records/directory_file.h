// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <QString>
#include <cstdint>
#include <string>
#include <vector>

#include "records/directory_entry.h"

namespace davo {

inline constexpr const char* kDirectoryFileName = "DIRDNLD.DNL";

// A data folder or an instrument's memory lists at most this many records.
inline constexpr int kMostListedRecords = 250;

enum class SkipReason { Unreadable, TooFewLines, NoDate, NameOutsidePage };

// The reason in words for the operator.
QString SkipReasonText(SkipReason reason);

struct SkippedFile {
    QString name;  // as it can be shown
    SkipReason reason;

    bool operator==(const SkippedFile&) const = default;
};

// What a rebuild of the list has found.
struct RebuildResult {
    std::int16_t count = 0;             // records listed
    std::vector<SkippedFile> skipped;   // in enumeration order
    int notListed = 0;                  // names beyond the 250 listed records; they are not read
    std::vector<QString> cleaned = {};  // listed files, without ".txt", whose header has control
                                        // characters; the list shows them as "?"
    QString unread = {};                // why the folder was not read; empty when it was
    QString notSaved = {};              // why its directory file was not written; empty when it was
};

// The last four in sentences for the operator; empty when there is nothing to say.
QString UnreadText(const RebuildResult& result, const QString& dataPath);
QString CleanedText(const RebuildResult& result);
QString NotSavedText(const RebuildResult& result);

// The record list of the run.
struct DirectoryTables {
    std::int16_t recordCount = 0;            // as the directory file says
    std::vector<std::string> dirEntries;     // loaded from the directory file
    std::vector<std::string> dirEntriesNew;  // built or downloaded in this run
    std::vector<QString> dirFileNames;       // the file of each of dirEntries
    std::vector<QDate> dirDates;             // newest first
    std::vector<std::string> dirBaseNames;   // in enumeration order, as are the stations
    std::vector<std::string> dirStations;    // trimmed
    bool recordsFromInstrument = false;      // the list shows the instrument's memory
    RebuildResult listing = {};              // of the data folder
};

// The value of a date slot that holds no record's date.
inline const QDate kNoRecordDate(1900, 1, 1);

// "REC==" and the number as "000", then the entries, lines ended by CR LF.
std::string DirectoryFileText(const std::vector<std::string>& entries);

// Lists the record files of dataPath (ends with the separator) in tables and in its "DIRDNLD.DNL"
// (DirectoryFileText), newest first. A record file is every name whose lower-case form holds ".txt"
// anywhere; names are taken in the order of their UTF-16 code units, which is the order of records
// of the same day. A name that cannot be summed up is skipped; of a date that is none, only when it
// is not the folder's single record. Without any record "DIRDNLD.DNL" is removed and the entries
// stay as they are; one that says the same already is not written again. recordCount is left to
// LoadDirectoryFile. Throws nothing: a folder that cannot be read leaves the entries as they are,
// and a "DIRDNLD.DNL" that cannot be written leaves that file as it was.
RebuildResult RebuildDirectory(const QString& dataPath, DirectoryTables& tables);

// RebuildDirectory and LoadDirectoryFile; what cannot be written or read back is listed all the
// same. Throws nothing.
const RebuildResult& ListFolder(const QString& dataPath, DirectoryTables& tables);

// Reads "DIRDNLD.DNL" of dataPath into recordCount and dirEntries. Without the file recordCount is
// 0 and nothing else changes. Throws RunTimeError 13 when its first line ends in no number, 9 when
// the number is below 0 or above 250, 62 when lines are missing, and the errors of ReadWholeFile;
// tables are then as they were. Lines that are not those of dirEntries have no dirFileNames.
void LoadDirectoryFile(const QString& dataPath, DirectoryTables& tables);

// The file of an entry of dirEntries: of a row of the list in the data folder. Two rows may have
// the same name and are two files.
QString RecordFileOf(const DirectoryTables& tables, std::size_t entry);

// The rows of the list view for the first count entries: of dirEntriesNew while the list shows the
// instrument's memory, else of dirEntries.
std::vector<ListRow> RowsForList(const DirectoryTables& tables, int count);

}  // namespace davo
