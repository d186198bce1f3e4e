// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/form_parts.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QShortcut>

#include "ui/contrast.h"

namespace davo {

void Enlarge(QWidget* widget, double growth) {
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * growth);
    widget->setFont(font);
}

void MakeBold(QWidget* widget) {
    QFont font = widget->font();
    font.setBold(true);
    widget->setFont(font);
}

QLabel* MakeLabel(QWidget* parent, QAnyStringView name, const QString& text, double growth) {
    auto* label = Named(new QLabel(text, parent), name);
    label->setTextFormat(Qt::PlainText);
    Enlarge(label, growth);
    return label;
}

QLabel* MakeParagraph(QWidget* parent, QAnyStringView name, const QString& text, double growth) {
    QLabel* label = MakeLabel(parent, name, text, growth);
    label->setWordWrap(true);
    return label;
}

BigButton::BigButton(QWidget* parent, QAnyStringView name, const char* caption)
    : QPushButton(QLatin1String(caption), parent) {
    setObjectName(name);
    constexpr int kLeastHeight = 56;
    constexpr double kLetterGrowth = 1.3;
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
    constexpr int kFocusFrame = 4;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(FocusInk(palette()), kFocusFrame));
    const int half = kFocusFrame / 2;
    painter.drawRoundedRect(rect().adjusted(half, half, -half - 1, -half - 1), half, half);
}

void OnKey(QWidget* window, const QKeySequence& key, const std::function<void()>& act) {
    auto* shortcut = new QShortcut(key, window, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, window, act);
}

void KeepRoomWhenHidden(QWidget* widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

void PressF1(QWidget& widget) {
    QKeyEvent f1(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
    QApplication::sendEvent(&widget, &f1);
}

void CentreForm(QWidget& window, const QWidget* other) {
    if (!window.testAttribute(Qt::WA_Resized)) window.adjustSize();
    // The frame is part of the window's size and comes with the platform's window.
    if (window.isWindow()) window.winId();
    const QScreen* screen = other != nullptr ? other->screen() : QGuiApplication::primaryScreen();
    const QRect area = screen->geometry();
    const QSize size = window.frameGeometry().size();
    window.move(area.left() + (area.width() - size.width()) / 2,
                area.top() + (area.height() - size.height()) / 2);
}

}  // namespace davo
