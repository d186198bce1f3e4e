// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <initializer_list>
#include <vector>

#include "analysis/curve_point.h"

namespace davo {

// A smooth curve through points that are rounded and scatter: ln V over ln I, volts and amperes.
//
// It is a smoothing spline, as the estimate of a random curve (G. Wahba, "Improper priors, spline
// smoothing and the problem of guarding against model errors in regression", J. R. Stat. Soc. B 40
// (1978), 364-372): a straight line and a Wiener process that is integrated once (a cubic spline,
// for sharp bends) or twice (a quintic one, for round ones). Which of them, how rough it is, and
// how far the points scatter about it, are those by which the points are most likely; they also
// give its standard deviation (G. Wahba, J. R. Stat. Soc. B 45 (1983), 133-150; the formulas are
// those of C. E. Rasmussen, C. K. I. Williams, "Gaussian Processes for Machine Learning", 2006,
// 2.25, 2.26 and 2.30).
class SmoothCurve {
  public:
    // In any order; those that are not above zero are left out, those of one current are one point.
    explicit SmoothCurve(const std::vector<CurvePoint>& points);

    // Whether there are points enough, four, to ask the others.
    bool Exists() const;

    // ln I of its ends.
    double First() const { return points_.front().i; }
    double Last() const { return points_.back().i; }

    double LnVoltage(double lnI) const;
    double Slope(double lnI) const;  // d(ln V) / d(ln I)

    // A multiple of ln V, or of the slope, at one place.
    struct Term {
        double lnI = 0;
        bool ofSlope = false;
        double factor = 1;
    };
    // Standard deviation of a sum of terms, as far as the points leave it open.
    double Deviation(std::initializer_list<Term> sum) const;

    // Whether two points with their middle below (above) a place surely lie on a line that is
    // steeper (flatter) than slope: neither the rounding of their numbers nor twice their scatter
    // explains it. The curve is then that steep (flat) somewhere between the two.
    bool IsSurelySteeper(double slope, double below) const;
    bool IsSurelyFlatter(double slope, double above) const;

  private:
    struct LogPoint {
        double i = 0;      // ln I
        double v = 0;      // ln V
        double halfI = 0;  // half a step of the instrument's resolution, as a part of the current
        double halfV = 0;  // and of the voltage
    };

    static std::vector<LogPoint> RisingPoints(const std::vector<CurvePoint>& points);
    // What makes a curve out of the points.
    struct Kind {
        bool isRound = false;  // the Wiener process is integrated twice
        double roughness = 0;  // variance by which the slope wanders in one ln I, or its slope
        double scatter = 0;    // standard deviation of ln V of a point
    };

    double Covariance(const Term& one, const Term& other) const;
    // Fits the curve of this kind; returns the logarithm of its likelihood.
    double Fit(const Kind& kind);
    void FitTheLikeliest();
    // The triangular matrix's solution for one right side, in place.
    void SolveLower(std::vector<double>& side) const;
    // A row of lower_.
    double* Row(std::size_t row);
    const double* Row(std::size_t row) const;

    std::vector<LogPoint> points_;
    double start_ = 0;  // ln I from which the random curve starts
    Kind kind_;
    std::vector<double> lower_;   // Cholesky factor of the points' covariance, row by row
    std::vector<double> weight_;  // of every point in the curve
};

}  // namespace davo
