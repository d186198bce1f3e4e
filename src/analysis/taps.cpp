// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/taps.h"

#include <algorithm>
#include <cmath>

#include "analysis/log_line.h"
#include "common/numbers.h"
#include "common/text.h"

namespace davo {

namespace {

// What the instrument gives, and the highest current that a record has a number for.
constexpr double kHighestVoltage = 1000;
constexpr double kHighestCurrent = 65535 * 0.0002;

constexpr double kVoltageBeyondKnee = 1.1;
constexpr double kCurrentBeyondKnee = 1.5;
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

// How an expected curve, moved in current, is under a measured one.
struct Fit {
    double lnCurrent = 0;
    double lnVoltage = 0;     // mean distance
    double variance = 1e198;  // of the distances
};

Fit FitAt(const LogLine& measured, const LogLine& expected, double lnCurrent) {
    constexpr int kPlaces = 40;
    Fit fit{lnCurrent};
    const double from = std::max(measured.First(), expected.First() + lnCurrent);
    const double to = std::min(measured.Last(), expected.Last() + lnCurrent);
    const double shorter =
        std::min(measured.Last() - measured.First(), expected.Last() - expected.First());
    constexpr double kOverlap = 0.6;  // of the shorter one, or a straight end fits anywhere
    if (to - from < std::max(kOverlap * shorter, kQuarterDecade)) return fit;
    double squares = 0;
    for (int k = 0; k <= kPlaces; ++k) {
        const double x = from + (to - from) * k / kPlaces;
        const double distance = measured.At(x) - expected.At(x - lnCurrent);
        fit.lnVoltage += distance / (kPlaces + 1);
        squares += distance * distance / (kPlaces + 1);
    }
    fit.variance = squares - fit.lnVoltage * fit.lnVoltage;
    return fit;
}

// The better of two fits.
const Fit& Better(const Fit& one, const Fit& other) {
    return other.variance < one.variance ? other : one;
}

double WorstPercent(const Shift& shift) {
    return std::max(std::abs(PercentOfLn(shift.lnVoltage)), std::abs(PercentOfLn(shift.lnCurrent)));
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
    const auto volts = [](double kneeVoltage) {
        return NumberText(kneeVoltage * kVoltageBeyondKnee, 0, kHighestVoltage);
    };
    const std::string cannot = "This instrument cannot saturate " + name + ": it takes ";
    const std::string there = " V, and there are " + VoltsText(kHighestVoltage) + ".";
    if (knee.low * kVoltageBeyondKnee > kHighestVoltage)
        return cannot + "at least " + volts(knee.low) + there;
    const double amperes = curve.knee ? curve.knee->at.current * kCurrentBeyondKnee : 0;
    if (amperes > kHighestCurrent) {
        return cannot + NumberText(amperes, 2, kHighestCurrent) + " A, and a record holds " +
               GeneralNumber(kHighestCurrent) + " A.";
    }
    if (knee.high * kVoltageBeyondKnee <= kHighestVoltage) return {};
    return "Whether this instrument saturates " + name + " is open: it takes " + volts(knee.low) +
           " to " + volts(knee.high) + there;
}

std::optional<Shift> ShiftBetween(const std::vector<CurvePoint>& measured,
                                  const std::vector<CurvePoint>& expected) {
    const LogLine a = VoltageLine(measured);
    const LogLine b = VoltageLine(expected);
    constexpr std::size_t kBendPoints = 5;  // the fewest that tell a bend
    if (std::min(a.nodes.size(), b.nodes.size()) < kBendPoints) return std::nullopt;
    constexpr int kFarthest = 175;  // steps to a factor of 33
    double step = 0.02;
    Fit best;
    for (int k = -kFarthest; k <= kFarthest; ++k)
        best = Better(best, FitAt(a, b, k * step));
    while (step > kLogRounding) {
        step /= 2;
        for (const double side : {-step, step})
            best = Better(best, FitAt(a, b, best.lnCurrent + side));
    }
    constexpr double kMostScatter = 0.05;    // standard deviation; more is another shape
    constexpr double kLeastScatter = 0.005;  // that 5 % more or less current has to add
    const double near = std::log1p(kProportionPercent / 100);
    const double beside =
        Better(FitAt(a, b, best.lnCurrent - near), FitAt(a, b, best.lnCurrent + near)).variance;
    if (best.variance > kMostScatter * kMostScatter ||
        beside - best.variance < kLeastScatter * kLeastScatter)
        return std::nullopt;
    const Shift shift{best.lnVoltage, best.lnCurrent};
    // What the readings leave open is no other proportion, nor is what they scatter by.
    constexpr double kScatterPercent = 1;
    const bool isOpen = VerdictOf(CompareCurves({measured, {}, {}}, {expected, {}, {}}),
                                  kScatterPercent) == Verdict::Within;
    if (isOpen && VerdictOf(shift) == Verdict::Beyond) return std::nullopt;
    return shift;
}

Verdict VerdictOf(const std::optional<Shift>& shift) {
    if (!shift) return Verdict::None;
    return VerdictOf(WorstPercent(*shift), kProportionPercent);
}

std::string ShiftSentenceOf(const std::string& name, const std::optional<Shift>& shift) {
    if (!shift) {
        return "Whether the curve of " + name +
               " is what its turns give cannot be told: the curves have too few points, or are too "
               "short, too straight or too different.";
    }
    const auto part = [](double ln, const std::string& what) {
        return DifferenceText(PercentOfLn(ln), what, kProportionPercent);
    };
    return "The voltage of " + name + " is " + part(shift->lnVoltage, "what its turns give") +
           ", its current " + part(shift->lnCurrent, "what they give") +
           LimitEnd(VerdictOf(shift), kProportionPercent);
}

}  // namespace davo
