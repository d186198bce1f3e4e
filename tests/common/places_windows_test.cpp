// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryFile>

#include "common/places.h"

namespace davo {
namespace {

QStringList ProbesIn(const QString& folder) {
    return QDir(folder).entryList({QStringLiteral("davo-*.new")}, QDir::Files | QDir::Hidden);
}

TEST(PlacesOnWindows, HaveTheScratchFolderWhereTheUserMayWrite) {
    QTemporaryFile probe(QStringLiteral("C:/davo-test-XXXXXX"));
    const QString own = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                        QStringLiteral("/davo/");
    EXPECT_EQ(PlatformPlaces().scratchFolder,
              probe.open() ? QStringLiteral("C:\\") : ShownPath(own));
}

TEST(PlacesOnWindows, KeepTheConfigurationWithTheUser) {
    const QString home = ShownPath(QDir::homePath());
    EXPECT_TRUE(PlatformPlaces().configurationFolder.startsWith(home, Qt::CaseInsensitive))
        << PlatformPlaces().configurationFolder.toStdString();
    EXPECT_TRUE(PlatformPlaces().configurationFolder.endsWith(QStringLiteral("\\davo\\")));
}

TEST(PlacesOnWindows, LeaveNothingOfTheirLooking) {
    const Places places = PlatformPlaces();
    EXPECT_EQ(ProbesIn(places.scratchFolder), QStringList());
    EXPECT_EQ(ProbesIn(places.applicationFolder), QStringList());
}

}  // namespace
}  // namespace davo
