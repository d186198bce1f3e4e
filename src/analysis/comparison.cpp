// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "analysis/log_line.h"
#include "common/numbers.h"

namespace davo {

namespace {

constexpr std::size_t kCommonPoints = 3;

struct CommonRange {
    double from = 0;
    double to = 0;
    bool hasPoints = false;  // enough of both
};

CommonRange CommonOf(const LogLine& a, const LogLine& b) {
    if (a.Empty() || b.Empty()) return {};
    const double from = std::max(a.First(), b.First());
    const double to = std::min(a.Last(), b.Last());
    if (from > to) return {};
    return {from, to, std::min(a.Within(from, to), b.Within(from, to)) >= kCommonPoints};
}

// Half a step of the instrument, in amperes and volts.
constexpr double kHalfCurrent = 0.00005;
constexpr double kHalfVoltage = 0.05;

void Widen(std::optional<Extremes>& extremes, const Deviation& place) {
    if (!extremes) extremes = {place, place};
    const auto order = [](const Deviation& of) { return std::pair(of.CertainLn(), of.ln); };
    if (order(place) < order(extremes->lowest)) extremes->lowest = place;
    if (order(place) > order(extremes->highest)) extremes->highest = place;
}

// halfX and halfY are those of the two values; knee is the place of the reference's kneepoint on x.
ComparedValue CompareLines(const LogLine& measured, const LogLine& reference,
                           const CommonRange& range, double halfX, double halfY,
                           std::optional<double> knee) {
    const double from = range.from;
    const double to = range.to;
    std::vector<double> at = {from, to};
    for (const LogLine* line : {&measured, &reference}) {
        for (const LogLine::Node& node : line->nodes)
            if (node.x > from && node.x < to) at.push_back(node.x);
    }
    if (knee && *knee > from && *knee < to) at.push_back(*knee);
    std::sort(at.begin(), at.end());
    at.erase(std::unique(at.begin(), at.end()), at.end());
    ComparedValue value;
    std::optional<Extremes> all;
    for (const double x : at) {
        const double a = measured.At(x);
        const double b = reference.At(x);
        const double steps = 2 * halfX * std::exp(-x) + halfY * (std::exp(-a) + std::exp(-b));
        const double gaps = measured.OpenAt(x) + reference.OpenAt(x);
        const Deviation place{std::exp(x), a - b, steps + gaps};
        value.places.push_back(place);
        Widen(all, place);
        if (knee && x <= *knee) Widen(value.below, place);
        if (knee && x >= *knee) Widen(value.above, place);
    }
    value.all = all.value_or(Extremes());
    return value;
}

double PercentOf(double ln) {
    return 100 * std::expm1(ln);
}

KneeDifference KneesApart(const ComparedCurve& measured, const ComparedCurve& reference) {
    KneeDifference knee;
    knee.isReferenceMissing = !reference.knee;
    knee.missingIsRange = (reference.knee ? measured : reference).range.has_value();
    if (!measured.knee || !reference.knee) return knee;
    const SmoothKnee& a = *measured.knee;
    const SmoothKnee& b = *reference.knee;
    // Both are rounded, a tiny one to zero.
    if (!(std::min(a.at.voltage, b.at.voltage) > 0)) return knee;
    knee.voltagePercent = PercentOf(std::log(a.at.voltage) - std::log(b.at.voltage));
    if (std::min(a.at.current, b.at.current) > 0)
        knee.currentPercent = PercentOf(std::log(a.at.current) - std::log(b.at.current));
    knee.uncertainPercent =
        100 * std::hypot(a.uncertainty / a.at.voltage, b.uncertainty / b.at.voltage);
    return knee;
}

}  // namespace

ComparedCurve CurveToCompare(KneeRule rule, const std::vector<CurvePoint>& points) {
    const SmoothVerdict verdict = SmoothKneepoint(rule, SmoothCurve(points));
    return {points, verdict.knee, verdict.range};
}

double Deviation::Percent() const {
    return PercentOf(ln);
}

double Deviation::CertainLn() const {
    return std::copysign(std::max(std::abs(ln) - open, 0.0), ln);
}

const Deviation& Extremes::Worst() const {
    const auto size = [](const Deviation& place) {
        return std::pair(std::abs(PercentOf(place.CertainLn())), std::abs(place.Percent()));
    };
    return size(lowest) > size(highest) ? lowest : highest;
}

CurveComparison CompareCurves(const ComparedCurve& measured, const ComparedCurve& reference) {
    CurveComparison comparison;
    comparison.knee = KneesApart(measured, reference);
    const LogLine a = VoltageLine(measured.points);
    const LogLine b = VoltageLine(reference.points);
    const CommonRange currents = CommonOf(a, b);
    if (currents.to > currents.from) {
        comparison.from = std::exp(currents.from);
        comparison.to = std::exp(currents.to);
    }
    if (!currents.hasPoints) {
        comparison.reason = NotCompared::FewPoints;
        return comparison;
    }
    if (currents.to - currents.from < kQuarterDecade - kLogRounding) {
        comparison.reason = NotCompared::ShortRange;
        return comparison;
    }
    std::optional<double> kneeCurrent;
    std::optional<double> kneeVoltage;
    if (reference.knee) {
        kneeCurrent = std::log(reference.knee->at.current);
        kneeVoltage = std::log(reference.knee->at.voltage);
    }
    comparison.voltage = CompareLines(a, b, currents, kHalfCurrent, kHalfVoltage, kneeCurrent);
    const LogLine rising = CurrentLine(a);
    const LogLine risingReference = CurrentLine(b);
    const CommonRange voltages = CommonOf(rising, risingReference);
    if (voltages.hasPoints) {
        comparison.current = CompareLines(rising, risingReference, voltages, kHalfVoltage,
                                          kHalfCurrent, kneeVoltage);
    }
    return comparison;
}

Verdict VerdictOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    if (comparison.reason != NotCompared::No) return Verdict::None;
    return VerdictOf(PercentOf(comparison.voltage.all.Worst().CertainLn()), limitPercent);
}

