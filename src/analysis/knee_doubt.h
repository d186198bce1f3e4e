// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"
#include "analysis/smooth_knee.h"

namespace davo {

// The kneepoint of one rule as the report has it, and what there is to say about it.
struct KneeFact {
    KneeRule rule = KneeRule::Ieee30;
    Kneepoint printed;   // the report's texts; "0" or "N/A" where there is none
    std::string reason;  // why there is none, a sentence or two; empty where there is one
    std::string doubt;   // why the printed one is doubtful; empty where it is not or there is none
    // The kneepoint of a smooth curve through the same points, with its uncertainty, or the range
    // that the points leave open for it; neither where that curve has none for certain. Rounded:
    // currents have four decimals, voltages one.
    std::optional<SmoothKnee> smooth;
    std::optional<KneeRange> range;

    // The printed kneepoint as numbers; nothing where there is none.
    std::optional<CurvePoint> At() const;
};

// The three kneepoints of a test's points, current in amperes and voltage in volts, from the
// lowest up: "N/A" for three points or fewer, else those of ComputeKneepoint; with their reasons
// and doubts. Throws what ComputeKneepoint throws.
std::array<KneeFact, 3> KneesOf(const std::vector<CurvePoint>& points);

// The same kneepoints without reasons, doubts and smooth ones, which take most of the time.
std::array<KneeFact, 3> PrintedKneesOf(const std::vector<CurvePoint>& points);

// How far a rule's kneepoint and that of a smooth curve may be apart, as a part of the voltage:
// what the interpolation of the two explains.
double TrustedDifference(KneeRule rule);

// How far a kneepoint may move, as a part of its voltage, when one point is left out.
inline constexpr double kTrustedMove = 0.15;

// How wide, from its low to its high end, a range may be to say something of the printed kneepoint.
inline constexpr double kTrustedRange = 1.4;

// Fills reason, doubt, smooth and range of a fact whose rule and printed kneepoint are those of
// four points or more. The sentences go by path, what the search of that kneepoint met on its way,
// and by curve, which goes through the points (docs/kneepoints.md).
void AddDoubts(KneeFact& fact, const SearchPath& path, const std::vector<CurvePoint>& points,
               const SmoothCurve& curve);

}  // namespace davo
