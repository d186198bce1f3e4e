// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/limits.h"

#include <algorithm>
#include <cmath>

#include "common/numbers.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr double kRounded = 1e-9;  // of what was computed in doubles

// -1 below the other, 0 at it, 1 above.
int SideOf(double value, double other) {
    const double apart = value - other;
    return std::abs(apart) <= kRounded ? 0 : apart < 0 ? -1 : 1;
}

}  // namespace

Verdict VerdictOf(double percent, std::optional<double> limitPercent) {
    const double limit = limitPercent.value_or(-1);
    if (!(limit >= 0 && std::isfinite(limit) && std::isfinite(percent))) return Verdict::None;
    return SideOf(std::abs(percent), limit) > 0 ? Verdict::Beyond : Verdict::Within;
}

double PercentOfLn(double ln) {
    return 100 * std::expm1(ln);
}

std::string NumberText(double value, std::size_t fewestDecimals, std::optional<double> other) {
    constexpr std::size_t kMostDecimals = 9;
    std::string picture = fewestDecimals == 0 ? "##0" : "##0." + std::string(fewestDecimals, '0');
    for (std::size_t decimals = fewestDecimals; decimals < kMostDecimals; ++decimals) {
        const double shown = RoundByPicture(value, picture);
        const auto isTold = [&](double from) { return SideOf(shown, from) == SideOf(value, from); };
        if (isTold(0) && isTold(other.value_or(0))) break;
        picture += decimals == 0 ? ".0" : "0";
    }
    return Picture(value, picture);
}

std::string DifferenceText(double percent, const std::string& what,
                           std::optional<double> limitPercent, std::size_t fewestDecimals) {
    constexpr double kMost = 1e6;
    const double size = std::min(std::abs(percent), kMost);
    const double step = std::pow(0.1, fewestDecimals);
    if (size < step / 2 && limitPercent.value_or(step) >= step)
        return "within " + NumberText(step, fewestDecimals) + " % of " + what;
    if (SideOf(size, 0) == 0) return "exactly " + what;
    return NumberText(size, fewestDecimals, limitPercent) + " % " +
           (percent < 0 ? "below " : "above ") + what;
}

std::string LimitEnd(Verdict verdict, std::optional<double> limitPercent) {
    if (verdict == Verdict::None || !limitPercent) return ".";
    return (verdict == Verdict::Beyond ? ", beyond the limit of " : "; the limit is ") +
           GeneralNumber(*limitPercent) + " %.";
}

std::string AmperesText(double amperes) {
    return NumberText(amperes, amperes < 0.01 ? 4 : amperes < 0.1 ? 3 : 2) + " A";
}

std::string VoltsText(double volts) {
    return NumberText(volts, volts < 100 ? 1 : 0) + " V";
}

std::optional<double> RatioErrorOf(double measured, double nameplate) {
    if (!(measured > 0 && nameplate > 0)) return std::nullopt;
    const double percent = (measured - nameplate) / nameplate * 100;
    if (!std::isfinite(percent)) return std::nullopt;
    return percent;
}

std::string SignedPercentText(double percent) {
    const std::string text = Picture(percent, "##0.00") + " %";
    return RoundByPicture(percent, "##0.00") > 0 ? "+" + text : text;
}

Finding RatioFinding(double percent, std::optional<double> limitPercent) {
    const Verdict verdict = VerdictOf(percent, limitPercent);
    return {verdict, "The turns ratio is " +
                         DifferenceText(percent, "the nameplate's", limitPercent, 2) +
                         LimitEnd(verdict, limitPercent)};
}

std::vector<Finding> RatioFindings(std::string_view measured, std::string_view nameplate,
                                   std::string_view polarity, std::optional<double> limitPercent) {
    std::vector<Finding> findings;
    const auto error = RatioErrorOf(LeadingNumericValue(measured).value_or(0),
                                    LeadingNumericValue(nameplate).value_or(0));
    if (error) findings.push_back(RatioFinding(*error, limitPercent));
    const std::string said = TrimBlanks(polarity);
    if (said == "IN PHASE") findings.push_back({Verdict::None, "The polarity is in phase (+)."});
    if (said == "OUT OF PHASE")
        findings.push_back({Verdict::None, "The polarity is out of phase (-)."});
    return findings;
}

}  // namespace davo
