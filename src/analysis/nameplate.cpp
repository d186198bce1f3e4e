// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/nameplate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "analysis/log_line.h"
#include "common/numbers.h"

namespace davo {

namespace {

constexpr double kCErrorPart = 0.1;  // ratio error of a C class at its limit
constexpr double kMostTyped = 1e9;

// Without what no nameplate has.
Nameplate Checked(Nameplate nameplate) {
    for (auto* value : {&nameplate.kneeVoltage, &nameplate.kneeCurrent, &nameplate.turnsRatio,
                        &nameplate.alf, &nameplate.burdenVa, &nameplate.cVoltage})
        if (!(value->value_or(0) > 0 && value->value_or(0) <= kMostTyped)) value->reset();
    for (auto* ohms : {&nameplate.rct, &nameplate.connectedOhm})
        if (!(ohms->value_or(-1) >= 0 && ohms->value_or(-1) <= kMostTyped)) ohms->reset();
    return nameplate;
}

Finding EstimateFinding(const std::string& what, const std::optional<double>& rct,
                        const std::optional<Estimate>& estimate, const std::string& unit,
                        const std::vector<CurvePoint>& points) {
    if (!rct || !estimate) {
        return {Verdict::None, "The " + what + " is not estimated: " +
                                   (rct ? VoltageLine(points).WhyNotAt(-HUGE_VAL)
                                        : "it takes Rct, which this instrument does not measure.")};
    }
    return {Verdict::None, "The " + what + " is " + (estimate->isAtLeast ? "at least " : "about ") +
                               NumberText(estimate->value, 1) + unit +
                               ", from the secondary excitation curve; leakage flux is not seen."};
}

// What is between two numbers against the least or the most that the nameplate allows.
Finding HeldAgainst(const std::optional<double>& rated, bool isLeast, const std::string& what,
                    const KneeRange& value, std::size_t decimals, const std::string& unit) {
    const std::string between = what + "between " + NumberText(value.low, decimals, rated) +
                                " and " + NumberText(value.high, decimals, rated) + unit;
    if (!rated) return {Verdict::None, between + "."};
    const std::string nameplate = "the nameplate's " + GeneralNumber(*rated) + unit;
    const bool isAbove = isLeast ? value.low >= *rated : value.low > *rated;
    const bool isBelow = isLeast ? value.high < *rated : value.high <= *rated;
    if (!isAbove && !isBelow)
        return {Verdict::None, between + ", which leaves " + nameplate + " open."};
    const bool isWithin = isAbove == isLeast;
    return {isWithin ? Verdict::Within : Verdict::Beyond, between + (isWithin ? ", not " : ", ") +
                                                              (isLeast ? "less" : "more") +
                                                              " than " + nameplate + "."};
}

Finding KneeFinding(double rated, const ComparedCurve& curve) {
    const std::string what = "The knee point e.m.f. (10 % / 50 %) is ";
    const std::optional<KneeRange> knee = KneeRangeOf(curve);
    if (!knee) return {Verdict::None, what + "not known: the curve has none for certain."};
    return HeldAgainst(rated, true, what, *knee, 1, " V");
}

// Open are half a step of both readings, and the bend between two points: towards saturation a
// curve has no more current there than the straight line.
Finding CurrentFinding(double volts, std::optional<double> most, const ComparedCurve& curve) {
    const std::string what =
        "The exciting current at the nameplate's " + GeneralNumber(volts) + " V is ";
    const LogLine line = CurrentLine(VoltageLine(curve.points));
    const double x = std::log(volts);
    if (const std::string why = line.WhyNotAt(x); !why.empty())
        return {Verdict::None, what + "not known: " + why};
    const double step = kHalfVoltage / volts;
    const double low = std::exp(line.At(x - step) - line.OpenAt(x)) - kHalfCurrent;
    const double high = std::exp(line.At(x + step)) + kHalfCurrent;
    return HeldAgainst(most, false, what, {std::max(low, 0.0), high}, 4, " A");
}

void AddPxFindings(std::vector<Finding>& findings, const Nameplate& nameplate,
                   const ComparedCurve& curve, std::optional<double> turnsRatio) {
    if (nameplate.kneeVoltage) {
        findings.push_back(KneeFinding(*nameplate.kneeVoltage, curve));
        findings.push_back(CurrentFinding(*nameplate.kneeVoltage, nameplate.kneeCurrent, curve));
    }
    const std::optional<double> error =
        RatioErrorOf(turnsRatio.value_or(0), nameplate.turnsRatio.value_or(0));
    if (error) findings.push_back(RatioFinding(*error, nameplate.ratioLimitPercent));
}

void AddPFindings(std::vector<Finding>& findings, const Nameplate& nameplate,
                  const std::vector<CurvePoint>& points) {
    if (!nameplate.burdenVa) return;
    const double secondary = nameplate.secondary;
    const double rated = *nameplate.burdenVa / (secondary * secondary);
    const double rct = nameplate.rct.value_or(0);
    if (nameplate.alf) {
        const double volts = BurdenVoltage(*nameplate.alf, *nameplate.burdenVa, secondary);
        findings.push_back({Verdict::None, "The nameplate asks for " + NumberText(volts, 1) +
                                               " V at the rated burden."});
    }
    const double errorPart = nameplate.kind == AccuracyClass::P5 ? 0.05 : 0.1;
    findings.push_back(EstimateFinding("accuracy limit factor at the rated burden", nameplate.rct,
                                       ExpectedAlf(points, errorPart, secondary, rct + rated), "",
                                       points));
    const double connected = nameplate.connectedOhm.value_or(0);
    if (!nameplate.rct || !nameplate.alf || !nameplate.connectedOhm || rct + connected == 0) return;
    findings.push_back(
        {Verdict::None, "At the connected burden the nameplate's accuracy limit factor of " +
                            GeneralNumber(*nameplate.alf) + " becomes " +
                            NumberText(AlfAtBurden(*nameplate.alf, rct, rated, connected), 1) +
                            "."});
}

}  // namespace

std::string ClassName(const Nameplate& nameplate) {
    const Nameplate checked = Checked(nameplate);
    constexpr std::array kNames = {"PX", "5P", "10P", "C"};
    std::string name = kNames.at(static_cast<std::size_t>(checked.kind));
    if (checked.kind == AccuracyClass::Px) return name;
    const std::optional<double>& number =
        checked.kind == AccuracyClass::C ? checked.cVoltage : checked.alf;
    return number ? name + GeneralNumber(*number) : name;
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
    if (spare(line.nodes.back()) >= 0) return Estimate{factor(line.Last()), true};
    for (std::size_t k = line.nodes.size() - 1; k-- > 0;) {
        const LogLine::Node& node = line.nodes[k];
        const LogLine::Node& next = line.nodes[k + 1];
        if (spare(node) < 0) continue;
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
    const double volts = std::exp(line.At(current)) - CVoltageOf(rct, secondary);
    return Estimate{std::max(volts, 0.0), line.Last() < current - kLogRounding};
}

std::vector<Finding> JudgeNameplate(const Nameplate& nameplate, const ComparedCurve& curve,
                                    std::optional<double> turnsRatio) {
    const Nameplate checked = Checked(nameplate);
    const bool hasSecondary = checked.secondary > 0 && checked.secondary <= kMostTyped;
    std::vector<Finding> findings;
    if (checked.kind == AccuracyClass::Px) {
        AddPxFindings(findings, checked, curve, turnsRatio);
    } else if (hasSecondary && checked.kind == AccuracyClass::C) {
        findings.push_back(EstimateFinding(
            "C voltage", checked.rct,
            ExpectedCVoltage(curve.points, checked.secondary, checked.rct.value_or(0)), " V",
            curve.points));
    } else if (hasSecondary) {
        AddPFindings(findings, checked, curve.points);
    }
    findings.push_back(
        {Verdict::None,
         "The class " + ClassName(checked) +
             (checked.kind == AccuracyClass::Px
                  ? " is not passed as a whole: this instrument does not measure Rct."
                  : " is not judged: this instrument measures the turns ratio by "
                    "voltage, not the error of the current.")});
    return findings;
}

}  // namespace davo
