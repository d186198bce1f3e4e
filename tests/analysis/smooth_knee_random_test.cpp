// SPDX-License-Identifier: GPL-3.0-or-later
// The kneepoints of smooth curves against the same curve written in another way: cubics in powers,
// roots of their derivatives, bisection.

#include <algorithm>
#include <cmath>

#include "analysis/smooth_knee.h"
#include "tests/curves/random_record.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

struct Cubic {
    double from, to;        // log I
    double c0, c1, c2, c3;  // of (x - from)
    double At(double x) const {
        const double s = x - from;
        return c0 + s * (c1 + s * (c2 + s * c3));
    }
};

std::vector<Cubic> CubicsOf(const Points& points) {
    std::vector<double> x, y, h, d;
    for (const CurvePoint& p : points) {
        x.push_back(std::log(p.current) / std::log(10.0));
        y.push_back(std::log(p.voltage) / std::log(10.0));
    }
    for (std::size_t k = 0; k + 1 < x.size(); ++k) {
        h.push_back(x[k + 1] - x[k]);
        d.push_back((y[k + 1] - y[k]) / h[k]);
    }
    const std::size_t n = h.size();
    std::vector<double> m(n + 1);
    const auto end = [](double h0, double h1, double d0, double d1) {
        return std::max(0.0, d0 + h0 / (h0 + h1) * (d0 - d1));
    };
    m[0] = end(h[0], h[1], d[0], d[1]);
    m[n] = end(h[n - 1], h[n - 2], d[n - 1], d[n - 2]);
    for (std::size_t k = 1; k < n; ++k) {
        const double alpha = (h[k - 1] + 2 * h[k]) / (3 * (h[k - 1] + h[k]));
        const double product = d[k - 1] * d[k];
        m[k] = product > 0 ? product / (alpha * d[k] + (1 - alpha) * d[k - 1]) : 0;
    }
    std::vector<Cubic> cubics;
    for (std::size_t k = 0; k < n; ++k) {
        cubics.push_back({x[k], x[k + 1], y[k], m[k], (3 * d[k] - 2 * m[k] - m[k + 1]) / h[k],
                          (m[k] + m[k + 1] - 2 * d[k]) / (h[k] * h[k])});
    }
    return cubics;
}

// The places where the slope is limit, rising x, and whether the slope falls there.
std::vector<double> FallsThrough(const std::vector<Cubic>& cubics, double limit) {
    std::vector<double> places;
    for (const Cubic& c : cubics) {
        // 3 c3 s^2 + 2 c2 s + c1 - limit = 0
        const double a = 3 * c.c3;
        const double b = 2 * c.c2;
        const double e = c.c1 - limit;
        std::vector<double> roots;
        if (std::abs(a) < 1e-12) {
            if (b != 0) roots = {-e / b};
        } else if (b * b - 4 * a * e > 0) {
            const double q = -(b + std::copysign(std::sqrt(b * b - 4 * a * e), b)) / 2;
            roots = {q / a};
            if (q != 0) roots.push_back(e / q);
        }
        std::sort(roots.begin(), roots.end());
        for (const double s : roots) {
            const bool inside = s >= 0 && s <= c.to - c.from;
            if (inside && 2 * a * s + b < 0) places.push_back(c.from + s);
        }
    }
    return places;
}

double Inverse(const std::vector<Cubic>& cubics, double v) {
    double low = cubics.front().from;
    double high = cubics.back().to;
    for (int n = 0; n < 60; ++n) {
        const double middle = (low + high) / 2;
        std::size_t k = 0;
        while (k + 1 < cubics.size() && cubics[k].to < middle)
            ++k;
        (cubics[k].At(middle) < v ? low : high) = middle;
    }
    return high;
}

std::vector<double> RisesThrough1050(const std::vector<Cubic>& cubics) {
    constexpr int kSteps = 300;
    std::vector<double> places;
    double before = 1;
    const double top = cubics.back().At(cubics.back().to);
    for (const Cubic& c : cubics) {
        for (int n = 0; n < kSteps; ++n) {
            const double x = c.from + n * (c.to - c.from) / kSteps;
            const double v = c.At(x) + std::log10(1.1);
            if (v > top) return places;
            const double more = Inverse(cubics, v) - x - std::log10(1.5);
            if (before <= 0 && more > 0) places.push_back(x);
            before = more;
        }
    }
    return places;
}

Points RisingCurve(test::RecordSource& random) {
    Points points;
    const double knee = random.Between(20, 1500);
    const double bend = random.Between(0.02, 2);
    const double power = random.Between(0.8, 4);
    const double spread = random.Between(1.2, 4);
    double current = random.Between(0.001, 0.05);
    double voltage = 0;
    for (int count = 4 + random.Below(29); count > 0 && current < 20; --count) {
        const double ideal = knee / std::pow(1 + std::pow(bend / current, power), 1 / power);
        voltage = std::max(voltage, ideal * random.Between(0.98, 1.02));
        points.push_back({current, voltage});
        current *= random.Between(1.1, spread);
    }
    return points;
}

TEST(SmoothKneeRandom, AgreesWithTheCurveWrittenInPowers) {
    constexpr int kCurves = 600;
    test::RecordSource random(test::RandomSeed(19800417));
    int found = 0;
    int none = 0;
    int narrow = 0;
    for (int n = 0; n < kCurves; ++n) {
        const Points points = RisingCurve(random);
        if (points.size() < 4) continue;
        const std::vector<Cubic> cubics = CubicsOf(points);
        for (const KneeRule rule : kKneeRules) {
            const auto smooth = SmoothKneepoint(rule, points);
            std::vector<double> places = rule == KneeRule::Asa1050 ? RisesThrough1050(cubics)
                                         : rule == KneeRule::Ieee45
                                             ? FallsThrough(cubics, 1)
                                             : FallsThrough(cubics, 1 / std::sqrt(3.0));
            if (places.empty() && !smooth) {
                ++none;
                continue;
            }
            const double at = smooth ? std::log10(smooth->current) : NAN;
            const auto isAt = [&](double place) { return std::abs(place - at) < 0.02; };
            if (!places.empty() && isAt(places.back())) {
                ++found;
                continue;
            }
            // A bend that begins and ends between two samples may be passed over.
            ++narrow;
        }
    }
    std::cout << found << " found, " << none << " none, " << narrow << " narrow\n";
    EXPECT_GT(found, kCurves);
    EXPECT_GT(none, kCurves / 20);
    EXPECT_LT(narrow, kCurves / 100);
}

}  // namespace
}  // namespace davo
