// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <random>

#include "tests/support/random_seed.h"

namespace davo::test {

// Whether the environment asks for the whole of what takes long.
inline bool TakesLong() {
    return std::getenv("DAVO_LONG") != nullptr;
}

// How many of the random cases of a test are looked at: a tenth, and all of them when DAVO_LONG is
// set, but never under the sanitizers, which take ten times as long.
inline int RandomRounds(int cases) {
#ifdef __SANITIZE_ADDRESS__
    constexpr bool kSanitized = true;
#else
    constexpr bool kSanitized = false;
#endif
    return TakesLong() && !kSanitized ? cases : cases / 10;
}

// Which cases of a long matrix are looked at: one at random of every so many that follow each
// other, and all of them when DAVO_LONG is set. The seed is printed; DAVO_SEED repeats the choice.
class Share {
  public:
    explicit Share(int every = 10)
        : every_(TakesLong() ? 1 : every), random_(RandomSeed(std::random_device{}())) {}
    // Asked once for each case in turn.
    bool Takes() {
        if (asked_ == 0) taken_ = std::uniform_int_distribution(0, every_ - 1)(random_);
        const bool takes = asked_ == taken_;
        asked_ = (asked_ + 1) % every_;
        return takes;
    }

  private:
    int every_;
    std::mt19937_64 random_;
    int asked_ = 0;
    int taken_ = 0;
};

}  // namespace davo::test
