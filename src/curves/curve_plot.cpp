// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/curve_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <utility>

#include "curves/knee_marks.h"

namespace davo {

namespace {

using Shape = QCPScatterStyle::ScatterShape;
constexpr std::array<Shape, kCurveLooks> kMarkers = {
    Shape::ssDisc,     Shape::ssSquare,      Shape::ssDiamond,
    Shape::ssTriangle, Shape::ssCross,       Shape::ssPlus,
    Shape::ssStar,     Shape::ssCrossSquare, Shape::ssTriangleInverted,
    Shape::ssCircle};
constexpr std::array<Qt::PenStyle, 5> kDashes = {Qt::SolidLine, Qt::DashLine, Qt::DashDotLine,
                                                 Qt::DotLine, Qt::DashDotDotLine};
constexpr double kMarkerSize = 7;
constexpr double kTitleGrowth = 1.3;
constexpr int kMargin = 15;
constexpr int kCompactMargin = 8;
constexpr int kNumberPadding = 3;
constexpr int kCompactNumberPadding = 6;
constexpr int kTitlePaddingBelow = 3;
constexpr int kTitlePaddingBeside = 10;
constexpr int kCompactTitlePadding = 2;
constexpr int kLegendIcon = 40;
constexpr double kMarkSlack = 1e-9;  // a mark at the axis' end is on it
constexpr int kRing = 9;             // around the last reading, which may lie at the edge

LogSpan SpanOf(const Decades& decades) {
    return {static_cast<double>(decades.first), static_cast<double>(decades.last)};
}

bool IsDecade(double mark) {
    constexpr double kSlack = 1e-6;
    const double exponent = std::log10(mark);
    return std::abs(exponent - std::round(exponent)) < kSlack;
}

// Marks at decades and, where there is room, between them.
class DecadeTicker : public QCPAxisTicker {
  public:
    explicit DecadeTicker(const QCPAxis& axis) : axis_(axis) {}

    // Fewer marks without a number in a small chart.
    void SetCompact(bool compact) { compact_ = compact; }

    void generate(const QCPRange& range, const QLocale& /*locale*/, QChar /*format*/,
                  int /*precision*/, QVector<double>& ticks, QVector<double>* subTicks,
                  QVector<QString>* labels) override {
        const LogSpan span{std::log10(range.lower), std::log10(range.upper)};
        ticks = Within(AxisMarks(span), range);
        if (span.Length() >= 1 && NumbersTouch(ticks, span))
            ticks.removeIf([](double mark) { return !IsDecade(mark); });
        if (subTicks != nullptr) *subTicks = Within(FineOnes(span), range);
        if (labels == nullptr) return;
        labels->clear();
        for (const double tick : std::as_const(ticks))
            labels->append(ValueText(tick));
    }

  private:
    static QVector<double> Within(const std::vector<double>& marks, const QCPRange& range) {
        QVector<double> within;
        for (const double mark : marks) {
            if (mark >= range.lower * (1 - kMarkSlack) && mark <= range.upper * (1 + kMarkSlack))
                within.append(mark);
        }
        return within;
    }
    bool Across() const { return axis_.orientation() == Qt::Horizontal; }
    // Pixels of a decade. The axis itself has its length only after its marks, so what the texts
    // around it take is reckoned by their height.
    double DecadeLength(LogSpan span) const {
        constexpr int kTextsBeside = 6;
        constexpr int kTextsBelow = 4;
        const QSize all = axis_.parentPlot()->viewport().size();
        const int text = QFontMetrics(axis_.tickLabelFont()).height();
        return (Across() ? all.width() - kTextsBeside * text : all.height() - kTextsBelow * text) /
               span.Length();
    }
    bool NumbersTouch(const QVector<double>& ticks, LogSpan span) const {
        constexpr int kGapAcross = 12;
        const QFontMetrics metrics(axis_.tickLabelFont());
        int needed = metrics.height();
        for (const double tick : ticks) {
            if (Across())
                needed = std::max(needed, kGapAcross + metrics.horizontalAdvance(ValueText(tick)));
        }
        for (int i = 1; i < ticks.size(); ++i) {
            if (std::log10(ticks[i] / ticks[i - 1]) * DecadeLength(span) < needed) return true;
        }
        return false;
    }
    std::vector<double> FineOnes(LogSpan span) const {
        constexpr double kRoomForAll = 90;
        return compact_ && DecadeLength(span) < kRoomForAll ? SparseMarks(span) : FineMarks(span);
    }

