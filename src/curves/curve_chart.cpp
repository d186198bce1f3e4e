// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library is written with Qt's keywords: it comes before any other header.
#include "curves/hands_on_plot.h"

#include <QBuffer>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "common/files.h"
#include "curves/curve_chart.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr double kPictureWidth = 800;  // up to it a pixel of a picture is one of the screen
constexpr QSize kToolSize(36, 34);
constexpr int kToolRoom = 4;

}  // namespace

CurveChart::CurveChart(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    tools_ = BuildTools();
    plot_ = new HandsOnPlot(this, lblCrosshair_);
    column->setSpacing(kToolRoom);
    column->addWidget(plot_, 1);
    column->addWidget(tools_);
    SetCurves({});
    setFocusProxy(plot_);
    plot_->TakeColours(ColoursOn(palette()));
}

// What the keys do, for hands.
QWidget* CurveChart::BuildTools() {
    struct Tool {
        const char* name;
        const char* text;
        const char* tip;
        Qt::Key key;
        bool control;
    };
    constexpr std::array kTools = {
        Tool{"cmdZoomIn", "+", "Zoom in (key +)", Qt::Key_Plus, false},
        Tool{"cmdZoomOut", "−", "Zoom out (key -)", Qt::Key_Minus, false},
        Tool{"cmdShowAll", "All", "Show all (key 0)", Qt::Key_0, false},
        Tool{"cmdPointBefore", "<", "Point before (Ctrl+Left)", Qt::Key_Left, true},
        Tool{"cmdPointAfter", ">", "Next point (Ctrl+Right)", Qt::Key_Right, true}};
    auto* tools = new QWidget(this);
    auto* row = WithMargin(new QHBoxLayout(tools), 0);
    row->setSpacing(kToolRoom);
    for (const Tool& tool : kTools) {
        auto* button = Named(new QToolButton(tools), tool.name);
        button->setText(QString::fromUtf8(tool.text));
        button->setToolTip(QLatin1String(tool.tip));
        button->setAccessibleName(button->toolTip());
        button->setMinimumSize(kToolSize);
        button->setAutoRepeat(true);
        // The chart has the keys.
        button->setFocusPolicy(Qt::NoFocus);
        connect(button, &QToolButton::clicked, this,
                [this, tool] { plot_->HandleKey(tool.key, tool.control); });
        row->addWidget(button);
    }
    // A long name takes another line and does not widen the chart.
    lblCrosshair_ = MakeParagraph(tools, "lblCrosshair", {}, 1);
    tools->setMinimumHeight(2 * lblCrosshair_->fontMetrics().lineSpacing());
    lblCrosshair_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(lblCrosshair_, 1);
    return tools;
}

void CurveChart::SetCurves(std::vector<ChartCurve> curves) {
    plot_->SetCurves(std::move(curves));
}

void CurveChart::AppendPoint(std::size_t index, CurvePoint point) {
    plot_->Append(index, point);
}

void CurveChart::SetInteractive(bool on) {
    plot_->SetInteractive(on);
    tools_->setVisible(on);
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
    plot_->OnPaper([&] {
        plot_->toPixmap(drawn.width(), drawn.height(), scale).scaled(size).save(&buffer, "PNG");
    });
    ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

int CurveChart::Paints() const {
    return plot_->Paints();
}

void CurveChart::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        plot_->TakeColours(ColoursOn(palette()));
}

}  // namespace davo
