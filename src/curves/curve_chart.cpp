// The drawing library is written with Qt's keywords.
#undef QT_NO_KEYWORDS
#include "curves/curve_chart.h"

#include <qcustomplot.h>

#include <QBuffer>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPageSize>
#include <QPdfWriter>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <utility>

#include "common/files.h"
#include "common/run_time_error.h"
#include "curves/chart_look.h"
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
constexpr double kCurveWidth = 2;
constexpr double kMarkerSize = 7;
constexpr double kAxisTextGrowth = 1.1;
constexpr double kTitleGrowth = 1.3;
constexpr double kZoomStep = 1.25;
constexpr double kMoveStep = 0.15;
constexpr int kLegendIcon = 40;
constexpr int kPageDots = 96;
constexpr double kPointsPerInch = 72;
constexpr QSize kPage(1123, 794);  // A4 across at kPageDots
constexpr QSize kUsualSize(460, 420);
constexpr QSize kLeastSize(260, 180);

bool CanBeDrawn(const CurvePoint& point) {
    return point.current > 0 && point.voltage > 0 && std::isfinite(point.current) &&
           std::isfinite(point.voltage);
}

QFont Grown(const QFont& font, double growth, bool bold = false) {
    QFont grown = font;
    grown.setPointSizeF(font.pointSizeF() * growth);
    grown.setBold(bold);
    return grown;
}

LogSpan SpanOf(const Decades& decades) {
    return {static_cast<double>(decades.first), static_cast<double>(decades.last)};
}

// Marks at decades and, where few are shown, between them.
class DecadeTicker : public QCPAxisTicker {
  public:
    void generate(const QCPRange& range, const QLocale& /*locale*/, QChar /*format*/,
                  int /*precision*/, QVector<double>& ticks, QVector<double>* subTicks,
                  QVector<QString>* labels) override {
        const LogSpan span{std::log10(range.lower), std::log10(range.upper)};
        ticks = Within(AxisMarks(span), range);
        if (subTicks != nullptr) *subTicks = Within(FineMarks(span), range);
        if (labels == nullptr) return;
        labels->clear();
        for (const double tick : std::as_const(ticks))
            labels->append(ValueText(tick));
    }

  private:
    static QVector<double> Within(const std::vector<double>& marks, const QCPRange& range) {
        constexpr double kSlack = 1e-9;
        QVector<double> within;
        for (const double mark : marks) {
            if (mark >= range.lower * (1 - kSlack) && mark <= range.upper * (1 + kSlack))
                within.append(mark);
        }
        return within;
    }
};

// Something of our own on one of the chart's layers.
class Drawn : public QCPLayerable {
  public:
    using Draw = std::function<void(QCPPainter& painter)>;
    Drawn(QCPAxisRect& area, const QString& layer, Draw drawIt)
        : QCPLayerable(area.parentPlot(), layer), area_(area), draw_(std::move(drawIt)) {}

  protected:
    QRect clipRect() const override { return area_.rect(); }
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override {
        painter->setAntialiasing(true);
    }
    void draw(QCPPainter* painter) override { draw_(*painter); }

  private:
    QCPAxisRect& area_;
    Draw draw_;
};

bool Written(const QString& path, const QByteArray& bytes) {
    if (bytes.isEmpty()) return false;
    try {
        ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    } catch (const RunTimeError&) {
        return false;
    }
    return true;
}

}  // namespace

QString ValueText(double value) {
    constexpr int kDigits = 6;
    return QString::number(value, 'g', kDigits);
}

// --- The plot -----------------------------------------------------------------------------------

class CurveChart::Plot : public QCustomPlot {
  public:
    Plot(CurveChart* chart, QLabel* lblCrosshair);

    void Set(std::vector<ChartCurve> curves);
    void Append(std::size_t index, CurvePoint point);
    void SetInteractive(bool on);
    void Zoom(double factor, QPointF at);
    void Move(double across, double up);
    void ShowWhole();
    void TakeColours(const ChartColours& colours);
    const std::optional<Crosshair>& Cross() const { return cross_; }
    LogSpan Across() const { return across_; }
    LogSpan Up() const { return up_; }
    int Paints() const { return paints_; }
    // Draws with the colours of paper and without the crosshair.
    template <class Work>
    void OnPaper(const Work& work);

  protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct Line {
        ChartCurve curve;
        QCPCurve* drawn = nullptr;
    };

    void BuildAxes();
    void Redraw();
    QCPCurve* CurveOf(const ChartCurve& curve);
    void TakeWhole(const std::vector<double>& amperes, const std::vector<double>& volts);
    void GrowTo(CurvePoint point);
    void ShowSpans();
    void StyleLines();
    void StyleLine(const Line& line, std::size_t look);
    std::vector<QCPAbstractLegendItem*> LegendItems() const;
    void WrapLegend(int width);
    QPointF PixelOf(CurvePoint point) const;
    void DrawKnees(QCPPainter& painter) const;
    void DrawLastReadings(QCPPainter& painter) const;
    void DrawCross(QCPPainter& painter) const;
    void PointTo(QPointF pixel);
    void Step(int by);
    void SetCross(std::optional<Crosshair> cross);
    bool HandleKey(int key, bool control);

