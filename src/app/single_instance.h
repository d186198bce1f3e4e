// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "common/places.h"

namespace davo {

// The rule that only one copy of the program runs for a user.
class SingleInstance {
  public:
    virtual ~SingleInstance() = default;

    // Whether another instance is running. When none is, this one counts as running from now until
    // the object goes or the process ends, however it ends.
    virtual bool AnotherRuns() = 0;
};

// By the file "davo.lock" in the configuration folder, which holds the process that runs; in the
// scratch folder, whose files two programs must not share, where the first takes no file. What an
// instance that was killed left there never keeps the next one from starting, nor do folders that
// nothing can be written in.
std::unique_ptr<SingleInstance> MakeSingleInstance(const Places& places);

}  // namespace davo
