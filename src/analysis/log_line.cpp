// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/log_line.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace davo {

namespace {

std::optional<double> ValueAt(const LogLine& line, double at) {
    if (line.Empty() || !(at > 0)) return std::nullopt;
    const double x = std::log(at);
    if (x < line.First() - kLogRounding || x > line.Last() + kLogRounding) return std::nullopt;
    return std::exp(line.At(x));
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

double LogLine::At(double x) const {
    const std::size_t next = NextOf(x);
    if (next == nodes.size()) return nodes.back().y;
    if (next == 0 || nodes[next].x == x) return nodes[next].y;
    return nodes[next - 1].y + (x - nodes[next - 1].x) * Slope(next);
}

double LogLine::OpenAt(double x) const {
    const std::size_t next = NextOf(x);
    if (next == 0 || next == nodes.size() || nodes.size() < 3) return 0;
    const auto bend = [&](std::size_t upper) { return std::abs(Slope(upper) - Slope(next)); };
    const double before = bend(next > 1 ? next - 1 : next + 1);
    const double after = bend(next + 1 < nodes.size() ? next + 1 : next - 1);
    return std::min({before * (x - nodes[next - 1].x), after * (nodes[next].x - x),
                     std::abs(nodes[next].y - nodes[next - 1].y)});
}

std::size_t LogLine::Within(double from, double to) const {
    return static_cast<std::size_t>(
        std::count_if(nodes.begin(), nodes.end(), [=](const Node& node) {
            return node.x >= from - kLogRounding && node.x <= to + kLogRounding;
        }));
}

LogLine VoltageLine(const std::vector<CurvePoint>& points) {
    LogLine line;
    for (const CurvePoint& point : points) {
        constexpr double kMost = 1e12;  // of amperes and volts; no curve has more
        const bool isReading = point.current > 0 && point.current < kMost && point.voltage > 0 &&
                               point.voltage < kMost;
        if (!isReading) continue;
        line.nodes.push_back({std::log(point.current), std::log(point.voltage)});
    }
    std::sort(line.nodes.begin(), line.nodes.end(),
              [](const LogLine::Node& a, const LogLine::Node& b) {
                  return std::pair(a.x, a.y) < std::pair(b.x, b.y);
              });
    std::vector<LogLine::Node> merged;
    std::size_t count = 0;  // of the points that the last node is the mean of
    for (const LogLine::Node& node : line.nodes) {
        const bool same = !merged.empty() && node.x - merged.back().x < kLogRounding;
        count = same ? count + 1 : 1;
        if (!same) merged.push_back(node);
        if (same) merged.back().y += (node.y - merged.back().y) / static_cast<double>(count);
    }
    line.nodes = std::move(merged);
    return line;
}

LogLine CurrentLine(const LogLine& voltage) {
    struct Pool {
        LogLine::Node mean;
        double count = 1;
    };
    std::vector<Pool> pools;
    for (const LogLine::Node& node : voltage.nodes) {
        Pool pool{{node.y, node.x}};
        while (!pools.empty() && pool.mean.x - pools.back().mean.x < kLogRounding) {
            const Pool& last = pools.back();
            const double part = last.count / (last.count + pool.count);
            pool.mean.x += part * (last.mean.x - pool.mean.x);
            pool.mean.y += part * (last.mean.y - pool.mean.y);
            pool.count += last.count;
            pools.pop_back();
        }
        pools.push_back(pool);
    }
    LogLine line;
    for (const Pool& pool : pools)
        line.nodes.push_back(pool.mean);
    return line;
}

std::optional<double> VoltageAt(const std::vector<CurvePoint>& points, double amperes) {
    return ValueAt(VoltageLine(points), amperes);
}

std::optional<double> CurrentAt(const std::vector<CurvePoint>& points, double volts) {
    return ValueAt(CurrentLine(VoltageLine(points)), volts);
}

}  // namespace davo
