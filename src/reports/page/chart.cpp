// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/chart.h"

#include <QRectF>
#include <algorithm>
#include <array>
#include <cmath>

#include "reports/log_axes.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

constexpr double kTextSize = 8;
constexpr double kLegendRow = 4.4;
constexpr double kLegendLine = 9;
constexpr std::size_t kMostInLegend = 40;
constexpr std::size_t kMostWithMarkers = 10;
constexpr double kLeft = 13;
constexpr double kTop = 2;
constexpr double kBelow = kChartAround.height() - kTop;
constexpr double kNames = 9.2;  // of the axis across and of the mark, below the frame

// The outline of a marker: a many-sided figure, or a diamond with four corners.
std::vector<QPointF> OutlineAt(QPointF at, double radius, int corners) {
    std::vector<QPointF> outline;
    constexpr double kTurn = 6.283185307179586;
    for (int i = 0; i <= corners; ++i) {
        const double angle = kTurn * i / corners;
        outline.emplace_back(at.x() + radius * std::sin(angle), at.y() - radius * std::cos(angle));
    }
    return outline;
}

class ChartWriter {
  public:
    ChartWriter(const std::vector<ChartCurve>& curves, QSizeF size) : curves_(curves) {
        drawing_.size = size;
        for (const ChartCurve& curve : curves)
            legendWidth_ = std::max(legendWidth_, WidthOf(curve.name, kTextSize));
        legendWidth_ += kLegendLine + 5;
        const double wide = size.width() - kChartAround.width();
        inRow_ = std::max<std::size_t>(1, static_cast<std::size_t>(wide / legendWidth_));
        const auto entries = static_cast<double>(LegendCurves());
        // A short one is beside the axis's name.
        const bool isShort = entries * legendWidth_ < wide / 2 - 16;
        const double high =
            isShort ? 0 : kLegendRow * std::ceil(entries / static_cast<double>(inRow_));
        area_ = QRectF(kLeft, kTop, wide, size.height() - kChartAround.height() - high);
        legendTop_ = area_.bottom() + (isShort ? kNames - 1 : kBelow + 2);
        TakeSpans();
    }

    Drawing Write() {
        DrawAxis(true);
        DrawAxis(false);
        const QRectF& a = area_;
        Line({a.topLeft(), a.topRight(), a.bottomRight(), a.bottomLeft(), a.topLeft()}, kLineInk,
             0.3);
        for (std::size_t i = 0; i < curves_.size(); ++i)
            DrawCurve(i);
        for (const ChartCurve& curve : curves_) {
            for (const KneeMark& knee : curve.knees)
                DrawKnee(knee);
        }
        DrawLegend();
        return std::move(drawing_);
    }

  private:
    // Nobody follows one of so many by its colour.
    bool IsCrowded() const { return curves_.size() > kMostInLegend; }
    std::size_t LegendCurves() const {
        return curves_.size() == 1 || IsCrowded() ? 0 : curves_.size();
    }
    QString KneeLegend() const {
        for (const ChartCurve& curve : curves_) {
            if (!curve.knees.empty())
                return QStringLiteral("Kneepoint by ") + KneeWord(curve.knees.front().rule);
        }
        return {};
    }

    void TakeSpans() {
        std::vector<double> amperes;
        std::vector<double> volts;
        for (const ChartCurve& curve : curves_) {
            for (const CurvePoint& point : curve.points) {
                if (!CanBeDrawn(point)) continue;
                amperes.push_back(point.current);
                volts.push_back(point.voltage);
            }
        }
        across_ = SpanAround(amperes);
        up_ = SpanAround(volts);
        EqualDecades(across_, up_, area_.width(), area_.height(), false);
    }

    double Across(double amperes) const {
        return area_.left() +
               area_.width() * (std::log10(amperes) - across_.low) / across_.Length();
    }
    double Up(double volts) const {
        return area_.bottom() - area_.height() * (std::log10(volts) - up_.low) / up_.Length();
    }
    QPointF At(const CurvePoint& point) const { return {Across(point.current), Up(point.voltage)}; }

    void Line(std::vector<QPointF> points, int ink, double width, int dash = 0,
              bool filled = false) {
        drawing_.lines.push_back({std::move(points), ink, width, dash, filled});
    }
    void Text(QPointF at, const QString& text, Anchor anchor, bool bold = false,
              bool upward = false, int ink = kTextInk) {
        drawing_.texts.push_back({at, text, kTextSize, anchor, bold, ink, upward});
    }

