// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// A number against the limit that the user set.
enum class Verdict {
    None,  // without a limit, or where there is no number
    Within,
    Beyond
};

// One thing that was held against what it should be, in one sentence.
struct Finding {
    Verdict verdict = Verdict::None;  // None for an estimate, and for what is open or not measured
    std::string sentence;
};

// The difference of a value from its reference against a limit, both in percent; by the unrounded
// number. None where one of them is not finite, and for a limit below zero.
Verdict VerdictOf(double percent, std::optional<double> limitPercent);

// 100 (e^ln - 1): a difference of logarithms in percent.
double PercentOfLn(double ln);

// A value with as many decimals, from the fewest to nine, as tell it from zero and from another
// number, which it is shown beside. Throws RunTimeError 6 (Overflow) when one is not finite.
std::string NumberText(double value, std::size_t fewestDecimals,
                       std::optional<double> other = std::nullopt);

// "3.1 % above the reference" or "3.1 % below the reference" of such a what, with as many decimals
// as tell the number from the limit. What would be 0.0 % is "within 0.1 % of the reference", or
// "exactly the reference" by a limit that is lower. The number is at most 1000000.
std::string DifferenceText(double percent, const std::string& what,
                           std::optional<double> limitPercent, std::size_t fewestDecimals = 1);

// "; the limit is 5 %." for Within, ", beyond the limit of 5 %." or ".": the end of a sentence.
std::string LimitEnd(Verdict verdict, std::optional<double> limitPercent);

// "0.20 A": a current with four decimals below 10 mA, three below 100 mA, two above.
std::string AmperesText(double amperes);

// "820 V": a voltage, with a decimal below 100 V.
std::string VoltsText(double volts);

// "+0.50 %", "-0.50 %" or "0.00 %".
std::string SignedPercentText(double percent);

// The error of a turns ratio with its sign, (measured - nameplate) / nameplate in percent; nothing
// unless both are above zero. A record's own percent error has no sign.
std::optional<double> RatioErrorOf(double measured, double nameplate);

// That error with the limit, where there is one, and whether it is within.
Finding RatioFinding(double percent, std::optional<double> limitPercent);

// What a record's texts say of ratio, as "241.2" and "240 (1200:5)", and of polarity, which is "IN
// PHASE" or "OUT OF PHASE", with its sign; of what is missing or "N/A" there is nothing.
std::vector<Finding> RatioFindings(std::string_view measured, std::string_view nameplate,
                                   std::string_view polarity, std::optional<double> limitPercent);

}  // namespace davo
