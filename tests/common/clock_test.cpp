// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/clock.h"

#include <QLocale>

#include "tests/support/testing.h"

namespace davo {
namespace {

QDateTime At(int year, int month, int day, int hour, int minute, int second) {
    return {QDate(year, month, day), QTime(hour, minute, second)};
}

TEST(ClockTexts, HaveTwoDigitsEach) {
    const QDateTime time = At(2024, 3, 7, 9, 5, 8);
    EXPECT_EQ(ShortDateText(time), "03/07/24");
    EXPECT_EQ(ShortTimeText(time), "09:05");
    EXPECT_EQ(ClockText(time), "03/07/2024 - 09:05:08 AM");
}

TEST(ClockTexts, CountTwentyFourOrTwelveHours) {
    EXPECT_EQ(ShortTimeText(At(2024, 3, 7, 0, 0, 0)), "00:00");
    EXPECT_EQ(ShortTimeText(At(2024, 3, 7, 23, 59, 59)), "23:59");
    EXPECT_EQ(ClockText(At(2024, 12, 31, 0, 0, 0)), "12/31/2024 - 12:00:00 AM");
    EXPECT_EQ(ClockText(At(2024, 12, 31, 12, 0, 0)), "12/31/2024 - 12:00:00 PM");
    EXPECT_EQ(ClockText(At(2024, 12, 31, 23, 1, 2)), "12/31/2024 - 11:01:02 PM");
}

TEST(ClockTexts, DoNotDependOnTheLocale) {
    const QLocale before;
    for (const QLocale& locale :
         {QLocale(QLocale::German), QLocale(QLocale::Arabic, QLocale::Egypt),
          QLocale(QLocale::Japanese)}) {
        QLocale::setDefault(locale);
        EXPECT_EQ(ShortDateText(At(2024, 3, 7, 21, 5, 8)), "03/07/24");
        EXPECT_EQ(ShortTimeText(At(2024, 3, 7, 21, 5, 8)), "21:05");
        EXPECT_EQ(ClockText(At(2024, 3, 7, 21, 5, 8)), "03/07/2024 - 09:05:08 PM");
    }
    QLocale::setDefault(before);
}

TEST(Clock, TellsThePresentTime) {
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime now = Clock().Now();
    EXPECT_LE(before, now);
    EXPECT_LE(now, QDateTime::currentDateTime());
}

}  // namespace
}  // namespace davo
