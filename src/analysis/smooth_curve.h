// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/fitted_curve.h"

namespace davo {

// A smooth curve through points that are rounded and scatter: ln V over ln I, volts and amperes.
//
// It is the mean of the likeliest curves of several kinds, each by how likely it makes the points
// (J. A. Hoeting and others, "Bayesian model averaging: a tutorial", Statistical Science 14 (1999),
// 382-417): bends of three shapes, and more or less rough departures from them (FittedCurve), with
// points that scatter more or less about them. What they leave open, and where they differ from
// each other, is its standard deviation.
class SmoothCurve {
  public:
    // In any order; those that are not above zero are left out, those of one current are one point.
    explicit SmoothCurve(const std::vector<CurvePoint>& points);

    // Whether there are points enough, four, to ask the others.
    bool Exists() const;

    // ln I of its ends.
    double First() const { return points_.front().i; }
    double Last() const { return points_.back().i; }

    // Lowest and highest ln V of the points.
    double LowestLnVoltage() const;
    double HighestLnVoltage() const;

    double LnVoltage(double lnI) const;
    double Slope(double lnI) const;  // d(ln V) / d(ln I)

    // Standard deviation of a sum of terms, as far as the points leave it open.
    double Deviation(std::initializer_list<CurveTerm> sum) const;

    // Whether two points with their middle below (above) a place surely are on a line that is
    // steeper (flatter) than slope: neither the rounding of their numbers nor twice their scatter
    // explains it. The curve is then that steep (flat) somewhere between the two.
    bool IsSurelySteeper(double slope, double below) const;
    bool IsSurelyFlatter(double slope, double above) const;

  private:
    explicit SmoothCurve(std::vector<LogPoint> points);

    // A curve that the points can be of, and what part of the mean it is.
    struct Share {
        FittedCurve curve;
        double part = 0;
    };
    // The mean of all shares at one place.
    struct Node {
        double v = 0;
        double slope = 0;
    };
    struct Place {
        const Node& low;
        const Node& high;
        double t = 0;  // of the way from low to high
    };
    static constexpr std::size_t kNodes = 65;

    static std::vector<LogPoint> RisingPoints(const std::vector<CurvePoint>& points);
    void FitTheLikeliest();
    // Where the points scatter more than any test set's: without the one that disturbs most.
    void LeaveAWrongPointOut();
    // Makes shares of likelihoods.
    void Weigh();
    // Fills nodes_; between them the mean is a cubic.
    void Tabulate();
    Place PlaceAt(double lnI) const;

    std::vector<LogPoint> points_;
    std::vector<Share> shares_;
    double likelihood_ = 0;  // of the likeliest of them, a logarithm
    double scatter_ = 0;     // standard deviation of ln V of a point
    std::array<Node, kNodes> nodes_{};
    double step_ = 0;
};

}  // namespace davo
