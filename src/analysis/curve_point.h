// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

#include "common/numbers.h"

namespace davo {

inline constexpr std::size_t kPointsPerTest = 101;  // points 0 to 100

// What points are rounded by: all their values as they are read, voltages once more as they are
// shown.
inline constexpr std::string_view kPointPicture = "###0.0000";
inline constexpr std::string_view kVoltagePicture = "###0.0";

struct CurvePoint {
    double current = 0;  // amperes
    double voltage = 0;  // volts
    bool operator==(const CurvePoint&) const = default;
};

// A point of a record as kneepoints and reports take it. Throws RunTimeError 6 (Overflow) when a
// value is not finite.
inline CurvePoint PointByPicture(double current, double voltage) {
    return {RoundByPicture(current, kPointPicture), RoundByPicture(voltage, kPointPicture)};
}

}  // namespace davo
