// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace davo {

// A number against the limit that the user set.
enum class Verdict {
    None,  // without a limit, or where there is no number
    Within,
    Beyond
};

// The difference of a value from its reference against a limit, both in percent; by the unrounded
// number.
Verdict VerdictOf(double percent, std::optional<double> limitPercent);

// "3.1 %" of a positive or negative percentage, with as many decimals, from the fewest to four, as
// tell it from the limit.
std::string PercentText(double percent, std::optional<double> limitPercent = std::nullopt,
                        std::size_t fewestDecimals = 1);

// "; the limit is 5 %.", ", beyond the limit of 5 %." or ".": the end of a sentence.
std::string LimitEnd(double percent, std::optional<double> limitPercent);

// "below" or "above".
std::string SideOf(double percent);

// "0.20 A": a current with four decimals below 10 mA, three below 100 mA, two above.
std::string AmperesText(double amperes);

// "820 V": a voltage, with a decimal below 100 V.
std::string VoltsText(double volts);

}  // namespace davo
