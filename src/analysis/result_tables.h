// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"

namespace davo {

inline constexpr std::size_t kTestSlots = 100;  // slots 0 to 99
inline constexpr std::size_t kKneeSlots = 31;   // slots 0 to 30 of the tables of one rule
inline constexpr std::size_t kResultColumns = 10;

// The columns of testResults.
enum class ResultColumn : std::size_t {
    TestNumber = 0,
    KneeVoltage = 1,
    KneeCurrent = 2,
    ExcitationCurrent = 3,
    ExcitationVoltage = 4,
    MeasuredRatio = 5,
    Polarity = 6,
    Phase = 7,
    NameplateRatio = 8,
    PercentError = 9,
};

// The tests of a report, one slot each.
struct ResultTables {
    using Points = std::array<double, kPointsPerTest>;

    std::vector<Points> pointCurrent{kTestSlots};  // amperes, point 0 the lowest
    std::vector<Points> pointVoltage{kTestSlots};  // volts
    std::vector<std::int16_t> pointCount = std::vector<std::int16_t>(kTestSlots);
    std::vector<std::array<std::string, kResultColumns>> testResults{kTestSlots};
    // Volts and amperes by rule. Fewer slots than there are tests, on purpose: a report holds at
    // most 31 tests.
    std::array<Kneepoint, kKneeSlots> kneeAsa;
    std::array<Kneepoint, kKneeSlots> kneeIeee45;
    std::array<Kneepoint, kKneeSlots> kneeIeee30;

    // Each throws RunTimeError 9 (Subscript out of range) for a slot or point that there is not.
    double& Current(int slot, int point);
    double& Voltage(int slot, int point);
    std::int16_t& PointCount(int slot);
    std::string& Result(int slot, ResultColumn column);
    const std::string& Result(int slot, ResultColumn column) const;
    Kneepoint& Knee(KneeRule rule, int slot);
    const Kneepoint& Knee(KneeRule rule, int slot) const;
};

// Computes the kneepoint of the first pointCount points of a slot and keeps it in the result
// columns and in the rule's table. Throws RunTimeError 9 for a slot outside 0 to 99, for a
// pointCount outside 1 to 101, and, after the result columns are written, for a slot above 30;
// and what ComputeKneepoint of a curve throws.
void ComputeKneepoint(ResultTables& tables, KneeRule rule, int testSlot, int pointCount);

// Sets the result columns and the table of every rule of a slot to "N/A". Throws RunTimeError 9
// for a slot outside 0 to 30.
void SetKneepointsNotAvailable(ResultTables& tables, int testSlot);

// Replaces the first pointCount points of a slot by WithGridPoints of them and returns the new
// number of points. Throws RunTimeError 9 like ComputeKneepoint, and what WithGridPoints throws;
// the tables are then as they were.
std::int16_t InsertGridPoints(ResultTables& tables, int testSlot, int pointCount);

}  // namespace davo
