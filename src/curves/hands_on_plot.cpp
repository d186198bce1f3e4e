// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/hands_on_plot.h"

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

HandsOnPlot::HandsOnPlot(QWidget* parent, QLabel* lblCrosshair)
    : CurvePlot(parent), lblCrosshair_(lblCrosshair) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
}

void HandsOnPlot::SetCurves(std::vector<ChartCurve> curves) {
    step_ = 0;
    Set(std::move(curves));
    SayCross();
}

void HandsOnPlot::SetCross(std::optional<Crosshair> cross) {
    ShowCross(std::move(cross));
    SayCross();
}

void HandsOnPlot::SayCross() {
    const auto& cross = Cross();
    lblCrosshair_->setText(cross ? QStringLiteral("%1: %2 A, %3 V")
                                       .arg(cross->curve, ValueText(cross->point.current),
                                            ValueText(cross->point.voltage))
                                 : QStringLiteral("Point at a curve to read it."));
    setAccessibleDescription(lblCrosshair_->text());
}

void HandsOnPlot::PointTo(QPointF pixel) {
    const std::vector<Crosshair> places = Places();
    const auto nearest = std::ranges::min_element(places, {}, [&](const Crosshair& place) {
        const QPointF way = PixelOf(place.point) - pixel;
        return QPointF::dotProduct(way, way);
    });
    if (nearest == places.end()) return;
    step_ = nearest - places.begin();
    SetCross(*nearest);
}

std::vector<Crosshair> HandsOnPlot::Places() const {
    std::vector<Crosshair> places;
    for (const Line& line : Lines()) {
        for (const CurvePoint& point : line.curve.points) {
            if (CanBeDrawn(point) && line.curve.look != CurveLook::Band)
                places.push_back({line.curve.name, point});
        }
    }
    return places;
}

// To the next point that can be seen, of this curve or the one after it.
void HandsOnPlot::Step(int by) {
    const std::vector<Crosshair> places = Places();
    if (places.empty()) return;
    // The first press shows where it starts.
    const std::ptrdiff_t last = std::ssize(places) - 1;
    step_ = Cross() ? std::clamp<std::ptrdiff_t>(step_ + by, 0, last) : (by > 0 ? 0 : last);
    const Crosshair& place = places.at(static_cast<std::size_t>(step_));
    const CurvePoint point = place.point;
    const double across = std::log10(point.current);
    const double up = std::log10(point.voltage);
    const LogSpan x = Across();
    const LogSpan y = Up();
    if (across < x.low || across > x.high || up < y.low || up > y.high)
        Move((across - (x.low + x.high) / 2) / x.Length(),
             (up - (y.low + y.high) / 2) / y.Length());
    SetCross(place);
}

void HandsOnPlot::SetInteractive(bool on) {
    interactive_ = on;
    setFocusPolicy(on ? Qt::StrongFocus : Qt::NoFocus);
    SetEqualDecades(on);
    if (!on && Cross()) SetCross(std::nullopt);
}

void HandsOnPlot::paintEvent(QPaintEvent* event) {
    CurvePlot::paintEvent(event);
    if (!interactive_ || !hasFocus()) return;
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void HandsOnPlot::mouseMoveEvent(QMouseEvent* event) {
    if (!interactive_) return;
    if (axisRect()->rect().contains(event->pos())) {
        PointTo(event->position());
    } else if (Cross()) {
        SetCross(std::nullopt);
    }
}

// A press gives the focus and, for a finger, reads the point.
void HandsOnPlot::mousePressEvent(QMouseEvent* event) {
    mouseMoveEvent(event);
    event->setAccepted(interactive_);
}
void HandsOnPlot::mouseReleaseEvent(QMouseEvent* event) {
    event->setAccepted(interactive_);
}
void HandsOnPlot::mouseDoubleClickEvent(QMouseEvent* event) {
    event->setAccepted(interactive_);
}

void HandsOnPlot::leaveEvent(QEvent* event) {
    if (Cross()) SetCross(std::nullopt);
    CurvePlot::leaveEvent(event);
}

void HandsOnPlot::wheelEvent(QWheelEvent* event) {
    constexpr double kNotch = 120;
    if (!interactive_ || event->angleDelta().y() == 0) {
        event->ignore();
        return;
    }
    Zoom(std::pow(kZoomStep, event->angleDelta().y() / kNotch), event->position());
    event->accept();
}

void HandsOnPlot::keyPressEvent(QKeyEvent* event) {
    const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
    const bool other = (event->modifiers() & (Qt::AltModifier | Qt::MetaModifier)) != 0;
    if (!interactive_ || other || !HandleKey(event->key(), control))
        CurvePlot::keyPressEvent(event);
}

bool HandsOnPlot::HandleKey(int key, bool control) {
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
