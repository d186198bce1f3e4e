// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/result_tables.h"

#include <span>

#include "analysis/grid_points.h"
#include "common/run_time_error.h"

namespace davo {

namespace {

// container[index], or the subscript error.
template <typename Container>
auto& At(Container& container, int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= container.size()) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    return container[static_cast<std::size_t>(index)];
}

std::span<const double> FirstPoints(const std::vector<ResultTables::Points>& points, int testSlot,
                                    int pointCount) {
    const ResultTables::Points& ofTest = At(points, testSlot);
    At(ofTest, pointCount - 1);
    return {ofTest.data(), static_cast<std::size_t>(pointCount)};
}

template <typename Tables>
auto& KneeOf(Tables& tables, KneeRule rule, int slot) {
    switch (rule) {
        case KneeRule::Asa1050:
            return At(tables.kneeAsa, slot);
        case KneeRule::Ieee45:
            return At(tables.kneeIeee45, slot);
        case KneeRule::Ieee30:
            break;
    }
    return At(tables.kneeIeee30, slot);
}

void SetResult(ResultTables& tables, int testSlot, const Kneepoint& kneepoint) {
    tables.Result(testSlot, ResultColumn::KneeVoltage) = kneepoint.voltage;
    tables.Result(testSlot, ResultColumn::KneeCurrent) = kneepoint.current;
}

}  // namespace

double& ResultTables::Current(int slot, int point) {
    return At(At(pointCurrent, slot), point);
}

double& ResultTables::Voltage(int slot, int point) {
    return At(At(pointVoltage, slot), point);
}

std::int16_t& ResultTables::PointCount(int slot) {
    return At(pointCount, slot);
}

std::string& ResultTables::Result(int slot, ResultColumn column) {
    return At(testResults, slot).at(static_cast<std::size_t>(column));
}

const std::string& ResultTables::Result(int slot, ResultColumn column) const {
    return At(testResults, slot).at(static_cast<std::size_t>(column));
}

Kneepoint& ResultTables::Knee(KneeRule rule, int slot) {
    return KneeOf(*this, rule, slot);
}

const Kneepoint& ResultTables::Knee(KneeRule rule, int slot) const {
    return KneeOf(*this, rule, slot);
}

void ComputeKneepoint(ResultTables& tables, KneeRule rule, int testSlot, int pointCount) {
    SetResult(tables, testSlot, {});
    const Kneepoint found =
        ComputeKneepoint(rule, FirstPoints(tables.pointCurrent, testSlot, pointCount),
                         FirstPoints(tables.pointVoltage, testSlot, pointCount));
    SetResult(tables, testSlot, found);
    tables.Knee(rule, testSlot) = found;
}

void SetKneepointsNotAvailable(ResultTables& tables, int testSlot) {
    const Kneepoint none = NoKneepoint();
    SetResult(tables, testSlot, none);
    for (const KneeRule rule : kKneeRules)
        tables.Knee(rule, testSlot) = none;
}

std::int16_t InsertGridPoints(ResultTables& tables, int testSlot, int pointCount) {
    const std::vector<CurvePoint> points =
        WithGridPoints(FirstPoints(tables.pointCurrent, testSlot, pointCount),
                       FirstPoints(tables.pointVoltage, testSlot, pointCount));
    for (int i = 0; const CurvePoint& point : points) {
        tables.Current(testSlot, i) = point.current;
        tables.Voltage(testSlot, i) = point.voltage;
        ++i;
    }
    return static_cast<std::int16_t>(points.size());
}

}  // namespace davo
