// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/reference.h"

#include <algorithm>
#include <array>

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
    std::vector<std::string> texts(static_cast<std::size_t>(std::ranges::count(kColumns, ',')));
    texts.front() = name_;
    if (test.points.empty() || with == curves_.end()) {
        texts.back() = test.points.empty() ? "The test has no curve."
                                           : "The reference has no curve for this test.";
        return texts;
    }
    const CurveComparison found = CompareCurves(CurveToCompare(rule_, test.points), with->second);
    const bool isCompared = found.reason == NotCompared::No;
    auto next = texts.begin();
    *++next = with->first;
    std::array<std::optional<Deviation>, 6> parts;
    if (isCompared) parts = {found.voltage.all, found.voltage.below, found.voltage.above};
    if (found.current) {
        parts[3] = found.current->all;
        parts[4] = found.current->below;
        parts[5] = found.current->above;
    }
    for (const std::optional<Deviation>& part : parts) {
        *++next = part ? GeneralNumber(part->Percent()) : std::string();
        *++next = part ? GeneralNumber(part->at) : std::string();
    }
    const std::optional<double> knee = isCompared ? found.knee.voltagePercent : std::nullopt;
    *++next = knee ? GeneralNumber(*knee) : std::string();
    *++next = knee ? GeneralNumber(found.knee.uncertainPercent) : std::string();
    const Verdict verdict = VerdictOf(found, limit_);
    *++next = verdict == Verdict::None ? "" : verdict == Verdict::Within ? "yes" : "no";
    *++next = SentenceOf(found, limit_) + (isCompared ? ' ' + KneeSentenceOf(found.knee) : "");
    return texts;
}

}  // namespace davo
