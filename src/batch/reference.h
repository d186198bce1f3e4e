// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/comparison.h"
#include "batch/command_line.h"
#include "reports/record_facts.h"

namespace davo {

// The curves that the tests of records are compared with, by the number of each one's test.
using Reference = std::map<std::string, ComparedCurve>;

// Those of a record, or a maker's curve in a CSV file; none where nothing is compared. Throws what
// ReadRecordFacts and ParseReferenceCurve throw.
Reference ReadReference(const BatchOptions& options);

// The texts for a test, the reference's name first and sentences last. It is compared with the test
// of the same number, or with the only one that has a curve.
std::vector<std::string> ComparedTexts(const RecordTest& test, const Reference& reference,
                                       const BatchOptions& options);
// The names of their columns.
inline constexpr std::string_view kComparedColumns =
    ",reference,reference_test,voltage_worst_percent,voltage_below_knee_percent,"
    "voltage_above_knee_percent,current_worst_percent,knee_percent,knee_pm_percent,within_limit,"
    "comparison";

}  // namespace davo
