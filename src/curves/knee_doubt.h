// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "curves/record_tests.h"

namespace davo {

// How far a smooth curve's kneepoint, or one without a doubtful point, may be from the printed one,
// as a part of its voltage.
inline constexpr double kTrustedDifference = 0.15;

// Fills reason, doubt and smooth of a fact whose rule and printed kneepoint are those of these
// points, current in amperes and voltage in volts, from the lowest up. The sentences go by what the
// search of ComputeKneepoint met on its way (docs/kneepoints.md).
void AddDoubts(KneeFact& fact, const std::vector<CurvePoint>& points);

// How the search of ComputeKneepoint ended.
enum class SearchEnd {
    NoPair,       // no pair decided
    FirstPoints,  // at the third point: "N/A"
    Exact,        // at a pair that meets the limit
    Crossed,      // between a pair above the limit and one below
};

// A pair of points as the search took it; indices from 0.
struct SearchedPair {
    std::size_t lower = 0;
    std::size_t upper = 0;  // the point that the differences were taken from
};

// The search through the points of a curve, from the top down to the pair that ended it.
struct SearchPath {
    SearchEnd end = SearchEnd::NoPair;
    std::vector<SearchedPair> pairs;
    bool metAbove = false;  // a pair above the rule's limit
    bool metBelow = false;
};
SearchPath FollowSearch(KneeRule rule, const std::vector<CurvePoint>& points);

}  // namespace davo