    void DrawAxis(bool across) {
        const LogSpan span = across ? across_ : up_;
        const auto gridLine = [&](double value, int ink, double width) {
            const double exponent = std::log10(value);
            if (exponent < span.low || exponent > span.high) return false;
            if (across) {
                const double x = Across(value);
                Line({{x, area_.top()}, {x, area_.bottom()}}, ink, width);
            } else {
                const double y = Up(value);
                Line({{area_.left(), y}, {area_.right(), y}}, ink, width);
            }
            return true;
        };
        for (const double value : FineMarks(span))
            gridLine(value, kFineInk, 0.15);
        for (const double value : AxisMarks(span)) {
            if (!gridLine(value, kLineInk, 0.2)) continue;
            if (across) {
                Text({Across(value), area_.bottom() + 4}, ValueText(value), Anchor::Middle);
            } else {
                Text({area_.left() - 1.5, Up(value) + 1}, ValueText(value), Anchor::End);
            }
        }
        if (across) {
            Text({area_.center().x(), area_.bottom() + kNames},
                 QStringLiteral("Current in amperes"), Anchor::Middle, true);
        } else {
            Text({3, area_.center().y()}, QStringLiteral("Voltage in volts"), Anchor::Middle, true,
                 true);
        }
    }

    static int InkOf(std::size_t curve) { return kCurveInk + static_cast<int>(curve % kCurveInks); }
    static int DashOf(std::size_t curve) { return static_cast<int>(curve / kCurveInks % 3); }

    void DrawCurve(std::size_t index) {
        std::vector<QPointF> line;
        for (const CurvePoint& point : curves_[index].points) {
            if (CanBeDrawn(point)) line.push_back(At(point));
        }
        if (curves_.size() <= kMostWithMarkers) {
            constexpr std::array kCorners = {12, 4, 3, 5};
            for (const QPointF& at : line)
                Line(OutlineAt(at, 0.75, kCorners.at(index % kCorners.size())), InkOf(index), 0.1,
                     0, true);
        }
        Line(std::move(line), InkOf(index), IsCrowded() ? 0.15 : 0.45,
             IsCrowded() ? 0 : DashOf(index));
        drawing_.lines.back().name = curves_[index].name;
        drawing_.lines.back().link = curves_[index].link;
    }

    void DrawKnee(const KneeMark& knee) {
        if (!CanBeDrawn(knee.at)) return;
        const QPointF at = At(knee.at);
        const bool isOneOfMany = curves_.size() > kMostWithMarkers;
        Line(OutlineAt(at, isOneOfMany ? 0.7 : 2, 4), kMarkInk, isOneOfMany ? 0.2 : 0.5);
        if (curves_.size() > 1) return;
        Text(at + QPointF(3, 4.5), knee.text, Anchor::Start, true, false, kMarkInk);
    }

    void DrawLegend() {
        const double names = area_.bottom() + kNames;
        if (IsCrowded())
            Text({area_.left(), names},
                 QStringLiteral("%1 curves: too many for a legend").arg(curves_.size()),
                 Anchor::Start);
        if (!KneeLegend().isEmpty()) {
            const double left = area_.right() - WidthOf(KneeLegend(), kTextSize);
            Line(OutlineAt({left - 3.5, names - 1}, 1.6, 4), kMarkInk, 0.5);
            Text({area_.right(), names}, KneeLegend(), Anchor::End);
        }
        for (std::size_t i = 0; i < LegendCurves(); ++i) {
            const QPointF at(area_.left() + static_cast<double>(i % inRow_) * legendWidth_,
                             legendTop_ + static_cast<double>(i / inRow_) * kLegendRow);
            Line({at, at + QPointF(kLegendLine, 0)}, InkOf(i), 0.6, DashOf(i));
            Text(at + QPointF(kLegendLine + 1, 1), curves_[i].name, Anchor::Start);
        }
    }

    const std::vector<ChartCurve>& curves_;
    Drawing drawing_;
    QRectF area_;
    LogSpan across_;
    LogSpan up_;
    double legendWidth_ = 0;
    double legendTop_ = 0;
    std::size_t inRow_ = 1;
};

}  // namespace

Drawing ChartOf(const std::vector<ChartCurve>& curves, QSizeF size) {
    return ChartWriter(curves, size).Write();
}

}  // namespace davo
