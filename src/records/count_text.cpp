// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/count_text.h"

namespace davo {

std::string FixedText(int units, int decimals) {
    BackwardText text;
    text.PutFixed(units, decimals);
    return std::string(text.Text());
}

std::string ShortestText(int units, int decimals) {
    std::string text = FixedText(units, decimals);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

int RoundedToTens(int units) {
    constexpr int kHalf = 5;
    return (units < 0 ? units - kHalf : units + kHalf) / 10;
}

}  // namespace davo
