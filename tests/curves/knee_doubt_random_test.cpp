// What the sentences about a search go by, against the search itself.

#include <gtest/gtest.h>

#include <iostream>
#include <map>

#include "common/run_time_error.h"
#include "curves/knee_doubt.h"
#include "tests/analysis/curve_source.h"
#include "tests/support/random_seed.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

TEST(KneeDoubtRandom, FollowsTheSearchOfTheRules) {
    constexpr int kCurves = 40000;
    test::CurveSource source(test::RandomSeed(20261122));
    std::map<SearchEnd, int> ends;
    for (int n = 0; n < kCurves; ++n) {
        const test::RandomCurve curve = source.Next();
        Points points;
        for (std::size_t i = 0; i < curve.current.size(); ++i)
            points.push_back({curve.current[i], curve.voltage[i]});
        for (const KneeRule rule : kKneeRules) {
            Kneepoint found;
            try {
                found = ComputeKneepoint(rule, curve.current, curve.voltage);
            } catch (const RunTimeError&) {
                continue;
            }
            const SearchEnd end = FollowSearch(rule, points).end;
            ++ends[end];
            const bool none =
                end == SearchEnd::NoPair || (end == SearchEnd::Exact && rule == KneeRule::Ieee30);
            EXPECT_EQ(found == Kneepoint(), none) << n;
            EXPECT_EQ(found.voltage == "N/A", end == SearchEnd::FirstPoints) << n;
            ASSERT_FALSE(testing::Test::HasFailure()) << static_cast<int>(rule);
            if (points.size() < 4) continue;
            KneeFact fact;
            fact.rule = rule;
            fact.printed = found;
            AddDoubts(fact, points);
            ASSERT_EQ(fact.reason.empty(), fact.At().has_value());
            ASSERT_TRUE(fact.reason.empty() || fact.doubt.empty());
        }
    }
    for (const auto& [end, count] : ends) {
        std::cout << "end " << static_cast<int>(end) << ": " << count << "\n";
        EXPECT_GT(count, 500);
    }
    EXPECT_EQ(ends.size(), 4U);
}

}  // namespace
}  // namespace davo
