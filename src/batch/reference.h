// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "analysis/comparison.h"
#include "reports/record_facts.h"

namespace davo {

// The record that the tests of others are compared with.
class Reference {
  public:
    // Throws what ReadRecordFacts throws. rule is that of the kneepoints; limit is in percent.
    Reference(const QString& path, KneeRule rule, std::optional<double> limit);

    // The names of the columns that a comparison has in a row.
    static std::string Columns();
    // Their texts for a test, the last one of which is sentences. It is compared with the test of
    // the same number, or with the only one that has a curve.
    std::vector<std::string> TextsOf(const RecordTest& test) const;

  private:
    struct Curve {
        std::string test;  // its number
        ComparedCurve curve;
    };

    const std::string name_;
    const KneeRule rule_;
    const std::optional<double> limit_;
    std::vector<Curve> curves_;
};

}  // namespace davo
