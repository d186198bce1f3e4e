// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/single_instance.h"

#include <QDir>
#include <QLockFile>

#include "common/files.h"

namespace davo {

namespace {

class LockedFile : public SingleInstance {
  public:
    explicit LockedFile(const QString& path) : lock_(path) {
        RemoveLinkOrPipe(path);
        // How old the file is says nothing: the program may run for weeks.
        lock_.setStaleLockTime(0);
    }

    bool AnotherRuns() override {
        if (lock_.tryLock(0)) return false;
        if (lock_.error() != QLockFile::LockFailedError) return false;
        // The process that the file names may be another program's by now, and the file may be
        // damaged. It can be removed only when no living process holds it.
        return !lock_.removeStaleLockFile() || !lock_.tryLock(0);
    }

  private:
    QLockFile lock_;
};

}  // namespace

std::unique_ptr<SingleInstance> MakeSingleInstance(const Places& places) {
    QDir().mkpath(places.configurationFolder);
    return std::make_unique<LockedFile>(places.configurationFolder + QStringLiteral("davo.lock"));
}

}  // namespace davo
