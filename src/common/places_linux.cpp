// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

#include "common/places.h"

namespace davo {

namespace {

QString OwnFolderIn(QStandardPaths::StandardLocation location) {
    return QStandardPaths::writableLocation(location) + QStringLiteral("/davo/");
}

QString ApplicationFolder() {
    const QString beside = QCoreApplication::applicationDirPath();
    if (QFileInfo(beside).isWritable()) return beside + QLatin1Char('/');
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
           QStringLiteral("/DAVO/");
}

}  // namespace

Places PlatformPlaces() {
    return {OwnFolderIn(QStandardPaths::GenericDataLocation), ApplicationFolder(),
            OwnFolderIn(QStandardPaths::GenericConfigLocation)};
}

}  // namespace davo
