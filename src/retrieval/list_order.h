// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// What a test list is sorted by, as the settings hold it.
inline constexpr std::int16_t kDisplayDate = 1;
inline constexpr std::int16_t kDisplayFilename = 2;
inline constexpr std::int16_t kDisplayStation = 3;

// The values of the settings, or Date and kDescending for one that is none of theirs.
std::int16_t ValidDisplay(std::int16_t sortDisplay);
std::int16_t ValidOrder(std::int16_t sortOrder);

// The key of every entry without a station: they sort together.
inline constexpr const char* kNoStationKey = "++**%%$$";

// The station by which an entry is sorted: lower case, trimmed.
std::string StationKey(std::string_view entry);

// A line of a test list.
struct ListedRecord {
    std::string entry;
    QString file;  // of the data folder; empty in an instrument's memory

    bool operator==(const ListedRecord&) const = default;
};

// records by date, record name or station (sortDisplay) in the direction of sortOrder; names and
// stations in lower case. Those of one key keep their order. An entry whose date is none is
// older than every date.
std::vector<ListedRecord> DisplayAndSort(std::vector<ListedRecord> records,
                                         std::int16_t sortDisplay, std::int16_t sortOrder);

// Keeps of records what a list can show: all that have the mark behind their name. How many others
// there were.
int KeepWholeEntries(std::vector<ListedRecord>& records);

// The two folders of a job, each ended by the separator.
struct JobFolders {
    QString dataPath;
    QString excelPath;

    bool operator==(const JobFolders&) const = default;
};

// The folders of the one that the operator chose: a folder named "Shots_Data" is taken as it is and
// the reports are beside it; else both are in the chosen one.
JobFolders FoldersOf(const QString& chosen);

}  // namespace davo
