// SPDX-License-Identifier: GPL-3.0-or-later

#include <QLocale>

#include "app/date_guard.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// There is no user-wide setting here: nothing outside the object may change.
TEST(PlatformShortDateFormat, ReadsTheLocaleAndKeepsAChangeInside) {
    const QString system = QLocale::system().dateFormat(QLocale::ShortFormat);
    const auto format = MakeShortDateFormat();
    EXPECT_EQ(format->Read(), system);
    format->Set(u"MM/dd/yyyy"_s);
    EXPECT_EQ(format->Read(), u"MM/dd/yyyy"_s);
    format->Set(QString());
    EXPECT_EQ(format->Read(), QString());
    EXPECT_EQ(MakeShortDateFormat()->Read(), system);
    EXPECT_EQ(QLocale::system().dateFormat(QLocale::ShortFormat), system);
}

}  // namespace
}  // namespace davo
