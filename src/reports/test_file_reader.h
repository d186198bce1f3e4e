// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "reports/report_tables.h"

namespace davo {

enum class ReportSource {
    RecordFile,
    GroupFile,  // two records, each behind its own header: "2Graphs.GRP"
};

inline constexpr const char* kOverlayName = "2Graphs";

// The name of a record file without folder and without ".txt" (in any case of letters).
QString ReportNameOf(const QString& recordFile);
// The workbook of a report: "T0012" gives "T0012.xls".
QString WorkbookFileName(const QString& reportName);

// Reads the tests of a record file, or of a group file, into slots 0, 1, 2 ... and computes them:
// all three kneepoints where a test has more than three points, "N/A" where not, then the grid
// points where it has more than one. Points stand in the file from the lowest to the highest. A
// header serves all records up to the next one; one without a record fills a slot without data.
// The lines of a group file are fields that a comma has cut: a line that is not the one expected
// belongs to the text before it.
//
// Throws RunTimeError 62 when the file ends inside a header or a record, or has no test at all;
// 13 when a line is not the one that belongs there or its number is none (the error's text names
// the line); 9 for more than 31 tests, more than 101 points of a test and what InsertGridPoints
// refuses; 6 when a value is too large.
ReportTables ParseReportTables(std::string_view bytes, std::string_view reportName,
                               ReportSource source);

// ParseReportTables of a file, named after it (a group file: "2Graphs"); throws the errors of
// ReadWholeFile too.
ReportTables ReadReportTables(const QString& path, ReportSource source);

// What a report shows of a phase angle's text ("1.5 DEG"): "IN PHASE", "OUT OF PHASE" or "N/A" by
// the rule of PolarityOfPhase; "N/A" for a text without "DEG".
std::string PhaseText(std::string_view value);

}  // namespace davo
