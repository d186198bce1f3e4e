// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "reports/chart_curve.h"
#include "reports/page/drawing.h"

namespace davo {

// What is around a chart's frame, of one curve: numbers and names of the axes. In mm.
inline constexpr QSizeF kChartAround(13.2, 12.5);

// Curves on logarithmic axes, amperes across and volts up, a decade as long across as up, with
// their marked kneepoints; of several curves a legend below. Size in mm.
Drawing ChartOf(const std::vector<ChartCurve>& curves, QSizeF size);

}  // namespace davo
