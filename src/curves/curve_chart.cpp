// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library is written with Qt's keywords: it comes before any other header.
#include "curves/hands_on_plot.h"

#include <QBuffer>
#include <QEvent>
#include <QLabel>
#include <QPageSize>
#include <QPdfWriter>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "common/files.h"
#include "curves/curve_chart.h"

namespace davo {

namespace {

constexpr int kPageDots = 96;
constexpr double kPointsPerInch = 72;
constexpr QSize kPage(1123, 794);      // A4 across at kPageDots
constexpr int kPageMargin = 38;        // 10 mm: a printer does not reach the edge
constexpr double kPictureWidth = 800;  // up to it a pixel of a picture is one of the screen
constexpr QSize kUsualSize(460, 420);
constexpr QSize kLeastSize(260, 180);

}  // namespace

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
    plot_ = new HandsOnPlot(this, lblCrosshair_);
    column->addWidget(plot_, 1);
    column->addWidget(lblCrosshair_);
    setFocusProxy(plot_);
    plot_->TakeColours(ColoursOn(palette()));
}

CurveChart::~CurveChart() = default;

void CurveChart::SetCurves(std::vector<ChartCurve> curves) {
    plot_->SetCurves(std::move(curves));
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

std::optional<Crosshair> CurveChart::AtCrosshair() const {
    return plot_->Cross();
}

void CurveChart::SavePng(const QString& path, QSize size) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    // A larger picture has larger texts, not more room.
    const double scale = std::max(1.0, size.width() / kPictureWidth);
    const QSize drawn = (QSizeF(size) / scale).toSize();
    plot_->OnPaper(drawn.width(), [&] {
        plot_->toPixmap(drawn.width(), drawn.height(), scale).scaled(size).save(&buffer, "PNG");
    });
    ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

void CurveChart::SavePdf(const QString& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(kPageDots);
    writer.setPageSize(QPageSize(QSizeF(kPage) * kPointsPerInch / kPageDots, QPageSize::Point));
    writer.setPageMargins({});
    constexpr QSize kDrawn = kPage - QSize(2 * kPageMargin, 2 * kPageMargin);
    plot_->OnPaper(kDrawn.width(), [&] {
        QCPPainter painter;
        if (!painter.begin(&writer)) return;
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        painter.translate(kPageMargin, kPageMargin);
        plot_->toPainter(&painter, kDrawn.width(), kDrawn.height());
    });
    ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
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
