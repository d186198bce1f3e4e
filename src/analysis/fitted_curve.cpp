// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/fitted_curve.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace davo {

namespace {

constexpr double kUsualSlope = 1;
constexpr double kLeastVariance = 1e-10;  // of a point, so that the matrix can be inverted

double Square(double value) {
    return value * value;
}

// Covariance of a Wiener process that is integrated once, or of its slope, at a with that at b:
// the integral of (a - u) (b - u) over u from 0 to the smaller of them, and its derivatives.
double Wandering(double a, bool slopeAtA, double b, bool slopeAtB) {
    const double low = std::max(std::min(a, b), 0.0);
    const double high = std::max(a, b);
    if (slopeAtA && slopeAtB) return low;
    if (!slopeAtA && !slopeAtB) return low * low * (3 * high - low) / 6;
    const double ofSlope = slopeAtA ? a : b;
    return ofSlope <= low ? low * (high - low / 2) : low * low / 2;
}

}  // namespace

FittedCurve::FittedCurve(const std::vector<LogPoint>& points, const CurveKind& kind)
    : points_(points), kind_(kind) {
    Factor();
}

double FittedCurve::Covariance(const CurveTerm& one, const CurveTerm& other) const {
    if (kind_.roughness == 0) return 0;
    const double start = points_.front().i;
    return kind_.roughness *
           Wandering(one.lnI - start, one.ofSlope, other.lnI - start, other.ofSlope);
}

void FittedCurve::Factor() {
    const std::size_t count = points_.size();
    lower_.assign(count * count, 0);
    for (std::size_t row = 0; row < count; ++row) {
        const LogPoint& point = points_[row];
        const std::size_t from = kind_.roughness == 0 ? row : 0;
        for (std::size_t column = from; column < row; ++column) {
            const double sum = Covariance({point.i}, {points_[column].i}) -
                               std::inner_product(Row(row), Row(row) + column, Row(column), 0.0);
            Row(row)[column] = sum / Row(column)[column];
        }
        // A rounded number is anywhere within half a step: a third of its square.
        const double variance = Covariance({point.i}, {point.i}) -
                                std::inner_product(Row(row), Row(row) + row, Row(row), 0.0) +
                                kLeastVariance + Square(kind_.scatter) +
                                (Square(point.halfV) + Square(kUsualSlope * point.halfI)) / 3;
        Row(row)[row] = std::sqrt(std::max(variance, kLeastVariance));
        lnDeterminant_ += 2 * std::log(Row(row)[row]);
    }
}

FittedCurve::BentOff::BentOff(const std::vector<LogPoint>& points, const Bend& itsBend)
    : bend(itsBend), sides(points.size()) {
    for (std::size_t k = 0; k < points.size(); ++k) {
        const BendTerm term = BendAt(bend, points.front().i, points[k].i);
        sides[k][0] = points[k].v - term.v;
        std::copy(term.vBy.begin(), term.vBy.end(), sides[k].begin() + 1);
    }
}

FittedCurve::Trial FittedCurve::Try(BentOff left) const {
    Trial trial{std::move(left)};
    const Bend& bend = trial.left.bend;
    const Bend expected = ExpectedBend(bend.shape, points_);
    const Bend::Parts& open = OpenParts(bend.shape);
    for (std::size_t k = 0; k < open.size(); ++k)
        trial.misfit += Square((bend.part[k] - expected.part[k]) / open[k]) / 2;
    std::vector<Sides>& sides = trial.left.sides;
    for (std::size_t row = 0; row < points_.size(); ++row) {
        const std::size_t from = kind_.roughness == 0 ? row : 0;
        for (std::size_t k = from; k < row; ++k) {
            for (std::size_t part = 0; part < sides[row].size(); ++part)
                sides[row][part] -= Row(row)[k] * sides[k][part];
        }
        for (double& part : sides[row])
            part /= Row(row)[row];
        trial.misfit += Square(sides[row][0]) / 2;
    }
    return trial;
}

FittedCurve::Step FittedCurve::StepFrom(const Trial& trial, double damping) const {
    const Bend expected = ExpectedBend(trial.left.bend.shape, points_);
    const Bend::Parts& open = OpenParts(trial.left.bend.shape);
    Step step;
    auto& lower = step.lower;
    for (std::size_t a = 0; a < Bend::kParts; ++a) {
        lower[a][a] = 1 / Square(open[a]);
        step.pull[a] = (expected.part[a] - trial.left.bend.part[a]) * lower[a][a];
    }
    for (const Sides& side : trial.left.sides) {
        for (std::size_t a = 0; a < Bend::kParts; ++a) {
            step.pull[a] += side[a + 1] * side[0];
            for (std::size_t b = 0; b <= a; ++b)
                lower[a][b] += side[a + 1] * side[b + 1];
        }
    }
    for (std::size_t a = 0; a < Bend::kParts; ++a) {
        lower[a][a] *= 1 + damping;
        for (std::size_t b = 0; b <= a; ++b) {
            for (std::size_t k = 0; k < b; ++k)
                lower[a][b] -= lower[a][k] * lower[b][k];
            lower[a][b] =
                a == b ? std::sqrt(std::max(lower[a][a], 1e-30)) : lower[a][b] / lower[b][b];
        }
        step.lnDeterminant += 2 * std::log(open[a] * lower[a][a]);
        for (std::size_t k = 0; k < a; ++k)
            step.pull[a] -= lower[a][k] * step.pull[k];
        step.pull[a] /= lower[a][a];
    }
    return step;
}

