// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "curves/curve_plot.h"

class QLabel;

namespace davo {

// A plot in the operator's hands: crosshair, mouse, keys and focus.
class HandsOnPlot : public CurvePlot {
  public:
    // lblCrosshair shows what the crosshair is at.
    HandsOnPlot(QWidget* parent, QLabel* lblCrosshair);

    void SetCurves(std::vector<ChartCurve> curves);
    // Off: only looked at, without crosshair, zoom, focus and equal decades.
    void SetInteractive(bool on);
    // What a key does; false for one that does nothing.
    bool HandleKey(int key, bool control);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    // The points that can be pointed at, curve by curve.
    std::vector<Crosshair> Places() const;
    void PointTo(QPointF pixel);
    void Step(int by);
    void SetCross(std::optional<Crosshair> cross);
    void SayCross();

    QLabel* lblCrosshair_;
    std::ptrdiff_t step_ = 0;  // of Places: where the crosshair is
    bool interactive_ = true;
};

}  // namespace davo
