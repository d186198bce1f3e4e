// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <vector>

#include "analysis/kneepoint.h"
#include "curves/chart_look.h"

class QFontMetrics;
class QPainter;

namespace davo {

// The word of a rule: "IEEE 30", "IEEE 45", "ASA 10/50".
QString KneeWord(KneeRule rule);

// A kneepoint in pixels, and where its word stands.
struct PlacedKnee {
    KneeRule rule = KneeRule::Ieee30;
    QPointF at;
    QRectF label;
};

// The marker of a kneepoint, in pixels.
QRectF MarkerOf(const PlacedKnee& knee);

// Finds a place in area for every word: right of its mark and below it, where a curve leaves room;
// no word stands on another one or on a mark as long as area has room.
void PlaceLabels(std::vector<PlacedKnee>& knees, const QFontMetrics& metrics, const QRectF& area);

// Draws the marks, a shape of its own for every rule, and their words in the painter's font.
void DrawKneeMarks(QPainter& painter, const std::vector<PlacedKnee>& knees,
                   const ChartColours& colours);

}  // namespace davo
