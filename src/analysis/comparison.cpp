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

double CertainPercent(const Deviation& place) {
    return std::abs(PercentOfLn(place.CertainLn()));
}

// Of two places of one curve; than may be none yet.
bool IsWorse(const Deviation& place, const std::optional<Deviation>& than) {
    const auto size = [](const Deviation& of) {
        return std::pair(CertainPercent(of), std::abs(of.Percent()));
    };
    return !than || size(place) > size(*than);
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
        if (line->Within(from, to) < kCommonPoints) return value;
        for (const LogLine::Node& node : line->nodes)
            if (node.x > from && node.x < to) at.push_back(node.x);
    }
    std::sort(at.begin(), at.end());
    at.erase(std::unique(at.begin(), at.end()), at.end());
    std::optional<Deviation> worst;
    for (const double x : at) {
        const double a = measured.At(x);
        const double b = reference.At(x);
        const double steps = 2 * halfX * std::exp(-x) + halfY * (std::exp(-a) + std::exp(-b));
        const LogLine::Open openA = measured.OpenAt(x);
        const LogLine::Open openB = reference.OpenAt(x);
        const double bends = a > b ? openA.below + openB.above : openA.above + openB.below;
        const Deviation place{std::exp(x), a - b, steps + bends};
        value.places.push_back(place);
        if (IsWorse(place, worst)) worst = place;
        if (x <= knee && IsWorse(place, value.below)) value.below = place;
        if (x >= knee && IsWorse(place, value.above)) value.above = place;
    }
    value.all = worst.value_or(Deviation());
    return value;
}

// Why there is no difference of two kneepoints, by the curve that has none.
std::string WhyNot(const std::string& which, const ComparedCurve& curve) {
    return "The kneepoints are not compared: " + which +
           (curve.range ? " has only a range." : " has none for certain.");
}

KneeDifference KneesApart(const ComparedCurve& measured, const ComparedCurve& reference) {
    if (!reference.knee) return {{}, 0, WhyNot("the reference", reference)};
    if (!measured.knee) return {{}, 0, WhyNot("the curve", measured)};
    const double a = measured.knee->at.voltage;
    const double b = reference.knee->at.voltage;
    return {PercentOfLn(std::log(a) - std::log(b)),
            100 * std::hypot(measured.knee->uncertainty / a, reference.knee->uncertainty / b),
            {}};
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

double Deviation::CertainLn() const {
    return std::copysign(std::max(std::abs(ln) - open, 0.0), ln);
}

CurveComparison CompareCurves(const ComparedCurve& measured, const ComparedCurve& reference) {
    CurveComparison comparison;
    comparison.knee = KneesApart(measured, reference);
    const LogLine a = VoltageLine(measured.points);
    const LogLine b = VoltageLine(reference.points);
    const CurvePoint knee = reference.knee ? reference.knee->at : CurvePoint{NAN, NAN};
    comparison.voltage = CompareLines(a, b, kHalfCurrent, kHalfVoltage, std::log(knee.current));
    if (comparison.voltage.places.empty()) {
        comparison.reason = NotCompared::FewPoints;
        return comparison;
    }
    comparison.from = comparison.voltage.places.front().at;
    comparison.to = comparison.voltage.places.back().at;
    if (std::log(comparison.to / comparison.from) < kQuarterDecade - kLogRounding) {
        comparison.reason = NotCompared::ShortRange;
        comparison.voltage = {};
        return comparison;
    }
    ComparedValue current = CompareLines(CurrentLine(a), CurrentLine(b), kHalfVoltage, kHalfCurrent,
                                         std::log(knee.voltage));
    if (!current.places.empty()) comparison.current = std::move(current);
    return comparison;
}

Verdict VerdictOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    if (comparison.reason != NotCompared::No) return Verdict::None;
    return VerdictOf(CertainPercent(comparison.voltage.all), limitPercent);
}

std::string SentenceOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    const std::string no = "The curves are not compared: ";
    if (comparison.reason == NotCompared::FewPoints)
        return no + "one has fewer than three points of different currents where both are.";
    if (comparison.reason == NotCompared::ShortRange) {
        return no + "their common currents, " + AmperesText(comparison.from) + " to " +
               AmperesText(comparison.to) + ", are less than a quarter of a decade.";
    }
    constexpr double kEqual = 0.05;  // percent; less is 0.0
    const Verdict verdict = VerdictOf(comparison, limitPercent);
    const std::string end = LimitEnd(verdict, limitPercent);
    const std::vector<Deviation>& places = comparison.voltage.places;
    const Deviation& farthest =
        *std::max_element(places.begin(), places.end(), [](const Deviation& a, const Deviation& b) {
            return std::abs(a.Percent()) < std::abs(b.Percent());
        });
    const Deviation& certain = comparison.voltage.all;
    const bool isOpen = CertainPercent(certain) < kEqual && verdict != Verdict::Beyond;
    const Deviation& worst = isOpen ? farthest : certain;
    const double percent = worst.Percent();
    const bool isEqual = isOpen && std::abs(percent) < kEqual;
    const std::string sentence =
        (isEqual && limitPercent.value_or(1) > 2 * kEqual ? "At all common currents"
                                                          : "At " + AmperesText(worst.at)) +
        " the voltage is " + DifferenceText(percent, "the reference", limitPercent);
    if (isOpen && !isEqual) return sentence + ", which the readings leave open" + end;
    const bool isExplained =
        verdict == Verdict::Within && VerdictOf(percent, limitPercent) == Verdict::Beyond;
    return sentence +
           (isExplained ? end.substr(0, end.size() - 1) + ", and the readings leave the rest open."
                        : end);
}

std::string KneeSentenceOf(const KneeDifference& knee) {
    if (!knee.voltagePercent) return knee.whyNot;
    return "The kneepoint is " +
           DifferenceText(*knee.voltagePercent, "the reference's", std::nullopt) +
           ", give or take " + NumberText(knee.uncertainPercent, 1) + " %.";
}

}  // namespace davo
