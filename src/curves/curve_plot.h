// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The drawing library is written with Qt's keywords: what includes this is compiled with them.
#include <qcustomplot.h>

#include <optional>
#include <utility>
#include <vector>

#include "curves/chart_look.h"
#include "curves/knee_marks.h"
#include "reports/chart_curve.h"
#include "reports/log_axes.h"

namespace davo {

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
    // Whether a decade of amperes is as long as one of volts, so that 45 degrees look like 45. Off:
    // whole decades over all of the room.
    void SetEqualDecades(bool equal);
    const std::optional<Crosshair>& Cross() const { return cross_; }
    LogSpan Across() const { return shown_.across; }
    LogSpan Up() const { return shown_.up; }
    int Paints() const { return paints_; }
    // Draws with the colours of paper and without the crosshair.
    template <class Work>
    void OnPaper(const Work& work);

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
    void updateLayout() override;

  private:
    // Of both axes.
    struct Spans {
        LogSpan across;
        LogSpan up;
        bool operator==(const Spans&) const = default;
    };

    void BuildAxes();
    void Redraw();
    QCPCurve* CurveOf(const ChartCurve& curve);
    void TakeAll();
    void ShowSpans();
    void TakeRanges();
    void LeaveMargins();
    void PlaceInside();
    void StyleLine(const Line& line, std::size_t look) const;
    void DrawLastReadings(QCPPainter& painter) const;
    void DrawCross(QCPPainter& painter) const;

    std::vector<Line> lines_;
    Spans all_;    // of all points
    Spans whole_;  // the same with decades of one length
    Spans shown_;  // the part of it that is shown
    Spans asked_;  // the same before its decades had one length
    std::vector<PlacedKnee> knees_;
    ChartColours colours_;
    std::optional<Crosshair> cross_;
    bool showsWhole_ = true;  // nothing is outside of what is shown
    bool equal_ = true;
    int paints_ = 0;
};

template <class Work>
void CurvePlot::OnPaper(const Work& work) {
    const ChartColours shown = colours_;
    const Spans spans = shown_;
    const std::optional<Crosshair> cross = std::exchange(cross_, std::nullopt);
    TakeColours(PaperColours());
    work();
    cross_ = cross;
    shown_ = spans;
    TakeColours(shown);
}

}  // namespace davo
