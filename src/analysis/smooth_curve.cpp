// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/smooth_curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <numeric>

namespace davo {

namespace {

constexpr std::size_t kFewestPoints = 4;
// A test set takes 32; more would take long, and every so many of them show the curve as well.
constexpr std::size_t kMostPoints = 48;

// Steps of the instrument: 0.1 V; 0.1 mA, or 0.2 mA where 16 bits of those would not do.
constexpr double kVoltageStep = 0.1;
constexpr double kCurrentStep = 0.0001;
constexpr double kCoarseCurrentStep = 0.0002;
constexpr double kCoarseAbove = 6.5535;

// What is known of ln V and of the slope before any point: a rise by about 45 degrees.
constexpr double kVoltageVariance = 100;
constexpr double kUsualSlope = 1;
constexpr double kSlopeVariance = 0.5;
constexpr double kBendVariance = 0.1;  // of d(slope) / d(ln I)

// What is known of the scatter: 0.3 % as a rule, less or more by a factor of e at one standard
// deviation. Curves without scatter are told as well by it, and scatter is not taken for bends.
constexpr double kUsualScatter = 0.003;
constexpr std::array kScatters = {0.001, 0.003, 0.008};                     // with every roughness
constexpr std::array kMoreScatters = {0.0005, 0.002, 0.005, 0.016, 0.032};  // with the best
constexpr std::array kRoughnesses = {0.032, 0.128, 0.512, 2.048, 8.192};
constexpr double kRoundness = 4;          // their squares, times 16, are those of round curves
constexpr double kLeastVariance = 1e-10;  // of a point, so that the matrix can be inverted

double Square(double value) {
    return value * value;
}

// Covariances of a Wiener process at a and b, integrated once: the integral of (a - u) (b - u) over
// u from 0 to the smaller of them, low; high is the larger one.
struct Sharp {
    static double OfVoltages(double low, double high) { return low * low * (3 * high - low) / 6; }
    // Derivatives by the smaller one, by the larger one, and by both.
    static double BySmaller(double low, double high) { return low * (high - low / 2); }
    static double ByLarger(double low, double /*high*/) { return low * low / 2; }
    static double OfSlopes(double low, double /*high*/) { return low; }
};

// Integrated twice: the integral of (a - u)^2 (b - u)^2 / 4.
struct Round {
    static double OfVoltages(double low, double high) {
        const double d = high - low;
        return low * low * low * (low * low / 20 + d * low / 8 + d * d / 12);
    }
    static double BySmaller(double low, double high) {
        const double d = high - low;
        return low * low * (low * low / 8 + d * low / 3 + d * d / 4);
    }
    static double ByLarger(double low, double high) {
        return low * low * low * (low / 8 + (high - low) / 6);
    }
    static double OfSlopes(double low, double high) {
        return low * low * (low / 3 + (high - low) / 2);
    }
};

// Of the voltage or the slope at a with those at b; not of a voltage with a slope.
template <class Process>
double Wandering(double a, bool slopeAtA, double b, bool slopeAtB) {
    const double low = std::min(a, b);
    const double high = std::max(a, b);
    if (slopeAtB) return Process::OfSlopes(low, high);
    if (!slopeAtA) return Process::OfVoltages(low, high);
    return a < b ? Process::BySmaller(low, high) : Process::ByLarger(low, high);
}

}  // namespace

SmoothCurve::SmoothCurve(const std::vector<CurvePoint>& points) : points_(RisingPoints(points)) {
    if (!Exists()) return;
    start_ = First();
    FitTheLikeliest();
}

bool SmoothCurve::Exists() const {
    return points_.size() >= kFewestPoints;
}

std::vector<SmoothCurve::LogPoint> SmoothCurve::RisingPoints(
    const std::vector<CurvePoint>& points) {
    std::vector<CurvePoint> sorted;
    std::copy_if(points.begin(), points.end(), std::back_inserter(sorted),
                 [](const CurvePoint& point) { return point.current > 0 && point.voltage > 0; });
    std::stable_sort(
        sorted.begin(), sorted.end(),
        [](const CurvePoint& one, const CurvePoint& other) { return one.current < other.current; });
    if (sorted.empty()) return {};
    const double step = sorted.back().current > kCoarseAbove ? kCoarseCurrentStep : kCurrentStep;
    const std::size_t count = std::min(sorted.size(), kMostPoints);
    std::vector<LogPoint> rising;
    for (std::size_t k = 0; k < count; ++k) {
        // The lowest and the highest are among them.
        const CurvePoint& point =
            sorted[k * (sorted.size() - 1) / std::max<std::size_t>(count - 1, 1)];
        const LogPoint next{std::log(point.current), std::log(point.voltage),
                            step / point.current / 2, kVoltageStep / point.voltage / 2};
        if (rising.empty() || next.i > rising.back().i) {
            rising.push_back(next);
        } else {
            rising.back().v = (rising.back().v + next.v) / 2;
        }
    }
    return rising;
}

double* SmoothCurve::Row(std::size_t row) {
    return lower_.data() + row * points_.size();
}

const double* SmoothCurve::Row(std::size_t row) const {
    return lower_.data() + row * points_.size();
}

double SmoothCurve::Covariance(const Term& one, const Term& other) const {
    if (!one.ofSlope && other.ofSlope) return Covariance(other, one);
    const double a = one.lnI - start_;
    const double b = other.lnI - start_;
    const double wandering = kind_.isRound ? Wandering<Round>(a, one.ofSlope, b, other.ofSlope)
                                           : Wandering<Sharp>(a, one.ofSlope, b, other.ofSlope);
    // The straight line; a round curve has a bend of its own at the start.
    const double bend = kind_.isRound ? kBendVariance : 0;
    double line = kVoltageVariance + kSlopeVariance * a * b + bend * a * a * b * b / 4;
    if (one.ofSlope) line = kSlopeVariance * b + bend * a * b * b / 2;
    if (other.ofSlope) line = kSlopeVariance + bend * a * b;
    return line + kind_.roughness * wandering;
}

void SmoothCurve::SolveLower(std::vector<double>& side) const {
    for (std::size_t row = 0; row < side.size(); ++row) {
        side[row] -= std::inner_product(side.data(), side.data() + row, Row(row), 0.0);
        side[row] /= Row(row)[row];
    }
}

double SmoothCurve::Fit(const Kind& kind) {
    kind_ = kind;
    const std::size_t count = points_.size();
    lower_.assign(count * count, 0);
    double likelihood = 0;
    for (std::size_t row = 0; row < count; ++row) {
        const LogPoint& point = points_[row];
        for (std::size_t column = 0; column <= row; ++column) {
            double sum = Covariance({point.i}, {points_[column].i}) -
                         std::inner_product(Row(row), Row(row) + column, Row(column), 0.0);
            if (column < row) {
                Row(row)[column] = sum / Row(column)[column];
                continue;
            }
            // A rounded number is anywhere within half a step: a third of its square.
            sum += kLeastVariance + Square(kind.scatter) +
                   (Square(point.halfV) + Square(kUsualSlope * point.halfI)) / 3;
            Row(row)[row] = std::sqrt(std::max(sum, kLeastVariance));
            likelihood -= std::log(Row(row)[row]);
        }
    }
    weight_.resize(count);
    for (std::size_t k = 0; k < count; ++k)
        weight_[k] = points_[k].v - points_[0].v - kUsualSlope * (points_[k].i - start_);
    SolveLower(weight_);
    for (const double part : weight_)
        likelihood -= Square(part) / 2;
    for (std::size_t row = count; row-- > 0;) {
        for (std::size_t k = row + 1; k < count; ++k)
            weight_[row] -= Row(k)[row] * weight_[k];
        weight_[row] /= Row(row)[row];
    }
    return likelihood;
}

void SmoothCurve::FitTheLikeliest() {
    double best = -std::numeric_limits<double>::infinity();
    Kind likeliest;
    const auto tryOut = [&](const Kind& kind) {
        const double likelihood = Fit(kind) - Square(std::log(kind.scatter / kUsualScatter)) / 2;
        if (likelihood <= best) return;
        best = likelihood;
        likeliest = kind;
    };
    for (const double scatter : kScatters) {
        for (const double roughness : kRoughnesses) {
            tryOut({false, roughness, scatter});
            tryOut({true, Square(kRoundness * roughness), scatter});
        }
    }
    const Kind coarse = likeliest;
    for (const double scatter : kMoreScatters)
        tryOut({coarse.isRound, coarse.roughness, scatter});
    for (const double factor : {0.5, 2.0})
        tryOut({coarse.isRound, coarse.roughness * factor, likeliest.scatter});
    Fit(likeliest);
}

double SmoothCurve::LnVoltage(double lnI) const {
    double sum = points_.front().v + kUsualSlope * (lnI - start_);
    for (std::size_t k = 0; k < points_.size(); ++k)
        sum += weight_[k] * Covariance({lnI}, {points_[k].i});
    return sum;
}

double SmoothCurve::Slope(double lnI) const {
    double sum = kUsualSlope;
    for (std::size_t k = 0; k < points_.size(); ++k)
        sum += weight_[k] * Covariance({lnI, true}, {points_[k].i});
    return sum;
}

double SmoothCurve::Deviation(std::initializer_list<Term> sum) const {
    double variance = 0;
    std::vector<double> known(points_.size());
    for (const Term& one : sum) {
        for (const Term& other : sum)
            variance += one.factor * other.factor * Covariance(one, other);
        for (std::size_t k = 0; k < points_.size(); ++k)
            known[k] += one.factor * Covariance(one, {points_[k].i});
    }
    SolveLower(known);
    for (const double part : known)
        variance -= Square(part);
    return std::sqrt(std::max(variance, 0.0));
}

bool SmoothCurve::IsSurelySteeper(double slope, double below) const {
    for (std::size_t high = 1; high < points_.size(); ++high) {
        for (std::size_t low = 0; low < high; ++low) {
            const LogPoint& from = points_[low];
            const LogPoint& to = points_[high];
            if ((from.i + to.i) / 2 >= below) continue;
            const double openV = from.halfV + to.halfV + 2 * std::numbers::sqrt2 * kind_.scatter;
            const double longest = to.i - from.i + from.halfI + to.halfI;
            if (to.v - from.v - openV > slope * longest) return true;
        }
    }
    return false;
}

bool SmoothCurve::IsSurelyFlatter(double slope, double above) const {
    for (std::size_t high = 1; high < points_.size(); ++high) {
        for (std::size_t low = 0; low < high; ++low) {
            const LogPoint& from = points_[low];
            const LogPoint& to = points_[high];
            if ((from.i + to.i) / 2 <= above) continue;
            const double openV = from.halfV + to.halfV + 2 * std::numbers::sqrt2 * kind_.scatter;
            const double shortest = to.i - from.i - from.halfI - to.halfI;
            if (to.v - from.v + openV < slope * shortest) return true;
        }
    }
    return false;
}

}  // namespace davo
