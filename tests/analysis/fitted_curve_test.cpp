// SPDX-License-Identifier: GPL-3.0-or-later
// Bends and the curves that are fitted about them: what every such curve is.

#include "analysis/fitted_curve.h"

#include <array>
#include <cmath>
#include <random>

#include "analysis/bend.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Random = std::mt19937_64;

double Between(Random& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

constexpr std::array kShapes = {Bend::Shape::Logistic, Bend::Shape::Abrupt, Bend::Shape::Turned};

Bend AnyBend(Bend::Shape shape, Random& random) {
    if (shape == Bend::Shape::Turned) {
        return {shape,
                {Between(random, 0, 3), Between(random, -0.6, 0.2), Between(random, 1, 3.5),
                 Between(random, 2, 6), Between(random, -3, 0)}};
    }
    return {shape,
            {Between(random, 0, 3), Between(random, 0.8, 1.8), Between(random, 0, 0.3),
             Between(random, -5, -1), Between(random, -2, 0.5)}};
}

TEST(Bend, ItsSlopeAndDerivativesAreThoseOfItsVoltage) {
    Random random(test::RandomSeed(20261301));
    constexpr double kFirst = -6;
    constexpr double kStep = 1e-5;
    for (int n = 0; n < 400; ++n) {
        const Bend bend = AnyBend(kShapes.at(n % 3), random);
        const double i = Between(random, kFirst, 1);
        const BendTerm term = BendAt(bend, kFirst, i);
        const auto derivative = [&](auto&& value) {
            return (value(kStep) - value(-kStep)) / (2 * kStep);
        };
        EXPECT_NEAR(term.slope, derivative([&](double d) { return BendAt(bend, kFirst, i + d).v; }),
                    1e-5);
        for (std::size_t part = 0; part < Bend::kParts; ++part) {
            const auto moved = [&](double d) {
                Bend other = bend;
                other.part.at(part) += d;
                return BendAt(other, kFirst, i);
            };
            EXPECT_NEAR(term.vBy.at(part), derivative([&](double d) { return moved(d).v; }), 1e-4);
            EXPECT_NEAR(term.slopeBy.at(part), derivative([&](double d) { return moved(d).slope; }),
                        1e-4);
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
}

// ln I = ln V / steep + ..., of which the voltage is found by steps.
TEST(Bend, ATurnedOneIsTheSumOfTwoPowers) {
    // I = V^0.7 (1 + V^13.3): 1 V is the middle, and there I = 2.
    const double low = 0.7;
    const double high = 14;
    const double first = -3;
    Bend bend{Bend::Shape::Turned,
              {first / low, std::log(low), std::log(high), 0, -std::log(high - low)}};
    for (const double v : {-3.0, -1.0, -0.1, 0.0, 0.05, 0.3}) {
        const double i = std::log(std::exp(low * v) + std::exp(high * v));
        EXPECT_NEAR(BendAt(bend, first, i).v, v, 1e-9) << v;
    }
}

// Points of a bend with steps of the instrument and scatter.
std::vector<LogPoint> PointsOf(const Bend& bend, double scatter, Random& random) {
    std::normal_distribution<double> off(0, scatter);
    std::vector<LogPoint> points;
    for (int k = 0; k < 24; ++k) {
        const double i = -6 + 7.0 * k / 23;
        points.push_back({i, BendAt(bend, -6, i).v + off(random), 1e-4, 1e-4});
    }
    return points;
}

TEST(FittedCurve, FindsTheBendThatThePointsHave) {
    Random random(test::RandomSeed(20261302));
    for (int n = 0; n < 20; ++n) {
        const Bend::Shape shape = kShapes.at(n % 3);
        const bool isTurned = shape == Bend::Shape::Turned;
        Bend bend = AnyBend(shape, random);
        bend.part[Bend::Place] = isTurned ? 3.5 : -2.5;
        bend.part[Bend::LnWidth] = isTurned ? -1.5 : -0.7;
        const std::vector<LogPoint> points = PointsOf(bend, 0, random);
        FittedCurve curve(points, {0, 0.0005});
        Bend start = ExpectedBend(shape, points);
        start.part[Bend::Place] = bend.part[Bend::Place] + 0.3;
        curve.Fit(start, 30);
        for (const LogPoint& point : points)
            EXPECT_NEAR(curve.At(point.i).v, point.v, 0.001) << n;
        FittedCurve away(points, {0, 0.0005});
        away.Fit(start, 0);
        EXPECT_GT(curve.Likelihood({points, curve.ItsBend()}),
                  away.Likelihood({points, away.ItsBend()}));
    }
}

// Points so near to each other, or so far from each other, that they tell it.
TEST(FittedCurve, ItsBendIsNoCornerAndNotBentAllAlong) {
    struct Case {
        double lnWidth, start, distance, end;
    };
    for (const Case& bent : {Case{-6, -4.5, 0.004, -5}, Case{3, 1.5, 1, 2}}) {
        Bend bend{Bend::Shape::Logistic, {1, 1.2, 0.1, 0, bent.lnWidth}};
        std::vector<LogPoint> points;
        constexpr double kMiddle = 23.5;
        for (int k = 0; k < 48; ++k) {
            const double i = (k - kMiddle) * bent.distance;
            points.push_back({i, BendAt(bend, -kMiddle * bent.distance, i).v, 1e-6, 1e-6});
        }
        FittedCurve curve(points, {0, 1e-5});
        bend.part[Bend::LnWidth] = bent.start;
        curve.Fit(bend, 60);
        EXPECT_EQ(curve.ItsBend().part[Bend::LnWidth], bent.end);
    }
}

TEST(FittedCurve, SlopesAndVariancesAreThoseOfDifferences) {
    Random random(test::RandomSeed(20261303));
    constexpr double kStep = 1e-4;
    for (int n = 0; n < 40; ++n) {
        const Bend bend = AnyBend(kShapes.at(n % 3), random);
        const std::vector<LogPoint> points = PointsOf(bend, 0.003, random);
        FittedCurve curve(points, {n % 4 < 2 ? 0.0 : 0.01, 0.003});
        curve.Fit(bend, 8);
        const double i = Between(random, -5.5, 0.5);
        EXPECT_NEAR((curve.At(i + kStep).v - curve.At(i - kStep).v) / (2 * kStep),
                    curve.At(i).slope, 1e-4);
        const double ofSlope = curve.Variance({{i, true, 1}});
        const double ofDifference = curve.Variance(
            {{i + kStep, false, 1 / (2 * kStep)}, {i - kStep, false, -1 / (2 * kStep)}});
        EXPECT_NEAR(std::sqrt(ofDifference), std::sqrt(ofSlope), 0.02 * std::sqrt(ofSlope) + 1e-4);
        EXPECT_NEAR(curve.Variance({{i, false, 3}}), 9 * curve.Variance({{i}}),
                    1e-9 + 1e-6 * curve.Variance({{i}}));
        // A point is known better than what is behind the last one.
        EXPECT_GT(curve.Variance({{points.back().i + 1}}), curve.Variance({{points.back().i}}));
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
}

// The differences from the true curve are as large as the variance says.
TEST(FittedCurve, ItsDeviationIsThatOfItsErrors) {
    Random random(test::RandomSeed(20261304));
    double sum = 0;
    constexpr int kCurves = 400;
    for (int n = 0; n < kCurves; ++n) {
        Bend bend = AnyBend(kShapes.at(n % 2), random);
        bend.part[Bend::Place] = -2;
        const std::vector<LogPoint> points = PointsOf(bend, 0.003, random);
        FittedCurve curve(points, {0, 0.003});
        curve.Fit(bend, 8);
        const double i = Between(random, -5, 0);
        const double off = curve.At(i).slope - BendAt(bend, -6, i).slope;
        sum += off * off / curve.Variance({{i, true, 1}});
    }
    EXPECT_NEAR(sum / kCurves, 1, 0.3);
}

}  // namespace
}  // namespace davo
