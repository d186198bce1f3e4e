// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// The rules by which the kneepoint of an excitation curve is found.
enum class KneeRule { Asa1050, Ieee45, Ieee30 };

// In the order in which a report computes them.
inline constexpr std::array kKneeRules = {KneeRule::Asa1050, KneeRule::Ieee45, KneeRule::Ieee30};

// The rule of a label such as "ASA 10/50 Marker"; nothing for an unknown one.
std::optional<KneeRule> KneeRuleOf(std::string_view label);

// Volts and amperes as texts. "0" for both: no kneepoint was found; "N/A" for both: the curve
// begins to bend at its very first points.
struct Kneepoint {
    std::string voltage = "0";
    std::string current = "0";
    bool operator==(const Kneepoint&) const = default;
};
inline Kneepoint NoKneepoint() {
    return {"N/A", "N/A"};
}

// The fewest points that have a kneepoint.
inline constexpr int kPointsForKnee = 4;

// The slope ratio at which a rule has its kneepoint.
double KneeThreshold(KneeRule rule);

// How a search ended.
enum class SearchEnd {
    NoPair,       // no pair decided
    FirstPoints,  // at the third point: "N/A"
    Exact,        // at a pair that meets the threshold
    Crossed,      // between a pair above the threshold and one below
};

// A pair of points as the search took it; indices from 0.
struct SearchedPair {
    std::size_t lower = 0;
    std::size_t upper = 0;  // the point that the differences were taken from
    double ratio = 0;       // that of the pair above where the two have the same voltage
};

// A search through the points of a curve, from the top down to the pair that ended it.
struct SearchPath {
    SearchEnd end = SearchEnd::NoPair;
    std::vector<SearchedPair> pairs;
    bool metAbove = false;  // a pair above the threshold
    bool metBelow = false;  // pairs below it, before any above
};

// The part of from by which to is larger, rounded as text. Throws RunTimeError 6 (Overflow) when it
// is not finite.
double RelativeChange(double from, double to);

// The kneepoint of a curve, searched from its last point downward; current in amperes and voltage
// in volts, point 0 the lowest, both of the same length. Every pair of points has the slope ratio
// (relative change of current) / (relative change of voltage), rounded as text; where it falls
// below the rule's threshold the curve has its knee. The search is told in docs/kneepoints.md.
// Throws RunTimeError 9 (Subscript out of range) for a curve without points and 6 (Overflow) when
// a difference, a quotient or the result is not finite. path, where it is wanted, becomes the one
// of this search.
Kneepoint ComputeKneepoint(KneeRule rule, std::span<const double> current,
                           std::span<const double> voltage, SearchPath* path = nullptr);

// A decimal text cut, not rounded, behind its first decimal; a text without a point is cut behind
// its first character.
std::string CutToOneDecimal(std::string_view text);

}  // namespace davo
