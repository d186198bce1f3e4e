// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineF>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>
#include <vector>

#include "curves/chart_look.h"
#include "reports/chart_curve.h"

class QFontMetrics;
class QPainter;

namespace davo {

// A kneepoint in pixels, its row in the table of kneepoints, and the line from its marker there.
struct PlacedKnee {
    KneeMark knee;
    QPointF at;
    QRectF row;
    QLineF leader;  // null where it would cross the curve
};

// The marker of a kneepoint, in pixels.
QRectF MarkerOf(const PlacedKnee& knee);

// How often line crosses the curves.
int CrossingsOf(const QLineF& line, const std::vector<QPolygonF>& curves);

// Gives every kneepoint its row of a table, the highest one first: in the corner of area below and
// right of the curves or in the one above and left of them, where it hides and its lines cross less
// of them. The first of the curves is that of the kneepoints.
void PlaceKnees(std::vector<PlacedKnee>& knees, const std::vector<QPolygonF>& curves,
                const QFontMetrics& metrics, const QRectF& area);
// Where in area a legend of that size hides least of the curves, the kneepoints and their table.
QRectF LegendPlace(QSizeF size, const QRectF& area, const std::vector<PlacedKnee>& knees,
                   const std::vector<QPolygonF>& curves);

// Draws the marks, a shape of its own for every rule, and their table in the painter's font.
void DrawKneeMarks(QPainter& painter, const std::vector<PlacedKnee>& knees,
                   const ChartColours& colours);

}  // namespace davo
