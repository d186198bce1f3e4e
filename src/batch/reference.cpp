// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/reference.h"

#include <algorithm>

#include "common/files.h"
#include "common/numbers.h"
#include "records/record_name.h"
#include "reports/reference_curve.h"

namespace davo {

Reference::Reference(const QString& path, KneeRule rule, std::optional<double> limit)
    : name_(PageRecordNameOf(path)), rule_(rule), limit_(limit) {
    if (path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)) {
        curves_.emplace_back("", CurveToCompare(rule, ParseReferenceCurve(ReadWholeFile(path))));
        return;
    }
    for (const RecordTest& test : ReadRecordFacts(path, 0).tests) {
        if (!test.points.empty())
            curves_.emplace_back(test.testNumber, CurveToCompare(rule, test.points));
    }
}

std::vector<std::string> Reference::TextsOf(const RecordTest& test) const {
    const auto same =
        std::ranges::find(curves_, test.testNumber, &std::pair<std::string, ComparedCurve>::first);
    const auto with = curves_.size() == 1 ? curves_.begin() : same;
    std::vector<std::string> texts{name_};
    std::string sentence = test.points.empty() ? "The test has no curve."
                                               : "The reference has no curve for this test.";
    if (!test.points.empty() && with != curves_.end()) {
        const CurveComparison found =
            CompareCurves(CurveToCompare(rule_, test.points), with->second);
        texts.push_back(with->first);
        sentence = SentenceOf(found, limit_);
        const auto add = [&](const std::optional<Deviation>& part) {
            texts.push_back(part ? GeneralNumber(part->Percent()) : "");
            texts.push_back(part ? GeneralNumber(part->at) : "");
        };
        if (found.whyNot.empty()) {
            sentence += ' ' + KneeSentenceOf(found.knee);
            add(found.voltage.all);
            add(found.voltage.below);
            add(found.voltage.above);
            const ComparedValue current = found.current.value_or(ComparedValue());
            add(found.current ? std::optional(current.all) : std::nullopt);
            add(current.below);
            add(current.above);
            const std::optional<double>& knee = found.knee.voltagePercent;
            texts.push_back(knee ? GeneralNumber(*knee) : "");
            texts.push_back(knee ? GeneralNumber(found.knee.uncertainPercent) : "");
            const Verdict verdict = VerdictOf(found, limit_);
            texts.emplace_back(verdict == Verdict::None     ? ""
                               : verdict == Verdict::Within ? "yes"
                                                            : "no");
        }
    }
    texts.resize(static_cast<std::size_t>(std::ranges::count(kColumns, ',')) - 1);
    texts.push_back(sentence);
    return texts;
}

}  // namespace davo
