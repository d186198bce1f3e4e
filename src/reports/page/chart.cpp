// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/chart.h"

#include <QFile>
#include <QRectF>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>

#include "reports/log_axes.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

constexpr double kLegendRow = 4.4;
constexpr double kLegendLine = 9;
constexpr std::size_t kMostInLegend = 40;
constexpr std::size_t kMostWithMarkers = 10;
constexpr QPointF kFrameAt(13, 2);
constexpr double kNames = 9.2;  // of the axis across and of the mark, below the frame

// The outline of a marker: a many-sided figure, or a diamond with four corners.
std::vector<QPointF> OutlineAt(QPointF at, double radius, int corners) {
    std::vector<QPointF> outline;
    for (int i = 0; i <= corners; ++i)
        outline.push_back(at + radius * QPointF(std::sin(2 * std::numbers::pi * i / corners),
                                                -std::cos(2 * std::numbers::pi * i / corners)));
    return outline;
}

// About as wide as text is, in mm.
double WidthOf(const QString& text) {
    constexpr double kOfCharacter = 0.5;
    return static_cast<double>(text.size()) * kOfCharacter * kChartText * kMillimetresPerPoint;
}

class ChartWriter {
  public:
    ChartWriter(std::vector<ChartCurve> curves, QSizeF size) : curves_(std::move(curves)) {
        drawing_.size = size;
        std::vector<double> amperes;
        std::vector<double> volts;
        for (ChartCurve& curve : curves_) {
            legendWidth_ = std::max(legendWidth_, WidthOf(curve.name) + kLegendLine + 5);
            std::erase_if(curve.points, std::not_fn(CanBeDrawn));
            for (const CurvePoint& point : curve.points) {
                amperes.push_back(point.current);
                volts.push_back(point.voltage);
            }
        }
        const QSizeF most = size - kChartAround;
        inRow_ = std::max<std::size_t>(1, static_cast<std::size_t>(most.width() / legendWidth_));
        const std::size_t rows = (LegendCurves() + inRow_ - 1) / inRow_;
        // A short one is beside the axis's name.
        const bool isShort =
            static_cast<double>(LegendCurves()) * legendWidth_ < most.width() / 2 - 16;
        const double below = isShort ? 0 : kLegendRow * static_cast<double>(rows);
        area_ = QRectF(kFrameAt, most - QSizeF(0, below));
        legendTop_ = area_.bottom() + kNames + (isShort ? -1 : 3.3);
        across_ = SpanAround(amperes);
        up_ = SpanAround(volts);
        EqualDecades(across_, up_, area_.width(), area_.height(), false);
    }

