// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QLocale>

#include "app/date_guard.h"

namespace davo {
namespace {

// There is no user-wide setting here: nothing outside the object may change.
TEST(PlatformShortDateFormat, ReadsTheLocaleAndKeepsAChangeInside) {
    const QString system = QLocale::system().dateFormat(QLocale::ShortFormat);
    const auto format = MakeShortDateFormat();
    EXPECT_EQ(format->Read(), system);
    format->Set(QStringLiteral("MM/dd/yyyy"));
    EXPECT_EQ(format->Read(), QStringLiteral("MM/dd/yyyy"));
    format->Set(QString());
    EXPECT_EQ(format->Read(), QString());
    EXPECT_EQ(MakeShortDateFormat()->Read(), system);
    EXPECT_EQ(QLocale::system().dateFormat(QLocale::ShortFormat), system);
}

}  // namespace
}  // namespace davo
