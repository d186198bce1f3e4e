// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string_view>

#include "common/numbers.h"

namespace davo::test {

// The number of a result's text, its unit (" VOLTS", " AMPS", " DEG", "%") or what is in brackets
// ("240 (1200:5)") passed over; nothing for "N/A" and for a text that is no number.
inline std::optional<double> ResultNumber(std::string_view text) {
    text = text.substr(0, text.find(" ("));
    for (const std::string_view unit : {" VOLTS", " AMPS", " DEG", "%"}) {
        if (!text.ends_with(unit)) continue;
        text.remove_suffix(unit.size());
        break;
    }
    return WholeNumericValue(text);
}

}  // namespace davo::test
