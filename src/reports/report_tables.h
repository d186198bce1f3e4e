// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/result_tables.h"
#include "records/record_file.h"

namespace davo {

// What a report's sheet shows of a test besides its points and results; texts without blanks
// around them.
struct ReportTest {
    RecordFileHeader header;
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
    std::size_t controls = 0;  // TestRecordFile::controls

    int TestCount() const { return static_cast<int>(tests.size()); }
};

inline constexpr std::string_view kNotesSeparator = ":::";
inline constexpr const char* kOverlayName = "2Graphs";

// Fills slots 0, 1, 2 ... with the tests of a record file, or of a group file, and computes them:
// all three kneepoints where a test has more than three points, "N/A" where not, then the grid
// points where it has more than one. Points are in the file from the lowest to the highest. A
// header without a record fills a slot without data.
//
// Throws what ParseTestRecordFile throws; RunTimeError 62 when there is no test at all; 9 for more
// than 31 tests, more than 101 points of a test and what InsertGridPoints refuses; 6 when a value
// is too large.
ReportTables ParseReportTables(std::string_view bytes, std::string_view reportName,
                               RecordSource source);

// ParseReportTables of a file, named after it (a group file: "2Graphs"); throws the errors of
// ReadWholeFile too.
ReportTables ReadReportTables(const QString& path, RecordSource source);

}  // namespace davo
