// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <chrono>
#include <string>

namespace davo {

// The time of day, handed in so that tests have their own.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual QDateTime Now() const { return QDateTime::currentDateTime(); }
    // For lengths of time: nobody sets it back.
    virtual std::chrono::steady_clock::time_point Ticks() const {
        return std::chrono::steady_clock::now();
    }
};

// "MM/DD/YY", whatever the user's locale.
std::string ShortDateText(const QDateTime& time);
// "HH:MM", 24 hours.
std::string ShortTimeText(const QDateTime& time);
// "MM/DD/YYYY - HH:MM:SS AMPM", 12 hours, as the test window's clock shows it.
std::string ClockText(const QDateTime& time);

}  // namespace davo
