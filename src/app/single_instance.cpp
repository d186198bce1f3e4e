// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/single_instance.h"

#include <QDir>

#include "common/files.h"

namespace davo {

bool SingleInstance::AnotherRuns() {
    for (const QString& folder : folders_) {
        QDir().mkpath(folder);
        const QString path = folder + QStringLiteral("davo.lock");
        RemoveLinkOrPipe(path);
        lock_ = std::make_unique<QLockFile>(path);
        // How old the file is says nothing: the program may run for weeks.
        lock_->setStaleLockTime(0);
        if (lock_->tryLock(0)) return false;
        if (lock_->error() != QLockFile::LockFailedError) continue;
        // The process that the file names may be another program's by now, and the file may be
        // damaged. It can be removed only when no living process holds it.
        return !lock_->removeStaleLockFile() || !lock_->tryLock(0);
    }
    return false;
}

}  // namespace davo
