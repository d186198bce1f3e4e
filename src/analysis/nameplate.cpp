// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/nameplate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "analysis/log_line.h"
#include "analysis/ratio_error.h"
#include "common/numbers.h"

namespace davo {

namespace {

constexpr double kCErrorPart = 0.1;  // ratio error of a C class at its limit

using Findings = std::vector<NameplateFinding>;

NameplateFinding EstimateFinding(const std::string& what, const std::optional<Estimate>& estimate,
                                 const std::string& unit) {
    if (!estimate || !std::isfinite(estimate->value))
        return {Verdict::None, "The " + what + " is not estimated: it is not on the curve."};
    return {Verdict::None, "The " + what + " is " + (estimate->isAtLeast ? "at least " : "about ") +
                               Picture(estimate->value, kVoltagePicture) + unit +
                               ", from the secondary excitation curve; leakage flux is not seen."};
}

NameplateFinding NoEstimate(const std::string& what) {
    return {Verdict::None, "The " + what +
                               " is not estimated: it takes Rct, which this instrument does not "
                               "measure."};
}

NameplateFinding KneeFinding(double rated, const ComparedCurve& curve) {
    const std::string what = "The knee point e.m.f. (10 % / 50 %) is ";
    const std::string nameplate = "the nameplate's " + GeneralNumber(rated) + " V";
    double low = 0;
    double high = 0;
    if (curve.range) {
        low = curve.range->low;
        high = curve.range->high;
    } else if (curve.knee) {
        low = curve.knee->at.voltage - curve.knee->uncertainty;
        high = curve.knee->at.voltage + curve.knee->uncertainty;
    } else {
        return {Verdict::None, what + "not known: the curve has none for certain."};
    }
    const std::string between = what + "between " + Picture(low, kVoltagePicture) + " and " +
                                Picture(high, kVoltagePicture) + " V";
    if (low >= rated) return {Verdict::Within, between + ", not less than " + nameplate + "."};
    if (high < rated) return {Verdict::Beyond, between + ", less than " + nameplate + "."};
    return {Verdict::None, between + ", which leaves " + nameplate + " open."};
}

NameplateFinding CurrentFinding(double volts, std::optional<double> limit,
                                const ComparedCurve& curve) {
    const std::string nameplate = "the nameplate's " + GeneralNumber(volts) + " V";
    const std::optional<double> current = CurrentAt(curve.points, volts);
    if (!current) {
        return {Verdict::None,
                "The exciting current at " + nameplate + " is not known: it is not on the curve."};
    }
    const std::string sentence =
        "The exciting current at " + nameplate + " is " + Picture(*current, kPointPicture) + " A";
    if (!limit) return {Verdict::None, sentence + "."};
    const std::string limitText = GeneralNumber(*limit) + " A.";
    if (*current <= *limit * (1 + kLogRounding))
        return {Verdict::Within, sentence + "; the limit is " + limitText};
    return {Verdict::Beyond, sentence + ", beyond the limit of " + limitText};
}

void AddPxFindings(Findings& findings, const Nameplate& nameplate, const ComparedCurve& curve,
                   std::optional<double> turnsRatio) {
    if (nameplate.kneeVoltage) {
        findings.push_back(KneeFinding(*nameplate.kneeVoltage, curve));
        findings.push_back(CurrentFinding(*nameplate.kneeVoltage, nameplate.kneeCurrent, curve));
    }
    const std::optional<double> error =
        RatioErrorOf(turnsRatio.value_or(0), nameplate.turnsRatio.value_or(0));
    if (!error) return;
    findings.push_back({VerdictOf(*error, nameplate.ratioLimitPercent),
                        RatioSentenceOf(*error, nameplate.ratioLimitPercent)});
}

void AddPFindings(Findings& findings, const Nameplate& nameplate, const ComparedCurve& curve) {
    if (!nameplate.burdenVa) return;
    if (!nameplate.rct) return findings.push_back(NoEstimate("accuracy limit factor"));
    const double rated = *nameplate.burdenVa / (nameplate.secondary * nameplate.secondary);
    const double errorPart = nameplate.kind == AccuracyClass::P5 ? 0.05 : 0.1;
    findings.push_back(EstimateFinding(
        "accuracy limit factor at the rated burden",
        ExpectedAlf(curve.points, errorPart, nameplate.secondary, *nameplate.rct + rated), ""));
    if (!nameplate.alf || !nameplate.connectedOhm) return;
    const double operating =
        AlfAtBurden(*nameplate.alf, *nameplate.rct, rated, *nameplate.connectedOhm);
    if (!std::isfinite(operating)) return;
    findings.push_back(
        {Verdict::None, "At the connected burden the nameplate's accuracy limit factor of " +
                            GeneralNumber(*nameplate.alf) + " becomes " +
                            Picture(operating, kVoltagePicture) + "."});
}

NameplateFinding CFinding(const Nameplate& nameplate, const ComparedCurve& curve) {
    if (!nameplate.rct) return NoEstimate("C voltage");
    return EstimateFinding(
        "C voltage", ExpectedCVoltage(curve.points, nameplate.secondary, *nameplate.rct), " V");
}

}  // namespace

std::string ClassName(const Nameplate& nameplate) {
    const auto number = [](const std::optional<double>& value) {
        return value ? GeneralNumber(*value) : std::string();
    };
    switch (nameplate.kind) {
        case AccuracyClass::Px:
            break;
        case AccuracyClass::P5:
            return "5P" + number(nameplate.alf);
        case AccuracyClass::P10:
            return "10P" + number(nameplate.alf);
        case AccuracyClass::C:
            return "C" + number(nameplate.cVoltage);
    }
    return "PX";
}

std::optional<Estimate> ExpectedAlf(const std::vector<CurvePoint>& points, double errorPart,
                                    double secondary, double ohms) {
    const LogLine line = VoltageLine(points);
    const double needed = std::log(ohms / errorPart);
    if (line.Empty() || !std::isfinite(needed)) return std::nullopt;
    // ln of what the curve gives over what the current asks for.
    const auto spare = [=](const LogLine::Node& node) { return node.y - node.x - needed; };
    const auto factor = [=](double lnCurrent) {
        return std::exp(lnCurrent) / (errorPart * secondary);
    };
    for (std::size_t k = line.nodes.size(); k-- > 0;) {
        const LogLine::Node& node = line.nodes[k];
        if (spare(node) < 0) continue;
        if (k + 1 == line.nodes.size()) return Estimate{factor(node.x), true};
        const LogLine::Node& next = line.nodes[k + 1];
        const double part = spare(node) / (spare(node) - spare(next));
        return Estimate{factor(node.x + part * (next.x - node.x)), false};
    }
    return std::nullopt;
}

std::optional<Estimate> ExpectedCVoltage(const std::vector<CurvePoint>& points, double secondary,
                                         double rct) {
    const LogLine line = VoltageLine(points);
    const double current = std::log(kCErrorPart * CVoltageOf(1, secondary));
    if (line.Empty() || !std::isfinite(current) || current < line.First()) return std::nullopt;
    const double volts =
        std::exp(line.At(std::min(current, line.Last()))) - CVoltageOf(rct, secondary);
    return Estimate{std::max(volts, 0.0), line.Last() < current - kLogRounding};
}

std::vector<NameplateFinding> JudgeNameplate(const Nameplate& nameplate, const ComparedCurve& curve,
                                             std::optional<double> turnsRatio) {
    Findings findings;
    switch (nameplate.kind) {
        case AccuracyClass::Px:
            AddPxFindings(findings, nameplate, curve, turnsRatio);
            findings.push_back({Verdict::None,
                                "The class PX is not passed as a whole: this "
                                "instrument does not measure Rct."});
            return findings;
        case AccuracyClass::P5:
        case AccuracyClass::P10:
            AddPFindings(findings, nameplate, curve);
            break;
        case AccuracyClass::C:
            findings.push_back(CFinding(nameplate, curve));
            break;
    }
    findings.push_back({Verdict::None, "The class " + ClassName(nameplate) +
                                           " is not judged: this instrument measures the turns "
                                           "ratio by voltage, not the error of the current."});
    return findings;
}

}  // namespace davo
