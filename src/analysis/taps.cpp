// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/taps.h"

#include <algorithm>
#include <cmath>

#include "analysis/log_line.h"
#include "common/numbers.h"
#include "common/text.h"

namespace davo {

namespace {

std::optional<Tap> ParseTap(std::string_view text) {
    const std::size_t colon = text.find_first_of(":/");
    if (colon == std::string_view::npos) return std::nullopt;
    const Tap tap{WholeNumericValue(text.substr(0, colon)).value_or(0),
                  WholeNumericValue(text.substr(colon + 1)).value_or(0)};
    if (!(tap.primary > 0 && tap.secondary > 0)) return std::nullopt;
    return tap;
}

// How an expected curve, moved in current, lies under a measured one.
struct Fit {
    double lnCurrent = 0;
    double lnVoltage = 0;   // mean distance
    double scatter = 1e99;  // standard deviation of the distances
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
    double sum = 0;
    double squares = 0;
    for (int k = 0; k <= kPlaces; ++k) {
        const double x = from + (to - from) * k / kPlaces;
        const double distance = measured.At(x) - expected.At(x - lnCurrent);
        sum += distance;
        squares += distance * distance;
    }
    fit.lnVoltage = sum / (kPlaces + 1);
    fit.scatter = std::sqrt(std::max(squares / (kPlaces + 1) - fit.lnVoltage * fit.lnVoltage, 0.0));
    return fit;
}

double PercentOfLn(double ln) {
    return 100 * std::expm1(ln);
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
    if (taps.empty()) return std::nullopt;
    return taps;
}

std::vector<CurvePoint> ScaledToTurns(const std::vector<CurvePoint>& points, double fromTurns,
                                      double toTurns) {
    std::vector<CurvePoint> scaled = points;
    for (CurvePoint& point : scaled) {
        point.voltage *= toTurns / fromTurns;
        point.current *= fromTurns / toTurns;
    }
    return scaled;
}

ComparedCurve ScaledToTurns(const ComparedCurve& curve, double fromTurns, double toTurns) {
    ComparedCurve scaled{ScaledToTurns(curve.points, fromTurns, toTurns), curve.knee, curve.range};
    const double part = toTurns / fromTurns;
    if (scaled.knee) {
        scaled.knee->at.voltage *= part;
        scaled.knee->at.current /= part;
        scaled.knee->uncertainty *= part;
    }
    if (scaled.range) {
        scaled.range->low *= part;
        scaled.range->high *= part;
    }
    return scaled;
}

std::string TooMuchSentenceOf(const std::string& name, const ComparedCurve& curve) {
    const std::string cannot = "This instrument cannot saturate " + name + ": it takes ";
    const double highest = curve.range ? curve.range->high : 0;
    const double volts = (curve.knee ? curve.knee->at.voltage : highest) * kVoltageBeyondKnee;
    const double amperes = curve.knee ? curve.knee->at.current * kCurrentBeyondKnee : 0;
    if (volts > kHighestVoltage)
        return cannot + VoltsText(volts) + ", and there are " + VoltsText(kHighestVoltage) + ".";
    if (amperes <= kHighestCurrent) return {};
    return cannot + AmperesText(amperes) + ", and a record holds " + AmperesText(kHighestCurrent) +
           ".";
}

std::optional<Shift> ShiftBetween(const std::vector<CurvePoint>& measured,
                                  const std::vector<CurvePoint>& expected) {
    const LogLine a = VoltageLine(measured);
    const LogLine b = VoltageLine(expected);
    if (std::min(a.nodes.size(), b.nodes.size()) < 3) return std::nullopt;
    constexpr double kFarthest = 3.5;  // a factor of 33
    constexpr double kStep = 0.02;
    Fit best;
    for (int k = -static_cast<int>(kFarthest / kStep); k * kStep <= kFarthest; ++k) {
        const Fit fit = FitAt(a, b, k * kStep);
        if (fit.scatter < best.scatter) best = fit;
    }
    double step = kStep / 2;
    while (step > kLogRounding) {
        for (const double side : {-step, step}) {
            const Fit fit = FitAt(a, b, best.lnCurrent + side);
            if (fit.scatter < best.scatter) best = fit;
        }
        step /= 2;
    }
    constexpr double kMostScatter = 0.05;    // more is another shape
    constexpr double kLeastScatter = 0.005;  // that 5 % more or less current has to add
    if (best.scatter > kMostScatter) return std::nullopt;
    const double near = std::log1p(kProportionPercent / 100);
    const double beside = std::min(FitAt(a, b, best.lnCurrent - near).scatter,
                                   FitAt(a, b, best.lnCurrent + near).scatter);
    if (beside * beside - best.scatter * best.scatter < kLeastScatter * kLeastScatter)
        return std::nullopt;
    return Shift{best.lnVoltage, best.lnCurrent};
}

Verdict VerdictOf(const std::optional<Shift>& shift) {
    if (!shift) return Verdict::None;
    return VerdictOf(WorstPercent(*shift), kProportionPercent);
}

std::string ShiftSentenceOf(const std::string& name, const std::optional<Shift>& shift) {
    if (!shift) {
        return "Whether the curve of " + name +
               " is what its turns give cannot be told: the curves are too short, too straight or "
               "too different.";
    }
    const auto part = [](double ln) {
        return PercentText(PercentOfLn(ln), kProportionPercent) + " " + SideOf(ln);
    };
    return "The voltage of " + name + " is " + part(shift->lnVoltage) + " and its current " +
           part(shift->lnCurrent) + " what its turns give" +
           LimitEnd(WorstPercent(*shift), kProportionPercent);
}

}  // namespace davo
