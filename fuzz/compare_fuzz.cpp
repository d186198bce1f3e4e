// SPDX-License-Identifier: GPL-3.0-or-later
// Curves of any points against each other, against taps and a nameplate: every sentence has
// numbers, a curve is like itself, and what cannot be compared has no verdict.
#include "analysis/comparison.h"

#include <cmath>
#include <cstring>

#include "analysis/nameplate.h"
#include "analysis/taps.h"
#include "fuzz/fuzzing.h"

namespace {

using namespace davo;
using fuzz::Require;

// Of a record, whose numbers are counts, or as anybody may have written them.
std::vector<CurvePoint> PointsOf(fuzz::Input& input) {
    const bool isRecord = input.Byte() < 200;
    const auto value = [&](double step) {
        if (isRecord) return step * (256 * input.Below(256) + input.Below(256));
        double number = 0;
        char bytes[sizeof number];
        for (char& byte : bytes)
            byte = static_cast<char>(input.Byte());
        std::memcpy(&number, bytes, sizeof number);
        return std::isfinite(number) ? number : 1.0;
    };
    std::vector<CurvePoint> points;
    for (int left = input.Below(33); left > 0; --left) {
        const double current = value(0.0001);
        points.push_back(PointByPicture(current, value(0.1)));
    }
    return points;
}

void CheckSentence(const std::string& sentence) {
    for (const char* none : {"nan", "inf", "NaN", "INF"}) {
        const std::size_t at = sentence.find(none);
        const bool inWord = at != std::string::npos && at + 3 < sentence.size() &&
                            std::isalpha(static_cast<unsigned char>(sentence[at + 3]));
        Require(at == std::string::npos || inWord, sentence);
    }
}

void CheckComparison(const ComparedCurve& measured, const ComparedCurve& reference) {
    const CurveComparison comparison = CompareCurves(measured, reference);
    const Verdict verdict = VerdictOf(comparison, 5.0);
    const bool isCompared = comparison.whyNot.empty();
    Require(isCompared || verdict == Verdict::None, "what is not compared has no verdict");
    Require(VerdictOf(comparison, std::nullopt) == Verdict::None, "without a limit, too");
    CheckSentence(SentenceOf(comparison, 5.0));
    CheckSentence(KneeSentenceOf(comparison.knee));
    if (!isCompared) return;
    for (const Deviation& place : comparison.voltage.places) {
        Require(std::isfinite(place.ln) && place.open >= 0, "a deviation is a number");
        Require(place.CertainPercent() <= std::abs(place.Percent()), "certain is less");
    }
    Require(!comparison.voltage.places.empty(), "what is compared has places");
}

void CheckItself(const ComparedCurve& curve) {
    const CurveComparison comparison = CompareCurves(curve, curve);
    if (!comparison.whyNot.empty()) return;
    Require(VerdictOf(comparison, 0.0) != Verdict::Beyond, "a curve is not beyond itself");
    for (const Deviation& place : comparison.voltage.places)
        Require(std::abs(place.ln) < 1e-9, "a curve is like itself");
}

void CheckTaps(const std::string& text, const ComparedCurve& curve, const ComparedCurve& other) {
    const auto taps = ParseTaps(text);
    if (!taps) return;
    Require(!taps->empty(), "taps are some");
    for (const Tap& tap : *taps) {
        Require(tap.primary > 0 && tap.secondary > 0, "a tap has currents");
        const ComparedCurve scaled = ScaledToTurns(curve, taps->front().Turns(), tap.Turns());
        Require(scaled.points.size() == curve.points.size(), "no point is lost");
        CheckSentence(TooMuchSentenceOf(tap.Name(), scaled));
        CheckSentence(TapFinding(tap.Name(), other.points, scaled).sentence);
    }
}

void CheckNameplate(fuzz::Input& input, const ComparedCurve& curve) {
    const auto number = [&]() -> std::optional<double> {
        const double value = 0.1 * input.Below(256) * input.Below(256);
        return value > 0 ? std::optional(value) : std::nullopt;
    };
    Nameplate nameplate;
    nameplate.kind = static_cast<AccuracyClass>(input.Below(4));
    nameplate.secondary = input.Flag() ? 1 : 5;
    for (auto* value :
         {&nameplate.rct, &nameplate.kneeVoltage, &nameplate.kneeCurrent, &nameplate.turnsRatio,
          &nameplate.alf, &nameplate.burdenVa, &nameplate.connectedOhm, &nameplate.cVoltage}) {
        *value = number();
    }
    CheckSentence(ClassName(nameplate));
    for (const Finding& finding : JudgeNameplate(nameplate, curve, number()))
        CheckSentence(finding.sentence);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const auto rule = static_cast<KneeRule>(input.Below(3));
    // Finding the kneepoint takes most of the time.
    const bool withKnee = input.Below(16) == 0;
    const auto curve = [&] {
        std::vector<CurvePoint> points = PointsOf(input);
        return withKnee ? CurveToCompare(rule, points) : ComparedCurve{std::move(points), {}, {}};
    };
    ComparedCurve measured;
    ComparedCurve reference;
    if (!fuzz::Runs({6}, [&] {
            measured = curve();
            reference = curve();
        })) {
        return 0;
    }
    CheckComparison(measured, reference);
    CheckItself(measured);
    const std::string taps = input.Text();
    CheckTaps(taps, measured, reference);
    CheckNameplate(input, measured);
    return 0;
}
