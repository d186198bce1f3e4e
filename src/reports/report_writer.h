// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "reports/report_tables.h"
#include "reports/workbook.h"

namespace davo {

// The settings that a report depends on.
struct ReportOptions {
    std::string kneepointType;  // the rule whose kneepoint is marked; no mark for an unknown text
    bool showImpedance = false;
};

// The workbook of a report, in the order of its tabs:
//   - a sheet per test, a copy of the template's model: the title, the labels with their values,
//     the point table, the excitation chart at "G42" with the kneepoint marked by a red star;
//   - for more than one test "SummaryGraph": all curves in one chart, and the kneepoints beside;
//   - "NOTES", only when there are notes.
// A test's sheet is called "Test 1-Graph" and so on by the test's place in the file, which is
// unique and legal whatever the file is called. Where no point was measured, words are in place
// of the curve. Throws RunTimeError 9 for more than 31 tests.
Workbook BuildReport(const ReportTables& report, const ReportOptions& options);

// What is shown while a test's sheet is written; n from 1 to m.
std::string PlottingGraphText(int n, int m);

}  // namespace davo
