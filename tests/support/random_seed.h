// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

namespace davo::test {

// The seed of a random test: that of the environment variable DAVO_SEED when it is set, else the
// one given. It is printed so that a failure can be had again.
inline std::uint64_t RandomSeed(std::uint64_t preset) {
    const char* wanted = std::getenv("DAVO_SEED");
    const std::uint64_t seed = wanted != nullptr ? std::stoull(wanted) : preset;
    std::cout << "DAVO_SEED=" << seed << std::endl;
    return seed;
}

}  // namespace davo::test
