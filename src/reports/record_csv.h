// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "reports/record_facts.h"

namespace davo {

// The points and results of records as comma-separated values, UTF-8 with its mark, lines ended by
// CR LF, quoted by RFC 4180: a row of column names, then a row for every point of every test with
// the test's texts repeated; a test without points has one row with the point's columns empty. The
// columns are told in docs/csv.md. Texts stand as they are in the record, but one that a
// spreadsheet would take for a formula has an apostrophe in front.
std::string RecordsAsCsv(const std::vector<RecordFacts>& records);

}  // namespace davo
