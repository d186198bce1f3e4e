// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "analysis/comparison.h"
#include "curves/shown_records.h"
#include "records/nameplate_file.h"

namespace davo {

// What a shown test is by what was typed of its nameplate, below headings: the class, where one was
// typed, and the taps. Of these the kneepoint that is expected of each, what this instrument cannot
// saturate, and the measured taps of the same record against it; the turns of a test are its
// nameplate ratio. curve is the test's by rule.
std::vector<std::pair<std::string, std::vector<Finding>>> NameplateFindings(
    const NameplateTexts& texts, const ShownRecords& shown, std::size_t test, KneeRule rule,
    const ComparedCurve& curve);

// SmoothText of its kneepoint.
std::string KneeTextOf(const ComparedCurve& curve);

}  // namespace davo
