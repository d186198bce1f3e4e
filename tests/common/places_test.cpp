// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/places.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryFile>

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(FolderText, HasThePlatformsSeparator) {
    const QChar separator = QDir::separator();
    EXPECT_EQ(FolderText(R"(\Shots_Data\)"), separator + u"Shots_Data"_s + separator);
    EXPECT_EQ(FolderText("plain"), u"plain"_s);
}

TEST(ShownPath, HasThePlatformsSeparator) {
    EXPECT_EQ(ShownPath(u"/a/b.txt"_s), FolderText(R"(\a\b.txt)"));
}

TEST(PlatformPlaces, EndWithASeparatorEach) {
    const Places places = PlatformPlaces();
    for (const QString& path :
         {places.scratchFolder, places.applicationFolder, places.configurationFolder}) {
        EXPECT_TRUE(path.endsWith(QDir::separator())) << path.toStdString();
        EXPECT_EQ(path, ShownPath(path));
    }
}

TEST(PlatformPlaces, HaveTheApplicationFolderBesideAProgramThatMayWriteThere) {
    if (!QTemporaryFile(QCoreApplication::applicationDirPath() + u"/XXXXXX"_s).open()) {
        GTEST_SKIP() << "this user may not write beside the tests";
    }
    EXPECT_EQ(PlatformPlaces().applicationFolder,
              ShownPath(QCoreApplication::applicationDirPath() + QLatin1Char('/')));
}

}  // namespace
}  // namespace davo
