// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/comparison.h"
#include "reports/record_facts.h"

namespace davo {

// The record, or the maker's curve in a CSV file, that the tests of records are compared with.
class Reference {
  public:
    // Throws what ReadRecordFacts and ParseReferenceCurve throw. rule is that of the kneepoints;
    // limit is in percent.
    Reference(const QString& path, KneeRule rule, std::optional<double> limit);

    // The texts for a test, the last one of which is sentences. It is compared with the test of the
    // same number, or with the only one that has a curve.
    std::vector<std::string> TextsOf(const RecordTest& test) const;
    // The names of their columns.
    static constexpr std::string_view kColumns =
        ",reference,reference_test,voltage_worst_percent,voltage_worst_at_A,"
        "voltage_below_knee_percent,voltage_below_knee_at_A,voltage_above_knee_percent,"
        "voltage_above_knee_at_A,current_worst_percent,current_worst_at_V,"
        "current_below_knee_percent,current_below_knee_at_V,current_above_knee_percent,"
        "current_above_knee_at_V,knee_percent,knee_pm_percent,within_limit,comparison";

  private:
    const std::string name_;
    const KneeRule rule_;
    const std::optional<double> limit_;
    std::vector<std::pair<std::string, ComparedCurve>> curves_;  // each by the test's number
};

}  // namespace davo