    Drawing Write() {
        DrawGrid(across_, [this](double x) { return std::pair(At(x, up_.low), At(x, up_.high)); });
        DrawGrid(up_,
                 [this](double y) { return std::pair(At(across_.low, y), At(across_.high, y)); });
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

    // Of powers of ten.
    QPointF At(double x, double y) const {
        return {area_.left() + area_.width() * (x - across_.low) / across_.Length(),
                area_.bottom() - area_.height() * (y - up_.low) / up_.Length()};
    }
    QPointF At(const CurvePoint& point) const {
        return At(std::log10(point.current), std::log10(point.voltage));
    }

    void Line(std::vector<QPointF> points, int ink, double width, int dash = 0,
              bool filled = false) {
        drawing_.lines.push_back({std::move(points), ink, width, dash, filled});
    }
    void Text(QPointF at, const QString& text, Anchor anchor, bool bold = false,
              bool upward = false, int ink = kTextInk) {
        drawing_.texts.push_back({at, text, anchor, bold, ink, upward});
    }

    // lineAt has the ends of the line at a power of ten, first the one with its number.
    template <class LineAt>
    void DrawGrid(LogSpan span, const LineAt& lineAt) {
        const auto draw = [&](double value, int ink, double width) {
            const double exponent = std::log10(value);
            if (exponent < span.low || exponent > span.high) return false;
            const auto [from, to] = lineAt(exponent);
            Line({from, to}, ink, width);
            return true;
        };
        for (const double value : FineMarks(span))
            draw(value, kFineInk, 0.15);
        for (const double value : AxisMarks(span)) {
            if (!draw(value, kLineInk, 0.2)) continue;
            const QPointF at = lineAt(std::log10(value)).first;
            const bool isBelow = at.y() == area_.bottom();
            Text(at + (isBelow ? QPointF(0, 4) : QPointF(-1.5, 1)), ValueText(value),
                 isBelow ? Anchor::Middle : Anchor::End);
        }
    }

    static int InkOf(std::size_t curve) { return kCurveInk + static_cast<int>(curve % kCurveInks); }
    static int DashOf(std::size_t curve) { return static_cast<int>(curve / kCurveInks % 3); }

    void DrawCurve(std::size_t index) {
        constexpr std::array kCorners = {12, 4, 3, 5};
        const ChartCurve& curve = curves_[index];
        std::vector<QPointF> line;
        for (const CurvePoint& point : curve.points) {
            line.push_back(At(point));
            if (curves_.size() <= kMostWithMarkers)
                Line(OutlineAt(line.back(), 0.75, kCorners.at(index % kCorners.size())),
                     InkOf(index), 0.1, 0, true);
        }
        const auto [width, dash] =
            IsCrowded() ? std::pair(0.15, 0) : std::pair(0.45, DashOf(index));
        drawing_.lines.push_back(
            {std::move(line), InkOf(index), width, dash, false, curve.name, curve.link});
    }

    void DrawKnee(const KneeMark& knee) {
        if (!CanBeDrawn(knee.at)) return;
        rule_ = KneeWord(knee.rule);
        const QPointF at = At(knee.at);
        const bool isOneOfMany = curves_.size() > kMostWithMarkers;
        Line(OutlineAt(at, isOneOfMany ? 0.7 : 2, 4), kMarkInk, isOneOfMany ? 0.2 : 0.5);
        if (curves_.size() == 1)
            Text(at + QPointF(3, 4.5), knee.text, Anchor::Start, true, false, kMarkInk);
    }

    void DrawLegend() {
        const QPointF names(0, kNames);
        Text({area_.center().x(), area_.bottom() + kNames}, QStringLiteral("Current in amperes"),
             Anchor::Middle, true);
        Text({3, area_.center().y()}, QStringLiteral("Voltage in volts"), Anchor::Middle, true,
             true);
        if (!rule_.isEmpty()) {
            const QString mark = QStringLiteral("Kneepoint by ") + rule_;
            const QPointF at = area_.bottomRight() + names;
            Text(at, mark, Anchor::End);
            Line(OutlineAt(at - QPointF(WidthOf(mark) + 3.5, 1), 1.6, 4), kMarkInk, 0.5);
        }
        if (IsCrowded())
            Text(area_.bottomLeft() + names,
                 QStringLiteral("%1 curves: too many for a legend").arg(curves_.size()),
                 Anchor::Start);
        for (std::size_t i = 0; i < LegendCurves(); ++i) {
            const std::size_t row = i / inRow_;
            const QPointF at(area_.left() + static_cast<double>(i % inRow_) * legendWidth_,
                             legendTop_ + static_cast<double>(row) * kLegendRow);
            Line({at, at + QPointF(kLegendLine, 0)}, InkOf(i), 0.6, DashOf(i));
            Text(at + QPointF(kLegendLine + 1, 1), curves_[i].name, Anchor::Start);
        }
    }

    std::vector<ChartCurve> curves_;  // with the points that can be drawn
    Drawing drawing_;
    QRectF area_;
    LogSpan across_;
    LogSpan up_;
    QString rule_;  // whose kneepoints are marked
    double legendWidth_ = 0;
    double legendTop_ = 0;
    std::size_t inRow_ = 1;
};

QString Short(double value) {
    return QString::number(std::round(value * 100) / 100 + 0.0, 'g', 7);
}

QString SvgLine(const DrawnLine& line) {
    QStringList points;
    for (const QPointF& point : line.points)
        points += Short(point.x()) + QLatin1Char(',') + Short(point.y());
    QString style = QStringLiteral("i%1").arg(line.ink);
    if (line.filled) style += QStringLiteral(" f");
    if (line.dash > 0) style += QStringLiteral(" d%1").arg(line.dash);
    QString svg = QStringLiteral("<poly%1 class=\"%2\" stroke-width=\"%3\" points=\"%4\"/>\n")
                      .arg(line.filled ? QStringLiteral("gon") : QStringLiteral("line"), style,
                           Short(line.width), points.join(QLatin1Char(' ')));
    if (line.link.isEmpty()) return svg;
    return QStringLiteral("<a href=\"%1\"><title>%2</title>%3</a>\n")
        .arg(line.link.toHtmlEscaped(), line.name.toHtmlEscaped(), svg);
}

QString SvgText(const DrawnText& text) {
    constexpr std::array kAnchors = {"start", "middle", "end"};
    return QStringLiteral(
               "<text class=\"i%1%2\" text-anchor=\"%3\" font-size=\"%4\" "
               "transform=\"translate(%5 %6)%7\">%8</text>\n")
        .arg(text.ink)
        .arg(text.bold ? QStringLiteral(" b") : QString(),
             QLatin1String(kAnchors.at(static_cast<std::size_t>(text.anchor))),
             Short(kChartText * kMillimetresPerPoint), Short(text.at.x()), Short(text.at.y()),
             text.upward ? QStringLiteral(" rotate(-90)") : QString(), text.text.toHtmlEscaped());
}

}  // namespace

Drawing ChartOf(const std::vector<ChartCurve>& curves, QSizeF size) {
    return ChartWriter(curves, size).Write();
}

QString SvgOf(const Drawing& drawing, const QString& title) {
    QString svg =
        QStringLiteral(
            "<svg viewBox=\"0 0 %1 %2\" role=\"img\" aria-label=\"%3\" "
            "xmlns=\"http://www.w3.org/2000/svg\">\n")
            .arg(Short(drawing.size.width()), Short(drawing.size.height()), title.toHtmlEscaped());
    for (const DrawnLine& line : drawing.lines)
        svg += SvgLine(line);
    for (const DrawnText& text : drawing.texts)
        svg += SvgText(text);
    return svg + QStringLiteral("</svg>\n");
}

QByteArray PageResource(const char* name) {
    QFile file(QStringLiteral(":/davo/") + QLatin1String(name));
    file.open(QIODevice::ReadOnly);  // it is part of the program
    return file.readAll();
}

std::string FilledPage(const char* name, std::initializer_list<std::string> parts) {
    constexpr std::string_view kPlace = "<!-- % -->";
    std::string page = PageResource(name).toStdString();
    std::size_t from = 0;
    for (const std::string& part : parts) {
        from = page.find(kPlace, from);
        page.replace(from, kPlace.size(), part);
        from += part.size();
    }
    return page;
}

}  // namespace davo