std::string SentenceOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    switch (comparison.reason) {
        case NotCompared::FewPoints:
            return "The curves are not compared: fewer than three points of each are at common "
                   "currents.";
        case NotCompared::ShortRange:
            return "The curves are not compared: their common currents, " +
                   AmperesText(comparison.from) + " to " + AmperesText(comparison.to) +
                   ", are less than a quarter of a decade.";
        case NotCompared::No:
            break;
    }
    const Deviation& worst = comparison.voltage.all.Worst();
    const double percent = worst.Percent();
    const std::string end = LimitEnd(percent, limitPercent);
    const auto isEqual = [&](const Deviation& place) {
        constexpr double kEqual = 0.05;  // percent; less is 0.0
        return std::abs(place.Percent()) < std::min(kEqual, limitPercent.value_or(kEqual));
    };
    const std::vector<Deviation>& places = comparison.voltage.places;
    if (std::all_of(places.begin(), places.end(), isEqual))
        return "At all common currents the voltage is within 0.1 % of the reference" + end;
    const bool isExplained = VerdictOf(comparison, limitPercent) == Verdict::Within &&
                             VerdictOf(percent, limitPercent) == Verdict::Beyond;
    return "At " + AmperesText(worst.at) + " the voltage is " + PercentText(percent, limitPercent) +
           " " + SideOf(percent) + " the reference" +
           (isExplained ? "; the limit is " + GeneralNumber(limitPercent.value_or(0)) +
                              " %, and the readings leave the rest open."
                        : end);
}

std::string KneeSentenceOf(const KneeDifference& knee) {
    constexpr double kNoDifference = 0.05;  // percent; less is 0.0
    if (knee.voltagePercent && std::abs(*knee.voltagePercent) < kNoDifference)
        return "The kneepoint is within 0.1 % of the reference's, give or take " +
               PercentText(knee.uncertainPercent) + ".";
    if (knee.voltagePercent) {
        return "The kneepoint is " + PercentText(*knee.voltagePercent) + " " +
               SideOf(*knee.voltagePercent) + " the reference's, give or take " +
               PercentText(knee.uncertainPercent) + ".";
    }
    return std::string("The kneepoints are not compared: ") +
           (knee.isReferenceMissing ? "the reference" : "the curve") +
           (knee.missingIsRange ? " has only a range." : " has none for certain.");
}

}  // namespace davo
