// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace davo {

// The numbers of a record are counts of a decimal step (0.1 V, 0.0001 A), so their texts are the
// counts' digits with a point put in. That is what Picture and GeneralNumber make of the count
// times its step, at a fraction of the time; a file of 100 shots holds 7000 of them.

// A text written from its end to its beginning, the way that digits come. It holds the lines of
// all the points of a shot.
class BackwardText {
  public:
    // Adds text before what is there, which may come to kMost bytes.
    void Put(std::string_view text) {
        start_ -= text.size();
        std::memcpy(bytes_.data() + start_, text.data(), text.size());
    }

    // Adds units / 10^decimals with all its decimals: 124 with 4 gives "0.0124", as the picture
    // "###0.0000" does.
    void PutFixed(int units, int decimals) {
        unsigned left =
            units < 0 ? 0U - static_cast<unsigned>(units) : static_cast<unsigned>(units);
        const auto putDigit = [this, &left] {
            bytes_[--start_] = static_cast<char>('0' + left % 10U);
            left /= 10U;
        };
        for (int i = 0; i < decimals; ++i)
            putDigit();
        bytes_[--start_] = '.';
        do {
            putDigit();
        } while (left != 0);
        if (units < 0) bytes_[--start_] = '-';
    }

    std::string_view Text() const { return {bytes_.data() + start_, kMost - start_}; }

  private:
    static constexpr std::size_t kMost = 2048;

    std::array<char, kMost> bytes_;  // filled from start_ on
    std::size_t start_ = kMost;
};

// units / 10^decimals with all its decimals.
std::string FixedText(int units, int decimals);

// units / 10^decimals without zeros at its end, in general number form: 1520 with 1 gives "152".
// Only for values whose general form has no exponent: decimals from 1 to 4.
std::string ShortestText(int units, int decimals);

// units with one decimal less, rounded half away from zero: 1235 gives 124.
int RoundedToTens(int units);

}  // namespace davo
