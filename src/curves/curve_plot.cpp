// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/curve_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

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
constexpr int kCurveWidth = 2;
constexpr double kMarkerSize = 7;
constexpr double kAxisTextGrowth = 1.1;
constexpr int kMargin = 8;
constexpr int kNumberPadding = 6;
constexpr int kTitlePadding = 2;
constexpr int kLegendIcon = 28;
constexpr int kLegendPadding = 4;    // around the icons and the names
constexpr int kLegendRows = 5;       // beside each other are more
constexpr int kInsideRoom = 6;       // between the frame and what is inside of it
constexpr double kMarkSlack = 1e-9;  // a mark at the axis' end is on it
constexpr int kRing = 9;             // around the last reading, which may be at the edge

bool IsDecade(double mark) {
    constexpr double kSlack = 1e-6;
    const double exponent = std::log10(mark);
    return std::abs(exponent - std::round(exponent)) < kSlack;
}

// Marks at decades and, where there is room, between them.
class DecadeTicker : public QCPAxisTicker {
  public:
    explicit DecadeTicker(const QCPAxis& axis) : axis_(axis) {}

    void generate(const QCPRange& range, const QLocale& /*locale*/, QChar /*format*/,
                  int /*precision*/, QVector<double>& ticks, QVector<double>* subTicks,
                  QVector<QString>* labels) override {
        const LogSpan span{std::log10(range.lower), std::log10(range.upper)};
        ticks = Within(AxisMarks(span), range);
        if (span.Length() >= 1 && NumbersTouch(ticks, span))
            ticks.removeIf([](double mark) { return !IsDecade(mark); });
        constexpr double kRoomForAll = 90;
        if (subTicks != nullptr)
            *subTicks = Within(FineMarks(span, DecadeLength(span) >= kRoomForAll), range);
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

    const QCPAxis& axis_;
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
    axisRect()->insetLayout()->setMargins(
        QMargins(kInsideRoom, kInsideRoom, kInsideRoom, kInsideRoom));
    axisRect()->insetLayout()->setInsetPlacement(0, QCPLayoutInset::ipFree);
    legend->setIconSize(kLegendIcon, legend->iconSize().height());
    legend->setIconTextPadding(kLegendPadding);
    legend->setMargins(QMargins(kLegendPadding, kLegendPadding, kLegendPadding, kLegendPadding));
    new Drawn(*axisRect(), QStringLiteral("axes"), 0, [this](QCPPainter& p) {
        p.setFont(font());
        DrawKneeMarks(p, knees_, colours_);
    });
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
    xAxis->setTickLabelPadding(kNumberPadding);
    for (QCPAxis* axis : {xAxis, yAxis})
        axis->setLabelPadding(kTitlePadding);
    xAxis->setLabel(QStringLiteral("Amperes"));
    yAxis->setLabel(QStringLiteral("Volts"));
}

void CurvePlot::Set(std::vector<ChartCurve> curves) {
    clearPlottables();
    lines_.clear();
    cross_.reset();
    for (ChartCurve& curve : curves) {
        QCPCurve* drawn = CurveOf(curve);
        lines_.push_back({std::move(curve), drawn});
    }
    legend->setVisible(legend->itemCount() > 0);
    TakeAll();
    TakeColours(colours_);
}

QCPCurve* CurvePlot::CurveOf(const ChartCurve& curve) {
    auto* drawn = new CurveLine(xAxis, yAxis, [this] {
        // Of a part, what is outside is cut off.
        return showsWhole_ ? static_cast<int>(kMarkerSize) : 0;
    });
    // Behind the others, and behind the lines of none.
    if (IsBehind(curve.look)) drawn->setLayer(QStringLiteral("grid"));
    drawn->setName(curve.name);
    QVector<QCPCurveData> shown;
    for (const CurvePoint& point : curve.points) {
        if (CanBeDrawn(point))
            shown.append({static_cast<double>(shown.size()), point.current, point.voltage});
    }
    drawn->data()->set(shown, true);
    if (!IsBehind(curve.look) && !curve.name.isEmpty()) drawn->addToLegend();
    return drawn;
}

// The axes hold everything that can be drawn.
void CurvePlot::TakeAll() {
    std::vector<double> amperes;
    std::vector<double> volts;
    const auto hold = [&](const CurvePoint& point) {
        if (!CanBeDrawn(point)) return;
        amperes.push_back(point.current);
        volts.push_back(point.voltage);
    };
    for (const Line& line : lines_) {
        std::for_each(line.curve.points.begin(), line.curve.points.end(), hold);
        for (const KneeMark& knee : line.curve.knees)
            hold(knee.at);
    }
    const auto span = [this](const std::vector<double>& values) {
        return equal_ ? SpanAround(values) : DecadesOf(values);
    };
    all_ = {span(amperes), volts.empty() ? LogSpan{0, 3} : span(volts)};
    whole_ = all_;
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
        TakeAll();
        return;
    }
    const auto grow = [](LogSpan& all, double value) {
        const LogSpan needed = DecadesOf({value});
        if (std::log10(value) < all.low) all.low = needed.low;
        if (std::log10(value) > all.high) all.high = needed.high;
    };
    grow(all_.across, point.current);
    grow(all_.up, point.voltage);
    whole_ = all_;
    if (showsWhole_) ShowWhole();
    Redraw();
}

