// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/date_guard.h"

#include <QStringList>

namespace davo {

void DateGuard::Run() {
    const QStringList monthFirst =
        QStringLiteral("MM-dd-yy MM/dd/yy MM.dd.yy MM/dd/yyyy MM-dd-yyyy MM.dd.yyyy")
            .split(QLatin1Char(' '));
    savedShortDate_ = format_.Read().value_or(QString());
    if (monthFirst.contains(savedShortDate_)) return;
    shortDateChanged_ = true;
    format_.Set(QStringLiteral("MM/dd/yyyy"));
}

void DateGuard::Undo() {
    if (!shortDateChanged_) return;
    format_.Set(savedShortDate_);
    shortDateChanged_ = false;
}

}  // namespace davo