    const QCPAxis& axis_;
    bool compact_ = false;
};

// A curve whose markers are seen whole on the frame, margin pixels outside of it.
class CurveLine : public QCPCurve {
  public:
    CurveLine(QCPAxis* across, QCPAxis* up, std::function<int()> margin)
        : QCPCurve(across, up), margin_(std::move(margin)) {}

  protected:
    QRect clipRect() const override {
        const int margin = margin_();
        return QCPCurve::clipRect().adjusted(-margin, -margin, margin, margin);
    }

  private:
    std::function<int()> margin_;
};

// Something of our own on one of the chart's layers.
class Drawn : public QCPLayerable {
  public:
    using Draw = std::function<void(QCPPainter& painter)>;
    // Cut off margin pixels outside of area.
    Drawn(QCPAxisRect& area, const QString& layer, int margin, Draw drawIt)
        : QCPLayerable(area.parentPlot(), layer),
          area_(area),
          margin_(margin),
          draw_(std::move(drawIt)) {}

  protected:
    QRect clipRect() const override {
        return area_.rect().adjusted(-margin_, -margin_, margin_, margin_);
    }
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override {
        painter->setAntialiasing(true);
    }
    void draw(QCPPainter* painter) override { draw_(*painter); }

  private:
    QCPAxisRect& area_;
    int margin_;
    Draw draw_;
};

}  // namespace

CurvePlot::CurvePlot(QWidget* parent) : QCustomPlot(parent) {
    setObjectName(QStringLiteral("plotCurves"));
    setAccessibleName(QStringLiteral("Excitation curves"));
    setAutoAddPlottableToLegend(false);
    setNoAntialiasingOnDrag(true);
    BuildAxes();
    // Its own place below, so that it hides no curve.
    plotLayout()->addElement(1, 0, legend);
    plotLayout()->setRowStretchFactor(1, 0.001);
    legend->setFillOrder(QCPLayoutGrid::foColumnsFirst);
    legend->setIconSize(kLegendIcon, legend->iconSize().height());
    legend->setBorderPen(Qt::NoPen);
    legend->setBrush(Qt::NoBrush);
    new Drawn(*axisRect(), QStringLiteral("axes"), 0, [this](QCPPainter& p) { DrawKnees(p); });
    new Drawn(*axisRect(), QStringLiteral("axes"), kRing + kCurveWidth,
              [this](QCPPainter& p) { DrawLastReadings(p); });
    new Drawn(*axisRect(), QStringLiteral("overlay"), 0, [this](QCPPainter& p) { DrawCross(p); });
    Set({});
}

// Nothing while it is hidden; it may have no size then.
void CurvePlot::Redraw() {
    if (isVisible() && !size().isEmpty()) replot(rpQueuedReplot);
}

void CurvePlot::BuildAxes() {
    axisRect()->setupFullAxesBox();
    for (QCPAxis* axis : axisRect()->axes()) {
        axis->setScaleType(QCPAxis::stLogarithmic);
        axis->setTicker(QSharedPointer<DecadeTicker>::create(*axis));
        axis->grid()->setSubGridVisible(true);
        axis->grid()->setZeroLinePen(Qt::NoPen);
    }
    xAxis->setLabel(QStringLiteral("Amperes"));
    yAxis->setLabel(QStringLiteral("Volts"));
}

void CurvePlot::Set(std::vector<ChartCurve> curves) {
    clearPlottables();
    lines_.clear();
    cross_.reset();
    std::vector<double> amperes;
    std::vector<double> volts;
    const auto hold = [&](const CurvePoint& point) {
        if (!CanBeDrawn(point)) return;
        amperes.push_back(point.current);
        volts.push_back(point.voltage);
    };
    for (ChartCurve& curve : curves) {
        std::for_each(curve.points.begin(), curve.points.end(), hold);
        for (const KneeMark& knee : curve.knees)
            hold(knee.at);
        QCPCurve* drawn = CurveOf(curve);
        lines_.push_back({std::move(curve), drawn});
    }
    TakeWhole(amperes, volts);
    TakeColours(colours_);
    WrapLegend(width());
}

QCPCurve* CurvePlot::CurveOf(const ChartCurve& curve) {
    auto* drawn = new CurveLine(xAxis, yAxis, [this] {
        // Of a part, what lies outside is cut off.
        return across_ == wholeAcross_ && up_ == wholeUp_ ? static_cast<int>(kMarkerSize) : 0;
    });
    // Behind the others, and behind the lines of none.
    if (curve.look == CurveLook::Faint) drawn->setLayer(QStringLiteral("grid"));
    drawn->setName(curve.name);
    QVector<QCPCurveData> shown;
    for (const CurvePoint& point : curve.points) {
        if (CanBeDrawn(point))
            shown.append({static_cast<double>(shown.size()), point.current, point.voltage});
    }
    drawn->data()->set(shown, true);
    if (curve.look != CurveLook::Faint && !curve.name.isEmpty()) drawn->addToLegend();
    return drawn;
}

void CurvePlot::TakeWhole(const std::vector<double>& amperes, const std::vector<double>& volts) {
    wholeAcross_ = SpanOf(DecadesOf(amperes));
    wholeUp_ = volts.empty() ? LogSpan{0, 3} : SpanOf(DecadesOf(volts));
    ShowWhole();
}

void CurvePlot::Append(std::size_t index, CurvePoint point) {
    Line& line = lines_.at(index);
    line.curve.points.push_back(point);
    if (!CanBeDrawn(point)) return;
    const bool first = std::all_of(lines_.begin(), lines_.end(), [](const Line& other) {
        return other.drawn->data()->isEmpty();
    });
    line.drawn->addData(line.drawn->data()->size(), point.current, point.voltage);
    if (first) {
        TakeWhole({point.current}, {point.voltage});
    } else {
        GrowTo(point);
    }
    Redraw();
}

void CurvePlot::GrowTo(CurvePoint point) {
    const auto grow = [](LogSpan& whole, LogSpan& shown, double value) {
        const LogSpan needed = SpanOf(DecadesOf({value}));
        const LogSpan grown{std::log10(value) < whole.low ? needed.low : whole.low,
                            std::log10(value) > whole.high ? needed.high : whole.high};
        if (shown == whole) shown = grown;
        whole = grown;
    };
    grow(wholeAcross_, across_, point.current);
    grow(wholeUp_, up_, point.voltage);
    ShowSpans();
}

void CurvePlot::ShowSpans() {
    const auto show = [](QCPAxis* axis, LogSpan span) {
        axis->setRange(std::pow(10.0, span.low), std::pow(10.0, span.high));
    };
    show(xAxis, across_);
    show(xAxis2, across_);
    show(yAxis, up_);
    show(yAxis2, up_);
    LeaveMargins();
    Redraw();
}

// Half of a number stands out at the ends of the axes; one that would be cut is not drawn at all.
void CurvePlot::LeaveMargins() {
    const int least = compact_ ? kCompactMargin : kMargin;
    const QFontMetrics metrics(xAxis->tickLabelFont());
    int last = 0;
    for (const double mark : AxisMarks(across_)) {
        if (mark <= xAxis->range().upper * (1 + kMarkSlack))
            last = metrics.horizontalAdvance(ValueText(mark));
    }
    axisRect()->setMinimumMargins(QMargins(least, std::max(least, metrics.height() / 2 + 2),
                                           std::max(least, last / 2 + 4), least));
}

void CurvePlot::ShowWhole() {
    across_ = wholeAcross_;
    up_ = wholeUp_;
    ShowSpans();
}

void CurvePlot::Zoom(double factor, QPointF at) {
    across_ = Zoomed(across_, factor, std::log10(xAxis->pixelToCoord(at.x())), wholeAcross_);
    up_ = Zoomed(up_, factor, std::log10(yAxis->pixelToCoord(at.y())), wholeUp_);
    ShowSpans();
}

void CurvePlot::Move(double across, double up) {
    across_ = Moved(across_, across, wholeAcross_);
    up_ = Moved(up_, up, wholeUp_);
    ShowSpans();
}

// --- Looks --------------------------------------------------------------------------------------

void CurvePlot::TakeColours(const ChartColours& colours) {
    colours_ = colours;
    setBackground(colours.base);
    xAxis->setTickLabelPadding(compact_ ? kCompactNumberPadding : kNumberPadding);
    xAxis->setLabelPadding(compact_ ? kCompactTitlePadding : kTitlePaddingBelow);
    yAxis->setLabelPadding(compact_ ? kCompactTitlePadding : kTitlePaddingBeside);
    for (QCPAxis* axis : axisRect()->axes()) {
        axis->ticker().staticCast<DecadeTicker>()->SetCompact(compact_);
        const QPen line(colours.text, 1);
        axis->setBasePen(line);
        axis->setTickPen(line);
        axis->setSubTickPen(line);
        axis->setTickLabelColor(colours.text);
        axis->setLabelColor(colours.text);
        axis->setTickLabelFont(Grown(font(), kAxisTextGrowth));
        axis->setLabelFont(Grown(font(), compact_ ? kAxisTextGrowth : kTitleGrowth, true));
        axis->grid()->setPen(QPen(colours.grid, 1));
        axis->grid()->setSubGridPen(QPen(colours.fineGrid, 1));
    }
    legend->setFont(Grown(font(), 1));
    legend->setTextColor(colours.text);
    for (QCPAbstractLegendItem* item : LegendItems()) {
        item->setFont(legend->font());
        item->setTextColor(colours.text);
    }
    StyleLines();
    LeaveMargins();
    Redraw();
}

void CurvePlot::StyleLines() {
    std::size_t look = 0;
    for (const Line& line : lines_) {
        StyleLine(line, look);
        if (line.curve.look == CurveLook::Normal) ++look;
    }
}

void CurvePlot::StyleLine(const Line& line, std::size_t look) {
    if (line.curve.look == CurveLook::Faint) {
        line.drawn->setPen(QPen(colours_.faint, kCurveWidth));
        line.drawn->setScatterStyle(QCPScatterStyle::ssNone);
        return;
    }
    const QColor colour = colours_.curves.at(look % kCurveLooks);
    QPen marker(colour, kCurveWidth);
    if (line.curve.look == CurveLook::Readings) {
        line.drawn->setPen(QPen(colour, 1));
        line.drawn->setScatterStyle({Shape::ssDisc, marker, colour, kMarkerSize});
        return;
    }
    QPen pen(colour, kCurveWidth);
    pen.setStyle(kDashes.at(look % kDashes.size()));
    line.drawn->setPen(pen);
    const Shape shape = kMarkers.at(look % kMarkers.size());
    line.drawn->setScatterStyle({shape, marker, colours_.base, kMarkerSize});
}

// The legend's grid may have empty places.
std::vector<QCPAbstractLegendItem*> CurvePlot::LegendItems() const {
    std::vector<QCPAbstractLegendItem*> items;
    for (int i = 0; i < legend->itemCount(); ++i) {
        if (QCPAbstractLegendItem* item = legend->item(i); item != nullptr) items.push_back(item);
    }
    return items;
}

// As many names beside each other as there is room for.
void CurvePlot::WrapLegend(int width) {
    const std::vector<QCPAbstractLegendItem*> items = LegendItems();
    // An empty one in the layout would narrow the axes.
    const bool placed = legend->layout() == plotLayout();
    if (placed && items.empty()) {
        plotLayout()->take(legend);
        plotLayout()->simplify();
    } else if (!placed && !items.empty()) {
        plotLayout()->addElement(1, 0, legend);
        plotLayout()->setRowStretchFactor(1, 0.001);
    }
    legend->setVisible(!items.empty());
    int widest = 1;
    for (const QCPAbstractLegendItem* item : items)
        widest = std::max(widest, item->minimumOuterSizeHint().width());
    legend->setWrap(std::max(1, width / (widest + legend->columnSpacing())));
    legend->setFillOrder(QCPLayoutGrid::foColumnsFirst, true);
}

void CurvePlot::SetCompact(bool compact) {
    compact_ = compact;
    TakeColours(colours_);
}

// --- Drawing ------------------------------------------------------------------------------------

QPointF CurvePlot::PixelOf(CurvePoint point) const {
    return {xAxis->coordToPixel(point.current), yAxis->coordToPixel(point.voltage)};
}

void CurvePlot::DrawKnees(QCPPainter& painter) const {
    const QRectF area = QRectF(axisRect()->rect()).adjusted(2, 2, -2, -2);
    std::vector<PlacedKnee> knees;
    for (const Line& line : lines_) {
        for (const KneeMark& knee : line.curve.knees) {
            if (!CanBeDrawn(knee.at) || !area.contains(PixelOf(knee.at))) continue;
            knees.push_back({knee.rule, PixelOf(knee.at), {}});
        }
    }
    painter.setFont(Grown(font(), 1, true));
    PlaceLabels(knees, painter.fontMetrics(), area);
    DrawKneeMarks(painter, knees, colours_);
}

void CurvePlot::DrawLastReadings(QCPPainter& painter) const {
    for (const Line& line : lines_) {
        if (line.curve.look != CurveLook::Readings || line.drawn->data()->isEmpty()) continue;
        const auto last = line.drawn->data()->constEnd() - 1;
        painter.setPen(QPen(colours_.text, kCurveWidth + 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(PixelOf({last->key, last->value}), kRing, kRing);
    }
}

void CurvePlot::showEvent(QShowEvent* event) {
    QCustomPlot::showEvent(event);
    Redraw();
}

void CurvePlot::paintEvent(QPaintEvent* event) {
    QCustomPlot::paintEvent(event);
    ++paints_;
}

void CurvePlot::resizeEvent(QResizeEvent* event) {
    if (event->size().isEmpty()) return;
    WrapLegend(event->size().width());
    QCustomPlot::resizeEvent(event);
}

void CurvePlot::ShowCross(std::optional<Crosshair> cross) {
    cross_ = std::move(cross);
    // Only the layer of the crosshair, once there is something below it.
    if (paints_ > 0) {
        layer(QStringLiteral("overlay"))->replot();
    } else {
        Redraw();
    }
}

void CurvePlot::DrawCross(QCPPainter& painter) const {
    if (!cross_) return;
    constexpr double kPointRing = 6;
    const QPointF at = PixelOf(cross_->point);
    const QRectF area = axisRect()->rect();
    painter.setPen(QPen(colours_.text, 1, Qt::DashLine));
    painter.drawLine(QPointF(area.left(), at.y()), QPointF(area.right(), at.y()));
    painter.drawLine(QPointF(at.x(), area.top()), QPointF(at.x(), area.bottom()));
    painter.setPen(QPen(colours_.text, kCurveWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(at, kPointRing, kPointRing);
}

}  // namespace davo
