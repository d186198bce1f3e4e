// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/result_tables.h"

#include "common/run_time_error.h"
#include "tests/analysis/print_kneepoint.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

// A curve with a knee under every rule.
constexpr std::array kCurrents = {0.5, 1.0, 1.1, 1.2, 1.6, 9.0};
constexpr std::array kVoltages = {50.0, 100.0, 106.0, 110.0, 115.0, 116.0};
constexpr int kPoints = static_cast<int>(kCurrents.size());

void Fill(ResultTables& tables, int slot) {
    for (int i = 0; i < kPoints; ++i) {
        tables.Current(slot, i) = kCurrents.at(static_cast<std::size_t>(i));
        tables.Voltage(slot, i) = kVoltages.at(static_cast<std::size_t>(i));
    }
}

TEST(ResultTables, HaveAHundredSlotsOfAHundredAndOnePoints) {
    ResultTables tables;
    tables.Current(99, 100) = 1;
    tables.Voltage(99, 100) = 2;
    tables.PointCount(99) = 3;
    EXPECT_EQ(tables.Current(0, 0), 0);
    EXPECT_EQ(test::ErrorBy([&] { tables.Current(100, 0); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { tables.Current(-1, 0); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { tables.Current(0, 101); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { tables.Voltage(0, -1); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { tables.PointCount(100); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { tables.Result(100, ResultColumn::Phase); }), 9);
}

TEST(ResultTables, HaveThirtyOneSlotsOfEveryRule) {
    ResultTables tables;
    for (const KneeRule rule : kKneeRules) {
        EXPECT_EQ(test::ErrorBy([&] { tables.Knee(rule, 30); }), 0);
        EXPECT_EQ(test::ErrorBy([&] { tables.Knee(rule, 31); }), 9);
        EXPECT_EQ(test::ErrorBy([&] { tables.Knee(rule, -1); }), 9);
    }
}

TEST(ResultTables, KeepTheKneepointOfEveryRuleAndTheLastOne) {
    ResultTables tables;
    Fill(tables, 30);
    for (const KneeRule rule : kKneeRules) {
        ComputeKneepoint(tables, rule, 30, kPoints);
        const Kneepoint& kept = tables.Knee(rule, 30);
        EXPECT_EQ(kept, ComputeKneepoint(rule, kCurrents, kVoltages));
        EXPECT_NE(kept, Kneepoint());
        EXPECT_EQ(tables.Result(30, ResultColumn::KneeVoltage), kept.voltage);
        EXPECT_EQ(tables.Result(30, ResultColumn::KneeCurrent), kept.current);
    }
    EXPECT_EQ(tables.kneeAsa[30], (Kneepoint{"105.3", "1.090"}));
    EXPECT_NE(tables.kneeIeee30[30], tables.kneeIeee45[30]);
    EXPECT_EQ(tables.testResults[30][1], tables.kneeIeee30[30].voltage);
    EXPECT_EQ(tables.testResults[30][2], tables.kneeIeee30[30].current);
}

TEST(ResultTables, AThirtySecondTestHasNoPlaceForItsKneepoint) {
    ResultTables tables;
    Fill(tables, 31);
    EXPECT_EQ(test::ErrorBy([&] { ComputeKneepoint(tables, KneeRule::Asa1050, 31, kPoints); }), 9);
    EXPECT_EQ(tables.testResults[31][1], "105.3") << "the result columns are written before";
}

TEST(ResultTables, ASlotOrPointCountOutsideIsASubscriptError) {
    ResultTables tables;
    const auto compute = [&](int slot, int count) {
        return test::ErrorBy([&] { ComputeKneepoint(tables, KneeRule::Ieee45, slot, count); });
    };
    EXPECT_EQ(compute(100, 4), 9);
    EXPECT_EQ(compute(-1, 4), 9);
    EXPECT_EQ(compute(0, 102), 9);
    EXPECT_EQ(compute(0, 101), 0);
    EXPECT_EQ(compute(0, 1), 0);
    EXPECT_EQ(tables.kneeIeee45[0], Kneepoint());
    tables.Result(0, ResultColumn::KneeVoltage) = "7";
    EXPECT_EQ(compute(0, 0), 9);
    EXPECT_EQ(compute(0, -5), 9);
    EXPECT_EQ(tables.testResults[0][1], "0") << "it is set before the search";
}

TEST(ResultTables, NotAvailableStandsUnderEveryRule) {
    ResultTables tables;
    SetKneepointsNotAvailable(tables, 2);
    const Kneepoint none{"N/A", "N/A"};
    EXPECT_EQ(tables.kneeAsa[2], none);
    EXPECT_EQ(tables.kneeIeee45[2], none);
    EXPECT_EQ(tables.kneeIeee30[2], none);
    EXPECT_EQ(tables.testResults[2][1], "N/A");
    EXPECT_EQ(tables.testResults[2][2], "N/A");
    EXPECT_EQ(tables.kneeAsa[1], Kneepoint());
    EXPECT_EQ(test::ErrorBy([&] { SetKneepointsNotAvailable(tables, 31); }), 9);
}

TEST(ResultTables, GridPointsReplaceThePointsAndTheCount) {
    ResultTables tables;
    Fill(tables, 4);
    EXPECT_EQ(InsertGridPoints(tables, 4, kPoints), 11);
    const std::array current = {0.5, 0.8, 1.0, 1.0, 1.1, 1.2, 1.6, 2.0, 4.0, 8.0, 9.0};
    for (int i = 0; i < 11; ++i)
        EXPECT_EQ(tables.Current(4, i), current.at(static_cast<std::size_t>(i))) << i;
    EXPECT_EQ(tables.Voltage(4, 1), 80);
    EXPECT_EQ(tables.Current(4, 11), 0);
    EXPECT_EQ(test::ErrorBy([&] { InsertGridPoints(tables, 100, 2); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { InsertGridPoints(tables, 4, 102); }), 9);
    EXPECT_EQ(test::ErrorBy([&] { InsertGridPoints(tables, 4, 0); }), 9);
}

TEST(ResultTables, StayAsTheyWereWhenTheGridCannotBeInserted) {
    ResultTables tables;
    for (int i = 0; i < 3; ++i) {
        tables.Current(0, i) = 11 + i;
        tables.Voltage(0, i) = 100.06 + i;
    }
    EXPECT_EQ(test::ErrorBy([&] { InsertGridPoints(tables, 0, 3); }), 9);
    EXPECT_EQ(tables.Current(0, 0), 11);
    EXPECT_EQ(tables.Voltage(0, 0), 100.06);
}

}  // namespace
}  // namespace davo
