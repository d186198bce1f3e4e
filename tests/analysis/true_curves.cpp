// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/analysis/true_curves.h"

#include <algorithm>
#include <cmath>

namespace davo::test {

namespace {

using Random = std::mt19937_64;

// Highest and lowest ln I that is looked at from the bend: a factor of e^9 = 8100.
constexpr double kReach = 9;

double Between(Random& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

// The curve of shape(x) volts at bend and factor 1, x = I / Ik; slope(x) = d(ln V) / d(ln x).
template <class Shape, class Slope>
TrueCurve Scaled(Random& random, const Shape& lnShape, const Slope& slope) {
    const double lnV = std::log(10) + Between(random, 0, std::log(90));
    const double lnI = std::log(0.008) + Between(random, 0, std::log(1.5 / 0.008));
    return {[=](double i) { return lnV + lnShape(i - lnI); },
            [=](double i) { return slope(i - lnI); }, lnI};
}

TrueCurve Tanh(Random& random) {
    const double p = Between(random, 1.08, 1.6);
    return Scaled(
        random, [p](double u) { return std::log(std::tanh(std::exp(p * u))); },
        [p](double u) {
            const double x = std::exp(p * u);
            return x > 300 ? 0 : p * 2 * x / std::sinh(2 * x);
        });
}

TrueCurve AirCore(Random& random) {
    const double p = Between(random, 1.08, 1.8);
    const double l = std::exp(Between(random, std::log(0.0005), std::log(0.01)));
    const auto volts = [=](double u) {
        const double x = std::exp(p * u);
        return x / (1 + x) + l * std::exp(u);
    };
    return Scaled(
        random, [=](double u) { return std::log(volts(u)); },
        [=](double u) {
            const double x = std::exp(p * u);
            return (p * x / (1 + x) / (1 + x) + l * std::exp(u)) / volts(u);
        });
}

TrueCurve Langevin(Random& random) {
    const double p = Between(random, 1.1, 1.7);
    const auto shape = [](double x) {
        return x < 0.01 ? x / 3 - x * x * x / 45 : 1 / std::tanh(x) - 1 / x;
    };
    const auto derivative = [](double x) {
        if (x < 0.01) return 1.0 / 3 - x * x / 15;
        const double s = x > 300 ? 0 : 1 / std::sinh(x);
        return 1 / (x * x) - s * s;
    };
    return Scaled(
        random, [=](double u) { return std::log(shape(std::exp(p * u))); },
        [=](double u) {
            const double x = std::exp(p * u);
            return p * x * derivative(x) / shape(x);
        });
}

// ln I over ln V is known; its inverse by bisection.
TrueCurve PowerSum(Random& random) {
    const double low = Between(random, 0.6, 0.85);
    const double high = Between(random, 8, 28);
    const auto current = [=](double w) {
        return std::log((std::exp(low * w) + std::exp(high * w)) / 2);
    };
    const auto voltage = [=](double u) {
        double from = -40;
        double to = 40 / high + 10 / high;
        for (int n = 0; n < 200 && from < to; ++n) {
            const double middle = (from + to) / 2;
            (current(middle) < u ? from : to) = middle;
        }
        return to;
    };
    return Scaled(random, voltage, [=](double u) {
        const double x = std::exp((high - low) * voltage(u));
        return (1 + x) / (low + high * x);
    });
}

TrueCurve Corner(Random& random) {
    const double below = Between(random, 1.1, 1.7);
    const double above = Between(random, 0.02, 0.12);
    const double width = Between(random, 0.15, 1.2);
    return Scaled(
        random,
        [=](double u) {
            return (below + above) / 2 * u -
                   (below - above) / 2 * (std::sqrt(u * u + width * width) - width);
        },
        [=](double u) {
            return (below + above) / 2 - (below - above) / 2 * u / std::sqrt(u * u + width * width);
        });
}

// ln(1 + e^u) and its derivative.
double SoftStep(double u) {
    return u > 30 ? u : std::log1p(std::exp(u));
}
double Logistic(double u) {
    return 1 / (1 + std::exp(-u));
}

TrueCurve TwoPowers(Random& random) {
    const double below = Between(random, 1.1, 1.7);
    const double above = Between(random, 0.02, 0.12);
    const double width = Between(random, 0.12, 0.8);
    return Scaled(
        random, [=](double u) { return below * u - (below - above) * width * SoftStep(u / width); },
        [=](double u) { return below - (below - above) * Logistic(u / width); });
}

TrueCurve Foot(Random& random) {
    const double foot = Between(random, 0.75, 1.0);
    const double steep = Between(random, 1.15, 1.6);
    const double above = Between(random, 0.03, 0.1);
    const double width = Between(random, 0.15, 0.6);
    const double apart = Between(random, 1.5, 3);
    constexpr double kFootWidth = 0.5;
    return Scaled(
        random,
        [=](double u) {
            return foot * u + (steep - foot) * kFootWidth * SoftStep((u + apart) / kFootWidth) -
                   (steep - above) * width * SoftStep(u / width);
        },
        [=](double u) {
            return foot + (steep - foot) * Logistic((u + apart) / kFootWidth) -
                   (steep - above) * Logistic(u / width);
        });
}

// By how much the curve is bent more than the rule's limit at ln I, and above 0 there.
double Excess(KneeRule rule, const TrueCurve& curve, double i) {
    if (rule != KneeRule::Asa1050) return 1 / KneeThreshold(rule) - curve.slopeAt(i);
    return std::log(1.1) - (curve.voltageAt(i + std::log(1.5)) - curve.voltageAt(i));
}

}  // namespace

const char* NameOf(Family family) {
    constexpr std::array kNames = {"Froehlich", "Arctangent", "Tanh",     "AirCore", "PowerSum",
                                   "Corner",    "TwoPowers",  "Langevin", "Foot",    "Straight"};
    return kNames.at(static_cast<std::size_t>(family));
}

TrueCurve RandomTrueCurve(Family family, Random& random) {
    switch (family) {
        case Family::Froehlich:
            return Scaled(
                random, [](double u) { return -std::log1p(std::exp(-u)); },
                [](double u) { return Logistic(-u); });
        case Family::Arctangent:
            return Scaled(
                random, [](double u) { return std::log(std::atan(std::exp(u))); },
                [](double u) {
                    const double x = std::exp(u);
                    return x / (1 + x * x) / std::atan(x);
                });
        case Family::Tanh:
            return Tanh(random);
        case Family::AirCore:
            return AirCore(random);
        case Family::PowerSum:
            return PowerSum(random);
        case Family::Corner:
            return Corner(random);
        case Family::TwoPowers:
            return TwoPowers(random);
        case Family::Langevin:
            return Langevin(random);
        case Family::Foot:
            return Foot(random);
        case Family::Straight:
            break;
    }
    const double p = Between(random, 1.02, 1.7);
    return Scaled(
        random, [p](double u) { return p * u; }, [p](double) { return p; });
}

std::optional<CurvePoint> TrueKneepoint(KneeRule rule, const TrueCurve& curve) {
    constexpr int kSteps = 600;
    constexpr double kStep = 2 * kReach / kSteps;
    for (int n = kSteps; n-- > 0;) {
        double low = curve.bend - kReach + n * kStep;
        double high = low + kStep;
        if (Excess(rule, curve, low) > 0 || Excess(rule, curve, high) <= 0) continue;
        constexpr int kHalvings = 60;  // down to the last digit
        for (int halving = 0; halving < kHalvings; ++halving) {
            const double middle = (low + high) / 2;
            (Excess(rule, curve, middle) > 0 ? high : low) = middle;
        }
        return CurvePoint{std::exp(high), std::exp(curve.voltageAt(high))};
    }
    return std::nullopt;
}

std::vector<CurvePoint> TakeRecord(const TrueCurve& curve, const Taking& taking, Random& random) {
    constexpr double kCoarseFrom = 6.5;
    const double highest = std::exp(curve.bend) * taking.pastTheBend;
    const double step = highest > kCoarseFrom ? 0.0002 : 0.0001;
    // Below 2 % of the bend's voltage, and below a volt, no test set measures.
    const double least = std::max(0.0, curve.voltageAt(curve.bend) + std::log(0.02));
    double lowest = std::max(highest / 2000, 4 * step);
    while (curve.voltageAt(std::log(lowest)) < least)
        lowest *= 1.01;
    const double ratio = std::log(highest / lowest) / (taking.points - 1);
    std::normal_distribution<double> scatter(0, 1);
    std::vector<CurvePoint> points;
    for (int n = 0; n < taking.points; ++n) {
        const double i = std::log(lowest) + n * ratio;
        const double volts = std::exp(curve.voltageAt(i)) * (1 + taking.noise * scatter(random));
        const CurvePoint point =
            PointByPicture(std::round(std::exp(i) / step) * step, std::round(volts / 0.1) * 0.1);
        if (points.empty() || point.current > points.back().current) points.push_back(point);
    }
    return points;
}

}  // namespace davo::test
