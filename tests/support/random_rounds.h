// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace davo::test {

// How many of the random cases of a test are looked at: all of them, but a tenth under the
// sanitizers, which take ten times as long. What only many cases find is found without them.
constexpr int RandomRounds(int cases) {
#ifdef __SANITIZE_ADDRESS__
    constexpr int kShare = 10;
#else
    constexpr int kShare = 1;
#endif
    return cases / kShare;
}

}  // namespace davo::test
