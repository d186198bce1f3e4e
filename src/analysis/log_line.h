// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "analysis/curve_point.h"

namespace davo {

inline constexpr double kLogRounding = 1e-9;                // of sums of logarithms
inline constexpr double kQuarterDecade = 0.57564627324851;  // ln 10 / 4

// A curve in logarithms, rising in x and straight between its nodes: ln V over ln I, or ln I over
// ln V.
struct LogLine {
    struct Node {
        double x = 0;
        double y = 0;
    };
    std::vector<Node> nodes;

    bool Empty() const { return nodes.empty(); }
    double First() const { return nodes.front().x; }
    double Last() const { return nodes.back().x; }
    // x must be within the nodes.
    double At(double x) const;
    // How far a smooth curve that rises through the nodes can be from the line at x: no farther
    // than the straight lines of the next segments, continued, nor above or below both nodes.
    double OpenAt(double x) const;
    // How many nodes are from one place to another, both included.
    std::size_t Within(double from, double to) const;

  private:
    std::size_t NextOf(double x) const;     // the first node at x or above
    double Slope(std::size_t upper) const;  // of the segment that ends at a node
};

// ln V over ln I of points in any order. Those that are not above zero or above 1e12 are left out;
// those of one current are one, their mean.
LogLine VoltageLine(const std::vector<CurvePoint>& points);

// ln I over ln V of a voltage line: neighbours whose voltage does not rise are drawn together to
// their mean, until the curve rises. Which of them is wrong cannot be known.
LogLine CurrentLine(const LogLine& voltage);

// The voltage of a curve at a current, and the current at a voltage; nothing outside its points.
std::optional<double> VoltageAt(const std::vector<CurvePoint>& points, double amperes);
std::optional<double> CurrentAt(const std::vector<CurvePoint>& points, double volts);

}  // namespace davo
