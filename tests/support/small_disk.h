// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/mount.h>
#include <unistd.h>

#include <QFile>
#include <QString>
#include <stdexcept>

#include "tests/support/testing.h"

namespace davo::test {

// A disk of 64 kB in the place of a folder, which is there. Only root can have one: see Can.
class SmallDisk {
  public:
    static bool Can() { return ::geteuid() == 0; }
    explicit SmallDisk(const QString& folder) : folder_(QFile::encodeName(folder)) {
        if (::mount("none", folder_.constData(), "tmpfs", 0, kSize) != 0)
            throw std::runtime_error("no disk of its own");
    }
    ~SmallDisk() { ::umount2(folder_.constData(), MNT_DETACH); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    // As the switch at the side of a stick does it.
    void Protect() {
        if (::mount("none", folder_.constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, kSize) != 0)
            throw std::runtime_error("the disk is not protected");
    }
    // Leaves no room.
    void Fill() {
        QFile rest(QFile::decodeName(folder_) + QStringLiteral("/rest"));
        if (!rest.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            throw std::runtime_error("the disk is not filled");
        while (rest.write(QByteArray(4096, 'x')) > 0) {
        }
    }

  private:
    static constexpr const char* kSize = "size=64k";
    QByteArray folder_;
};

// As long as it lasts the program has the rights of a user who owns nothing. Only root can be one.
class NobodysRights {
  public:
    NobodysRights() {
        if (::seteuid(kNobody) != 0) throw std::runtime_error("rights stay as they are");
    }
    ~NobodysRights() { static_cast<void>(::seteuid(0)); }
    NobodysRights(const NobodysRights&) = delete;
    NobodysRights& operator=(const NobodysRights&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
};

}  // namespace davo::test
