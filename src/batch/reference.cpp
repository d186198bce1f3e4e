// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/reference.h"

#include <algorithm>

#include "common/numbers.h"
#include "records/record_name.h"

namespace davo {

namespace {

constexpr std::size_t kColumns = 13;

std::string NumberText(std::optional<double> value) {
    return value ? GeneralNumber(*value) : std::string();
}

// The worst deviation on the whole common range with its place, below the knee and above it.
void PutWorst(std::vector<std::string>& texts, const ComparedValue& value) {
    texts.push_back(NumberText(value.all.Worst().Percent()));
    texts.push_back(NumberText(value.all.Worst().at));
    for (const std::optional<Extremes>& part : {value.below, value.above})
        texts.push_back(part ? NumberText(part->Worst().Percent()) : std::string());
}

}  // namespace

Reference::Reference(const QString& path, KneeRule rule, std::optional<double> limit)
    : name_(PageRecordNameOf(path)), rule_(rule), limit_(limit) {
    for (const RecordTest& test : ReadRecordFacts(path, 0).tests) {
        if (!test.points.empty())
            curves_.push_back({test.testNumber, CurveToCompare(rule, test.points)});
    }
}

std::string Reference::Columns() {
    return ",reference,reference_test,voltage_worst_percent,voltage_worst_at_A,"
           "voltage_below_knee_percent,voltage_above_knee_percent,current_worst_percent,"
           "current_worst_at_V,current_below_knee_percent,current_above_knee_percent,"
           "knee_percent,knee_pm_percent,within_limit,comparison";
}

std::vector<std::string> Reference::TextsOf(const RecordTest& test) const {
    auto with = std::ranges::find(curves_, test.testNumber, &Curve::test);
    if (curves_.size() == 1) with = curves_.begin();
    std::vector<std::string> texts = {name_};
    if (with == curves_.end() || test.points.empty()) {
        texts.resize(kColumns);
        texts.emplace_back(test.points.empty() ? "The test has no curve."
                                               : "The reference has no curve for this test.");
        return texts;
    }
    const CurveComparison comparison =
        CompareCurves(CurveToCompare(rule_, test.points), with->curve);
    texts.push_back(with->test);
    if (comparison.reason == NotCompared::No) PutWorst(texts, comparison.voltage);
    texts.resize(6);
    if (comparison.current) PutWorst(texts, *comparison.current);
    texts.resize(10);
    const KneeDifference& knee = comparison.knee;
    texts.push_back(NumberText(knee.voltagePercent));
    texts.push_back(knee.voltagePercent ? NumberText(knee.uncertainPercent) : std::string());
    const Verdict verdict = VerdictOf(comparison, limit_);
    texts.emplace_back(verdict == Verdict::None ? "" : verdict == Verdict::Within ? "yes" : "no");
    texts.push_back(SentenceOf(comparison, limit_) + ' ' + KneeSentenceOf(knee));
    return texts;
}

}  // namespace davo
