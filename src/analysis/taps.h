// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/comparison.h"
#include "analysis/curve_point.h"

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
// ignored. Nothing when one of them is not two numbers above zero, or when there is none.
std::optional<std::vector<Tap>> ParseTaps(std::string_view text);

// The curve of another tap of the same core: the voltage is in proportion to the turns, the current
// in proportion to 1 / turns. Its kneepoint, with its uncertainty or its range, goes with it.
std::vector<CurvePoint> ScaledToTurns(const std::vector<CurvePoint>& points, double fromTurns,
                                      double toTurns);
ComparedCurve ScaledToTurns(const ComparedCurve& curve, double fromTurns, double toTurns);

// What the instrument gives, and the highest current that a record has a number for.
inline constexpr double kHighestVoltage = 1000;
inline constexpr double kHighestCurrent = 65535 * 0.0002;

// How far a curve has to go beyond its kneepoint that it can be found: by ASA 10/50 10 % more
// voltage, which drives 50 % more current.
inline constexpr double kVoltageBeyondKnee = 1.1;
inline constexpr double kCurrentBeyondKnee = 1.5;

// Why this instrument cannot saturate a tap or another winding, by its name, in one sentence; empty
// where it can, and where the curve has no kneepoint for certain. Of a range the high end counts.
std::string TooMuchSentenceOf(const std::string& name, const ComparedCurve& curve);

// What moves an expected curve onto a measured one: all its voltages times one factor, all its
// currents times another.
struct Shift {
    double lnVoltage = 0;
    double lnCurrent = 0;
};

// Nothing where the curves have too little in common, or are too straight to tell a factor of the
// voltage from one of the current.
std::optional<Shift> ShiftBetween(const std::vector<CurvePoint>& measured,
                                  const std::vector<CurvePoint>& expected);

// How far both may be from the proportion; what the steps of points and taps explain is less.
inline constexpr double kProportionPercent = 5;

// Whether voltage and current of a measured tap are what its turns give, and one sentence about it.
Verdict VerdictOf(const std::optional<Shift>& shift);
std::string ShiftSentenceOf(const std::string& name, const std::optional<Shift>& shift);

}  // namespace davo
