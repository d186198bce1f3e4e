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
    return "The turns ratio is " + PercentText(percent, limitPercent, 2) + " " + SideOf(percent) +
           " the nameplate's" + LimitEnd(percent, limitPercent);
}

std::string PolarityWithSign(std::string_view polarity) {
    const std::string text = TrimBlanks(polarity);
    if (text == "IN PHASE") return "in phase (+)";
    if (text == "OUT OF PHASE") return "out of phase (-)";
    return {};
}

}  // namespace davo
