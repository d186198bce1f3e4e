// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/fit_label.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>
#include <QScreen>
#include <QTextDocument>
#include <QTextOption>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kTextFlags = Qt::AlignCenter | Qt::TextWordWrap | Qt::TextShowMnemonic;
constexpr int kSmallestPixelSize = 8;
constexpr int kMargin = 5;
constexpr int kArrowMargin = 10;
constexpr int kAlertFrame = 4;

// Black on this yellow is the hazard sign everywhere, in light and dark surroundings alike.
const QColor kHazard(0xFF, 0xD4, 0x00);

void SetRich(QTextDocument& document, const QString& text, const QFont& font, int width) {
    QTextOption words;
    words.setWrapMode(QTextOption::WordWrap);
    document.setDefaultTextOption(words);
    document.setDocumentMargin(0);
    document.setDefaultFont(font);
    document.setHtml(text);
    document.setTextWidth(width);
}

// Projectors and virtual screens name sizes that no screen has.
constexpr double kLeastDotsPerInch = 50;
constexpr double kMostDotsPerInch = 400;
constexpr double kMillimetresPerInch = 25.4;

double DotsPerInch(const QScreen& screen) {
    const double physical = screen.physicalDotsPerInchY();
    const bool plausible = physical >= kLeastDotsPerInch && physical <= kMostDotsPerInch;
    return plausible ? physical : screen.logicalDotsPerInchY();
}

}  // namespace

int PixelSizeForCapitals(const QFont& font, double millimetres, const QWidget& widget) {
    constexpr int kTrialSize = 100;
    QFont trial = font;
    trial.setPixelSize(kTrialSize);
    const double capitalShare = QFontMetricsF(trial).capHeight() / kTrialSize;
    const double capitals = millimetres / kMillimetresPerInch * DotsPerInch(*widget.screen());
    return static_cast<int>(std::ceil(capitals / capitalShare));
}

FitLabel::FitLabel(double leastCapitals, double growth, QWidget* parent)
    : QLabel(parent), leastCapitals_(leastCapitals), growth_(growth) {
    setTextFormat(Qt::PlainText);
    MakeBold(this);
}

void FitLabel::SetAlert(bool alert) {
    if (alert_ == alert) return;
    alert_ = alert;
    update();
}

void FitLabel::SetCallToAct(std::function<void()> act) {
    call_ = std::move(act);
    setCursor(Qt::PointingHandCursor);
    update();
}

// Pressed here and released here, as a button is.
void FitLabel::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(call_ && event->button() == Qt::LeftButton);
}

void FitLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (call_ && event->button() == Qt::LeftButton && rect().contains(event->pos())) call_();
}

int FitLabel::Margin() const {
    return kMargin + (alert_ ? kAlertFrame : 0);
}

bool FitLabel::HasRoomFor(const QString& text, QSize size) const {
    return Fits(text, LeastPixelSize(), size - 2 * QSize(Margin(), Margin()));
}

QRect FitLabel::TextRect() const {
    const QRect inner = rect() - QMargins(Margin(), Margin(), Margin(), Margin());
    // Room for the arrow on both sides keeps the text in the middle.
    const int arrow = call_ ? inner.height() : 0;
    return inner.adjusted(arrow, 0, -arrow, 0);
}

bool FitLabel::Fits(const QString& text, int pixelSize, QSize room) const {
    QFont trial = font();
    trial.setPixelSize(pixelSize);
    if (textFormat() == Qt::RichText) {
        QTextDocument document;
        SetRich(document, text, trial, room.width());
        return document.size().width() <= room.width() && document.size().height() <= room.height();
    }
    const QRect needed = QFontMetrics(trial).boundingRect(
        QRect(0, 0, room.width(), QWIDGETSIZE_MAX), kTextFlags, text);
    return needed.width() <= room.width() && needed.height() <= room.height();
}

int FitLabel::FittedPixelSize() const {
    const int most = std::max(kSmallestPixelSize, static_cast<int>(LeastPixelSize() * growth_));
    const auto fits = [this, room = TextRect().size()](int size) {
        return Fits(text(), size, room);
    };
    int low = kSmallestPixelSize;
    int high = most + 1;
    while (high - low > 1) {
        const int middle = std::midpoint(low, high);
        (fits(middle) ? low : high) = middle;
    }
    return low;
}

QSize FitLabel::minimumSizeHint() const {
    QFont least = font();
    least.setPixelSize(LeastPixelSize());
    const QFontMetrics metrics(least);
    const QRect all(0, 0, QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    const int line = metrics.boundingRect(all, kTextFlags, QStringLiteral("X")).height();
    return {metrics.averageCharWidth() * 8, line + 2 * (kMargin + kAlertFrame)};
}

void FitLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ink = palette().color(QPalette::WindowText);
    if (alert_) {
        painter.fillRect(rect(), kHazard);
        painter.setPen(QPen(Qt::black, kAlertFrame));
        const int half = kAlertFrame / 2;
        painter.drawRect(rect().adjusted(half, half, -half - 1, -half - 1));
        ink = Qt::black;
    } else if (call_) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawRoundedRect(rect(), kMargin, kMargin);
        ink = palette().color(QPalette::HighlightedText);
        const int side = height() - 2 * kArrowMargin;
        QPolygon arrow;
        arrow << QPoint(kArrowMargin, kArrowMargin) << QPoint(kArrowMargin, kArrowMargin + side)
              << QPoint(kArrowMargin + side, height() / 2);
        painter.setBrush(ink);
        painter.drawPolygon(arrow);
    }
    QFont fitted = font();
    fitted.setPixelSize(FittedPixelSize());
    if (textFormat() == Qt::RichText) {
        QTextDocument document;
        SetRich(document, text(), fitted, TextRect().width());
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette.setColor(QPalette::Text, ink);
        painter.translate(TextRect().left(), (height() - document.size().height()) / 2);
        document.documentLayout()->draw(&painter, context);
        return;
    }
    painter.setFont(fitted);
    painter.setPen(ink);
    painter.drawText(TextRect(), kTextFlags, text());
}

}  // namespace davo
