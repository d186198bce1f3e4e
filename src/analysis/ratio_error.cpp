// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ratio_error.h"

#include <cmath>

#include "analysis/limits.h"
#include "common/numbers.h"
#include "common/text.h"

namespace davo {

std::optional<double> RatioErrorOf(double measured, double nameplate) {
    if (!(measured > 0 && nameplate > 0)) return std::nullopt;
    const double percent = (measured - nameplate) / nameplate * 100;
    if (!std::isfinite(percent)) return std::nullopt;
    return percent;
}

std::optional<double> RatioErrorOf(std::string_view measured, std::string_view nameplate) {
    return RatioErrorOf(LeadingNumericValue(measured).value_or(0),
                        LeadingNumericValue(nameplate).value_or(0));
}

std::string SignedPercentText(double percent) {
    const std::string text = Picture(percent, "##0.00") + " %";
    return RoundByPicture(percent, "##0.00") > 0 ? "+" + text : text;
}

std::string RatioSentenceOf(double percent, std::optional<double> limitPercent) {
    const bool isExact = VerdictOf(percent, 0) == Verdict::Within;
    return "The turns ratio is " +
           (isExact ? "exactly the nameplate's"
                    : DifferenceText(percent, "the nameplate's", limitPercent, 2)) +
           LimitEnd(VerdictOf(percent, limitPercent), limitPercent);
}

std::string PolaritySentenceOf(std::string_view polarity) {
    const std::string text = TrimBlanks(polarity);
    if (text == "IN PHASE") return "The polarity is in phase (+).";
    return text == "OUT OF PHASE" ? "The polarity is out of phase (-)." : "";
}

}  // namespace davo
