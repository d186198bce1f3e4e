// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"

namespace davo {

// The kneepoint that a rule means, on a smooth curve through the points instead of on their pairs:
// a second opinion where the points lie far apart. The curve is log V over log I, cubic between two
// points and rising like them (F. N. Fritsch, R. E. Carlson, "Monotone piecewise cubic
// interpolation", SIAM J. Numer. Anal. 17 (1980), 238-246; slopes at the points by F. N. Fritsch,
// J. Butland, SIAM J. Sci. Stat. Comput. 5 (1984), 300-304). On it, the highest point under which
// the curve is steep and above which it is bent:
//   IEEE 45 degree  d(log V) / d(log I) = tan 45 (IEEE C57.13, cores without a gap)
//   IEEE 30 degree  d(log V) / d(log I) = tan 30 (the same, gapped cores)
//   ASA 10/50       10 % more voltage drives 50 % more current
// docs/kneepoints.md compares them with the rules.
//
// points in amperes and volts, from the lowest up; those that are not above zero are left out, and
// one that does not raise the current counts for its voltage only. Nothing when fewer than four are
// left, when current or voltage falls by more than the rules' rounding (0.05 %), and when the
// curve has no such point; for ASA also when it ends less than 10 % above it. Current has four
// decimals, voltage one.
std::optional<CurvePoint> SmoothKneepoint(KneeRule rule, const std::vector<CurvePoint>& points);

}  // namespace davo