    QLabel* lblCrosshair_;
    std::vector<Line> lines_;
    LogSpan wholeAcross_;
    LogSpan wholeUp_;
    LogSpan across_;
    LogSpan up_;
    ChartColours colours_;
    std::optional<Crosshair> cross_;
    std::size_t stepLine_ = 0;
    std::size_t stepPoint_ = 0;
    bool interactive_ = true;
    int paints_ = 0;
};

CurveChart::Plot::Plot(CurveChart* chart, QLabel* lblCrosshair)
    : QCustomPlot(chart), lblCrosshair_(lblCrosshair) {
    setObjectName(QStringLiteral("plotCurves"));
    setAccessibleName(QStringLiteral("Excitation curves"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
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
    new Drawn(*axisRect(), QStringLiteral("axes"), [this](QCPPainter& p) { DrawKnees(p); });
    new Drawn(*axisRect(), QStringLiteral("axes"), [this](QCPPainter& p) { DrawLastReadings(p); });
    new Drawn(*axisRect(), QStringLiteral("overlay"), [this](QCPPainter& p) { DrawCross(p); });
    Set({});
}

// Nothing while it is hidden; it may have no size then.
void CurveChart::Plot::Redraw() {
    if (isVisible() && !size().isEmpty()) replot(rpQueuedReplot);
}

void CurveChart::Plot::BuildAxes() {
    axisRect()->setupFullAxesBox();
    for (QCPAxis* axis : axisRect()->axes()) {
        axis->setScaleType(QCPAxis::stLogarithmic);
        axis->setTicker(QSharedPointer<DecadeTicker>::create());
        axis->grid()->setSubGridVisible(true);
        axis->grid()->setZeroLinePen(Qt::NoPen);
    }
    xAxis->setLabel(QStringLiteral("Amperes"));
    yAxis->setLabel(QStringLiteral("Volts"));
}

void CurveChart::Plot::Set(std::vector<ChartCurve> curves) {
    clearPlottables();
    lines_.clear();
    cross_.reset();
    lblCrosshair_->clear();
    stepLine_ = 0;
    stepPoint_ = 0;
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

QCPCurve* CurveChart::Plot::CurveOf(const ChartCurve& curve) {
    auto* drawn = new QCPCurve(xAxis, yAxis);
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

void CurveChart::Plot::TakeWhole(const std::vector<double>& amperes,
                                 const std::vector<double>& volts) {
    wholeAcross_ = SpanOf(DecadesOf(amperes));
    wholeUp_ = volts.empty() ? LogSpan{0, 3} : SpanOf(DecadesOf(volts));
    ShowWhole();
}

void CurveChart::Plot::Append(std::size_t index, CurvePoint point) {
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

void CurveChart::Plot::GrowTo(CurvePoint point) {
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

void CurveChart::Plot::ShowSpans() {
    const auto show = [](QCPAxis* axis, LogSpan span) {
        axis->setRange(std::pow(10.0, span.low), std::pow(10.0, span.high));
    };
    show(xAxis, across_);
    show(xAxis2, across_);
    show(yAxis, up_);
    show(yAxis2, up_);
    Redraw();
}

void CurveChart::Plot::ShowWhole() {
    across_ = wholeAcross_;
    up_ = wholeUp_;
    ShowSpans();
}

void CurveChart::Plot::Zoom(double factor, QPointF at) {
    across_ = Zoomed(across_, factor, std::log10(xAxis->pixelToCoord(at.x())), wholeAcross_);
    up_ = Zoomed(up_, factor, std::log10(yAxis->pixelToCoord(at.y())), wholeUp_);
    ShowSpans();
}

void CurveChart::Plot::Move(double across, double up) {
    across_ = Moved(across_, across, wholeAcross_);
    up_ = Moved(up_, up, wholeUp_);
    ShowSpans();
}

// --- Looks --------------------------------------------------------------------------------------

void CurveChart::Plot::TakeColours(const ChartColours& colours) {
    colours_ = colours;
    setBackground(colours.base);
    for (QCPAxis* axis : axisRect()->axes()) {
        const QPen line(colours.text, 1);
        axis->setBasePen(line);
        axis->setTickPen(line);
        axis->setSubTickPen(line);
        axis->setTickLabelColor(colours.text);
        axis->setLabelColor(colours.text);
        axis->setTickLabelFont(Grown(font(), kAxisTextGrowth));
        axis->setLabelFont(Grown(font(), kTitleGrowth, true));
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
    Redraw();
}

void CurveChart::Plot::StyleLines() {
    std::size_t look = 0;
    for (const Line& line : lines_) {
        StyleLine(line, look);
        if (line.curve.look == CurveLook::Normal) ++look;
    }
}

void CurveChart::Plot::StyleLine(const Line& line, std::size_t look) {
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
std::vector<QCPAbstractLegendItem*> CurveChart::Plot::LegendItems() const {
    std::vector<QCPAbstractLegendItem*> items;
    for (int i = 0; i < legend->itemCount(); ++i) {
        if (QCPAbstractLegendItem* item = legend->item(i); item != nullptr) items.push_back(item);
    }
    return items;
}

// As many names beside each other as there is room for.
void CurveChart::Plot::WrapLegend(int width) {
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

// --- Drawing ------------------------------------------------------------------------------------

QPointF CurveChart::Plot::PixelOf(CurvePoint point) const {
    return {xAxis->coordToPixel(point.current), yAxis->coordToPixel(point.voltage)};
}

void CurveChart::Plot::DrawKnees(QCPPainter& painter) const {
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

void CurveChart::Plot::DrawLastReadings(QCPPainter& painter) const {
    constexpr double kRing = 9;
    for (const Line& line : lines_) {
        if (line.curve.look != CurveLook::Readings || line.drawn->data()->isEmpty()) continue;
        const auto last = line.drawn->data()->constEnd() - 1;
        painter.setPen(QPen(colours_.text, kCurveWidth + 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(PixelOf({last->key, last->value}), kRing, kRing);
    }
}

void CurveChart::Plot::DrawCross(QCPPainter& painter) const {
    if (!cross_) return;
    constexpr double kRing = 6;
    const QPointF at = PixelOf(cross_->point);
    const QRectF area = axisRect()->rect();
    painter.setPen(QPen(colours_.text, 1, Qt::DashLine));
    painter.drawLine(QPointF(area.left(), at.y()), QPointF(area.right(), at.y()));
    painter.drawLine(QPointF(at.x(), area.top()), QPointF(at.x(), area.bottom()));
    painter.setPen(QPen(colours_.text, kCurveWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(at, kRing, kRing);
}

template <class Work>
void CurveChart::Plot::OnPaper(const Work& work) {
    const ChartColours shown = colours_;
    const std::optional<Crosshair> cross = std::exchange(cross_, std::nullopt);
    TakeColours(PaperColours());
    work();
    cross_ = cross;
    WrapLegend(width());
    TakeColours(shown);
}

// --- Crosshair and keys -------------------------------------------------------------------------

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
    if (!on && cross_) SetCross(std::nullopt);
}

void CurveChart::Plot::showEvent(QShowEvent* event) {
    QCustomPlot::showEvent(event);
    Redraw();
}

void CurveChart::Plot::paintEvent(QPaintEvent* event) {
    QCustomPlot::paintEvent(event);
    ++paints_;
    if (!hasFocus()) return;
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

// --- The chart ----------------------------------------------------------------------------------

CurveChart::CurveChart(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    lblCrosshair_ = new QLabel(this);
    lblCrosshair_->setObjectName(QStringLiteral("lblCrosshair"));
    lblCrosshair_->setTextFormat(Qt::PlainText);
    lblCrosshair_->setFont(Grown(font(), kAxisTextGrowth));
    // Its line stays when it is empty; a long name does not widen the chart.
    lblCrosshair_->setMinimumHeight(lblCrosshair_->fontMetrics().height());
    lblCrosshair_->setMinimumWidth(1);
    plot_ = new Plot(this, lblCrosshair_);
    column->addWidget(plot_, 1);
    column->addWidget(lblCrosshair_);
    setFocusProxy(plot_);
    plot_->TakeColours(ColoursOn(palette()));
}

CurveChart::~CurveChart() = default;

void CurveChart::SetCurves(std::vector<ChartCurve> curves) {
    plot_->Set(std::move(curves));
}

void CurveChart::AppendPoint(std::size_t index, CurvePoint point) {
    plot_->Append(index, point);
}

void CurveChart::SetInteractive(bool on) {
    plot_->SetInteractive(on);
    setFocusProxy(on ? plot_ : nullptr);
}

void CurveChart::ZoomBy(double factor) {
    plot_->Zoom(factor, plot_->axisRect()->rect().center());
}

void CurveChart::ShowAll() {
    plot_->ShowWhole();
}

LogSpan CurveChart::Across() const {
    return plot_->Across();
}

LogSpan CurveChart::Up() const {
    return plot_->Up();
}

std::optional<CurveChart::Crosshair> CurveChart::AtCrosshair() const {
    return plot_->Cross();
}

bool CurveChart::SavePng(const QString& path, QSize size) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    plot_->OnPaper([&] { plot_->toPixmap(size.width(), size.height()).save(&buffer, "PNG"); });
    return Written(path, bytes);
}

bool CurveChart::SavePdf(const QString& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(kPageDots);
    writer.setPageSize(QPageSize(QSizeF(kPage) * kPointsPerInch / kPageDots, QPageSize::Point));
    writer.setPageMargins({});
    plot_->OnPaper([&] {
        QCPPainter painter;
        if (!painter.begin(&writer)) return;
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        plot_->toPainter(&painter, kPage.width(), kPage.height());
    });
    return Written(path, bytes);
}

int CurveChart::Paints() const {
    return plot_->Paints();
}

QSize CurveChart::sizeHint() const {
    return kUsualSize;
}

QSize CurveChart::minimumSizeHint() const {
    return kLeastSize;
}

void CurveChart::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        plot_->TakeColours(ColoursOn(palette()));
}

}  // namespace davo
