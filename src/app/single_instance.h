// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLockFile>
#include <QStringList>
#include <memory>

#include "common/places.h"

namespace davo {

// The rule that only one copy of the program runs for a user: by the file "davo.lock" in the
// configuration folder, which holds the process that runs; in the scratch folder, whose files two
// programs must not share, where the first takes no file. What an instance that was killed left
// there never keeps the next one from starting, nor do folders that nothing can be written in.
class SingleInstance {
  public:
    explicit SingleInstance(const Places& places)
        : folders_{places.configurationFolder, places.scratchFolder} {}

    // Whether another instance is running. When none is, this one counts as running from now until
    // the object goes or the process ends, however it ends.
    bool AnotherRuns();

  private:
    QStringList folders_;  // the next one where nothing can be written in the one before
    std::unique_ptr<QLockFile> lock_;
};

}  // namespace davo
