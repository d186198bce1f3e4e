#include "curves/knee_doubt.h"

#include <algorithm>
#include <cmath>

#include "analysis/test_tables.h"
#include "common/numbers.h"
#include "curves/smooth_knee.h"

namespace davo {

namespace {

constexpr std::size_t kPointsForKnee = 4;

struct RuleLimit {
    std::size_t step;
    double limit;
};

// The values of src/analysis/kneepoint.cpp; a test holds the two together.
RuleLimit LimitOf(KneeRule rule) {
    switch (rule) {
        case KneeRule::Asa1050:
            return {2, 5};
        case KneeRule::Ieee45:
            return {1, 1};
        case KneeRule::Ieee30:
            break;
    }
    return {1, 1.81};
}

double RelativeChange(double from, double to) {
    return RoundByPicture((to - from) / from, "####0.000");
}

std::string Volts(double voltage) {
    return Picture(voltage, kVoltagePicture) + " V";
}

std::string VoltsAndAmperes(const CurvePoint& point) {
    return Volts(point.voltage) + ", " + Picture(point.current, kCurrentPicture) + " A";
}

std::string TooFewPoints(std::size_t points) {
    if (points == 0) return "There is no excitation curve.";
    return "Only " + std::to_string(points) + (points == 1 ? " point" : " points") +
           ": a kneepoint needs at least " + std::to_string(kPointsForKnee) + ".";
}

std::string ReasonOfNoPair(const SearchPath& path) {
    if (path.pairs.empty()) return "No two points can be compared: current or voltage is zero.";
    if (!path.metAbove) {
        return "The core did not saturate: no pair of points lies above the rule's limit. Raise "
               "the voltage further.";
    }
    if (path.metBelow) {
        return "Only the highest points lie below the rule's limit, all others above it. Check "
               "the highest points.";
    }
    return "The curve is bent from its first point on: every pair of points lies above the rule's "
           "limit. Take points at lower voltages.";
}

std::string ReasonOf(const SearchPath& path, const std::vector<CurvePoint>& points) {
    switch (path.end) {
        case SearchEnd::NoPair:
            return ReasonOfNoPair(path);
        case SearchEnd::FirstPoints:
            return "The curve bends at its first three points already. Take more points at lower "
                   "voltages.";
        case SearchEnd::Exact: {
            const SearchedPair& pair = path.pairs.back();
            return "The points at " + Volts(points[pair.lower].voltage) + " and " +
                   Volts(points[pair.upper].voltage) +
                   " meet the limit of 1.81 exactly; this rule has no kneepoint then.";
        }
        case SearchEnd::Crossed:
            break;
    }
    return {};
}

// The first pair that falls, in a sentence; effect is what it can do to the kneepoint.
std::string FallOf(const SearchPath& path, const std::vector<CurvePoint>& points,
                   const std::string& effect) {
    const auto falls = [](const SearchedPair& pair) {
        return pair.currentFalls || pair.voltageFalls;
    };
    const auto pair = std::find_if(path.pairs.begin(), path.pairs.end(), falls);
    if (pair == path.pairs.end()) return {};
    std::string what = "the voltage falls";
    if (pair->currentFalls) {
        what = pair->voltageFalls ? "current and voltage fall" : "the current falls";
    }
    return "From point " + std::to_string(pair->lower + 1) + " (" +
           VoltsAndAmperes(points[pair->lower]) + ") to point " + std::to_string(pair->upper + 1) +
           " (" + VoltsAndAmperes(points[pair->upper]) + ") " + what + "; one wrong point can " +
           effect + " the kneepoint.";
}

void AddSentence(std::string& text, const std::string& sentence) {
    if (!text.empty() && !sentence.empty()) text += ' ';
    text += sentence;
}

}  // namespace

SearchPath FollowSearch(KneeRule rule, const std::vector<CurvePoint>& points) {
    const auto [step, limit] = LimitOf(rule);
    SearchPath path;
    double ratio = 0;
    bool held = false;  // the upper point of a pair that was passed over
    std::size_t from = 0;
    for (std::size_t upper = points.size(); upper-- > step;) {
        const std::size_t lower = upper - step;
        if (!held) from = upper;
        held = points[lower].current == 0 || points[lower].voltage == 0;
        if (held) continue;
        const double current = RelativeChange(points[lower].current, points[from].current);
        const double voltage = RelativeChange(points[lower].voltage, points[from].voltage);
        path.pairs.push_back({lower, from, points[from].current < points[lower].current,
                              points[from].voltage < points[lower].voltage && voltage != 0});
        if (voltage != 0) ratio = RoundByPicture(current / voltage, "####0.00");
        if (ratio > limit) {
            path.metAbove = true;
        } else if (ratio == limit) {
            path.end = SearchEnd::Exact;
        } else if (upper == 2 && !path.metBelow) {
            path.end = SearchEnd::FirstPoints;
        } else if (path.metAbove) {
            path.end = SearchEnd::Crossed;
        } else {
            path.metBelow = true;
        }
        if (path.end != SearchEnd::NoPair) break;
    }
    return path;
}

void AddDoubts(KneeFact& fact, const std::vector<CurvePoint>& points) {
    if (points.size() < kPointsForKnee) {
        fact.reason = TooFewPoints(points.size());
        return;
    }
    const SearchPath path = FollowSearch(fact.rule, points);
    const std::optional<CurvePoint> printed = fact.At();
    // Without a pair above the limit nothing is bent: a bend of the smooth curve is then one of the
    // digits of small currents.
    if (path.metAbove) fact.smooth = SmoothKneepoint(fact.rule, points);
    if (!printed) {
        fact.reason = ReasonOf(path, points);
        AddSentence(fact.reason, FallOf(path, points, "hide"));
        if (fact.smooth) {
            AddSentence(fact.reason, "A smooth curve through the points has its kneepoint at " +
                                         VoltsAndAmperes(*fact.smooth) + ".");
        }
        return;
    }
    fact.doubt = FallOf(path, points, "move");
    if (!fact.smooth) return;
    if (std::abs(fact.smooth->voltage - printed->voltage) <=
        kTrustedDifference * printed->voltage) {
        fact.smooth.reset();
        return;
    }
    AddSentence(fact.doubt,
                "The points are too few or too uneven for this rule: a smooth curve through them "
                "has its kneepoint at " +
                    VoltsAndAmperes(*fact.smooth) + ".");
}

}  // namespace davo
