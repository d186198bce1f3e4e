// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/taps.h"

#include <algorithm>

#include "common/numbers.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr double kHighestVoltage = 1000;  // what the instrument gives
constexpr double kVoltageBeyondKnee = 1.1;
constexpr double kProportionPercent = 5;

std::optional<Tap> ParseTap(std::string_view text) {
    const std::size_t colon = text.find_first_of(":/");
    if (colon == std::string_view::npos) return std::nullopt;
    const Tap tap{WholeNumericValue(text.substr(0, colon)).value_or(0),
                  WholeNumericValue(text.substr(colon + 1)).value_or(0)};
    constexpr double kLeast = 0.1;
    constexpr double kMostPrimary = 1e5;
    constexpr double kMostSecondary = 20;
    const bool isTap = tap.primary >= kLeast && tap.primary <= kMostPrimary &&
                       tap.secondary >= kLeast && tap.secondary <= kMostSecondary;
    return isTap ? std::optional(tap) : std::nullopt;
}

}  // namespace

std::string Tap::Name() const {
    return GeneralNumber(primary) + ":" + GeneralNumber(secondary);
}

std::optional<std::vector<Tap>> ParseTaps(std::string_view text) {
    std::vector<Tap> taps;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(",;\r\n"), text.size());
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (TrimBlanks(part).empty()) continue;
        const std::optional<Tap> tap = ParseTap(part);
        if (!tap) return std::nullopt;
        taps.push_back(*tap);
    }
    return taps.empty() ? std::nullopt : std::optional(taps);
}

ComparedCurve ScaledToTurns(const ComparedCurve& curve, double fromTurns, double toTurns) {
    ComparedCurve scaled = curve;
    const double part = toTurns / fromTurns;
    const auto scale = [part](CurvePoint& point) {
        point.voltage *= part;
        point.current /= part;
    };
    std::for_each(scaled.points.begin(), scaled.points.end(), scale);
    if (scaled.knee) {
        scale(scaled.knee->at);
        scaled.knee->uncertainty *= part;
    }
    if (scaled.range) scaled.range = {scaled.range->low * part, scaled.range->high * part};
    return scaled;
}

std::string TooMuchSentenceOf(const std::string& name, const ComparedCurve& curve) {
    const KneeRange knee = KneeRangeOf(curve).value_or(KneeRange());
    const double high = knee.high * kVoltageBeyondKnee;
    if (high <= kHighestVoltage) return {};
    const double low = knee.low * kVoltageBeyondKnee;
    const std::string least = NumberText(low, 0, kHighestVoltage);
    return (low > kHighestVoltage
                ? "This instrument cannot saturate " + name + ": it takes at least " + least
                : "Whether this instrument saturates " + name + " is open: it takes " + least +
                      " to " + NumberText(high, 0, kHighestVoltage)) +
           " V, and there are " + VoltsText(kHighestVoltage) + ".";
}

Finding TapFinding(const std::string& name, const std::vector<CurvePoint>& measured,
                   const ComparedCurve& expected) {
    const CurveComparison comparison = CompareCurves({measured, {}, {}}, expected);
    return {VerdictOf(comparison, kProportionPercent),
            SentenceOf(comparison, kProportionPercent, " of " + name, "what its turns give")};
}

}  // namespace davo
