// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace davo {

// A stick or a card that can be written.
struct RemovableDrive {
    QString path;  // of its folder, without the separator at its end unless that is its root
    QString name;
    qint64 free = 0;  // bytes

    bool operator==(const RemovableDrive&) const = default;
};

// What asks for them, so that a test can give its own.
using DriveList = std::function<std::vector<RemovableDrive>()>;

// Those that are plugged in now. A disk of the network is never asked: it may not answer.
std::vector<RemovableDrive> RemovableDrives();

// On Linux: those that are mounted in folder or, as desktops do it, in a user's folder within it.
std::vector<RemovableDrive> DrivesBelow(const QString& folder);

}  // namespace davo
