// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/testing/sequence_rig.h"

namespace davo::test {

// What the instrument says in one shot. After each part but the last it waits for the operator's
// confirmation.
struct ShotScript {
    bool ratioOnly = false;
    std::vector<std::string> parts;

    std::size_t Size() const;
    std::string Bytes() const;
};

// Recorded from the simulated instrument, whose operator watches so many readings before he
// confirms.
ShotScript RecordScript(std::uint64_t seed, bool ratioOnly, int readings);

// How a part reaches the PC; position is the part's place in the whole shot.
using Delivery =
    std::function<void(SequenceRig& rig, const std::string& part, std::size_t position)>;

// Each line as a piece of its own.
void DeliverLines(SequenceRig& rig, const std::string& text);

// Starts a shot (answering the question whether it is a ratio test) and plays the script, with an
// operator who confirms whenever the window asks him to. While a reading opens the confirmation
// and the line is not dead, up to three more readings arrive. False when the window did not ask.
bool PlayShot(SequenceRig& rig, const ShotScript& script, const Delivery& delivery,
              bool lineIsDead = false);

}  // namespace davo::test
