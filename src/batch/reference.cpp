// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/reference.h"

#include <algorithm>
#include <array>

#include "common/files.h"
#include "common/numbers.h"
#include "records/record_name.h"
#include "reports/reference_curve.h"

namespace davo {

Reference ReadReference(const BatchOptions& options) {
    const QString& path = options.reference;
    if (path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive))
        return {{"", CurveToCompare(options.rule, ParseReferenceCurve(ReadWholeFile(path)))}};
    Reference curves;
    if (path.isEmpty()) return curves;
    for (const RecordTest& test : ReadRecordFacts(path, 0).tests) {
        if (!test.points.empty())
            curves.emplace(test.testNumber, CurveToCompare(options.rule, test.points));
    }
    return curves;
}

std::vector<std::string> ComparedTexts(const RecordTest& test, const Reference& reference,
                                       const BatchOptions& options) {
    const auto with = reference.size() == 1 ? reference.begin() : reference.find(test.testNumber);
    std::vector<std::string> texts{PageRecordNameOf(options.reference)};
    std::string sentence = "The reference has no curve for this test.";
    if (test.points.empty()) {
        sentence = "The test has no curve.";
    } else if (with != reference.end()) {
        const CurveComparison found =
            CompareCurves(CurveToCompare(options.rule, test.points), with->second);
        texts.push_back(with->first);
        sentence = SentenceOf(found, options.limit);
        if (found.whyNot.empty()) {
            sentence += ' ' + KneeSentenceOf(found.knee);
            for (const auto& worst :
                 {found.voltage.all, found.voltage.below, found.voltage.above, found.current.all})
                texts.push_back(worst ? GeneralNumber(worst->Percent()) : "");
            texts.push_back(found.knee ? GeneralNumber(found.knee->percent) : "");
            texts.push_back(found.knee ? GeneralNumber(found.knee->uncertainPercent) : "");
            const auto verdict = static_cast<std::size_t>(VerdictOf(found, options.limit));
            texts.emplace_back(std::array{"", "yes", "no"}.at(verdict));
        }
    }
    texts.resize(static_cast<std::size_t>(std::ranges::count(kComparedColumns, ',')) - 1);
    texts.push_back(sentence);
    return texts;
}

}  // namespace davo
