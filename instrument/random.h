// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace davo::instrument {

// A small generator of its own (xorshift64*), because the standard distributions may differ
// between libraries and a seed must give the same shot everywhere.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed * 2654435769U + 88172645463325252U) {
        if (state_ == 0) state_ = 1;
        Next();
        Next();
    }

    std::uint64_t Next() {
        state_ ^= state_ >> 12U;
        state_ ^= state_ << 25U;
        state_ ^= state_ >> 27U;
        return state_ * 2685821657736338717U;
    }

    // From 0 to below 1.
    double Unit() { return static_cast<double>(Next() >> 11U) / 9007199254740992.0; }
    // Both ends included.
    int Between(int low, int high) {
        return low + static_cast<int>((Next() >> 16U) % static_cast<std::uint64_t>(high - low + 1));
    }
    bool Chance(double probability) { return Unit() < probability; }

  private:
    std::uint64_t state_;
};

}  // namespace davo::instrument
