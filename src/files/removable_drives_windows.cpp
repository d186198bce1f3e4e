// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include "files/removable_drives.h"

namespace davo {

std::vector<RemovableDrive> RemovableDrives() {
    std::vector<RemovableDrive> drives;
    for (const QFileInfo& root : QDir::drives()) {
        const std::wstring path = QDir::toNativeSeparators(root.filePath()).toStdWString();
        // To look at a floppy disk would start its motor.
        const bool floppy = path < L"C";
        if (floppy || ::GetDriveTypeW(path.c_str()) != DRIVE_REMOVABLE) continue;
        const QStorageInfo volume(root.filePath());
        if (!volume.isReady() || volume.isReadOnly()) continue;
        const QString letter = root.filePath().left(2);
        const QString name =
            volume.name().isEmpty() ? letter : QStringLiteral("%1 (%2)").arg(volume.name(), letter);
        drives.push_back({root.filePath(), name, volume.bytesAvailable()});
    }
    return drives;
}

}  // namespace davo
