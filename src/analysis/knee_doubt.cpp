// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/knee_doubt.h"

#include <algorithm>
#include <cmath>

#include "analysis/smooth_curve.h"
#include "common/numbers.h"
#include "common/run_time_error.h"

namespace davo {

namespace {

// Current and voltage of a curve apart, as the rules take them.
struct Columns {
    std::vector<double> current;
    std::vector<double> voltage;
};

// All points but the one at index left out; none is with an index behind the last.
Columns ColumnsOf(const std::vector<CurvePoint>& points, std::size_t leftOut) {
    Columns columns;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i == leftOut) continue;
        columns.current.push_back(points[i].current);
        columns.voltage.push_back(points[i].voltage);
    }
    return columns;
}

bool Agree(double voltage, double printed, double trusted) {
    return std::abs(voltage - printed) <= trusted * std::abs(printed);
}

std::string Volts(double voltage) {
    return Picture(voltage, kVoltagePicture) + " V";
}

std::string VoltsAndAmperes(const CurvePoint& point) {
    return Volts(point.voltage) + ", " + Picture(point.current, kPointPicture) + " A";
}

std::string VoltsAndAmperes(const SmoothKnee& knee) {
    return Picture(knee.at.voltage, kVoltagePicture) + " \xB1 " +
           VoltsAndAmperes(CurvePoint{knee.at.current, knee.uncertainty});
}

// "at 32.1 \xB1 0.4 V, 0.0210 A", at being the word for it, or "between 190.0 V and 260.0 V"; empty
// where there is neither.
std::string PlaceOf(const KneeFact& fact, const std::string& at = "at ") {
    if (fact.smooth) return at + VoltsAndAmperes(*fact.smooth);
    if (!fact.range) return {};
    return "between " + Volts(fact.range->low) + " and " + Volts(fact.range->high);
}

std::size_t PointsAboveZero(const std::vector<CurvePoint>& points) {
    return static_cast<std::size_t>(std::count_if(
        points.begin(), points.end(),
        [](const CurvePoint& point) { return point.current > 0 && point.voltage > 0; }));
}

std::string TooFewPoints(std::size_t points) {
    if (points == 0) return "There is no excitation curve.";
    return "Only " + std::to_string(points) + (points == 1 ? " point" : " points") +
           ": a kneepoint needs at least " + std::to_string(kPointsForKnee) + ".";
}

std::string ReasonOfNoPair(const SearchPath& path, bool falls, bool saturated) {
    if (path.pairs.empty()) return "No two points can be compared: current or voltage is zero.";
    if (!path.metAbove) {
        // A reading that fell tells nothing of the core.
        if (falls) return "No pair of points is above the rule's limit.";
        if (saturated) {
            return "Too few points for this rule: the core saturated, but every pair of points "
                   "spans too much of the bend.";
        }
        return "The core did not saturate: no pair of points is above the rule's limit. Raise "
               "the voltage further.";
    }
    if (path.metBelow) {
        return "Only the highest points are below the rule's limit, all others above it. Check "
               "the highest points.";
    }
    return "The curve is bent from its first point on: every pair of points is above the rule's "
           "limit. Take points at lower voltages.";
}

std::string ReasonOf(const SearchPath& path, const std::vector<CurvePoint>& points, bool falls,
                     bool saturated) {
    switch (path.end) {
        case SearchEnd::NoPair:
            return ReasonOfNoPair(path, falls, saturated);
        case SearchEnd::FirstPoints:
            // The others that the record counts are zero.
            if (!path.metAbove) return TooFewPoints(PointsAboveZero(points));
            return "The curve bends at its first three points already. Take more points at lower "
                   "voltages.";
        case SearchEnd::Exact: {
            const SearchedPair& pair = path.pairs.back();
            return "The points at " + Volts(points[pair.lower].voltage) + " and " +
                   Volts(points[pair.upper].voltage) + " meet the limit of " +
                   GeneralNumber(KneeThreshold(KneeRule::Ieee30)) +
                   " exactly; this rule has no kneepoint then.";
        }
        case SearchEnd::Crossed:
            break;
    }
    return {};
}

