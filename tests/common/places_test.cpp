// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/places.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryFile>

namespace davo {
namespace {

TEST(FolderText, HasThePlatformsSeparator) {
    const QChar separator = QDir::separator();
    EXPECT_EQ(FolderText(R"(\Shots_Data\)"), separator + QStringLiteral("Shots_Data") + separator);
    EXPECT_EQ(FolderText("plain"), QStringLiteral("plain"));
}

TEST(ShownPath, HasThePlatformsSeparator) {
    EXPECT_EQ(ShownPath(QStringLiteral("/a/b.txt")), FolderText(R"(\a\b.txt)"));
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
    if (!QTemporaryFile(QCoreApplication::applicationDirPath() + QStringLiteral("/XXXXXX"))
             .open()) {
        GTEST_SKIP() << "this user may not write beside the tests";
    }
    EXPECT_EQ(PlatformPlaces().applicationFolder,
              ShownPath(QCoreApplication::applicationDirPath() + QLatin1Char('/')));
}

}  // namespace
}  // namespace davo
