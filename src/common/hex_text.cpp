// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/hex_text.h"

#include <cmath>
#include <limits>

#include "common/run_time_error.h"

namespace davo {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

double DigitValue(char digit) {
    const auto place = kDigits.find(digit);
    return place == std::string_view::npos ? -1.0 : static_cast<double>(place);
}

}  // namespace

std::int32_t ParseHexText(std::string_view text) {
    double sum = 0.0;
    double weight = 1.0;
    for (std::size_t fromEnd = 1; fromEnd <= text.size(); ++fromEnd) {
        sum += DigitValue(text[text.size() - fromEnd]) * weight;
        weight *= 16.0;
    }
    const double rounded = std::nearbyint(sum);
    // Asked this way round so that a text too long for a double, infinite or not a number, fails
    // too.
    const bool fits = rounded >= std::numeric_limits<std::int32_t>::min() &&
                      rounded <= std::numeric_limits<std::int32_t>::max();
    if (!fits) throw RunTimeError(ErrorNumber::Overflow);
    return static_cast<std::int32_t>(rounded);
}

}  // namespace davo
