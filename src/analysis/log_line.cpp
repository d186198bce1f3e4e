// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/log_line.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace davo {

namespace {

// Draws neighbours together to their mean until x rises.
LogLine RisingLine(const std::vector<LogLine::Node>& nodes) {
    LogLine line;
    for (LogLine::Node mean : nodes) {
        while (!line.Empty() && mean.x - line.Last() < kLogRounding) {
            const LogLine::Node& before = line.nodes.back();
            mean.count += before.count;
            const double part = before.count / mean.count;
            mean.x += part * (before.x - mean.x);
            mean.y += part * (before.y - mean.y);
            line.nodes.pop_back();
        }
        line.nodes.push_back(mean);
    }
    return line;
}

}  // namespace

std::size_t LogLine::NextOf(double x) const {
    const auto next =
        std::lower_bound(nodes.begin(), nodes.end(), x,
                         [](const Node& node, double value) { return node.x < value; });
    return static_cast<std::size_t>(next - nodes.begin());
}

double LogLine::Slope(std::size_t upper) const {
    const Node& to = nodes[upper];
    const Node& from = nodes[upper - 1];
    return (to.y - from.y) / (to.x - from.x);
}

std::string LogLine::WhyNotAt(double x) const {
    if (Empty()) return "the curve has no points.";
    if (x < First() - kLogRounding) return "the curve begins above it.";
    return x > Last() + kLogRounding ? "the curve ends before it." : "";
}

double LogLine::At(double x) const {
    const std::size_t next = NextOf(x);
    if (next == nodes.size()) return nodes.back().y;
    if (next == 0 || nodes[next].x == x) return nodes[next].y;
    return nodes[next - 1].y + (x - nodes[next - 1].x) * Slope(next);
}

double LogLine::OpenAt(double x) const {
    const std::size_t next = NextOf(x);
    if (next == 0 || next == nodes.size()) return 0;
    double bend = 0;
    for (const std::size_t node : {next - 1, next})
        if (node > 0 && node + 1 < nodes.size())
            bend = std::max(bend, std::abs(Slope(node + 1) - Slope(node)));
    const Node& low = nodes[next - 1];
    const Node& high = nodes[next];
    return std::min(bend * std::min(x - low.x, high.x - x), std::abs(high.y - low.y));
}

LogLine VoltageLine(const std::vector<CurvePoint>& points) {
    std::vector<LogLine::Node> nodes;
    for (const CurvePoint& point : points) {
        constexpr double kMost = 1e12;  // of amperes and volts; no curve has more
        const bool isReading = point.current > 0 && point.current < kMost && point.voltage > 0 &&
                               point.voltage < kMost;
        if (!isReading) continue;
        nodes.push_back({std::log(point.current), std::log(point.voltage)});
    }
    std::sort(nodes.begin(), nodes.end(), [](const LogLine::Node& a, const LogLine::Node& b) {
        return std::pair(a.x, a.y) < std::pair(b.x, b.y);
    });
    return RisingLine(nodes);
}

LogLine CurrentLine(const LogLine& voltage) {
    std::vector<LogLine::Node> nodes;
    for (const LogLine::Node& node : voltage.nodes)
        nodes.push_back({node.y, node.x});
    return RisingLine(nodes);
}

}  // namespace davo
