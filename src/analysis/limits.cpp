// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/limits.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/numbers.h"

namespace davo {

namespace {

constexpr double kRoundedPercent = 1e-9;  // of what was computed in doubles

}  // namespace

Verdict VerdictOf(double percent, std::optional<double> limitPercent) {
    if (!limitPercent) return Verdict::None;
    return std::abs(percent) > *limitPercent + kRoundedPercent ? Verdict::Beyond : Verdict::Within;
}

std::string PercentText(double percent, std::optional<double> limitPercent,
                        std::size_t fewestDecimals) {
    constexpr std::array kPictures = {"##0", "##0.0", "##0.00", "##0.000", "##0.0000"};
    constexpr double kMost = 1e6;
    const double size = std::min(std::abs(percent), kMost);
    std::size_t decimals = fewestDecimals;
    while (decimals + 1 < kPictures.size() &&
           VerdictOf(size, limitPercent) !=
               VerdictOf(RoundByPicture(size, kPictures.at(decimals)), limitPercent)) {
        ++decimals;
    }
    return Picture(size, kPictures.at(decimals)) + " %";
}

std::string LimitEnd(double percent, std::optional<double> limitPercent) {
    if (!limitPercent) return ".";
    const std::string limit = GeneralNumber(*limitPercent) + " %.";
    return VerdictOf(percent, limitPercent) == Verdict::Beyond ? ", beyond the limit of " + limit
                                                               : "; the limit is " + limit;
}

std::string SideOf(double percent) {
    return percent < 0 ? "below" : "above";
}

std::string AmperesText(double amperes) {
    const char* picture = amperes < 0.01 ? "##0.0000" : amperes < 0.1 ? "##0.000" : "##0.00";
    return Picture(amperes, picture) + " A";
}

std::string VoltsText(double volts) {
    return Picture(volts, volts < 100 ? "##0.0" : "##0") + " V";
}

}  // namespace davo
