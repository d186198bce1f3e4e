// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <initializer_list>
#include <string>
#include <vector>

#include "reports/chart_curve.h"

namespace davo {

// What lines and texts are drawn in; curve number i has Ink::Curve + i % kCurveInks.
enum Ink : int { kTextInk, kQuietInk, kLineInk, kFineInk, kMarkInk, kBrandInk, kCurveInk };
inline constexpr int kCurveInks = 10;

enum class Anchor { Start, Middle, End };

struct DrawnLine {
    std::vector<QPointF> points;  // mm from the top left
    int ink = kLineInk;
    double width = 0.2;  // mm
    int dash = 0;        // 0 solid, 1 dashed, 2 dotted
    bool filled = false;
    QString name = {};  // shown where the pointer is on it
    QString link = {};  // where a press on it leads; empty: nowhere
};

// All in points.
inline constexpr double kChartText = 8;

struct DrawnText {
    QPointF at;  // on the base line
    QString text;
    Anchor anchor = Anchor::Start;
    bool bold = false;
    int ink = kTextInk;
    bool upward = false;
};

// Lines, then texts over them. Who writes it needs to know nothing else.
struct Drawing {
    QSizeF size;  // mm
    std::vector<DrawnLine> lines;
    std::vector<DrawnText> texts;
};

inline constexpr double kMillimetresPerPoint = 25.4 / 72;

// What is around a chart's frame, of one curve: numbers and names of the axes. In mm.
inline constexpr QSizeF kChartAround(13.2, 12.5);

// Curves on logarithmic axes, amperes across and volts up, a decade as long across as up, with
// their marked kneepoints; of several curves a legend below. Size in mm.
Drawing ChartOf(const std::vector<ChartCurve>& curves, QSizeF size);

// The drawing as SVG for the inside of a page that has the style "page/chart.css".
QString SvgOf(const Drawing& drawing, const QString& title);

// A part that is the same in each page.
QByteArray PageResource(const char* name);

// The page of that name with parts in its places, one after the other.
std::string FilledPage(const char* name, std::initializer_list<std::string> parts);

}  // namespace davo
