// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/smooth_knee.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "common/numbers.h"

namespace davo {

namespace {

constexpr std::size_t kFewestPoints = 4;

// Logarithms to the base of ten, of amperes and volts.
struct LogPoint {
    double i = 0;
    double v = 0;
};

struct Sample {
    double i = 0;
    double v = 0;
    double slope = 0;  // d v / d i
};

// The points in rising order, or none when they fall.
std::vector<LogPoint> RisingPoints(const std::vector<CurvePoint>& points) {
    // What is less is 0.000 to the rules.
    const double smallestFall = std::log10(1 - 0.0005);
    std::vector<LogPoint> rising;
    for (const CurvePoint& point : points) {
        if (point.current <= 0 || point.voltage <= 0) continue;
        const LogPoint next{std::log10(point.current), std::log10(point.voltage)};
        if (rising.empty()) {
            rising.push_back(next);
            continue;
        }
        LogPoint& last = rising.back();
        if (next.i - last.i < smallestFall || next.v - last.v < smallestFall) return {};
        const double v = std::max(next.v, last.v);
        if (next.i > last.i) {
            rising.push_back({next.i, v});
        } else {
            last.v = v;
        }
    }
    return rising;
}

// Slope of the chord from point k to the next.
double Chord(const std::vector<LogPoint>& points, std::size_t k) {
    return (points[k + 1].v - points[k].v) / (points[k + 1].i - points[k].i);
}

// The slope at an end, from its chord and length and from those behind it; never falling.
double EndSlope(double chord, double length, double nextChord, double nextLength) {
    const double slope =
        ((2 * length + nextLength) * chord - length * nextChord) / (length + nextLength);
    return std::max(slope, 0.0);
}

std::vector<double> SlopesAt(const std::vector<LogPoint>& points) {
    const std::size_t last = points.size() - 1;
    const auto length = [&](std::size_t k) { return points[k + 1].i - points[k].i; };
    std::vector<double> slopes(points.size());
    slopes.front() = EndSlope(Chord(points, 0), length(0), Chord(points, 1), length(1));
    slopes.back() = EndSlope(Chord(points, last - 1), length(last - 1), Chord(points, last - 2),
                             length(last - 2));
    for (std::size_t k = 1; k < last; ++k) {
        const double below = Chord(points, k - 1);
        const double above = Chord(points, k);
        if (below <= 0 || above <= 0) continue;  // level on one side: level here
        const double weightBelow = 2 * length(k) + length(k - 1);
        const double weightAbove = length(k) + 2 * length(k - 1);
        slopes[k] = (weightBelow + weightAbove) / (weightBelow / below + weightAbove / above);
    }
    return slopes;
}

std::vector<Sample> SamplesOf(const std::vector<LogPoint>& points) {
    constexpr int kSteps = 64;  // between two points
    const std::vector<double> slopes = SlopesAt(points);
    std::vector<Sample> samples;
    samples.reserve(points.size() * kSteps);
    for (std::size_t k = 0; k + 1 < points.size(); ++k) {
        const double length = points[k + 1].i - points[k].i;
        for (int step = 0; step < kSteps; ++step) {
            const double t = static_cast<double>(step) / kSteps;
            const double s = 1 - t;
            const double v = (1 + 2 * t) * s * s * points[k].v +
                             t * t * (3 - 2 * t) * points[k + 1].v +
                             length * t * s * (s * slopes[k] - t * slopes[k + 1]);
            const double slope = 6 * t * s * Chord(points, k) + s * (1 - 3 * t) * slopes[k] +
                                 t * (3 * t - 2) * slopes[k + 1];
            samples.push_back({points[k].i + t * length, v, slope});
        }
    }
    samples.push_back({points.back().i, points.back().v, slopes.back()});
    return samples;
}

// By how much every sample lies above the rule's limit, in the bent part: above zero there.
std::vector<double> ExcessBySlope(const std::vector<Sample>& samples, double limit) {
    std::vector<double> excess;
    excess.reserve(samples.size());
    for (const Sample& sample : samples)
        excess.push_back(limit - sample.slope);
    return excess;
}

// The same by the current that 10 % more voltage drives; as many samples as have that voltage.
std::vector<double> ExcessByCurrent(const std::vector<Sample>& samples) {
    const double moreVoltage = std::log10(1.1);
    const double moreCurrent = std::log10(1.5);
    std::vector<double> excess;
    std::size_t upper = 1;
    for (const Sample& sample : samples) {
        const double v = sample.v + moreVoltage;
        while (upper < samples.size() && samples[upper].v < v)
            ++upper;
        if (upper == samples.size()) break;
        const Sample& from = samples[upper - 1];
        const Sample& to = samples[upper];
        const double current = from.i + (v - from.v) / (to.v - from.v) * (to.i - from.i);
        excess.push_back(current - sample.i - moreCurrent);
    }
    return excess;
}

std::vector<double> ExcessOf(KneeRule rule, const std::vector<Sample>& samples) {
    switch (rule) {
        case KneeRule::Asa1050:
            return ExcessByCurrent(samples);
        case KneeRule::Ieee45:
            return ExcessBySlope(samples, 1);
        case KneeRule::Ieee30:
            break;
    }
    return ExcessBySlope(samples, std::numbers::inv_sqrt3);
}

}  // namespace

std::optional<CurvePoint> SmoothKneepoint(KneeRule rule, const std::vector<CurvePoint>& points) {
    const std::vector<LogPoint> rising = RisingPoints(points);
    if (rising.size() < kFewestPoints) return std::nullopt;
    const std::vector<Sample> samples = SamplesOf(rising);
    const std::vector<double> excess = ExcessOf(rule, samples);
    for (std::size_t k = excess.size(); k-- > 1;) {
        if (excess[k] <= 0 || excess[k - 1] > 0) continue;
        const double part = excess[k - 1] / (excess[k - 1] - excess[k]);
        const double i = samples[k - 1].i + part * (samples[k].i - samples[k - 1].i);
        const double v = samples[k - 1].v + part * (samples[k].v - samples[k - 1].v);
        return CurvePoint{RoundByPicture(std::pow(10, i), kPointPicture),
                          RoundByPicture(std::pow(10, v), kVoltagePicture)};
    }
    return std::nullopt;
}

}  // namespace davo
