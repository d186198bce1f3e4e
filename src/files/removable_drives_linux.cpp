// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include "files/removable_drives.h"

namespace davo {

std::vector<RemovableDrive> DrivesBelow(const QString& folder) {
    std::vector<RemovableDrive> drives;
    const auto within = [](const QString& path) {
        return QDir(path).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    };
    const auto add = [&drives](const QFileInfo& place) {
        const QStorageInfo volume(place.filePath());
        if (volume.rootPath() != place.filePath()) return false;
        if (volume.isReady() && !volume.isReadOnly())
            drives.push_back({place.filePath(), place.fileName(), volume.bytesAvailable()});
        return true;
    };
    for (const QFileInfo& place : within(folder)) {
        if (add(place)) continue;
        for (const QFileInfo& inner : within(place.filePath()))
            add(inner);
    }
    return drives;
}

std::vector<RemovableDrive> RemovableDrives() {
    std::vector<RemovableDrive> drives = DrivesBelow(QStringLiteral("/media"));
    for (const RemovableDrive& drive : DrivesBelow(QStringLiteral("/run/media")))
        drives.push_back(drive);
    return drives;
}

}  // namespace davo
