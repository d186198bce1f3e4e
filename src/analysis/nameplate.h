// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/comparison.h"
#include "analysis/curve_point.h"
#include "analysis/limits.h"

namespace davo {

// Accuracy classes of IEC 61869-2 and IEEE C57.13.
enum class AccuracyClass { Px, P5, P10, C };

// What the nameplate of a transformer says; what was not typed is not judged, nor is what is not
// above zero (a resistance may be zero) or above 1e9.
struct Nameplate {
    AccuracyClass kind = AccuracyClass::Px;
    double secondary = 5;       // rated secondary current, amperes
    std::optional<double> rct;  // resistance of the secondary winding, ohms
    // Class PX.
    std::optional<double> kneeVoltage;  // Ek, rated knee point e.m.f., volts
    std::optional<double> kneeCurrent;  // highest exciting current at Ek, amperes
    std::optional<double> turnsRatio;
    double ratioLimitPercent = 0.25;
    // Classes 5P and 10P.
    std::optional<double> alf;           // rated accuracy limit factor
    std::optional<double> burdenVa;      // rated burden
    std::optional<double> connectedOhm;  // the burden that is connected, ohms
    // C class.
    std::optional<double> cVoltage;  // volts
};

// "PX", "5P20", "10P10", "C400"; "5P" and so on where the number was not typed.
std::string ClassName(const Nameplate& nameplate);

// The voltage at a rated burden at the accuracy limit: V = ALF * VA / Isn.
constexpr double BurdenVoltage(double alf, double burdenVa, double secondary) {
    return alf * burdenVa / secondary;
}

// The C voltage of a standard burden: V = 20 * Isn * Z.
constexpr double CVoltageOf(double burdenOhm, double secondary) {
    return 20 * secondary * burdenOhm;
}

// The accuracy limit factor at another burden than the one of alf, in ohms: ALF' = ALF * (Rct +
// from) / (Rct + to).
constexpr double AlfAtBurden(double alf, double rct, double fromOhm, double toOhm) {
    return alf * (rct + fromOhm) / (rct + toOhm);
}

// A value from the secondary excitation curve.
struct Estimate {
    double value = 0;
    bool isAtLeast = false;  // the curve ends before it
};

// The highest multiple x of the rated secondary current at which the curve gives the e.m.f. x * Isn
// * ohms with no more exciting current than errorPart * x * Isn; ohms are those of winding and
// burden, added as numbers. Nothing where the curve begins above it.
std::optional<Estimate> ExpectedAlf(const std::vector<CurvePoint>& points, double errorPart,
                                    double secondary, double ohms);

// The voltage at the burden at 20 times the rated current where its error is 10 %: that of the
// curve at 2 * Isn less the voltage at rct. Nothing where the curve begins above it.
std::optional<Estimate> ExpectedCVoltage(const std::vector<CurvePoint>& points, double secondary,
                                         double rct);

// A measured winding against its nameplate; curve has its kneepoint by ASA 10/50, which is IEC's
// knee point e.m.f. What the readings leave open has no verdict. The last finding says why the
// class as a whole is never passed.
std::vector<Finding> JudgeNameplate(const Nameplate& nameplate, const ComparedCurve& curve,
                                    std::optional<double> turnsRatio);

}  // namespace davo
