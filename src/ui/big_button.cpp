// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/big_button.h"

#include <QKeyEvent>
#include <QPainter>

#include "ui/contrast.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kLeastHeight = 56;
constexpr double kLetterGrowth = 1.3;
constexpr int kFocusFrame = 4;

}  // namespace

BigButton::BigButton(QWidget* parent, QAnyStringView name, const char* caption)
    : QPushButton(QLatin1String(caption), parent) {
    setObjectName(name);
    setMinimumHeight(kLeastHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setAutoDefault(true);
    Enlarge(this, kLetterGrowth);
}

void BigButton::keyPressEvent(QKeyEvent* event) {
    if (event->isAutoRepeat()) return;
    QPushButton::keyPressEvent(event);
}

void BigButton::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    if (!hasFocus()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(FocusInk(palette()), kFocusFrame));
    const int half = kFocusFrame / 2;
    painter.drawRoundedRect(rect().adjusted(half, half, -half - 1, -half - 1), half, half);
}

}  // namespace davo
