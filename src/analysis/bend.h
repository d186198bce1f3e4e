// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace davo {

// A point of a curve in natural logarithms of amperes and volts.
struct LogPoint {
    double i = 0;      // ln I
    double v = 0;      // ln V
    double halfI = 0;  // half a step of the instrument's resolution, as a part of the current
    double halfV = 0;  // and of the voltage
};

// The shape that an excitation curve has as a rule: straight below, straight above, and between the
// two its slope turns from one to the other.
struct Bend {
    enum Part : std::size_t {
        Level,    // ln V of the lower straight line at the first point
        Steep,    // d(ln V) / d(ln I) below; turned: ln of d(ln I) / d(ln V)
        Flat,     // the same above
        Place,    // ln I of the middle; turned: ln V
        LnWidth,  // ln of its width there
        kParts
    };
    using Parts = std::array<double, kParts>;

    enum class Shape {
        Logistic,  // by the logistic function: d(ln V) / d(ln I) over ln I
        Abrupt,    // by one that ends four times as fast as it begins
        Turned,    // by the logistic function: d(ln I) / d(ln V) over ln V, as the current is where
                   // it is the sum of two powers of the voltage
    };
    Shape shape = Shape::Logistic;
    Parts part{};
};

// The bend that is expected of points before any is looked at closely, and the standard deviations
// by which its parts may be others.
Bend ExpectedBend(Bend::Shape shape, const std::vector<LogPoint>& points);
const Bend::Parts& OpenParts(Bend::Shape shape);

// A bend at one place: ln V and the slope there, and their derivatives by the bend's parts.
struct BendTerm {
    double v = 0;
    double slope = 0;
    Bend::Parts vBy{};
    Bend::Parts slopeBy{};
};
// first is ln I of the first point.
BendTerm BendAt(const Bend& bend, double first, double lnI);

}  // namespace davo
