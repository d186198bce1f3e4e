// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/curve_point.h"

namespace davo {

inline constexpr double kLogRounding = 1e-9;                // of sums of logarithms
inline constexpr double kQuarterDecade = 0.57564627324851;  // ln 10 / 4

// Half a step of the instrument, in amperes and volts.
inline constexpr double kHalfCurrent = 0.00005;
inline constexpr double kHalfVoltage = 0.05;

// A curve in logarithms, rising in x and straight between its nodes: ln V over ln I, or ln I over
// ln V.
struct LogLine {
    struct Node {
        double x = 0;
        double y = 0;
        double count = 1;  // of the points that it is the mean of
    };
    std::vector<Node> nodes;

    bool Empty() const { return nodes.empty(); }
    double First() const { return nodes.front().x; }
    double Last() const { return nodes.back().x; }
    // Why the line has no value at x, "the curve ends before it."; empty where it has one.
    std::string WhyNotAt(double x) const;
    // Outside the nodes, of which there must be one, the value of the nearest.
    double At(double x) const;
    // How far a smooth curve through the nodes can be from the line at x: as far as the line of the
    // next segment, continued, is from it at the nearer node's distance, by the sharper bend of
    // both nodes; never farther than these are apart.
    double OpenAt(double x) const;

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

}  // namespace davo
