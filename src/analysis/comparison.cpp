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

double SizeOf(const Deviation& place) {
    return std::abs(place.Percent());
}

// Of two places of one curve; than may be none yet.
bool IsWorse(const Deviation& place, const std::optional<Deviation>& than) {
    return !than || std::pair(place.CertainPercent(), SizeOf(place)) >
                        std::pair(than->CertainPercent(), SizeOf(*than));
}

// Empty where too few points of each are common. halfX and halfY are those of the two values; knee
// is the place of the reference's kneepoint on x, or no number.
ComparedValue CompareLines(const LogLine& measured, const LogLine& reference, double halfX,
                           double halfY, double knee) {
    ComparedValue value;
    if (measured.Empty() || reference.Empty()) return value;
    const double from = std::max(measured.First(), reference.First());
    const double to = std::min(measured.Last(), reference.Last());
    std::vector<double> at = {from, to, knee > from && knee < to ? knee : from};
    for (const LogLine* line : {&measured, &reference}) {
        std::size_t common = 0;
        for (const LogLine::Node& node : line->nodes) {
            if (node.x < from - kLogRounding || node.x > to + kLogRounding) continue;
            at.push_back(std::clamp(node.x, from, to));
            ++common;
        }
        if (common < kCommonPoints) return value;
    }
    std::sort(at.begin(), at.end());
    at.erase(std::unique(at.begin(), at.end()), at.end());
    for (const double x : at) {
        const double a = measured.At(x);
        const double b = reference.At(x);
        const double steps = 2 * halfX * std::exp(-x) + halfY * (std::exp(-a) + std::exp(-b));
        const double bends = measured.OpenAt(x) + reference.OpenAt(x);
        const Deviation place{std::exp(x), a - b, steps + bends};
        value.places.push_back(place);
        if (IsWorse(place, value.all)) value.all = place;
        if (x <= knee && IsWorse(place, value.below)) value.below = place;
        if (x >= knee && IsWorse(place, value.above)) value.above = place;
    }
    return value;
}

std::optional<KneeDifference> KneesApart(const ComparedCurve& measured,
                                         const ComparedCurve& reference) {
    if (!reference.knee || !measured.knee) return std::nullopt;
    const double a = measured.knee->at.voltage;
    const double b = reference.knee->at.voltage;
    return KneeDifference{
        PercentOfLn(std::log(a) - std::log(b)),
        100 * std::hypot(measured.knee->uncertainty / a, reference.knee->uncertainty / b)};
}

}  // namespace

ComparedCurve CurveToCompare(KneeRule rule, const std::vector<CurvePoint>& points) {
    const SmoothVerdict verdict = SmoothKneepoint(rule, SmoothCurve(points));
    return {points, verdict.knee, verdict.range};
}

std::optional<KneeRange> KneeRangeOf(const ComparedCurve& curve) {
    if (curve.range || !curve.knee) return curve.range;
    const double open = curve.knee->uncertainty;
    return KneeRange{curve.knee->at.voltage - open, curve.knee->at.voltage + open};
}

double Deviation::Percent() const {
    return PercentOfLn(ln);
}

double Deviation::CertainPercent() const {
    const double certain = std::max(std::abs(ln) - open, 0.0);
    return std::abs(PercentOfLn(std::copysign(certain, ln)));
}

CurveComparison CompareCurves(const ComparedCurve& measured, const ComparedCurve& reference) {
    CurveComparison comparison;
    comparison.knee = KneesApart(measured, reference);
    const LogLine a = VoltageLine(measured.points);
    const LogLine b = VoltageLine(reference.points);
    const CurvePoint knee = reference.knee ? reference.knee->at : CurvePoint{NAN, NAN};
    comparison.voltage = CompareLines(a, b, kHalfCurrent, kHalfVoltage, std::log(knee.current));
    if (comparison.voltage.places.empty()) {
        comparison.whyNot = "one has fewer than three points of different currents where both are.";
        return comparison;
    }
    const double from = comparison.voltage.places.front().at;
    const double to = comparison.voltage.places.back().at;
    if (std::log(to / from) < kQuarterDecade - kLogRounding) {
        comparison.whyNot = "their common currents, " + AmperesText(from) + " to " +
                            AmperesText(to) + ", are less than a quarter of a decade.";
        comparison.voltage = {};
        return comparison;
    }
    comparison.current = CompareLines(CurrentLine(a), CurrentLine(b), kHalfVoltage, kHalfCurrent,
                                      std::log(knee.voltage));
    return comparison;
}

Verdict VerdictOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    if (!comparison.voltage.all) return Verdict::None;
    return VerdictOf(comparison.voltage.all->CertainPercent(), limitPercent);
}

std::string SentenceOf(const CurveComparison& comparison, std::optional<double> limitPercent,
                       const std::string& of, const std::string& reference) {
    if (!comparison.whyNot.empty())
        return "The curves" + of + " are not compared: " + comparison.whyNot;
    constexpr double kEqual = 0.05;  // percent; less is 0.0
    const Verdict verdict = VerdictOf(comparison, limitPercent);
    Deviation worst = comparison.voltage.all.value_or(Deviation());
    const bool isOpen = verdict != Verdict::Beyond && worst.CertainPercent() < kEqual;
    if (isOpen) worst = *std::ranges::max_element(comparison.voltage.places, {}, SizeOf);
    const std::string difference = DifferenceText(worst.Percent(), reference, limitPercent);
    const bool isNone = difference.starts_with("within ");
    std::string sentence = (isNone ? "At all common currents" : "At " + AmperesText(worst.at)) +
                           " the voltage" + of + " is " + difference;
    const bool isExplained =
        verdict == Verdict::Within && VerdictOf(worst.Percent(), limitPercent) == Verdict::Beyond;
    if ((isOpen && SizeOf(worst) >= kEqual) || isExplained) {
        sentence += ", of which the readings leave " +
                    NumberText(SizeOf(worst) - worst.CertainPercent(), 1) + " % open";
    }
    return sentence + LimitEnd(verdict, limitPercent);
}

std::string KneeSentenceOf(const std::optional<KneeDifference>& knee) {
    if (!knee) return "The kneepoints are not compared: one of them is not certain.";
    return "The kneepoint is " + DifferenceText(knee->percent, "the reference's", std::nullopt) +
           ", give or take " + NumberText(knee->uncertainPercent, 1) + " %.";
}

}  // namespace davo
