// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window_geometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QWidget>
#include <algorithm>

#include "common/files.h"

namespace davo {

namespace {

QString Key(const QWidget& window, const char* value) {
    return window.objectName() + QLatin1Char('/') + QLatin1String(value);
}

// So much of it that it can be worked with.
bool IsOnAScreen(const QRect& geometry) {
    constexpr double kShare = 0.75;
    return std::ranges::any_of(QGuiApplication::screens(), [&](const QScreen* screen) {
        const QRect shown = screen->availableGeometry().intersected(geometry);
        return !shown.isEmpty() && shown.width() >= kShare * geometry.width() &&
               shown.height() >= kShare * geometry.height();
    });
}

}  // namespace

void SaveWindowGeometry(const QWidget& window, const Places& places) {
    RemoveLinkOrPipe(WindowFile(places) + QStringLiteral(".lock"));
    QSettings file(WindowFile(places), QSettings::IniFormat);
    file.setValue(Key(window, "normalGeometry"), window.normalGeometry());
    file.setValue(Key(window, "maximized"), window.isMaximized());
}

bool RestoreWindowGeometry(QWidget& window, const Places& places) {
    const QSettings file(WindowFile(places), QSettings::IniFormat);
    const QRect geometry = file.value(Key(window, "normalGeometry")).toRect();
    if (!IsOnAScreen(geometry)) return false;
    window.setGeometry(geometry);
    if (file.value(Key(window, "maximized")).toBool()) {
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
    }
    return true;
}

}  // namespace davo
