// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace davo::test {

struct RandomCurve {
    std::vector<double> current;
    std::vector<double> voltage;
};

// Curves of every kind, 0 to 101 points: like those of a transformer, with ratios that hit the
// thresholds, falling, flat, with zeros, of a few small numbers, and with numbers far too large.
class CurveSource {
  public:
    explicit CurveSource(std::uint64_t seed) : random_(seed) {}

    RandomCurve Next() {
        const int points = Below(12) == 0 ? Below(102) : Below(12);
        RandomCurve curve = CurveOf(points);
        if (Below(5) == 0) Disturb(curve);
        if (Below(50) == 0) Tear(curve);
        return curve;
    }

  private:
    int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    double Between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    static double Round(double value, double scale) { return std::round(value * scale) / scale; }

    RandomCurve CurveOf(int points) {
        switch (Below(5)) {
            case 0:
                return Transformer(points);
            case 1:
                return Steps(points);
            case 2:
                return SmallNumbers(points);
            case 3:
                return Walk(points);
            default:
                return Steps(points);
        }
    }

    RandomCurve Transformer(int points) {
        RandomCurve curve;
        const double knee = Between(20, 1500);
        const double sharpness = Between(4, 40);
        double current = Between(0.001, 0.05);
        for (int i = 0; i < points; ++i) {
            current *= Between(1.05, 1.8);
            const double v = knee * std::pow(current / (current + 0.1), 1 + 1 / sharpness);
            curve.current.push_back(Round(current, 1e4));
            curve.voltage.push_back(Round(v * Between(0.99, 1.01), 10));
        }
        return curve;
    }

    // Neighbours whose relative changes are round numbers, so that ratios such as 1, 1.81 and 5 are
    // hit.
    RandomCurve Steps(int points) {
        constexpr std::array kCurrentSteps = {1.0,   1.1, 1.181, 1.2,   1.5,   1.25, 1.05,
                                              1.362, 2.0, 0.9,   1.005, 1.091, 3.0,  1.01};
        constexpr std::array kVoltageSteps = {1.0, 1.1, 1.2,  1.05, 1.01,
                                              1.5, 0.9, 1.02, 1.3,  1.001};
        RandomCurve curve;
        double current = Between(0.001, 2);
        double voltage = Between(1, 400);
        for (int i = 0; i < points; ++i) {
            curve.current.push_back(current);
            curve.voltage.push_back(voltage);
            current *= kCurrentSteps.at(static_cast<std::size_t>(Below(kCurrentSteps.size())));
            voltage *= kVoltageSteps.at(static_cast<std::size_t>(Below(kVoltageSteps.size())));
        }
        return curve;
    }

    RandomCurve SmallNumbers(int points) {
        static constexpr std::array kCurrents = {0.0, 0.01, 0.02, 0.1, 0.2, 0.4, 0.8,
                                                 1.0, 2.0,  4.0,  8.0, 10., 12., -1.0};
        RandomCurve curve;
        for (int i = 0; i < points; ++i) {
            curve.current.push_back(kCurrents.at(static_cast<std::size_t>(Below(14))));
            curve.voltage.push_back(Below(6));
        }
        return curve;
    }

    RandomCurve Walk(int points) {
        RandomCurve curve;
        double current = 0;
        double voltage = 0;
        for (int i = 0; i < points; ++i) {
            current += Between(-0.01, 0.3);
            voltage += Between(-1, 30);
            curve.current.push_back(Round(current, 1e4));
            curve.voltage.push_back(Round(voltage, 10));
        }
        return curve;
    }

    void Disturb(RandomCurve& curve) {
        static constexpr std::array kOdd = {0.0, 1e300, -1e300, 1.7e308, 1e-300, 5e-324, 12.0};
        for (int change = 1 + Below(3); change > 0 && !curve.current.empty(); --change) {
            const auto at = static_cast<std::size_t>(Below(static_cast<int>(curve.current.size())));
            auto& values = Below(2) == 0 ? curve.current : curve.voltage;
            values.at(at) = kOdd.at(static_cast<std::size_t>(Below(Below(3) == 0 ? 7 : 1)));
        }
    }

    // Two neighbours whose difference is no finite number.
    void Tear(RandomCurve& curve) {
        constexpr double kLarge = 1.7e308;
        auto& values = Below(3) == 0 ? curve.current : curve.voltage;
        if (values.size() < 2) return;
        const auto at = static_cast<std::size_t>(Below(static_cast<int>(values.size()) - 1));
        values.at(at) = -kLarge;
        values.at(at + 1) = kLarge;
    }

    std::mt19937_64 random_;
};

}  // namespace davo::test
