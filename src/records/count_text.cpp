// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/count_text.h"

namespace davo {

std::string FixedText(int units, int decimals) {
    const auto behindPoint = static_cast<std::size_t>(decimals);
    std::string text = std::to_string(units);
    const std::size_t sign = units < 0 ? 1 : 0;
    if (text.size() <= sign + behindPoint)
        text.insert(sign, sign + behindPoint + 1 - text.size(), '0');
    text.insert(text.size() - behindPoint, 1, '.');
    return text;
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
