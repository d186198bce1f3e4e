// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "reports/report_tables.h"
#include "reports/workbook.h"

// The charts of a report and the cells that they take their numbers from.
namespace davo {

inline constexpr int kFirstPointRow = 19;
inline constexpr int kColourBlue = 5;

// Where a test's sheet has the kneepoint of a rule.
struct KneeCells {
    CellPlace voltage;
    CellPlace current;
};
KneeCells KneeCellsOf(KneeRule rule);

// The number of points of a test, never negative.
int PointCountOf(const ReportTables& report, int slot);
// The row of the point table's last row; that of its first for a test without points.
int LastPointRow(const ReportTables& report, int slot);

// The curve of a test that has points, a point of its own when it has one; its sheet is the one of
// its slot. The name is the caller's.
ChartSeries CurveOf(const ReportTables& report, int slot, int colour);

// The red star at a test's kneepoint by the rule of a label; none when there is no kneepoint, or
// one that logarithmic axes cannot show.
std::optional<ChartSeries> MarkerOf(const ReportTables& report, int slot,
                                    std::string_view kneepointType);

// The colour of a test's curve in the summary: ten in turn.
int SummaryColour(int slot);

// A chart with its axes, at "G42", without titles and series.
struct ChartPlace {
    Chart chart;
    CellPlace last;  // no cell right of it or below it is under the chart
};

// Down to the table's last row at least, and so wide that table and chart fill a landscape page.
ChartPlace ChartBesideTable(int lastTableRow);

}  // namespace davo
