// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "instrument/pty.h"
#include "instrument/replay.h"

namespace davo::instrument {

// A recorded conversation on a device of its own.
class ReplayDevice {
  public:
    // Throws the errors of Pty. The device exists when the constructor returns.
    ReplayDevice(std::vector<LoggedBytes> log, const std::string& linkPath);

    // Runs until stopDescriptor has something to read, or the PC departs from the recording.
    void Run(int stopDescriptor);

    std::string State() const { return replay_.State(); }
    bool IsWhole() const { return replay_.Ended() && replay_.Departure().empty(); }

  private:
    Replay replay_;
    Pty pty_;
};

}  // namespace davo::instrument
