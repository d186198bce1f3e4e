// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace davo {

// The error of a turns ratio with its sign, (measured - nameplate) / nameplate in percent; nothing
// unless both are above zero. A record's own percent error has no sign.
std::optional<double> RatioErrorOf(double measured, double nameplate);

// The same of a record's texts such as "241.2" and "240 (1200:5)"; nothing for "N/A".
std::optional<double> RatioErrorOf(std::string_view measured, std::string_view nameplate);

// "+0.50 %", "-0.50 %" or "0.00 %".
std::string SignedPercentText(double percent);

// One sentence with the limit, where there is one, and whether the error is within it.
std::string RatioSentenceOf(double percent, std::optional<double> limitPercent);

// One sentence of a record's polarity, with its sign; empty unless it is "IN PHASE" or "OUT OF
// PHASE".
std::string PolaritySentenceOf(std::string_view polarity);

}  // namespace davo
