// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cmath>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"

namespace davo {

// A value in amperes or volts as a person reads it, with six digits at most: "0.0124", "152.3".
inline QString ValueText(double value) {
    constexpr int kDigits = 6;
    return QString::number(value, 'g', kDigits);
}

// Whether a logarithmic chart can show a point.
inline bool CanBeDrawn(const CurvePoint& point) {
    return point.current > 0 && point.voltage > 0 && std::isfinite(point.current) &&
           std::isfinite(point.voltage);
}

// A kneepoint on the chart: told apart by the marker's shape, which the table of kneepoints has,
// too, with the rule's word and the text.
struct KneeMark {
    KneeRule rule = KneeRule::Ieee30;
    CurvePoint at;
    QString text = {};  // its volts and amperes, as the report has them
};

enum class CurveLook {
    Normal,    // line with markers; dash and marker by the curve's place in the list
    Faint,     // pale, behind the others, not in the legend
    Band,      // the area that the points go around, in the colour of the curve in front of it in
               // the list; behind the others, not in the legend, and nothing to point at
    Readings,  // points as they arrive, the last one marked
};

// Of which the legend has nothing.
inline bool IsBehind(CurveLook look) {
    return look == CurveLook::Faint || look == CurveLook::Band;
}

struct ChartCurve {
    QString name;  // for the legend and the crosshair
    std::vector<CurvePoint> points;
    std::vector<KneeMark> knees;
    CurveLook look = CurveLook::Normal;
    QString link = {};  // on a page, where a press on it leads
};

// The point of a curve that the pointer or the keys are at.
struct Crosshair {
    QString curve;
    CurvePoint point;
};

}  // namespace davo
