// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/result_tables.h"
#include "records/header_table.h"

namespace davo {

// The header of a record file as a report shows it; texts without blanks around them.
struct ReportHeader {
    std::string testNumber;                             // the name of the record file
    std::string date;                                   // "MM/DD/YY"
    std::string time;                                   // "HH:MM"
    std::array<std::string, kHeaderFieldCount> fields;  // COMPANY to OPERATOR
};

// What a report's sheet shows of a test besides its points and results.
struct ReportTest {
    ReportHeader header;
    std::string description;
    std::string notes;
    bool hasRecord = true;  // false: a header without a record behind it
};

// A whole report: the tests of a record file, or the two of an overlay.
struct ReportTables {
    std::string reportName;         // "T0012", "2Graphs"
    std::vector<ReportTest> tests;  // by test slot, as many as were read
    ResultTables tables;
    std::string notes;  // every line preceded by kNotesSeparator
    bool isOverlay = false;

    int TestCount() const { return static_cast<int>(tests.size()); }
};

inline constexpr std::string_view kNotesSeparator = ":::";

}  // namespace davo
