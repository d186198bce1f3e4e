// SPDX-License-Identifier: GPL-3.0-or-later
// The crosshair, the mouse and the keys.
#include "curves/curve_plot.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace davo {

namespace {

constexpr double kZoomStep = 1.25;
constexpr double kMoveStep = 0.15;

}  // namespace

void CurveChart::Plot::SetCross(std::optional<Crosshair> cross) {
    cross_ = std::move(cross);
    lblCrosshair_->setText(cross_ ? QStringLiteral("%1: %2 A, %3 V")
                                        .arg(cross_->curve, ValueText(cross_->point.current),
                                             ValueText(cross_->point.voltage))
                                  : QString());
    setAccessibleDescription(lblCrosshair_->text());
    // Only the layer of the crosshair, once there is something below it.
    if (paints_ > 0) {
        layer(QStringLiteral("overlay"))->replot();
    } else {
        Redraw();
    }
}

void CurveChart::Plot::PointTo(QPointF pixel) {
    std::optional<Crosshair> nearest;
    double least = 0;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const ChartCurve& curve = lines_.at(i).curve;
        for (std::size_t j = 0; j < curve.points.size(); ++j) {
            const CurvePoint point = curve.points.at(j);
            if (!CanBeDrawn(point)) continue;
            const QPointF way = PixelOf(point) - pixel;
            const double distance = QPointF::dotProduct(way, way);
            if (nearest && distance >= least) continue;
            least = distance;
            nearest = Crosshair{curve.name, point};
            stepLine_ = i;
            stepPoint_ = j;
        }
    }
    SetCross(std::move(nearest));
}

// To the next point that can be seen, of this curve or the one after it.
void CurveChart::Plot::Step(int by) {
    struct Place {
        std::size_t line;
        std::size_t point;
    };
    std::vector<Place> places;
    std::ptrdiff_t here = -1;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        for (std::size_t j = 0; j < lines_.at(i).curve.points.size(); ++j) {
            if (!CanBeDrawn(lines_.at(i).curve.points.at(j))) continue;
            if (i == stepLine_ && j == stepPoint_) here = std::ssize(places);
            places.push_back({i, j});
        }
    }
    if (places.empty()) return;
    // The first press shows where it starts.
    const std::ptrdiff_t next =
        cross_ ? std::clamp<std::ptrdiff_t>(here + by, 0, std::ssize(places) - 1)
               : (by > 0 ? 0 : std::ssize(places) - 1);
    const Place& place = places.at(static_cast<std::size_t>(next));
    stepLine_ = place.line;
    stepPoint_ = place.point;
    const CurvePoint point = lines_.at(place.line).curve.points.at(place.point);
    const double across = std::log10(point.current);
    const double up = std::log10(point.voltage);
    if (across < across_.low || across > across_.high || up < up_.low || up > up_.high)
        Move((across - (across_.low + across_.high) / 2) / across_.Length(),
             (up - (up_.low + up_.high) / 2) / up_.Length());
    SetCross(Crosshair{lines_.at(place.line).curve.name, point});
}

void CurveChart::Plot::SetInteractive(bool on) {
    interactive_ = on;
    setFocusPolicy(on ? Qt::StrongFocus : Qt::NoFocus);
    lblCrosshair_->setVisible(on);
    // One that is only looked at stands beside something else: it keeps its room for the curve.
    TakeColours(colours_);
    if (!on && cross_) SetCross(std::nullopt);
}

void CurveChart::Plot::showEvent(QShowEvent* event) {
    QCustomPlot::showEvent(event);
    Redraw();
}

void CurveChart::Plot::paintEvent(QPaintEvent* event) {
    QCustomPlot::paintEvent(event);
    ++paints_;
    if (!interactive_ || !hasFocus()) return;
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void CurveChart::Plot::resizeEvent(QResizeEvent* event) {
    if (event->size().isEmpty()) return;
    WrapLegend(event->size().width());
    QCustomPlot::resizeEvent(event);
}

void CurveChart::Plot::mouseMoveEvent(QMouseEvent* event) {
    if (!interactive_) return;
    if (axisRect()->rect().contains(event->pos())) {
        PointTo(event->position());
    } else if (cross_) {
        SetCross(std::nullopt);
    }
}

// A press only gives the focus.
void CurveChart::Plot::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(interactive_);
}
void CurveChart::Plot::mouseReleaseEvent(QMouseEvent* event) {
    event->setAccepted(interactive_);
}
void CurveChart::Plot::mouseDoubleClickEvent(QMouseEvent* event) {
    event->setAccepted(interactive_);
}

void CurveChart::Plot::leaveEvent(QEvent* event) {
    if (cross_) SetCross(std::nullopt);
    QCustomPlot::leaveEvent(event);
}

void CurveChart::Plot::wheelEvent(QWheelEvent* event) {
    constexpr double kNotch = 120;
    if (!interactive_ || event->angleDelta().y() == 0) {
        event->ignore();
        return;
    }
    Zoom(std::pow(kZoomStep, event->angleDelta().y() / kNotch), event->position());
    event->accept();
}

void CurveChart::Plot::keyPressEvent(QKeyEvent* event) {
    const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
    const bool other = (event->modifiers() & (Qt::AltModifier | Qt::MetaModifier)) != 0;
    if (!interactive_ || other || !HandleKey(event->key(), control))
        QCustomPlot::keyPressEvent(event);
}

bool CurveChart::Plot::HandleKey(int key, bool control) {
    const QPointF middle = axisRect()->rect().center();
    switch (key) {
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            Zoom(kZoomStep, middle);
            break;
        case Qt::Key_Minus:
            Zoom(1 / kZoomStep, middle);
            break;
        case Qt::Key_0:
        case Qt::Key_Home:
            ShowWhole();
            break;
        case Qt::Key_Left:
            control ? Step(-1) : Move(-kMoveStep, 0);
            break;
        case Qt::Key_Right:
            control ? Step(1) : Move(kMoveStep, 0);
            break;
        case Qt::Key_Up:
            Move(0, kMoveStep);
            break;
        case Qt::Key_Down:
            Move(0, -kMoveStep);
            break;
        default:
            return false;
    }
    return true;
}

}  // namespace davo
