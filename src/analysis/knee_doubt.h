// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"

namespace davo {

// The kneepoint of one rule as the report has it, and what there is to say about it.
struct KneeFact {
    KneeRule rule = KneeRule::Ieee30;
    Kneepoint printed;   // the report's texts; "0" or "N/A" where there is none
    std::string reason;  // why there is none, a sentence or two; empty where there is one
    std::string doubt;   // why the printed one is doubtful; empty where it is not or there is none
    // The kneepoint of a smooth curve through the same points, in volts and amperes, where it is
    // more than 15 % in voltage away from the printed one, or none is printed; nothing where the
    // two agree or the smooth curve has none.
    std::optional<CurvePoint> smooth;

    // The printed kneepoint as numbers; nothing where there is none.
    std::optional<CurvePoint> At() const;
};

// The three kneepoints of a test's points, current in amperes and voltage in volts, from the
// lowest up: "N/A" for three points or fewer, else those of ComputeKneepoint; with their reasons
// and doubts. Throws what ComputeKneepoint throws.
std::array<KneeFact, 3> KneesOf(const std::vector<CurvePoint>& points);

// How far a smooth curve's kneepoint, or one without a doubtful point, may be from the printed one,
// as a part of its voltage.
inline constexpr double kTrustedDifference = 0.15;

// Fills reason, doubt and smooth of a fact whose rule and printed kneepoint are those of four
// points or more. The sentences go by path, what the search of that kneepoint met on its way
// (docs/kneepoints.md).
void AddDoubts(KneeFact& fact, const SearchPath& path, const std::vector<CurvePoint>& points);

}  // namespace davo
