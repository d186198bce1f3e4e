// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <random>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"

namespace davo::test {

// Excitation curves whose kneepoints are known exactly, and records of them as a test set takes
// them.

enum class Family {
    Froehlich,   // V = Vs I / (Ih + I): rises by less than 45 degrees everywhere
    Arctangent,  // V = a atan(b I): the same
    Tanh,        // V = Vs tanh((I / Ik)^p), p above 1
    AirCore,     // V = Vs x^p / (1 + x^p) + L x, x = I / Ik, p above 1
    PowerSum,    // I = Ik / 2 ((V / Vk)^low + (V / Vk)^high), the simulated instrument's
    Corner,      // a hyperbola between two straight lines of log V over log I
    TwoPowers,   // two powers of I with a logistic transition of the slope
    Langevin,    // V = Vs L((I / Ik)^p), L(x) = coth x - 1 / x, p above 1
    Foot,        // steeper from its foot on, then bent: two logistic transitions of the slope
    Straight,    // V = a I^p: bent nowhere
};
inline constexpr std::array kFamilies = {
    Family::Froehlich, Family::Arctangent, Family::Tanh,     Family::AirCore, Family::PowerSum,
    Family::Corner,    Family::TwoPowers,  Family::Langevin, Family::Foot,    Family::Straight};
const char* NameOf(Family family);

// A curve in natural logarithms of volts over amperes; its slope d(ln V) / d(ln I) is analytic.
struct TrueCurve {
    std::function<double(double)> voltageAt;  // ln V of ln I
    std::function<double(double)> slopeAt;
    double bend = 0;  // ln I near which it bends
};

// A curve of random size and shape: bends at 10 V to 900 V and 8 mA to 1.5 A.
TrueCurve RandomTrueCurve(Family family, std::mt19937_64& random);

// The kneepoint by the rule's definition, by bisection to the last digit; nothing where the curve
// has none:
//   IEEE  the highest place above which d(ln I) / d(ln V) exceeds the rule's limit (1 or 1.81)
//   ASA   I(1.1 V) = 1.5 I(V)
std::optional<CurvePoint> TrueKneepoint(KneeRule rule, const TrueCurve& curve);

// How a record of a curve is taken: currents in equal ratios, counts of 0.1 mA (0.2 mA above 6.5 A)
// and 0.1 V.
struct Taking {
    int points = 32;          // as many or fewer, where counts would repeat
    double noise = 0;         // standard deviation of every voltage, as a part of it
    double pastTheBend = 20;  // highest current over the bend's
};
std::vector<CurvePoint> TakeRecord(const TrueCurve& curve, const Taking& taking,
                                   std::mt19937_64& random);

}  // namespace davo::test
