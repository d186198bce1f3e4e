// SPDX-License-Identifier: GPL-3.0-or-later
// What the sentences about a search go by, against the search itself.

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <optional>

#include "analysis/knee_doubt.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "tests/analysis/curve_source.h"
#include "tests/support/random_rounds.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

// The path of a search written down another way, as docs/kneepoints.md has it.
SearchPath ReferencePath(KneeRule rule, const Points& points) {
    const std::size_t step = rule == KneeRule::Asa1050 ? 2 : 1;
    const double limit = rule == KneeRule::Asa1050 ? 5 : rule == KneeRule::Ieee45 ? 1 : 1.81;
    const auto change = [](double from, double to) {
        return NumericValue(Picture((to - from) / from, "####0.000"));
    };
    SearchPath path;
    double ratio = 0;
    bool held = false;  // the upper point of a pair that was passed over
    std::size_t from = 0;
    for (std::size_t upper = points.size(); upper-- > step;) {
        const std::size_t lower = upper - step;
        if (!held) from = upper;
        held = points[lower].current == 0 || points[lower].voltage == 0;
        if (held) continue;
        const double current = change(points[lower].current, points[from].current);
        const double voltage = change(points[lower].voltage, points[from].voltage);
        if (voltage != 0) ratio = NumericValue(Picture(current / voltage, "####0.00"));
        path.pairs.push_back({lower, from, ratio});
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

void ExpectSamePath(const SearchPath& path, const SearchPath& reference) {
    EXPECT_EQ(path.end, reference.end);
    EXPECT_EQ(path.metAbove, reference.metAbove);
    EXPECT_EQ(path.metBelow, reference.metBelow);
    EXPECT_TRUE(std::equal(
        path.pairs.begin(), path.pairs.end(), reference.pairs.begin(), reference.pairs.end(),
        [](const SearchedPair& one, const SearchedPair& other) {
            return one.lower == other.lower && one.upper == other.upper && one.ratio == other.ratio;
        }));
}

TEST(KneeDoubtRandom, FollowsTheSearchOfTheRules) {
    const int curves = test::RandomRounds(20000);
    test::CurveSource source(test::RandomSeed(20261122));
    std::map<SearchEnd, int> ends;
    for (int n = 0; n < curves; ++n) {
        const test::RandomCurve curve = source.Next();
        Points points;
        for (std::size_t i = 0; i < curve.current.size(); ++i)
            points.push_back({curve.current[i], curve.voltage[i]});
        std::optional<SmoothCurve> smooth;
        for (const KneeRule rule : kKneeRules) {
            Kneepoint found;
            SearchPath path;
            try {
                found = ComputeKneepoint(rule, curve.current, curve.voltage, &path);
            } catch (const RunTimeError&) {
                continue;
            }
            ExpectSamePath(path, ReferencePath(rule, points));
            const SearchEnd end = path.end;
            ++ends[end];
            ASSERT_EQ(found, ComputeKneepoint(rule, curve.current, curve.voltage));
            const bool none =
                end == SearchEnd::NoPair || (end == SearchEnd::Exact && rule == KneeRule::Ieee30);
            EXPECT_EQ(found == Kneepoint(), none) << n;
            EXPECT_EQ(found.voltage == "N/A", end == SearchEnd::FirstPoints) << n;
            ASSERT_FALSE(testing::Test::HasFailure()) << static_cast<int>(rule);
            if (points.size() < 4) continue;
            KneeFact fact;
            fact.rule = rule;
            fact.printed = found;
            if (!smooth) smooth.emplace(points);
            AddDoubts(fact, path, points, *smooth);
            ASSERT_EQ(fact.reason.empty(), fact.At().has_value());
            ASSERT_TRUE(fact.reason.empty() || fact.doubt.empty());
        }
    }
    for (const auto& [end, count] : ends) {
        std::cout << "end " << static_cast<int>(end) << ": " << count << "\n";
        EXPECT_GT(count, test::RandomRounds(250));
    }
    EXPECT_EQ(ends.size(), 4U);
}

// The slope ratios of all pairs from the top down, as docs/kneepoints.md has them; for curves
// without a zero.
std::vector<double> RatiosOf(const Points& points, int step) {
    std::vector<double> ratios;
    for (int upper = static_cast<int>(points.size()) - 1; upper >= step; --upper) {
        const CurvePoint& high = points.at(static_cast<std::size_t>(upper));
        const CurvePoint& low = points.at(static_cast<std::size_t>(upper - step));
        const double relI =
            NumericValue(Picture((high.current - low.current) / low.current, "####0.000"));
        const double relV =
            NumericValue(Picture((high.voltage - low.voltage) / low.voltage, "####0.000"));
        const double before = ratios.empty() ? 0 : ratios.back();
        ratios.push_back(relV == 0 ? before : NumericValue(Picture(relI / relV, "####0.00")));
    }
    return ratios;
}

bool Has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// What each reason claims of the pairs.
void ExpectTrueReason(const KneeFact& fact, const Points& points) {
    const int step = fact.rule == KneeRule::Asa1050 ? 2 : 1;
    const double limit = fact.rule == KneeRule::Asa1050  ? 5
                         : fact.rule == KneeRule::Ieee45 ? 1
                                                         : 1.81;
    const std::vector<double> ratios = RatiosOf(points, step);
    const auto above = [limit](double ratio) { return ratio > limit; };
    const auto below = [limit](double ratio) { return ratio < limit; };
    if (Has(fact.reason, "o pair of points is above") ||
        Has(fact.reason, "every pair of points spans too much")) {
        EXPECT_TRUE(std::all_of(ratios.begin(), ratios.end(), below));
    } else if (Has(fact.reason, "every pair of points is above")) {
        EXPECT_TRUE(std::all_of(ratios.begin(), ratios.end(), above));
    } else if (Has(fact.reason, "Only the highest points")) {
        EXPECT_TRUE(below(ratios.front()));
        EXPECT_TRUE(above(ratios.back()));
        EXPECT_TRUE(std::is_partitioned(ratios.begin(), ratios.end(), below));
    } else if (Has(fact.reason, "bends at its first three points")) {
        const auto deciding = ratios.begin() + (static_cast<std::ptrdiff_t>(points.size()) - 3);
        EXPECT_TRUE(std::all_of(ratios.begin(), deciding, above));
        EXPECT_TRUE(below(*deciding));
    } else {
        EXPECT_TRUE(Has(fact.reason, "meet the limit of 1.81 exactly")) << fact.reason;
        EXPECT_NE(std::find(ratios.begin(), ratios.end(), 1.81), ratios.end());
    }
}

bool Falls(const CurvePoint& from, const CurvePoint& to) {
    return to.current < from.current ||
           NumericValue(Picture((to.voltage - from.voltage) / from.voltage, "####0.000")) < 0;
}

// Whether the kneepoint moves by more than 15 % or goes when one of the points is left out.
bool MovesWithout(std::size_t point, const KneeFact& fact, Points points) {
    points.erase(points.begin() + static_cast<std::ptrdiff_t>(point));
    std::vector<double> current;
    std::vector<double> voltage;
    for (const CurvePoint& each : points) {
        current.push_back(each.current);
        voltage.push_back(each.voltage);
    }
    const Kneepoint found = ComputeKneepoint(fact.rule, current, voltage);
    if (found == Kneepoint() || found.voltage == "N/A") return true;
    const double before = NumericValue(fact.printed.voltage);
    const double now = NumericValue(found.voltage);
    return std::abs(now - before) > 0.15 * std::abs(before);
}

// Returns what was said: 'm'oves, 'h'ides, or nothing.
char ExpectTrueFall(const KneeFact& fact, const Points& points) {
    const std::string& said = fact.At() ? fact.doubt : fact.reason;
    const std::size_t at = said.find("From point ");
    if (at != std::string::npos) {
        const std::size_t number = std::stoul(said.substr(at + 11));
        EXPECT_TRUE(Falls(points.at(number - 1), points.at(number)));
        EXPECT_EQ(Has(said, "one wrong point can move"), fact.At().has_value());
        if (!fact.At()) return 'h';
        EXPECT_TRUE(MovesWithout(number - 1, fact, points) || MovesWithout(number, fact, points));
        return 'm';
    }
    // Nothing falls where there is no kneepoint; what falls above one moves nothing.
    const SearchPath path = ReferencePath(fact.rule, points);
    const std::size_t lowest = path.pairs.back().lower;
    for (std::size_t i = lowest == 0 ? 0 : lowest - 1; i + 1 < points.size(); ++i) {
        if (!Falls(points[i], points[i + 1])) continue;
        EXPECT_TRUE(fact.At().has_value());
        EXPECT_FALSE(MovesWithout(i, fact, points) || MovesWithout(i + 1, fact, points));
    }
    return '-';
}

TEST(KneeDoubtRandom, EverySentenceIsTrue) {
    constexpr int kCurves = 4000;
    test::CurveSource source(test::RandomSeed(20261123));
    std::map<char, int> falls;
    for (int n = 0; n < kCurves; ++n) {
        const test::RandomCurve curve = source.Next();
        Points points;
        for (std::size_t i = 0; i < curve.current.size(); ++i) {
            if (curve.current[i] > 0 && curve.voltage[i] > 0)
                points.push_back({curve.current[i], curve.voltage[i]});
        }
        if (points.size() < 5) continue;
        // Every other curve has one point that fell.
        if (n % 2 == 0) points[points.size() - 1 - n % (points.size() - 1)].voltage *= 0.9;
        try {
            for (const KneeFact& fact : KneesOf(points)) {
                SCOPED_TRACE("curve " + std::to_string(n) + ", rule " +
                             std::to_string(static_cast<int>(fact.rule)) + ": " + fact.reason +
                             fact.doubt);
                if (!fact.At()) ExpectTrueReason(fact, points);
                ++falls[ExpectTrueFall(fact, points)];
                ASSERT_FALSE(testing::Test::HasFailure());
            }
        } catch (const RunTimeError&) {
            continue;  // a value is too large
        }
    }
    for (const char said : {'m', 'h', '-'}) {
        std::cout << said << ": " << falls[said] << "\n";
        EXPECT_GT(falls[said], 300);
    }
}

}  // namespace
}  // namespace davo
