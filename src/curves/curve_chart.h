// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>
#include <optional>
#include <vector>

#include "reports/chart_curve.h"
#include "reports/log_axes.h"

class QLabel;

namespace davo {

class HandsOnPlot;

// Excitation curves on logarithmic axes: amperes across, volts up. Points at or below zero cannot
// be drawn there and are left out. Colours follow the palette (light, dark, high contrast).
class CurveChart : public QWidget {
  public:
    explicit CurveChart(QWidget* parent = nullptr);

    // Replaces everything that is drawn; the axes hold all points. A decade of amperes is as long
    // as one of volts; in a chart that is only looked at the axes have whole decades. Paints later,
    // once, however often it is called.
    void SetCurves(std::vector<ChartCurve> curves);
    // One more point at the end of curve number index; the axes grow by whole decades when it is
    // outside, and never shrink. Costs the same however many there are.
    void AppendPoint(std::size_t index, CurvePoint point);

    // Off for a chart that is only looked at: no crosshair, no zoom, no row for them, no focus. On
    // at first.
    void SetInteractive(bool on);

    // The part of the axes that is shown, amperes and volts.
    LogSpan Across() const;
    LogSpan Up() const;

    // Keys: + - zoom, arrows move, 0 or Home shows all; wheel zooms at the pointer; Left and Right
    // with Ctrl step the crosshair from point to point.
    void ZoomBy(double factor);
    void ShowAll();

    // The point nearest to the pointer, as it is shown; nothing when the pointer is away.
    std::optional<Crosshair> AtCrosshair() const;

    // Writes what is shown, dark on white whatever the palette, without the crosshair. Size in
    // pixels. Throws what ReplaceFile throws; a file that was there is then as it was.
    void SavePng(const QString& path, QSize size);

    // How often it was painted since it was made.
    int Paints() const;

    QSize sizeHint() const override { return {460, 420}; }
    QSize minimumSizeHint() const override { return {260, 180}; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    QWidget* BuildTools();

    HandsOnPlot* plot_ = nullptr;
    QLabel* lblCrosshair_ = nullptr;
    QWidget* tools_ = nullptr;
};

}  // namespace davo
