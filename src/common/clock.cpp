// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/clock.h"

#include <QLocale>

namespace davo {

namespace {

std::string Formatted(const QDateTime& time, const char* format) {
    return QLocale::c().toString(time, QLatin1String(format)).toStdString();
}

}  // namespace

std::string ShortDateText(const QDateTime& time) {
    return Formatted(time, "MM/dd/yy");
}

std::string ShortTimeText(const QDateTime& time) {
    return Formatted(time, "HH:mm");
}

std::string ClockText(const QDateTime& time) {
    return Formatted(time, "MM/dd/yyyy - hh:mm:ss AP");
}

}  // namespace davo
