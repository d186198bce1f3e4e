// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace davo {

namespace {

constexpr std::size_t kCommonPoints = 3;
const double kQuarterDecade = std::log(10) / 4;
constexpr double kRounding = 1e-9;  // of sums of logarithms

// A curve in logarithms, rising in x: ln V over ln I, or ln I over ln V.
struct Line {
    struct Node {
        double x = 0;
        double y = 0;
    };
    std::vector<Node> nodes;

    bool Empty() const { return nodes.empty(); }
    double First() const { return nodes.front().x; }
    double Last() const { return nodes.back().x; }
    // x must be within the nodes.
    double At(double x) const;
    std::size_t Within(double from, double to) const;
};

double Line::At(double x) const {
    const auto next =
        std::lower_bound(nodes.begin(), nodes.end(), x,
                         [](const Node& node, double value) { return node.x < value; });
    if (next == nodes.end()) return nodes.back().y;
    if (next == nodes.begin() || next->x == x) return next->y;
    const Node& last = *(next - 1);
    return last.y + (x - last.x) / (next->x - last.x) * (next->y - last.y);
}

std::size_t Line::Within(double from, double to) const {
    return static_cast<std::size_t>(std::count_if(
        nodes.begin(), nodes.end(),
        [=](const Node& node) { return node.x >= from - kRounding && node.x <= to + kRounding; }));
}

// ln V over ln I, one node a current.
Line VoltageLine(const std::vector<CurvePoint>& points) {
    Line line;
    for (const CurvePoint& point : points) {
        if (!(point.current > 0 && point.voltage > 0)) continue;
        if (!std::isfinite(point.current) || !std::isfinite(point.voltage)) continue;
        line.nodes.push_back({std::log(point.current), std::log(point.voltage)});
    }
    std::sort(line.nodes.begin(), line.nodes.end(), [](const Line::Node& a, const Line::Node& b) {
        return std::pair(a.x, a.y) < std::pair(b.x, b.y);
    });
    std::vector<Line::Node> merged;
    std::size_t count = 0;  // of the points that the last node is the mean of
    for (const Line::Node& node : line.nodes) {
        const bool same = !merged.empty() && node.x - merged.back().x < kRounding;
        count = same ? count + 1 : 1;
        if (!same) merged.push_back(node);
        if (same) merged.back().y += (node.y - merged.back().y) / static_cast<double>(count);
    }
    line.nodes = std::move(merged);
    return line;
}

// ln I over ln V of the nearest curve that rises.
Line CurrentLine(const Line& voltage) {
    struct Pool {
        Line::Node mean;
        double count = 1;
    };
    std::vector<Pool> pools;
    for (const Line::Node& node : voltage.nodes) {
        Pool pool{{node.y, node.x}};
        while (!pools.empty() && pool.mean.x - pools.back().mean.x < kRounding) {
            const Pool& last = pools.back();
            const double part = last.count / (last.count + pool.count);
            pool.mean.x += part * (last.mean.x - pool.mean.x);
            pool.mean.y += part * (last.mean.y - pool.mean.y);
            pool.count += last.count;
            pools.pop_back();
        }
        pools.push_back(pool);
    }
    Line line;
    for (const Pool& pool : pools)
        line.nodes.push_back(pool.mean);
    return line;
}

void Widen(std::optional<Extremes>& extremes, const Deviation& place) {
    if (!extremes) extremes = {place, place};
    if (place.ln < extremes->lowest.ln) extremes->lowest = place;
    if (place.ln > extremes->highest.ln) extremes->highest = place;
}

// knee: the place of the reference's kneepoint on x.
ComparedValue CompareLines(const Line& measured, const Line& reference, double from, double to,
                           std::optional<double> knee) {
    std::vector<double> at = {from, to};
    for (const Line* line : {&measured, &reference}) {
        for (const Line::Node& node : line->nodes)
            if (node.x > from && node.x < to) at.push_back(node.x);
    }
    if (knee && *knee > from && *knee < to) at.push_back(*knee);
    std::sort(at.begin(), at.end());
    at.erase(std::unique(at.begin(), at.end()), at.end());
    ComparedValue value;
    std::optional<Extremes> all;
    for (const double x : at) {
        const Deviation place{std::exp(x), measured.At(x) - reference.At(x)};
        value.places.push_back(place);
        Widen(all, place);
        if (knee && x <= *knee) Widen(value.below, place);
        if (knee && x >= *knee) Widen(value.above, place);
    }
    value.all = all.value_or(Extremes());
    return value;
}

struct CommonRange {
    double from = 0;
    double to = 0;
    bool hasPoints = false;  // enough of both
};

CommonRange CommonOf(const Line& a, const Line& b) {
    if (a.Empty() || b.Empty()) return {};
    const double from = std::max(a.First(), b.First());
    const double to = std::min(a.Last(), b.Last());
    if (from > to) return {};
    return {from, to, std::min(a.Within(from, to), b.Within(from, to)) >= kCommonPoints};
}

double PercentOf(double ln) {
    return 100 * std::expm1(ln);
}

KneeDifference KneesApart(const ComparedCurve& measured, const ComparedCurve& reference) {
    KneeDifference knee{measured.knee.has_value(),
                        reference.knee.has_value(),
                        measured.range.has_value(),
                        reference.range.has_value(),
                        std::nullopt,
                        std::nullopt,
                        0};
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

const Deviation& Extremes::Worst() const {
    return std::abs(lowest.Percent()) > std::abs(highest.Percent()) ? lowest : highest;
}

CurveComparison CompareCurves(const ComparedCurve& measured, const ComparedCurve& reference) {
    CurveComparison comparison;
    comparison.knee = KneesApart(measured, reference);
    const Line a = VoltageLine(measured.points);
    const Line b = VoltageLine(reference.points);
    const CommonRange currents = CommonOf(a, b);
    if (currents.to > currents.from) {
        comparison.from = std::exp(currents.from);
        comparison.to = std::exp(currents.to);
    }
    if (!currents.hasPoints) {
        comparison.reason = NotCompared::FewPoints;
        return comparison;
    }
    if (currents.to - currents.from < kQuarterDecade - kRounding) {
        comparison.reason = NotCompared::ShortRange;
        return comparison;
    }
    std::optional<double> kneeCurrent;
    std::optional<double> kneeVoltage;
    if (reference.knee) {
        kneeCurrent = std::log(reference.knee->at.current);
        kneeVoltage = std::log(reference.knee->at.voltage);
    }
    comparison.voltage = CompareLines(a, b, currents.from, currents.to, kneeCurrent);
    const Line rising = CurrentLine(a);
    const Line risingReference = CurrentLine(b);
    const CommonRange voltages = CommonOf(rising, risingReference);
    if (voltages.hasPoints) {
        comparison.current =
            CompareLines(rising, risingReference, voltages.from, voltages.to, kneeVoltage);
    }
    return comparison;
}

Verdict VerdictOf(const CurveComparison& comparison, std::optional<double> limitPercent) {
    if (comparison.reason != NotCompared::No) return Verdict::None;
    return VerdictOf(comparison.voltage.all.Worst().Percent(), limitPercent);
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
    constexpr double kEqual = 0.05;  // percent; less is 0.0
    const bool isEqual = std::abs(percent) < kEqual && limitPercent.value_or(1) >= kEqual;
    const std::string end = LimitEnd(percent, limitPercent);
    if (isEqual) return "At all common currents the voltage is the reference's to 0.1 %" + end;
    return "At " + AmperesText(worst.at) + " the voltage is " + PercentText(percent, limitPercent) +
           " " + SideOf(percent) + " the reference" + end;
}

std::string KneeSentenceOf(const KneeDifference& knee) {
    if (knee.voltagePercent) {
        return "The kneepoint is " + PercentText(*knee.voltagePercent) + " " +
               SideOf(*knee.voltagePercent) + " the reference's, give or take " +
               PercentText(knee.uncertainPercent) + ".";
    }
    const bool isReference = !knee.referenceHas;
    const std::string whose = isReference ? "the reference" : "the curve";
    if (isReference ? knee.referenceIsRange : knee.measuredIsRange)
        return "The kneepoints are not compared: " + whose + " has only a range.";
    return "The kneepoints are not compared: " + whose + " has none for certain.";
}

std::optional<double> VoltageAt(const std::vector<CurvePoint>& points, double amperes) {
    const Line line = VoltageLine(points);
    if (line.Empty() || !(amperes > 0)) return std::nullopt;
    const double x = std::log(amperes);
    if (x < line.First() - kRounding || x > line.Last() + kRounding) return std::nullopt;
    return std::exp(line.At(x));
}

std::optional<double> CurrentAt(const std::vector<CurvePoint>& points, double volts) {
    const Line line = CurrentLine(VoltageLine(points));
    if (line.Empty() || !(volts > 0)) return std::nullopt;
    const double x = std::log(volts);
    if (x < line.First() - kRounding || x > line.Last() + kRounding) return std::nullopt;
    return std::exp(line.At(x));
}

}  // namespace davo
