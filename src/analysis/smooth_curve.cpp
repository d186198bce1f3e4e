// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/smooth_curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <utility>

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

// What is known of the scatter: 0.3 % as a rule, less or more by a factor of e at one standard
// deviation. Curves without scatter are told as well by it, and scatter is not taken for bends.
constexpr double kUsualScatter = 0.003;
constexpr std::array kScatters = {0.001, 0.003, 0.006, 0.016};
constexpr std::array kRoughnesses = {0.0003, 0.005, 0.08};
constexpr CurveKind kFirstKind = {0, 0.002};  // of the search for a bend

// Of how many curves the mean is, at most, and by how much less likely than the likeliest, as a
// logarithm, they may be.
constexpr std::size_t kMostShares = 8;
constexpr double kLeastLikely = 3;

// Logarithm of how likely a scatter is before any point is seen.
double LikelihoodOf(double scatter) {
    const double off = std::log(scatter / kUsualScatter);
    return -off * off / 2;
}

// Logarithm of how likely one point is anywhere within a factor of e.
constexpr double kWrongPoint = -6;

// The likeliest bend, of those near some places of the curve, and how likely.
struct Found {
    Bend bend;
    double likelihood = std::numeric_limits<double>::lowest();
};
Found FirstBend(const std::vector<LogPoint>& points, Bend::Shape shape) {
    const FittedCurve plain(points, kFirstKind);
    const bool isTurned = shape == Bend::Shape::Turned;
    const double low = isTurned ? points.front().v : points.front().i;
    const double high = isTurned ? points.back().v : points.back().i;
    Found found;
    for (const double place : {0.4, 0.7, 1.0}) {
        Bend start = ExpectedBend(shape, points);
        start.part[Bend::Place] = low + place * (high - low);
        FittedCurve fit = plain;
        constexpr int kSteps = 5;
        fit.Fit(start, kSteps);
        const double likelihood = fit.Likelihood({points, fit.ItsBend()});
        if (likelihood >= found.likelihood) found = {fit.ItsBend(), likelihood};
    }
    return found;
}

std::vector<LogPoint> Without(std::vector<LogPoint> points, std::size_t one) {
    points.erase(points.begin() + static_cast<std::ptrdiff_t>(one));
    return points;
}

bool IsLower(const LogPoint& one, const LogPoint& other) {
    return one.v < other.v;
}

}  // namespace

SmoothCurve::SmoothCurve(const std::vector<CurvePoint>& points) : points_(RisingPoints(points)) {
    if (!Exists()) return;
    FitTheLikeliest();
    LeaveAWrongPointOut();
    Tabulate();
}

SmoothCurve::SmoothCurve(std::vector<LogPoint> points) : points_(std::move(points)) {
    FitTheLikeliest();
}

void SmoothCurve::LeaveAWrongPointOut() {
    constexpr std::size_t kFewest = 8;  // that tell which of them is wrong
    const bool scatters = scatter_ > (kScatters.back() + kScatters[kScatters.size() - 2]) / 2;
    if (!scatters || points_.size() < kFewest) return;
    Found best;
    std::size_t wrong = 0;
    for (std::size_t k = 0; k < points_.size(); ++k) {
        const Found found = FirstBend(Without(points_, k), Bend::Shape::Logistic);
        if (found.likelihood <= best.likelihood) continue;
        best = found;
        wrong = k;
    }
    SmoothCurve without(Without(points_, wrong));
    if (without.likelihood_ + kWrongPoint > likelihood_) *this = std::move(without);
}

bool SmoothCurve::Exists() const {
    return points_.size() >= kFewestPoints;
}

double SmoothCurve::LowestLnVoltage() const {
    return std::min_element(points_.begin(), points_.end(), IsLower)->v;
}

double SmoothCurve::HighestLnVoltage() const {
    return std::max_element(points_.begin(), points_.end(), IsLower)->v;
}

std::vector<LogPoint> SmoothCurve::RisingPoints(const std::vector<CurvePoint>& points) {
    std::vector<CurvePoint> sorted;
    std::copy_if(points.begin(), points.end(), std::back_inserter(sorted),
                 [](const CurvePoint& point) { return point.current > 0 && point.voltage > 0; });
    std::ranges::stable_sort(sorted, {}, &CurvePoint::current);
    if (sorted.empty()) return {};
    const double step = sorted.back().current > kCoarseAbove ? kCoarseCurrentStep : kCurrentStep;
    const std::size_t count = std::min(sorted.size(), kMostPoints);
    std::vector<LogPoint> rising;
    int same = 0;  // points of one current
    for (std::size_t k = 0; k < count; ++k) {
        // The lowest and the highest are among them.
        const CurvePoint& point =
            sorted[k * (sorted.size() - 1) / std::max<std::size_t>(count - 1, 1)];
        const LogPoint next{std::log(point.current), std::log(point.voltage),
                            step / point.current / 2, kVoltageStep / point.voltage / 2};
        if (rising.empty() || next.i > rising.back().i) {
            rising.push_back(next);
            same = 1;
        } else {
            rising.back().v += (next.v - rising.back().v) / ++same;
        }
    }
    return rising;
}

