// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "instrument/instrument.h"

namespace davo::instrument {

struct CommandLine {
    InstrumentOptions options;
    bool dieWithParent = false;
    bool help = false;
    std::string replayPath;  // a log to answer as; empty: none
    std::string checkPath;   // a log to hold against the protocol; empty: none
    std::string error;       // what is wrong, in words; empty when all is well
};

// How short the pauses are with --quick.
inline constexpr double kQuickScale = 0.02;

// arguments are those after the program's name; presetSeed counts when none is given.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::uint64_t presetSeed);

// The help text.
std::string Usage();

}  // namespace davo::instrument
