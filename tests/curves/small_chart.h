// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "curves/curve_chart.h"

namespace davo::test {

// What the live display shows of a shot, one after the other.
enum class Moment { Empty, FirstReading, Readings, Complete };

inline constexpr int kReadings = 20;

// The readings of a core with its knee near knee volts, from the lowest up.
inline std::vector<CurvePoint> ReadingsOf(double knee) {
    std::vector<CurvePoint> points;
    double current = 0.0031;
    for (int i = 0; i < kReadings; ++i) {
        points.push_back({current, knee * 1.1 * current / (current + 0.04) + 3 * i * current});
        current *= 1.4;
    }
    return points;
}

// A chart that is only looked at, as the display of a running shot has it.
inline void ShowMoment(CurveChart& chart, Moment moment, double knee = 152) {
    chart.SetInteractive(false);
    const std::vector<CurvePoint> points = ReadingsOf(knee);
    if (moment == Moment::Complete) {
        const ChartCurve complete{
            {},
            points,
            {{KneeRule::Ieee30, points.at(11), QStringLiteral("152.3 V, 0.031 A (?)")},
             {KneeRule::Ieee45, points.at(9), QStringLiteral("152.3 V, 0.031 A (?)")},
             {KneeRule::Asa1050, points.at(10), QStringLiteral("152.3 V, 0.031 A (?)")}},
            CurveLook::Normal};
        chart.SetCurves({{{}, ReadingsOf(knee * 1.6), {}, CurveLook::Faint},
                         {{}, ReadingsOf(knee / 2), {}, CurveLook::Faint},
                         complete});
        return;
    }
    chart.SetCurves({});
    if (moment == Moment::Empty) return;
    chart.SetCurves({{{}, {points.front()}, {}, CurveLook::Readings}});
    if (moment == Moment::FirstReading) return;
    for (int i = 1; i < kReadings; ++i)
        chart.AppendPoint(0, points.at(static_cast<std::size_t>(i)));
}

}  // namespace davo::test
