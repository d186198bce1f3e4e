// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/bend.h"

#include <algorithm>
#include <cmath>

namespace davo {

namespace {

// A function that turns from 0 to 1, its integral and its derivative.
struct Turn {
    double share = 0;
    double sum = 0;
    double rise = 0;
};

Turn LogisticTurn(double t) {
    const double e = std::exp(-std::abs(t));
    const double share = (t > 0 ? 1 : e) / (1 + e);
    return {share, std::max(t, 0.0) + std::log1p(e), share * (1 - share)};
}

// 1 - l(-t)^4, of the logistic function l: at its end four times as fast as at its beginning.
Turn AbruptTurn(double t) {
    const auto [share, sum, rise] = LogisticTurn(-t);
    const double cube = share * share * share;
    return {1 - cube * share, t + sum - share - share * share / 2 - cube / 3, 4 * cube * rise};
}

// x is ln I from the first point on.
BendTerm PlainAt(const Bend& bend, double x, double lnI) {
    const auto& [level, steep, flat, place, lnWidth] = bend.part;
    const double width = std::exp(lnWidth);
    const double t = (lnI - place) / width;
    const Turn turn = bend.shape == Bend::Shape::Abrupt ? AbruptTurn(t) : LogisticTurn(t);
    const double change = steep - flat;
    const double sum = width * turn.sum;
    const double rise = change * turn.rise;
    return {level + steep * x - change * sum,
            steep - change * turn.share,
            {1, x - sum, sum, change * turn.share, -change * (sum - width * t * turn.share)},
            {0, 1 - turn.share, turn.share, rise / width, rise * t}};
}

// x = (v - level) low + (high - low) width sum((v - place) / width) is solved for v, which is ln V,
// by Halley's method from the two straight lines, above it.
BendTerm TurnedAt(const Bend& bend, double x) {
    const auto& [level, lnLow, lnHigh, place, lnWidth] = bend.part;
    const double low = std::exp(lnLow);
    const double high = std::exp(lnHigh);
    const double width = std::exp(lnWidth);
    const double change = high - low;
    double v = level + x / low;
    if (change > 0) v = std::min(v, (x + level * low + change * place) / high);
    Turn turn = LogisticTurn((v - place) / width);
    constexpr int kMostSteps = 30;
    constexpr double kNear = 1e-4;  // the next step is its third power
    for (int step = 0; step < kMostSteps; ++step) {
        const double by = low + change * turn.share;
        const double newton = ((v - level) * low + change * width * turn.sum - x) / by;
        const double curved = newton * change * turn.rise / width / by / 2;
        const double off = newton / std::max(1 - curved, 0.5);
        v -= off;
        turn = LogisticTurn((v - place) / width);
        if (std::abs(off) < kNear * width) break;
    }
    const double t = (v - place) / width;
    const double by = low + change * turn.share;  // d(ln I) / d(ln V)
    const double sum = width * turn.sum;
    const double rise = change * turn.rise;
    BendTerm term{v,
                  1 / by,
                  {low / by, -low * (v - level - sum) / by, -high * sum / by,
                   change * turn.share / by, -change * (sum - width * t * turn.share) / by},
                  {0, low * (1 - turn.share), high * turn.share, -rise / width, -rise * t}};
    for (std::size_t k = 0; k < Bend::kParts; ++k)
        term.slopeBy[k] = -(term.slopeBy[k] + rise / width * term.vBy[k]) / (by * by);
    return term;
}

}  // namespace

Bend ExpectedBend(Bend::Shape shape, const std::vector<LogPoint>& points) {
    const LogPoint& first = points.front();
    const LogPoint& last = points.back();
    if (shape == Bend::Shape::Turned) {
        const double place = (first.v + 2 * last.v) / 3;
        return {shape, {first.v, -0.18, 2.6, place, -1.9}};
    }
    return {shape, {first.v, 1.2, 0.07, first.i + 0.6 * (last.i - first.i), -0.7}};
}

const Bend::Parts& OpenParts(Bend::Shape shape) {
    // Above and below, what iron cores have: a rise by 0.02 to 0.3 behind one by 0.9 to 1.7.
    static constexpr Bend::Parts kPlain = {10, 0.5, 0.15, 3, 1};
    static constexpr Bend::Parts kTurned = {10, 0.5, 1, 3, 1};
    return shape == Bend::Shape::Turned ? kTurned : kPlain;
}

BendTerm BendAt(const Bend& bend, double first, double lnI) {
    return bend.shape == Bend::Shape::Turned ? TurnedAt(bend, lnI - first)
                                             : PlainAt(bend, lnI - first, lnI);
}

}  // namespace davo
