// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/comparison.h"
#include "analysis/curve_point.h"
#include "analysis/limits.h"

namespace davo {

// A pair of taps by its nameplate currents.
struct Tap {
    double primary = 0;    // amperes
    double secondary = 0;  // amperes

    double Turns() const { return primary / secondary; }
    std::string Name() const;  // "1200:5"
    bool operator==(const Tap&) const = default;
};

// Taps as they are typed, "1200:5, 600/5"; a comma, a semicolon or a line end between them, blanks
// ignored. Nothing when one of them is not a current of 0.1 A to 100000 A and one of 0.1 A to 20 A,
// which all transformers have, or when there is none.
std::optional<std::vector<Tap>> ParseTaps(std::string_view text);

// The curve of another tap of the same core: the voltage is in proportion to the turns, the current
// in proportion to 1 / turns. Its kneepoint, with its uncertainty or its range, goes with it.
ComparedCurve ScaledToTurns(const ComparedCurve& curve, double fromTurns, double toTurns);

// Why this instrument cannot saturate a tap or another winding, by its name, in one sentence; empty
// where it can, and where the curve has no kneepoint for certain. To find a kneepoint by ASA 10/50
// a curve has to go 10 % above its voltage. What the uncertainty or the range of the kneepoint
// leaves open is said as open.
std::string TooMuchSentenceOf(const std::string& name, const ComparedCurve& curve);

// Whether a measured tap is what its turns give, by the voltage at equal current within 5 %, in one
// sentence with its name. expected is the full winding's curve, scaled to its turns.
Finding TapFinding(const std::string& name, const std::vector<CurvePoint>& measured,
                   const ComparedCurve& expected);

}  // namespace davo
