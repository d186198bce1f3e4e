// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/knee_marks.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>

namespace davo {

namespace {

constexpr double kHalf = 7.5;  // of a marker
constexpr double kLabelWay = 14;
constexpr double kLineWidth = 2;

QString LabelText(KneeRule rule) {
    return QLatin1Char(' ') + KneeWord(rule) + QLatin1Char(' ');
}

QRectF LabelPlace(QPointF mark, QSizeF size, const QRectF& area, const std::vector<QRectF>& taken) {
    QRectF place(mark + QPointF(kLabelWay, kLabelWay), size);
    if (place.right() > area.right()) place.moveRight(area.right());
    const auto blocking = [&] {
        return std::find_if(taken.begin(), taken.end(),
                            [&](const QRectF& other) { return other.intersects(place); });
    };
    for (auto other = blocking(); other != taken.end(); other = blocking())
        place.moveTop(other->bottom() + 1);
    if (place.bottom() <= area.bottom()) return place;
    // No room below: upwards.
    place.moveBottom(mark.y() - kLabelWay);
    for (auto other = blocking(); other != taken.end(); other = blocking())
        place.moveBottom(other->top() - 1);
    return place;
}

// A triangle, a diamond, a ringed cross.
void DrawMarker(QPainter& painter, const PlacedKnee& knee) {
    const QPointF at = knee.at;
    const QPointF across(kHalf, 0);
    const QPointF down(0, kHalf);
    if (knee.rule == KneeRule::Ieee30) {
        painter.drawPolygon(QPolygonF({at - down, at + across + down, at - across + down}));
    } else if (knee.rule == KneeRule::Ieee45) {
        painter.drawPolygon(QPolygonF({at - down, at + across, at + down, at - across}));
    } else {
        painter.drawEllipse(at, kHalf, kHalf);
        painter.drawLine(at - across, at + across);
        painter.drawLine(at - down, at + down);
    }
}

}  // namespace

QString KneeWord(KneeRule rule) {
    if (rule == KneeRule::Ieee30) return QStringLiteral("IEEE 30");
    if (rule == KneeRule::Ieee45) return QStringLiteral("IEEE 45");
    return QStringLiteral("ASA 10/50");
}

QRectF MarkerOf(const PlacedKnee& knee) {
    return {knee.at - QPointF(kHalf, kHalf), QSizeF(2 * kHalf, 2 * kHalf)};
}

void PlaceLabels(std::vector<PlacedKnee>& knees, const QFontMetrics& metrics, const QRectF& area) {
    // From the top, so that what is pushed down goes to the next place.
    std::sort(knees.begin(), knees.end(), [](const PlacedKnee& one, const PlacedKnee& other) {
        return one.at.y() < other.at.y();
    });
    std::vector<QRectF> taken;
    taken.reserve(2 * knees.size());
    for (const PlacedKnee& knee : knees)
        taken.push_back(MarkerOf(knee));
    for (PlacedKnee& knee : knees) {
        const QSizeF size = metrics.size(Qt::TextSingleLine, LabelText(knee.rule));
        knee.label = LabelPlace(knee.at, size, area, taken);
        taken.push_back(knee.label);
    }
}

void DrawKneeMarks(QPainter& painter, const std::vector<PlacedKnee>& knees,
                   const ChartColours& colours) {
    for (const PlacedKnee& knee : knees) {
        const QRectF& label = knee.label;
        painter.setPen(QPen(colours.text, 1));
        painter.drawLine(knee.at, label.left() > knee.at.x()
                                      ? QPointF(label.left(), label.center().y())
                                      : QPointF(label.center().x(), label.top()));
        painter.setBrush(colours.base);
        painter.drawRect(label);
        painter.drawText(label, Qt::AlignCenter, LabelText(knee.rule));
        painter.setPen(QPen(colours.text, kLineWidth));
        painter.setBrush(Qt::NoBrush);
        DrawMarker(painter, knee);
    }
}

}  // namespace davo