// A point that is below the one before it, in current or in voltage.
struct Fall {
    std::size_t upper = 0;
    bool current = false;
    bool voltage = false;  // by what the rules do not round away
};

std::optional<Fall> FallAt(const std::vector<CurvePoint>& points, std::size_t upper) {
    const CurvePoint& from = points[upper - 1];
    const CurvePoint& to = points[upper];
    const bool level = to.voltage >= from.voltage ||
                       (to.voltage > 0 && RelativeChange(from.voltage, to.voltage) == 0);
    const Fall fall{upper, to.current < from.current, !level};
    if (!fall.current && !fall.voltage) return std::nullopt;
    return fall;
}

// The falls between neighbours, whatever the rule's pairs, from the top down to the lowest point
// that the search met.
std::vector<Fall> FallsOn(const SearchPath& path, const std::vector<CurvePoint>& points) {
    std::vector<Fall> falls;
    const std::size_t lowest = path.pairs.empty() ? points.size() : path.pairs.back().lower;
    for (std::size_t upper = points.size(); upper-- > std::max<std::size_t>(lowest, 1);) {
        if (const std::optional<Fall> fall = FallAt(points, upper)) falls.push_back(*fall);
    }
    return falls;
}

// Whether the kneepoint is another one, or none, without this point.
bool HangsOn(std::size_t point, const KneeFact& fact, const std::vector<CurvePoint>& points) {
    KneeFact without;
    without.rule = fact.rule;
    const Columns columns = ColumnsOf(points, point);
    try {
        without.printed = ComputeKneepoint(fact.rule, columns.current, columns.voltage);
    } catch (const RunTimeError&) {
        return true;  // a number that is too large for the rule
    }
    const std::optional<CurvePoint> at = without.At();
    return !at || !Agree(at->voltage, fact.At()->voltage, kTrustedMove);
}

// effect is what the fall can do to the kneepoint.
std::string FallText(const Fall& fall, const std::vector<CurvePoint>& points,
                     const std::string& effect) {
    std::string what = "the voltage falls";
    if (fall.current) what = fall.voltage ? "current and voltage fall" : "the current falls";
    return "From point " + std::to_string(fall.upper) + " (" +
           VoltsAndAmperes(points[fall.upper - 1]) + ") to point " +
           std::to_string(fall.upper + 1) + " (" + VoltsAndAmperes(points[fall.upper]) + ") " +
           what + "; one wrong point can " + effect + " the kneepoint.";
}

// Whether the smooth curve's uncertainty explains a kneepoint at this voltage.
bool IsWithin(double voltage, const KneeFact& fact) {
    if (fact.smooth) return std::abs(fact.smooth->at.voltage - voltage) <= fact.smooth->uncertainty;
    return fact.range && fact.range->low <= voltage && voltage <= fact.range->high;
}

// Whether the smooth curve has its kneepoint at this voltage, too: the middle of a range that is
// not too wide is as good.
bool Confirms(const KneeFact& fact, double voltage) {
    const double trusted = TrustedDifference(fact.rule);
    if (fact.smooth) return Agree(fact.smooth->at.voltage, voltage, trusted);
    return fact.range && fact.range->high <= kTrustedRange * fact.range->low &&
           Agree(std::sqrt(fact.range->low * fact.range->high), voltage, trusted);
}

// What the smooth curve has against the printed kneepoint; empty where it agrees.
std::string SmoothDoubt(const KneeFact& fact, const SmoothVerdict& verdict,
                        const CurvePoint& printed) {
    if (verdict.isOpen) {
        return "The points leave this kneepoint open: one step of the instrument's resolution, or "
               "their scatter, makes or removes it.";
    }
    const std::string place = PlaceOf(fact);
    if (place.empty() && printed.current > verdict.reach) {
        return "There are too few points to confirm this kneepoint: less than four, or none far "
               "enough above it.";
    }
    if (place.empty()) return "A smooth curve through the points has no such kneepoint.";
    if (Confirms(fact, printed.voltage)) return {};
    if (IsWithin(printed.voltage, fact)) {
        return "The points are too few, or scatter too much, for this rule: even a smooth curve "
               "through them has its kneepoint only " +
               PlaceOf(fact, "at about ") + ".";
    }
    return "The points are too few or too uneven for this rule: a smooth curve through them has "
           "its kneepoint " +
           place + ".";
}

