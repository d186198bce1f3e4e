// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QStandardPaths>
#include <QTemporaryFile>

#include "common/places.h"

namespace davo {

namespace {

// Whether this user may make files in the folder. Access lists are too many-sided to be read:
// it is tried.
bool MayWriteIn(const QString& folder) {
    QTemporaryFile probe(folder + QStringLiteral("davo-XXXXXX.new"));
    return probe.open();
}

QString OwnFolderIn(QStandardPaths::StandardLocation location, const char* name) {
    return ShownPath(QStandardPaths::writableLocation(location) + QLatin1Char('/') +
                     QLatin1String(name) + QLatin1Char('/'));
}

QString ScratchFolder() {
    const QString root = QStringLiteral("C:\\");
    if (MayWriteIn(root)) return root;
    return OwnFolderIn(QStandardPaths::GenericDataLocation, "davo");
}

QString ApplicationFolder() {
    const QString beside = ShownPath(QCoreApplication::applicationDirPath() + QLatin1Char('/'));
    if (MayWriteIn(beside)) return beside;
    return OwnFolderIn(QStandardPaths::DocumentsLocation, "DAVO");
}

}  // namespace

Places PlatformPlaces() {
    return {ScratchFolder(), ApplicationFolder(),
            OwnFolderIn(QStandardPaths::GenericConfigLocation, "davo")};
}

}  // namespace davo
