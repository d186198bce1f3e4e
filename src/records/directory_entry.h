// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// A directory entry is one line that sums up a record file:
//   name "!" date(8) " " time(5) "TESTS=" count(2) "COMPANY=" "STATION=" "CIRCUIT=" "MFR="
//   "MODEL=" "SN=" "OPERATOR=" "COMMENTS=", each key with up to 20 characters.
// The operator is before the comments, and these two are cut one character earlier than the
// others: they keep the blank after the colon. The comments are always the tail.

// The lines of a record file that an entry is made of.
inline constexpr std::size_t kSummaryLines = 12;

// What one record file gives to the directory.
struct RecordSummary {
    std::string entry;
    std::string baseName;       // file name up to its first ".", trimmed
    std::string station;        // trimmed
    std::optional<QDate> date;  // nothing when the date text is no date
};

// Sums up the record file fileName (Windows-1252, with extension, no folder) from its first twelve
// lines without line ends. Short lines give short values. Throws RunTimeError 62 when there are
// fewer than twelve.
RecordSummary SummariseRecord(std::string_view fileName, const std::vector<std::string>& lines);

// The date of "MM/DD/YY", exactly in that form: years 00 to 29 are 2000 to 2029, 30 to 99 are 1930
// to 1999. Nothing for any other text.
std::optional<QDate> ParseRecordDate(std::string_view text);

// "MM/DD/YY".
std::string RecordDateText(QDate date);

// Orders entries (in enumeration order) by sortedDates, as many as there are entries: their
// indices. Each date takes the first unused entry that contains its text anywhere, so also one
// whose comments hold it; a single entry is taken whatever its date. A date whose own entry was
// taken that way by another one finds none; such places get the entries left over, in enumeration
// order, so that no record drops out of the list.
std::vector<std::size_t> OrderByDate(const std::vector<std::string>& entries,
                                     const std::vector<QDate>& sortedDates);
// The entries in that order.
std::vector<std::string> PlaceByDate(const std::vector<std::string>& entries,
                                     const std::vector<QDate>& sortedDates);

// The part of entry before its first "!"; nothing when there is none.
std::optional<std::string> EntryName(std::string_view entry);

// One row of the list view: the seven columns as shown, and the serial number, by which a row is
// found.
struct ListRow {
    std::string filename;
    std::string date;
    std::string tests;
    std::string station;
    std::string circuit;
    std::string mfr;
    std::string model;
    std::string serial = {};

    bool operator==(const ListRow&) const = default;
};

// The rows of the first count entries; ends before the first entry without "!". Station, circuit,
// manufacturer, model and serial number are filled with blanks to 20.
std::vector<ListRow> RowsOfEntries(const std::vector<std::string>& entries, int count);

}  // namespace davo
