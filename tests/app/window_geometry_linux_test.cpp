// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window_geometry.h"

#include <QWidget>

#include "tests/support/in_the_way.h"

namespace davo::test {
namespace {

TEST(WindowGeometryOnLinux, DoesNotWaitForAPipeThatHasTheNameOfItsLock) {
    const TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    const QByteArray lock = QFile::encodeName(folder.Path("configuration/davo-window.ini.lock"));
    ASSERT_EQ(::mkfifo(lock.constData(), 0666), 0);
    QWidget window;
    window.setObjectName(QStringLiteral("frmMain"));
    window.setGeometry(10, 20, 300, 200);
    window.show();
    const NoWait limit;
    SaveWindowGeometry(window, places);
    EXPECT_TRUE(RestoreWindowGeometry(window, places));
}

}  // namespace
}  // namespace davo::test
