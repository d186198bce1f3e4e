// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/date_guard.h"

#include <algorithm>
#include <array>

namespace davo {

void DateGuard::Run() {
    constexpr std::array kMonthFirst = {"MM-dd-yy",   "MM/dd/yy",   "MM.dd.yy",
                                        "MM/dd/yyyy", "MM-dd-yyyy", "MM.dd.yyyy"};
    savedShortDate_ = format_.Read().value_or(QString());
    if (std::ranges::count(kMonthFirst, savedShortDate_.toStdString()) > 0) return;
    shortDateChanged_ = true;
    format_.Set(QStringLiteral("MM/dd/yyyy"));
}

void DateGuard::Undo() {
    if (!shortDateChanged_) return;
    format_.Set(savedShortDate_);
    shortDateChanged_ = false;
}

}  // namespace davo