void SmoothCurve::FitTheLikeliest() {
    std::vector<FittedCurve::BentOff> bends;
    for (const Bend::Shape shape :
         {Bend::Shape::Logistic, Bend::Shape::Abrupt, Bend::Shape::Turned})
        bends.emplace_back(points_, FirstBend(points_, shape).bend);
    struct Candidate {
        CurveKind kind;
        const Bend* bend = nullptr;
        double likelihood = 0;
    };
    std::vector<Candidate> candidates;
    for (const double roughness : kRoughnesses) {
        for (const double scatter : kScatters) {
            const FittedCurve curve(points_, {roughness, scatter});
            for (const FittedCurve::BentOff& left : bends) {
                candidates.push_back(
                    {curve.Kind(), &left.bend, curve.Likelihood(left) + LikelihoodOf(scatter)});
            }
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate& one, const Candidate& other) {
                  return one.likelihood > other.likelihood;
              });
    candidates.resize(kMostShares);
    // They were looked at without coming nearer to the bend.
    const double least = candidates.front().likelihood - 2 * kLeastLikely;
    for (const Candidate& candidate : candidates) {
        if (candidate.likelihood < least) break;
        FittedCurve curve(points_, candidate.kind);
        constexpr int kSteps = 8;
        curve.Fit(*candidate.bend, kSteps);
        const double likelihood =
            curve.Likelihood({points_, curve.ItsBend()}) + LikelihoodOf(candidate.kind.scatter);
        shares_.push_back({std::move(curve), likelihood});
    }
    Weigh();
}

void SmoothCurve::Weigh() {
    const double best =
        std::max_element(shares_.begin(), shares_.end(), [](const Share& one, const Share& other) {
            return one.part < other.part;
        })->part;
    likelihood_ = best;
    std::erase_if(shares_, [&](const Share& share) { return share.part < best - kLeastLikely; });
    double sum = 0;
    for (Share& share : shares_) {
        share.part = std::exp(share.part - best);
        sum += share.part;
    }
    for (Share& share : shares_) {
        share.part /= sum;
        scatter_ += share.part * share.curve.Kind().scatter;
    }
}

void SmoothCurve::Tabulate() {
    step_ = (Last() - First()) / (kNodes - 1);
    for (std::size_t k = 0; k < kNodes; ++k) {
        const double lnI = First() + static_cast<double>(k) * step_;
        for (const Share& share : shares_) {
            const FittedCurve::Place place = share.curve.At(lnI);
            nodes_.at(k).v += share.part * place.v;
            nodes_.at(k).slope += share.part * place.slope;
        }
    }
}

SmoothCurve::Place SmoothCurve::PlaceAt(double lnI) const {
    const double x = std::clamp((lnI - First()) / step_, 0.0, kNodes - 1.0);
    const std::size_t k = std::min(static_cast<std::size_t>(x), kNodes - 2);
    return {nodes_.at(k), nodes_.at(k + 1), x - static_cast<double>(k)};
}

// Hermite's cubic between two nodes, and its derivative.
double SmoothCurve::LnVoltage(double lnI) const {
    const auto& [low, high, t] = PlaceAt(lnI);
    const double s = 1 - t;
    return s * s * ((1 + 2 * t) * low.v + t * step_ * low.slope) +
           t * t * ((1 + 2 * s) * high.v - s * step_ * high.slope);
}

double SmoothCurve::Slope(double lnI) const {
    const auto& [low, high, t] = PlaceAt(lnI);
    const double s = 1 - t;
    return 6 * s * t * (high.v - low.v) / step_ + s * (s - 2 * t) * low.slope +
           t * (t - 2 * s) * high.slope;
}

double SmoothCurve::Deviation(std::initializer_list<CurveTerm> sum) const {
    double mean = 0;
    double square = 0;
    double variance = 0;
    for (const Share& share : shares_) {
        double value = 0;
        for (const CurveTerm& term : sum)
            value += share.curve.At(term);
        mean += share.part * value;
        square += share.part * value * value;
        variance += share.part * share.curve.Variance(sum);
    }
    return std::sqrt(std::max(variance + square - mean * mean, 0.0));
}

bool SmoothCurve::IsSurelySteeper(double slope, double below) const {
    for (std::size_t high = 1; high < points_.size(); ++high) {
        for (std::size_t low = 0; low < high; ++low) {
            const LogPoint& from = points_[low];
            const LogPoint& to = points_[high];
            if ((from.i + to.i) / 2 >= below) continue;
            const double openV = from.halfV + to.halfV + 2 * std::numbers::sqrt2 * scatter_;
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
            const double openV = from.halfV + to.halfV + 2 * std::numbers::sqrt2 * scatter_;
            const double shortest = to.i - from.i - from.halfI - to.halfI;
            if (to.v - from.v + openV < slope * shortest) return true;
        }
    }
    return false;
}

}  // namespace davo
