// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/nameplate_facts.h"

#include <algorithm>
#include <cmath>

#include "analysis/nameplate.h"
#include "analysis/taps.h"
#include "common/numbers.h"
#include "common/text.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

double NameplateTurns(const RecordTest& test) {
    return LeadingNumericValue(test.nameplateRatio).value_or(0);
}

// A nameplate ratio is written with some digits only.
bool IsTurns(double turns, double other) {
    constexpr double kRoundedPart = 1e-3;
    return std::abs(turns - other) <= kRoundedPart * other;
}

// What was typed, as numbers; what is none, and what is missing, is not judged.
Nameplate NameplateOf(const NameplateTexts& texts) {
    const auto number = [&](std::size_t field) { return WholeNumericValue(texts.at(field)); };
    Nameplate nameplate;
    const std::string& kind = texts.front();
    if (kind == "5P") nameplate.kind = AccuracyClass::P5;
    if (kind == "10P") nameplate.kind = AccuracyClass::P10;
    if (kind == "C") nameplate.kind = AccuracyClass::C;
    nameplate.secondary = number(1).value_or(nameplate.secondary);
    nameplate.rct = number(2);
    nameplate.kneeVoltage = number(3);
    nameplate.kneeCurrent = number(4);
    nameplate.turnsRatio = number(5);
    nameplate.ratioLimitPercent = number(6).value_or(nameplate.ratioLimitPercent);
    nameplate.alf = number(7);
    nameplate.burdenVa = number(8);
    nameplate.connectedOhm = number(9);
    nameplate.cVoltage = number(10);
    return nameplate;
}

std::vector<Finding> FindingsOnTaps(const std::vector<Tap>& taps, const ShownRecords& shown,
                                    std::size_t test, const ComparedCurve& curve) {
    const ShownTest& measured = shown.Tests().at(test);
    const double own = NameplateTurns(*measured.test);
    if (!(own > 0) || curve.points.empty()) {
        return {{Verdict::None,
                 "The kneepoints of the taps are not known: this test has no nameplate ratio or no "
                 "curve."}};
    }
    std::vector<Finding> findings;
    for (const Tap& tap : taps) {
        if (IsTurns(own, tap.Turns())) continue;
        const ComparedCurve expected = ScaledToTurns(curve, own, tap.Turns());
        findings.push_back({Verdict::None, "The kneepoint of " + tap.Name() +
                                               " by its turns: " + KneeTextOf(expected) + "."});
        findings.push_back({Verdict::None, TooMuchSentenceOf(tap.Name(), expected)});
        for (const ShownTest& other : shown.Tests()) {
            if (other.record != measured.record || other.test->points.empty() ||
                !IsTurns(NameplateTurns(*other.test), tap.Turns()))
                continue;
            findings.push_back(TapFinding(tap.Name() + " (Test " + other.test->testNumber + ")",
                                          other.test->points, expected));
        }
    }
    std::erase_if(findings, [](const Finding& finding) { return finding.sentence.empty(); });
    return findings;
}

}  // namespace

std::string KneeTextOf(const ComparedCurve& curve) {
    KneeFact fact;
    fact.smooth = curve.knee;
    fact.range = curve.range;
    return ToPage(SmoothText(fact)).value_or("");
}

std::vector<std::pair<std::string, std::vector<Finding>>> NameplateFindings(
    const NameplateTexts& texts, const ShownRecords& shown, std::size_t test, KneeRule rule,
    const ComparedCurve& curve) {
    std::vector<std::pair<std::string, std::vector<Finding>>> found;
    const bool hasClass = std::any_of(texts.begin() + 1, texts.end() - 1,
                                      [](const std::string& text) { return !text.empty(); });
    if (hasClass) {
        const RecordTest& measured = *shown.Tests().at(test).test;
        const Nameplate nameplate = NameplateOf(texts);
        found.emplace_back("Nameplate, class " + ClassName(nameplate),
                           JudgeNameplate(nameplate,
                                          rule == KneeRule::Asa1050
                                              ? curve
                                              : CurveToCompare(KneeRule::Asa1050, measured.points),
                                          LeadingNumericValue(measured.measuredRatio)));
    }
    if (const std::optional<std::vector<Tap>> taps = ParseTaps(texts.back()))
        found.emplace_back("Taps, " + KneeWord(rule).toStdString(),
                           FindingsOnTaps(*taps, shown, test, curve));
    return found;
}

}  // namespace davo
