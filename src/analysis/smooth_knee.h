// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"
#include "analysis/smooth_curve.h"

namespace davo {

// The kneepoint that a rule means, on a smooth curve through the points instead of on their pairs.
struct SmoothKnee {
    CurvePoint at;
    // In volts, at least 0.1 and at most a tenth of the voltage: nineteen of twenty kneepoints are
    // not farther away.
    double uncertainty = 0;
    bool operator==(const SmoothKnee&) const = default;
};

// Where the points leave a kneepoint open: nineteen of twenty are within. Volts.
struct KneeRange {
    double low = 0;
    double high = 0;
    bool operator==(const KneeRange&) const = default;
};

// What a smooth curve says of a rule's kneepoint.
struct SmoothVerdict {
    std::optional<SmoothKnee> knee;
    std::optional<KneeRange> range;  // in its place where it is too uncertain for a number
    // The curve has such a place, but the rounding or the scatter of the points can make it: it is
    // no kneepoint then.
    bool isOpen = false;
    // Up to which current, in amperes, the rule can be asked of the curve; 0 where the points do
    // not tell at all.
    double reach = 0;
    // The curve is surely bent more than the rule's limit somewhere, or it is at its end: the core
    // saturated.
    bool isBent = false;
};

// Looks for the highest place of the curve under which it is steep and above which it is bent:
//   IEEE 45 degree  d(ln I) / d(ln V) = 1
//   IEEE 30 degree  d(ln I) / d(ln V) = 1.81, the rule's limit
//   ASA 10/50       10 % more voltage drives 50 % more current
// Nothing where the curve has no such place, where it is not sure to be steep below and bent above,
// and for ASA where it ends less than 10 % above it. docs/kneepoints.md compares them with the
// rules.
SmoothVerdict SmoothKneepoint(KneeRule rule, const SmoothCurve& curve);

}  // namespace davo