void CurvePlot::ShowSpans() {
    asked_ = shown_;
    showsWhole_ = shown_ == whole_;
    TakeRanges();
    Redraw();
}

void CurvePlot::TakeRanges() {
    for (QCPAxis* axis : axisRect()->axes()) {
        const LogSpan span = axis->orientation() == Qt::Horizontal ? shown_.across : shown_.up;
        axis->setRange(std::pow(10.0, span.low), std::pow(10.0, span.high));
    }
    LeaveMargins();
}

// What is shown grows until its decades are of one length, in the room that the numbers leave, and
// the numbers go by what is shown.
void CurvePlot::updateLayout() {
    constexpr int kMostPasses = 4;
    QSize before;
    for (int pass = 0; equal_ && pass < kMostPasses; ++pass) {
        QCustomPlot::updateLayout();
        const QSize room = axisRect()->size() - QSize(1, 1);
        if (room == std::exchange(before, room)) break;
        whole_ = all_;
        // What is more is below and right of the curves, where the tables are.
        EqualDecades(whole_.across, whole_.up, room.width(), room.height(), true);
        shown_ = showsWhole_ ? whole_ : asked_;
        EqualDecades(shown_.across, shown_.up, room.width(), room.height(), false);
        shown_ = {Moved(shown_.across, 0, whole_.across), Moved(shown_.up, 0, whole_.up)};
        TakeRanges();
    }
    // Beside the curves or below them.
    constexpr double kRounding = 1e-6;
    const bool below = whole_.across.Length() < all_.across.Length() + kRounding;
    const int rows = below ? kLegendRows : 2 * kLegendRows;
    if (legend->wrap() != rows) {
        legend->setWrap(rows);
        legend->setFillOrder(legend->fillOrder());
    }
    QCustomPlot::updateLayout();
    PlaceInside();
}

// The table of the kneepoints and the legend where they hide little of the curves.
void CurvePlot::PlaceInside() {
    knees_.clear();
    if (legend->itemCount() == 0 &&
        std::ranges::all_of(lines_, [](const Line& line) { return line.curve.knees.empty(); }))
        return;
    const QRectF area =
        QRectF(axisRect()->rect()).adjusted(kInsideRoom, kInsideRoom, -kInsideRoom, -kInsideRoom);
    std::vector<QPolygonF> curves;
    for (const Line& line : lines_) {
        if (IsBehind(line.curve.look)) continue;
        QPolygonF curve;
        for (const QCPCurveData& point : *line.drawn->data())
            curve += PixelOf({point.key, point.value});
        if (line.curve.knees.empty()) {
            curves.push_back(std::move(curve));
            continue;
        }
        curves.insert(curves.begin(), std::move(curve));
        for (const KneeMark& knee : line.curve.knees) {
            const QPointF at = PixelOf(knee.at);
            if (CanBeDrawn(knee.at) && area.contains(at)) knees_.push_back({knee, at, {}, {}});
        }
    }
    if (!knees_.empty()) PlaceKnees(knees_, curves, QFontMetrics(font()), area);
    // One that is larger than the chart would hide all of it.
    const QSize size = legend->minimumOuterSizeHint();
    legend->setVisible(legend->itemCount() > 0 && size.width() <= area.width() &&
                       size.height() <= area.height());
    if (!legend->visible()) return;
    const QRectF place = LegendPlace(size, area, knees_, curves);
    axisRect()->insetLayout()->setInsetRect(
        0, {(place.left() - area.left()) / area.width(), (place.top() - area.top()) / area.height(),
            place.width() / area.width(), place.height() / area.height()});
    axisRect()->insetLayout()->update(QCPLayoutElement::upLayout);
}