double FittedCurve::Likelihood(BentOff left) const {
    const Trial trial = Try(std::move(left));
    const Step step = StepFrom(trial, 0);
    const double gain =
        std::inner_product(step.pull.begin(), step.pull.end(), step.pull.begin(), 0.0) / 2;
    const double likelihood = gain - trial.misfit - (lnDeterminant_ + step.lnDeterminant) / 2;
    return std::isfinite(likelihood) ? likelihood : std::numeric_limits<double>::lowest();
}

void FittedCurve::Fit(const Bend& start, int steps) {
    Trial best = Try({points_, start});
    constexpr double kSome = 1e-2;
    double damping = kSome;
    for (int n = 0; n < steps; ++n) {
        Step step = StepFrom(best, damping);
        Bend next = best.left.bend;
        for (std::size_t a = Bend::kParts; a-- > 0;) {
            for (std::size_t k = a + 1; k < Bend::kParts; ++k)
                step.pull[a] -= step.lower[k][a] * step.pull[k];
            step.pull[a] /= step.lower[a][a];
            next.part[a] += step.pull[a];
        }
        // Neither a corner nor a curve that is bent all along.
        double& lnWidth = next.part[Bend::LnWidth];
        lnWidth = std::clamp(lnWidth, -5.0, 2.0);
        Trial trial = Try({points_, next});
        const double better = best.misfit - trial.misfit;
        if (better >= 0) best = std::move(trial);
        if (better >= 0 && better < kSome) break;
        damping *= better >= 0 ? 0.1 : 10;
    }
    bend_ = best.left.bend;
    open_ = StepFrom(best, 0);
    weight_ = std::move(best.left.sides);
    for (std::size_t row = weight_.size(); row-- > 0;) {
        for (double& part : weight_[row])
            part /= Row(row)[row];
        const std::size_t from = kind_.roughness == 0 ? row : 0;
        for (std::size_t k = from; k < row; ++k) {
            for (std::size_t part = 0; part < weight_[k].size(); ++part)
                weight_[k][part] -= Row(row)[k] * weight_[row][part];
        }
    }
}

FittedCurve::Place FittedCurve::At(double lnI) const {
    const BendTerm term = BendAt(bend_, points_.front().i, lnI);
    Place place{term.v, term.slope};
    if (kind_.roughness == 0) return place;
    for (std::size_t k = 0; k < points_.size(); ++k) {
        place.v += weight_[k][0] * Covariance({lnI}, {points_[k].i});
        place.slope += weight_[k][0] * Covariance({lnI, true}, {points_[k].i});
    }
    return place;
}

double FittedCurve::At(const CurveTerm& term) const {
    const Place place = At(term.lnI);
    return term.factor * (term.ofSlope ? place.slope : place.v);
}

double FittedCurve::Variance(std::initializer_list<CurveTerm> sum) const {
    double variance = 0;
    std::vector<double> known(points_.size());
    Bend::Parts open{};
    for (const CurveTerm& one : sum) {
        const BendTerm term = BendAt(bend_, points_.front().i, one.lnI);
        const Bend::Parts& by = one.ofSlope ? term.slopeBy : term.vBy;
        for (std::size_t a = 0; a < open.size(); ++a)
            open[a] += one.factor * by[a];
        for (const CurveTerm& other : sum)
            variance += one.factor * other.factor * Covariance(one, other);
        for (std::size_t k = 0; k < points_.size(); ++k)
            known[k] += one.factor * Covariance(one, {points_[k].i});
    }
    for (std::size_t k = 0; k < points_.size(); ++k) {
        for (std::size_t a = 0; a < open.size(); ++a)
            open[a] -= known[k] * weight_[k][a + 1];
        known[k] -= std::inner_product(known.data(), known.data() + k, Row(k), 0.0);
        known[k] /= Row(k)[k];
        variance -= Square(known[k]);
    }
    for (std::size_t a = 0; a < open.size(); ++a) {
        for (std::size_t k = 0; k < a; ++k)
            open[a] -= open_.lower[a][k] * open[k];
        open[a] /= open_.lower[a][a];
        variance += Square(open[a]);
    }
    return std::max(variance, 0.0);
}

}  // namespace davo
