// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include "tests/support/record_text.h"

namespace davo::test {

// Record files for the panel: curves of cores of another size each, with their own doubts.

inline std::string Curve(const PointTexts& points, int number) {
    RecordParts parts;
    parts.number = " " + std::to_string(number);
    parts.points = points;
    return RecordText(parts);
}

// A curve of 16 points with the knee near knee volts.
inline PointTexts SmoothCurve(double knee) {
    PointTexts points;
    double current = 0.003;
    for (int i = 0; i < 16; ++i) {
        const double voltage = knee * 1.1 * current / (current + 0.04);
        char amperes[32];
        char volts[32];
        std::snprintf(amperes, sizeof amperes, "%.4f", current);
        std::snprintf(volts, sizeof volts, "%.1f", voltage);
        points.emplace_back(amperes, volts);
        current *= 1.6;
    }
    return points;
}

// Many points that rise slowly, then steeply in current: every rule has a kneepoint beyond doubt.
inline PointTexts PlainCurve() {
    PointTexts points;
    for (double voltage = 12; voltage < 390; voltage *= 1.05) {
        char amperes[32];
        char volts[32];
        const double current = 0.002 * std::pow(voltage, 0.6) + 0.02 * std::pow(voltage / 300, 15);
        std::snprintf(amperes, sizeof amperes, "%.4f", current);
        std::snprintf(volts, sizeof volts, "%.1f", voltage);
        points.emplace_back(amperes, volts);
    }
    return points;
}

// A straight line: no rule has a kneepoint.
inline PointTexts StraightCurve() {
    return {{"0.0100", "10.0"},
            {"0.0200", "20.0"},
            {"0.0400", "40.0"},
            {"0.0800", "80.0"},
            {"0.1600", "160.0"}};
}

// Two points below the bend, far from each other.
inline PointTexts OpenCurve() {
    return {{"0.0100", "10.0"},
            {"0.1000", "120.0"},
            {"1.0000", "400.0"},
            {"3.0000", "410.0"},
            {"9.0000", "415.0"}};
}

inline PointTexts FallingCurve() {
    PointTexts points = SmoothCurve(200);
    points.at(9).second = "120.0";
    return points;
}

inline PointTexts ThreePoints() {
    return {{"0.0100", "10.0"}, {"0.0200", "20.0"}, {"0.0400", "40.0"}};
}

}  // namespace davo::test
