// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/centre_form.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace davo {

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
