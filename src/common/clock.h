// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <string>

namespace davo {

// The time of day, handed in so that tests have their own.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual QDateTime Now() const { return QDateTime::currentDateTime(); }
};

// "MM/DD/YY", whatever the user's locale.
std::string ShortDateText(const QDateTime& time);
// "HH:MM", 24 hours.
std::string ShortTimeText(const QDateTime& time);
// "MM/DD/YYYY - HH:MM:SS AMPM", 12 hours, as the test window's clock shows it.
std::string ClockText(const QDateTime& time);

}  // namespace davo
