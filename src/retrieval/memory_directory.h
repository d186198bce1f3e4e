// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/prompts.h"
#include "link/link.h"

namespace davo {

// The most records of the instrument's memory that are listed.
inline constexpr int kMostMemoryRecords = 135;

inline constexpr const char* kNoTestRecordsMessage = "There are no test records.";

// Asks the instrument for its memory directory: discards what waits at the port, "B", then "d" up
// to "DONE". Nothing, after the message that belongs to it, when "B" is not answered or the reply
// is shorter than 10 characters; nothing without a message when the wait was ended or the port was
// lost. The port must be open.
std::optional<std::string> ReadMemoryDirectory(Link& link, Prompts& prompts);

// The records of a directory reply as text, in reply order: "#", three digits, CR LF, date and
// time, then the keys "TESTS=" (2 characters), "COMPANY=", "STATION=", "CIRCUIT=", "MFR=",
// "MODEL=", "SN=", "OPERATOR=", "COMMENTS=" (20 characters each), up to one character behind the
// comment. What is between records is passed over.
struct CutRecordsResult {
    std::vector<std::string> records;  // whole ones, at most kMostMemoryRecords
    std::vector<std::string> entries;  // of each: a directory entry
    int damaged = 0;                   // records that noise or a cut left in part
    int beyond = 0;                    // whole records after the last that is listed
};
CutRecordsResult CutRecords(std::string_view dirReply);

// The directory entries of a reply, "TST_" and the record number for a name (see
// records/directory_entry.h for the form), newest first, those of one day in reply order.
struct MemoryDirectory {
    std::vector<std::string> entries;
    std::vector<QDate> dates;  // sorted; kNoRecordDate for a text that is no date
    int damaged = 0;
    int beyond = 0;
    int cleaned = 0;  // records with control characters, which the entries have as "?"
};
MemoryDirectory BuildEntries(std::string_view dirReply);

// What an operator is told about records that are not listed, or not as they are; empty when all
// are.
QString NotListedText(const MemoryDirectory& directory);

}  // namespace davo
