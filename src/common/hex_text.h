// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string_view>

namespace davo {

// The 32-bit number of a text of digits from "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ": each
// character's value is its place in that text counted from 0 (one that is not in it, lower-case
// letters included, counts -1); the k-th from the end weighs 16 to the power k whatever the digit;
// the sum is made in a double and rounded. An empty text gives 0. Throws RunTimeError 6 (Overflow)
// outside the 32-bit range.
std::int32_t ParseHexText(std::string_view text);

}  // namespace davo
