// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <initializer_list>
#include <vector>

#include "analysis/bend.h"

namespace davo {

// What makes a curve out of points and a bend.
struct CurveKind {
    double roughness = 0;  // variance by which the slope wanders off the bend's in one ln I
    double scatter = 0;    // standard deviation of ln V of a point
};

// A multiple of ln V, or of the slope, at one place of a curve.
struct CurveTerm {
    double lnI = 0;
    bool ofSlope = false;
    double factor = 1;
};

// A curve of one kind through points, as the estimate of a random one: a bend, and a Wiener process
// that is integrated once, by which the curve leaves it. The parts of the bend are found by
// Gauss-Newton steps; all else is linear (C. E. Rasmussen, C. K. I. Williams, "Gaussian Processes
// for Machine Learning", 2006, 2.7).
class FittedCurve {
  public:
    // What a bend leaves of every point, and its derivatives by the bend's parts.
    using Sides = std::array<double, Bend::kParts + 1>;
    struct BentOff {
        BentOff(const std::vector<LogPoint>& points, const Bend& itsBend);
        Bend bend;
        std::vector<Sides> sides;
    };

    FittedCurve(const std::vector<LogPoint>& points, const CurveKind& kind);

    // Logarithm of how likely the points are, with any bend near this one.
    double Likelihood(BentOff bentOff) const;
    // Takes the likeliest bend that is some steps from start, and fits the curve about it.
    void Fit(const Bend& start, int steps);

    const CurveKind& Kind() const { return kind_; }
    const Bend& ItsBend() const { return bend_; }

    // ln V and the slope of the fitted curve.
    struct Place {
        double v = 0;
        double slope = 0;
    };
    Place At(double lnI) const;
    double At(const CurveTerm& term) const;
    // Variance of a sum of terms, as far as the points leave it open.
    double Variance(std::initializer_list<CurveTerm> sum) const;

  private:
    // A bend, and what it leaves of the points without their correlation.
    struct Trial {
        BentOff left;
        double misfit = 0;
    };
    // The normal equations of a step from a trial: precision, triangular, and what pulls.
    struct Step {
        std::array<Bend::Parts, Bend::kParts> lower{};
        Bend::Parts pull{};
        double lnDeterminant = 0;
    };

    double Covariance(const CurveTerm& one, const CurveTerm& other) const;
    void Factor();
    Trial Try(BentOff left) const;
    Step StepFrom(const Trial& trial, double damping) const;
    const double* Row(std::size_t row) const { return lower_.data() + row * points_.size(); }
    double* Row(std::size_t row) { return lower_.data() + row * points_.size(); }

    std::vector<LogPoint> points_;
    CurveKind kind_;
    std::vector<double> lower_;  // Cholesky factor of the points' covariance, row by row
    double lnDeterminant_ = 0;
    Bend bend_;
    Step open_;                  // of the bend
    std::vector<Sides> weight_;  // of every point in the curve, and in what its bend leaves open
};

}  // namespace davo
