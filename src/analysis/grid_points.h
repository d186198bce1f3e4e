// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <span>
#include <vector>

#include "analysis/curve_point.h"

namespace davo {

// Currents in amperes at which a report's point table shows the curve. The last place is no grid
// current; it stays 0.
inline constexpr std::array<double, 14> kGridCurrents = {0.01, 0.02, 0.04, 0.08, 0.1, 0.2, 0.4,
                                                         0.8,  1,    2,    4,    8,   10,  0};

// The curve with a point at every grid current between two of its points, voltages linear between
// them; current and voltage of the same length, in rising order as a rule. Currents are rounded to
// four decimals, voltages to one. Where the grid is used up at the last pair, the walk ends with
// the curve's last point. Throws RunTimeError 9 (Subscript out of range) for a curve without
// points, when the grid is used up earlier (a current above 10 A before the last pair) and when
// the new curve has more than 101 points; 6 (Overflow) when a value is not finite.
std::vector<CurvePoint> WithGridPoints(std::span<const double> current,
                                       std::span<const double> voltage);

}  // namespace davo
