// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window_geometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QWidget>

#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

class WindowGeometry : public ::testing::Test {
  protected:
    WindowGeometry() {
        before.setObjectName(u"frmMain"_s);
        after.setObjectName(u"frmMain"_s);
    }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget before;
    QWidget after;
};

TEST_F(WindowGeometry, OfTheLastRunIsTakenAgain) {
    const QRect geometry(screen.left() + 40, screen.top() + 50, 500, 400);
    before.setGeometry(geometry);
    before.show();
    SaveWindowGeometry(before, places);
    EXPECT_TRUE(RestoreWindowGeometry(after, places));
    EXPECT_EQ(after.geometry(), geometry);
    EXPECT_FALSE(after.isMaximized());
}

TEST_F(WindowGeometry, OfAMaximizedWindowKeepsItsUsualSizeToo) {
    const QRect geometry(screen.left() + 40, screen.top() + 50, 500, 400);
    before.setGeometry(geometry);
    before.showMaximized();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&before));
    SaveWindowGeometry(before, places);
    EXPECT_TRUE(RestoreWindowGeometry(after, places));
    EXPECT_TRUE(after.isMaximized());
}

TEST_F(WindowGeometry, LiesBesideTheSettings) {
    before.setGeometry(screen.left(), screen.top(), 300, 200);
    SaveWindowGeometry(before, places);
    EXPECT_TRUE(QFile::exists(places.configurationFolder + u"davo-window.ini"_s));
    EXPECT_FALSE(QFile::exists(places.configurationFolder + u"davo.ini"_s));
}

TEST_F(WindowGeometry, IsNotTakenWithoutOne) {
    after.setGeometry(1, 2, 300, 200);
    EXPECT_FALSE(RestoreWindowGeometry(after, places));
    EXPECT_EQ(after.geometry(), QRect(1, 2, 300, 200));
}

TEST_F(WindowGeometry, IsNotTakenWhenItLiesOnNoScreen) {
    const QRect off[] = {screen.translated(screen.width() * 3, 0),
                         screen.translated(0, -screen.height()),
                         screen.translated(screen.width() / 2, 0),
                         QRect(screen.topLeft(), screen.size() * 2), QRect()};
    for (const QRect& geometry : off) {
        {
            QSettings file(places.configurationFolder + u"davo-window.ini"_s, QSettings::IniFormat);
            file.setValue(u"frmMain/normalGeometry"_s, geometry);
        }
        EXPECT_FALSE(RestoreWindowGeometry(after, places)) << geometry.left();
    }
}

TEST_F(WindowGeometry, IsNotTakenFromADamagedFile) {
    QFile file(places.configurationFolder + u"davo-window.ini"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[frmMain]\nnormalGeometry=@Rect(x y z)\nmaximized=perhaps\n");
    file.close();
    EXPECT_FALSE(RestoreWindowGeometry(after, places));
}

}  // namespace
}  // namespace davo::test
