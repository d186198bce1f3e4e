// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/knee_marks.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "reports/record_texts.h"

namespace davo {

namespace {

constexpr double kHalf = 7.5;       // of a marker
constexpr double kSmallHalf = 5;    // of one in the table
constexpr double kMarkerRoom = 22;  // of a row
constexpr double kRowRoom = 4;
constexpr double kTextGap = 10;
constexpr double kLineWidth = 2;
constexpr double kMostWidth = 0.65;  // of the area

int WordsWidth(const std::vector<PlacedKnee>& knees, const QFontMetrics& metrics) {
    int widest = 0;
    for (const PlacedKnee& placed : knees)
        widest = std::max(widest, metrics.horizontalAdvance(KneeWord(placed.knee.rule)));
    return widest;
}

int PointsIn(const QRectF& area, const std::vector<QPolygonF>& curves) {
    int count = 0;
    for (const QPolygonF& curve : curves)
        count +=
            static_cast<int>(std::count_if(curve.begin(), curve.end(), [&](const QPointF& point) {
                return area.contains(point);
            }));
    return count;
}

// The rows in a corner, with their lines.
std::vector<PlacedKnee> Placed(std::vector<PlacedKnee> knees, QRectF table, bool right,
                               const std::vector<QPolygonF>& curves) {
    const double height = table.height() / static_cast<double>(knees.size());
    double top = table.top();
    // What no line may cross.
    std::vector<QPolygonF> taken;
    if (!curves.empty()) taken.push_back(curves.front());
    for (PlacedKnee& knee : knees) {
        knee.row = QRectF(table.left(), top, table.width(), height);
        top += height;
        QLineF line({right ? table.left() : table.right(), knee.row.center().y()}, knee.at);
        // To the marker's edge: the curve goes through its middle.
        line.setLength(std::max(0.0, line.length() - kHalf - 1));
        if (CrossingsOf(line, taken) > 0) continue;
        knee.leader = line;
        taken.push_back(QPolygonF({line.p1(), line.p2()}));
    }
    return knees;
}

// What is bad about such a table: the more, the worse.
int Badness(const std::vector<PlacedKnee>& knees, const std::vector<QPolygonF>& curves) {
    constexpr int kHiddenMarker = 100;
    constexpr int kNoLeader = 20;
    QRectF table;
    int bad = 0;
    for (const PlacedKnee& knee : knees) {
        table |= knee.row;
        bad += knee.leader.isNull() ? kNoLeader : CrossingsOf(knee.leader, curves);
    }
    for (const PlacedKnee& knee : knees)
        bad += MarkerOf(knee).intersects(table) ? kHiddenMarker : 0;
    return bad + PointsIn(table, curves);
}

// A triangle, a diamond, a ringed cross.
void DrawMarker(QPainter& painter, KneeRule rule, QPointF at, double half) {
    const QPointF across(half, 0);
    const QPointF down(0, half);
    if (rule == KneeRule::Ieee30) {
        painter.drawPolygon(QPolygonF({at - down, at + across + down, at - across + down}));
    } else if (rule == KneeRule::Ieee45) {
        painter.drawPolygon(QPolygonF({at - down, at + across, at + down, at - across}));
    } else {
        painter.drawEllipse(at, half, half);
        painter.drawLine(at - across, at + across);
        painter.drawLine(at - down, at + down);
    }
}

}  // namespace

QRectF MarkerOf(const PlacedKnee& knee) {
    return {knee.at - QPointF(kHalf, kHalf), QSizeF(2 * kHalf, 2 * kHalf)};
}

int CrossingsOf(const QLineF& line, const std::vector<QPolygonF>& curves) {
    int count = 0;
    for (const QPolygonF& curve : curves) {
        for (int i = 1; i < curve.size(); ++i) {
            const QLineF piece(curve.at(i - 1), curve.at(i));
            if (line.intersects(piece, nullptr) == QLineF::BoundedIntersection) ++count;
        }
    }
    return count;
}

void PlaceKnees(std::vector<PlacedKnee>& knees, const std::vector<QPolygonF>& curves,
                const QFontMetrics& metrics, const QRectF& area) {
    // Lines in the order of their rows do not cross each other.
    std::sort(knees.begin(), knees.end(), [](const PlacedKnee& one, const PlacedKnee& other) {
        return one.at.y() != other.at.y() ? one.at.y() < other.at.y() : one.at.x() > other.at.x();
    });
    const double words = kMarkerRoom + WordsWidth(knees, metrics) + kTextGap;
    int widest = 0;
    for (const PlacedKnee& placed : knees)
        widest = std::max(widest, metrics.horizontalAdvance(placed.knee.text));
    // Where there is no room for the values, the words alone tell the marks apart.
    const double whole = words + widest + kTextGap;
    QRectF table(0, 0, whole <= area.width() * kMostWidth ? whole : words,
                 static_cast<double>(knees.size()) * (metrics.height() + kRowRoom));
    table.moveBottomRight(area.bottomRight());
    std::vector<PlacedKnee> below = Placed(knees, table, true, curves);
    table.moveTopLeft(area.topLeft());
    std::vector<PlacedKnee> above = Placed(std::move(knees), table, false, curves);
    knees = std::move(Badness(below, curves) <= Badness(above, curves) ? below : above);
}

QRectF LegendPlace(QSizeF size, const QRectF& area, const std::vector<PlacedKnee>& knees,
                   const std::vector<QPolygonF>& curves) {
    constexpr int kSteps = 7;  // each way
    constexpr int kOnTable = 100;
    constexpr int kOfTheChosen = 4;
    constexpr int kPointRoom = 6;  // for half of a point's marker
    const auto badness = [&](const QRectF& place) {
        // To hide a point is worse than to touch its marker, and so is to hide a line between two.
        const QRectF around = place.adjusted(-kPointRoom, -kPointRoom, kPointRoom, kPointRoom);
        int bad = PointsIn(place, curves) + PointsIn(around, curves);
        bad += CrossingsOf({place.topLeft(), place.bottomRight()}, curves);
        bad += CrossingsOf({place.topRight(), place.bottomLeft()}, curves);
        if (!knees.empty()) bad += kOfTheChosen * PointsIn(place, {curves.front()});
        for (const PlacedKnee& knee : knees) {
            if (place.intersects(knee.row) || place.intersects(MarkerOf(knee))) bad += kOnTable;
            bad += CrossingsOf(knee.leader, {QPolygonF(place)});
        }
        return bad;
    };
    const QSizeF step = (area.size() - size) / kSteps;
    std::vector<QRectF> places;
    for (int down = 0; down <= kSteps; ++down) {
        for (int across = 0; across <= kSteps; ++across)
            places.emplace_back(
                area.topLeft() + QPointF(across * step.width(), down * step.height()), size);
    }
    return *std::ranges::min_element(places, {}, badness);
}

void DrawKneeMarks(QPainter& painter, const std::vector<PlacedKnee>& knees,
                   const ChartColours& colours) {
    if (knees.empty()) return;
    const QPen line(colours.text, 1);
    const QPen marker(colours.text, kLineWidth);
    painter.setPen(line);
    for (const PlacedKnee& placed : knees) {
        if (!placed.leader.isNull()) painter.drawLine(placed.leader);
    }
    painter.setBrush(colours.base);
    painter.drawRect(knees.front().row.united(knees.back().row));
    painter.setBrush(Qt::NoBrush);
    const double words = WordsWidth(knees, painter.fontMetrics());
    for (const PlacedKnee& placed : knees) {
        painter.setPen(marker);
        DrawMarker(painter, placed.knee.rule, placed.at, kHalf);
        const QPointF middle(placed.row.left() + kMarkerRoom / 2, placed.row.center().y());
        DrawMarker(painter, placed.knee.rule, middle, kSmallHalf);
        painter.setPen(line);
        QRectF text = placed.row.adjusted(kMarkerRoom, 0, 0, 0);
        painter.drawText(text, Qt::AlignVCenter, KneeWord(placed.knee.rule));
        text.setLeft(text.left() + words + kTextGap);
        if (text.width() > 1) painter.drawText(text, Qt::AlignVCenter, placed.knee.text);
    }
}

}  // namespace davo