// Half of a number is outside at the ends of the axes; one that would be cut is not drawn at all.
void CurvePlot::LeaveMargins() {
    const QFontMetrics metrics(xAxis->tickLabelFont());
    int last = 0;
    for (const double mark : AxisMarks(shown_.across)) {
        if (mark <= xAxis->range().upper * (1 + kMarkSlack))
            last = metrics.horizontalAdvance(ValueText(mark));
    }
    axisRect()->setMinimumMargins(QMargins(kMargin, std::max(kMargin, metrics.height() / 2 + 2),
                                           std::max(kMargin, last / 2 + 4), kMargin));
}

void CurvePlot::ShowWhole() {
    shown_ = whole_;
    ShowSpans();
}

void CurvePlot::Zoom(double factor, QPointF at) {
    const auto zoom = [factor](LogSpan& span, double value, LogSpan whole) {
        span = Zoomed(span, factor, std::log10(value), whole);
    };
    zoom(shown_.across, xAxis->pixelToCoord(at.x()), whole_.across);
    zoom(shown_.up, yAxis->pixelToCoord(at.y()), whole_.up);
    ShowSpans();
}

void CurvePlot::Move(double across, double up) {
    shown_ = {Moved(shown_.across, across, whole_.across), Moved(shown_.up, up, whole_.up)};
    ShowSpans();
}

// --- Looks --------------------------------------------------------------------------------------

void CurvePlot::TakeColours(const ChartColours& colours) {
    colours_ = colours;
    setBackground(colours.base);
    QFont numbers = font();
    numbers.setPointSizeF(numbers.pointSizeF() * kAxisTextGrowth);
    QFont titles = numbers;
    titles.setBold(true);
    for (QCPAxis* axis : axisRect()->axes()) {
        const QPen line(colours.text, 1);
        axis->setBasePen(line);
        axis->setTickPen(line);
        axis->setSubTickPen(line);
        axis->setTickLabelColor(colours.text);
        axis->setLabelColor(colours.text);
        axis->setTickLabelFont(numbers);
        axis->setLabelFont(titles);
        axis->grid()->setPen(QPen(colours.grid, 1));
        axis->grid()->setSubGridPen(QPen(colours.fineGrid, 1));
    }
    legend->setFont(font());
    legend->setTextColor(colours.text);
    legend->setBorderPen(QPen(colours.grid, 1));
    legend->setBrush(colours.base);
    // The legend's grid may have empty places.
    for (int i = 0; i < legend->itemCount(); ++i) {
        if (QCPAbstractLegendItem* item = legend->item(i); item != nullptr) {
            item->setFont(font());
            item->setTextColor(colours.text);
        }
    }
    std::size_t look = 0;
    for (const Line& line : lines_) {
        StyleLine(line, look);
        if (line.curve.look == CurveLook::Normal) ++look;
    }
    LeaveMargins();
    Redraw();
}

void CurvePlot::StyleLine(const Line& line, std::size_t look) const {
    if (line.curve.look == CurveLook::Faint) {
        line.drawn->setPen(QPen(colours_.faint, kCurveWidth));
        return;
    }
    const bool isBand = line.curve.look == CurveLook::Band;
    QColor colour = colours_.curves.at((isBand ? look - 1 : look) % kCurveLooks);
    if (isBand) {
        colour.setAlphaF(0.25F);  // the grid is seen through it
        line.drawn->setPen(Qt::NoPen);
        line.drawn->setBrush(colour);
        return;
    }
    QPen marker(colour, kCurveWidth);
    if (line.curve.look == CurveLook::Readings) {
        line.drawn->setPen(QPen(colour, 1));
        line.drawn->setScatterStyle({Shape::ssDisc, marker, colour, kMarkerSize});
        return;
    }
    line.drawn->setPen(QPen(colour, kCurveWidth, kDashes.at(look % kDashes.size())));
    const Shape shape = kMarkers.at(look % kMarkers.size());
    line.drawn->setScatterStyle({shape, marker, colours_.base, kMarkerSize});
}

void CurvePlot::SetEqualDecades(bool equal) {
    if (equal == equal_) return;
    equal_ = equal;
    TakeAll();
}

// --- Drawing ------------------------------------------------------------------------------------

QPointF CurvePlot::PixelOf(CurvePoint point) const {
    return {xAxis->coordToPixel(point.current), yAxis->coordToPixel(point.voltage)};
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
