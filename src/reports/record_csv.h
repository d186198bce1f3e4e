// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

#include "reports/record_facts.h"

namespace davo {

// The points and results of records as comma-separated values, UTF-8 with its mark, lines ended by
// CR LF, quoted by RFC 4180: a row of column names, then a row for every point of every test with
// the test's texts repeated; a test without points has one row with the point's columns empty. The
// columns are told in docs/csv.md. Texts are as they are in the record, but one that a
// spreadsheet would take for a formula has an apostrophe in front.
std::string RecordsAsCsv(const std::vector<RecordFacts>& records);

// A row for each test of a record, as a program reads it: quoted in the same way, UTF-8 without the
// mark, lines ended by LF, so that rows of many records can be put one behind the other. file is
// where the record is. judged: there are also the smooth kneepoints, and what there is to say about
// the printed ones; the tests are judged then. The columns are told in docs/csv.md.
std::string TestRowsOf(const RecordFacts& record, const QString& file, bool judged);
// The row with the names of their columns; those of RecordTest::compared begin with a comma.
std::string TestRowsHeading(bool judged, std::string_view compared = {});

}  // namespace davo
