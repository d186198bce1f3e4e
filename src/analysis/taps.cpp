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
    const std::size_t colon = text.find(':');
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

// 0 without a kneepoint. Of a range the high end.
double VoltsToSaturate(const ComparedCurve& curve) {
    if (curve.knee) return curve.knee->at.voltage * kVoltageBeyondKnee;
    return curve.range ? curve.range->high * kVoltageBeyondKnee : 0;
}

// 0 without a kneepoint; a range has no current.
double AmperesToSaturate(const ComparedCurve& curve) {
    return curve.knee ? curve.knee->at.current * kCurrentBeyondKnee : 0;
}

double PercentOfLn(double ln) {
    return 100 * std::expm1(ln);
}

std::string OffSentence(const Tap& tap, const std::string& what, double ln,
                        const std::string& proportion) {
    return "The " + what + " of " + tap.Name() + " is not in proportion to " + proportion +
           ": it is " + PercentText(PercentOfLn(ln)) + " " + SideOf(ln) +
           " what the full winding gives.";
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

Saturation SaturationOf(const ComparedCurve& curve) {
    if (!curve.knee && !curve.range) return Saturation::Unknown;
    if (VoltsToSaturate(curve) > kHighestVoltage) return Saturation::NeedsMoreVoltage;
    if (AmperesToSaturate(curve) > kHighestCurrent) return Saturation::NeedsMoreCurrent;
    return Saturation::Reached;
}

std::string SaturationSentenceOf(const std::string& name, const ComparedCurve& curve) {
    switch (SaturationOf(curve)) {
        case Saturation::Reached:
            return "This instrument can saturate " + name + ": it takes " +
                   VoltsText(VoltsToSaturate(curve)) + ".";
        case Saturation::NeedsMoreVoltage:
            return "This instrument cannot saturate " + name + ": it takes " +
                   VoltsText(VoltsToSaturate(curve)) + ", and there are " +
                   VoltsText(kHighestVoltage) + ".";
        case Saturation::NeedsMoreCurrent:
            return "This instrument cannot saturate " + name + ": it takes " +
                   AmperesText(AmperesToSaturate(curve)) + ", and a record holds " +
                   AmperesText(kHighestCurrent) + ".";
        case Saturation::Unknown:
            break;
    }
    return "Whether this instrument can saturate " + name +
           " is not known: the measured winding has no kneepoint for certain.";
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
    for (double step = kStep / 2; step > kLogRounding; step /= 2) {
        for (const double side : {-step, step}) {
            const Fit fit = FitAt(a, b, best.lnCurrent + side);
            if (fit.scatter < best.scatter) best = fit;
        }
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

Proportion ProportionOf(const std::optional<Shift>& shift) {
    if (!shift) return Proportion::Unknown;
    const double trusted = std::log1p(kProportionPercent / 100);
    const bool voltage = std::abs(shift->lnVoltage) > trusted;
    const bool current = std::abs(shift->lnCurrent) > trusted;
    if (voltage && current) {
        const bool opposite = std::abs(shift->lnVoltage + shift->lnCurrent) <= trusted;
        return opposite ? Proportion::OtherTurns : Proportion::Both;
    }
    if (voltage) return Proportion::VoltageOff;
    return current ? Proportion::CurrentOff : Proportion::Holds;
}

std::string ProportionSentenceOf(const Tap& tap, const std::optional<Shift>& shift) {
    const Shift by = shift.value_or(Shift());
    switch (ProportionOf(shift)) {
        case Proportion::Holds:
            return "The curve of " + tap.Name() +
                   " is in proportion to its turns: the voltage is " +
                   PercentText(PercentOfLn(by.lnVoltage)) + " " + SideOf(by.lnVoltage) +
                   " and the current " + PercentText(PercentOfLn(by.lnCurrent)) + " " +
                   SideOf(by.lnCurrent) + " what the full winding gives.";
        case Proportion::OtherTurns:
            return "The curve of " + tap.Name() + " is that of about " +
                   Picture(tap.Turns() * std::exp(by.lnVoltage), "##0") + " turns, not " +
                   Picture(tap.Turns(), "##0") + ".";
        case Proportion::VoltageOff:
            return OffSentence(tap, "voltage", by.lnVoltage, "the turns");
        case Proportion::CurrentOff:
            return OffSentence(tap, "current", by.lnCurrent, "1 / turns");
        case Proportion::Both:
            return "Neither voltage nor current of " + tap.Name() +
                   " is in proportion to its turns.";
        case Proportion::Unknown:
            break;
    }
    return "Whether " + tap.Name() +
           " is in proportion to its turns cannot be told: the curves are too short, too straight "
           "or too different.";
}

}  // namespace davo
