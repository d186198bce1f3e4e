// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "analysis/curve_point.h"

namespace davo {

// How the name of a maker's curve ends that is kept beside the records.
inline constexpr const char* kReferenceCurveEnding = ".reference.csv";

// The points of a maker's curve from a table of two columns, current and voltage, in amperes and
// volts unless the heading has "mA" or "kV" or such; a heading with volts in front of amperes turns
// them. Fields end at a semicolon or a tab, and then a decimal comma is understood, or at a comma.
// Lines of empty fields do not count. Where the heading names no unit, that of units counts, which
// is written as a heading is. Throws RunTimeError 13 with the line that is no point, or when fields
// end at a semicolon or a tab and numbers have points and commas; 62 when there is none.
std::vector<CurvePoint> ParseReferenceCurve(std::string_view bytes, std::string_view units = {});

// Whether the heading names the unit of a current and that of a voltage.
bool NamesUnits(std::string_view bytes);

// A curve as it is kept: "A;V" and a line for each point, with 15 digits. Throws RunTimeError 6
// for a number that is not finite.
std::string ReferenceCurveText(const std::vector<CurvePoint>& points);

}  // namespace davo
