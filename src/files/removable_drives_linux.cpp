// SPDX-License-Identifier: GPL-3.0-or-later
#include <mntent.h>
#include <sys/statvfs.h>

#include <QFile>
#include <QFileInfo>
#include <memory>
#include <string_view>

#include "files/removable_drives.h"

namespace davo {

std::vector<RemovableDrive> DrivesBelow(const QString& folder) {
    constexpr qsizetype kDeepest = 2;  // a user's folder, and the stick's
    std::vector<RemovableDrive> drives;
    const std::unique_ptr<FILE, decltype(&::endmntent)> mounts(
        ::setmntent("/proc/self/mounts", "r"), &::endmntent);
    while (const mntent* mount = mounts ? ::getmntent(mounts.get()) : nullptr) {
        const QString path = QFile::decodeName(mount->mnt_dir);
        const bool within = path.startsWith(folder + QLatin1Char('/')) &&
                            path.mid(folder.size()).count(QLatin1Char('/')) <= kDeepest;
        // A share of the network is no device, and may not answer.
        if (!within || !std::string_view(mount->mnt_fsname).starts_with("/dev/")) continue;
        struct statvfs volume = {};
        if (::statvfs(mount->mnt_dir, &volume) != 0 || (volume.f_flag & ST_RDONLY) != 0) continue;
        drives.push_back({path, QFileInfo(path).fileName(),
                          static_cast<qint64>(volume.f_bavail * volume.f_frsize)});
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
