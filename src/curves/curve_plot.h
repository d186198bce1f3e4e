// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The drawing library is written with Qt's keywords: what includes this is compiled with them.
#include <qcustomplot.h>

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "curves/chart_curve.h"
#include "curves/chart_look.h"
#include "curves/log_axes.h"

namespace davo {

inline constexpr int kCurveWidth = 2;
inline constexpr double kAxisTextGrowth = 1.1;

inline bool CanBeDrawn(const CurvePoint& point) {
    return point.current > 0 && point.voltage > 0 && std::isfinite(point.current) &&
           std::isfinite(point.voltage);
}

inline QFont Grown(const QFont& font, double growth, bool bold = false) {
    QFont grown = font;
    grown.setPointSizeF(font.pointSizeF() * growth);
    grown.setBold(bold);
    return grown;
}

// What a chart is drawn on: axes, curves, kneepoints and the crosshair.
class CurvePlot : public QCustomPlot {
  public:
    explicit CurvePlot(QWidget* parent);

    void Set(std::vector<ChartCurve> curves);
    void Append(std::size_t index, CurvePoint point);
    void Zoom(double factor, QPointF at);
    void Move(double across, double up);
    void ShowWhole();
    void TakeColours(const ChartColours& colours);
    // For a chart beside something else: more of its room for the curve.
    void SetCompact(bool compact);
    const std::optional<Crosshair>& Cross() const { return cross_; }
    LogSpan Across() const { return across_; }
    LogSpan Up() const { return up_; }
    int Paints() const { return paints_; }
    // Draws with the colours of paper and without the crosshair, the legend as wide as the paper.
    template <class Work>
    void OnPaper(int paperWidth, const Work& work);

  protected:
    struct Line {
        ChartCurve curve;
        QCPCurve* drawn = nullptr;
    };

    const std::vector<Line>& Lines() const { return lines_; }
    QPointF PixelOf(CurvePoint point) const;
    void ShowCross(std::optional<Crosshair> cross);

    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void BuildAxes();
    void Redraw();
    QCPCurve* CurveOf(const ChartCurve& curve);
    void TakeWhole(const std::vector<double>& amperes, const std::vector<double>& volts);
    void GrowTo(CurvePoint point);
    void ShowSpans();
    void LeaveMargins();
    void StyleLines();
    void StyleLine(const Line& line, std::size_t look);
    std::vector<QCPAbstractLegendItem*> LegendItems() const;
    void WrapLegend(int width);
    void DrawKnees(QCPPainter& painter) const;
    void DrawLastReadings(QCPPainter& painter) const;
    void DrawCross(QCPPainter& painter) const;

    std::vector<Line> lines_;
    LogSpan wholeAcross_;
    LogSpan wholeUp_;
    LogSpan across_;
    LogSpan up_;
    ChartColours colours_;
    std::optional<Crosshair> cross_;
    bool compact_ = false;
    int paints_ = 0;
};

template <class Work>
void CurvePlot::OnPaper(int paperWidth, const Work& work) {
    const ChartColours shown = colours_;
    const std::optional<Crosshair> cross = std::exchange(cross_, std::nullopt);
    TakeColours(PaperColours());
    WrapLegend(paperWidth);
    work();
    cross_ = cross;
    WrapLegend(width());
    TakeColours(shown);
}

}  // namespace davo