void AddSentence(std::string& text, const std::string& sentence) {
    if (!text.empty() && !sentence.empty()) text += ' ';
    text += sentence;
}

}  // namespace

std::optional<CurvePoint> KneeFact::At() const {
    const std::optional<double> current = WholeNumericValue(printed.current);
    const std::optional<double> voltage = WholeNumericValue(printed.voltage);
    if (!current || !voltage || printed == Kneepoint()) return std::nullopt;
    return CurvePoint{*current, *voltage};
}

std::array<KneeFact, 3> KneesOf(const std::vector<CurvePoint>& points) {
    const Columns columns = ColumnsOf(points, points.size());
    const SmoothCurve curve(points);
    std::array<KneeFact, 3> facts;
    for (std::size_t i = 0; i < facts.size(); ++i) {
        KneeFact& fact = facts.at(i);
        fact.rule = kKneeRules.at(i);
        if (std::ssize(points) < kPointsForKnee) {
            fact.printed = NoKneepoint();
            fact.reason = TooFewPoints(points.size());
            continue;
        }
        SearchPath path;
        fact.printed = ComputeKneepoint(fact.rule, columns.current, columns.voltage, &path);
        AddDoubts(fact, path, points, curve);
    }
    return facts;
}

std::array<KneeFact, 3> PrintedKneesOf(const std::vector<CurvePoint>& points) {
    const Columns columns = ColumnsOf(points, points.size());
    std::array<KneeFact, 3> facts;
    for (std::size_t i = 0; i < facts.size(); ++i) {
        KneeFact& fact = facts.at(i);
        fact.rule = kKneeRules.at(i);
        fact.printed = std::ssize(points) < kPointsForKnee
                           ? NoKneepoint()
                           : ComputeKneepoint(fact.rule, columns.current, columns.voltage);
    }
    return facts;
}

double TrustedDifference(KneeRule rule) {
    // A kneepoint by ASA is where the curve is flat: its voltage is sharper.
    return rule == KneeRule::Asa1050 ? 0.035 : 0.06;
}

void AddDoubts(KneeFact& fact, const SearchPath& path, const std::vector<CurvePoint>& points,
               const SmoothCurve& curve) {
    const std::optional<CurvePoint> printed = fact.At();
    const SmoothVerdict verdict = SmoothKneepoint(fact.rule, curve);
    const auto volts = [](double value) { return RoundByPicture(value, kVoltagePicture); };
    if (const auto& knee = verdict.knee) {
        fact.smooth = {{RoundByPicture(knee->at.current, kPointPicture), volts(knee->at.voltage)},
                       volts(knee->uncertainty)};
    }
    if (const auto& range = verdict.range) fact.range = {volts(range->low), volts(range->high)};
    const std::vector<Fall> falls = FallsOn(path, points);
    if (!printed) {
        fact.reason = ReasonOf(path, points, !falls.empty(), verdict.isBent);
        if (!falls.empty()) AddSentence(fact.reason, FallText(falls.front(), points, "hide"));
        if (const std::string place = PlaceOf(fact); !place.empty()) {
            AddSentence(fact.reason,
                        "A smooth curve through the points has its kneepoint " + place + ".");
        }
        return;
    }
    for (const Fall& fall : falls) {
        if (!HangsOn(fall.upper, fact, points) && !HangsOn(fall.upper - 1, fact, points)) continue;
        fact.doubt = FallText(fall, points, "move");
        break;
    }
    AddSentence(fact.doubt, SmoothDoubt(fact, verdict, *printed));
}

}  // namespace davo
