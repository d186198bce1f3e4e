// SPDX-License-Identifier: GPL-3.0-or-later
// All three kneepoints of a test of 32 points, the insertion of its grid points, and the kneepoints
// with their doubts and smooth ones, as ratios to a plain pass over the same curve in the same run:
// the relative changes and ratios of the same pairs, not rounded as text.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <vector>

#include "analysis/grid_points.h"
#include "analysis/knee_doubt.h"
#include "analysis/kneepoint.h"

namespace davo {
namespace {

constexpr int kPoints = 32;

struct Curve {
    std::array<double, kPoints> current;
    std::array<double, kPoints> voltage;
};

// Straight in the logarithmic picture, then bent so slowly that every search goes far down.
Curve SlowlyBentCurve() {
    Curve curve{};
    for (std::size_t i = 0; i < kPoints; ++i) {
        const double voltage = 5 * std::pow(1.13, static_cast<double>(i));
        const double current = 0.02 * (std::pow(voltage / 100, 0.7) + std::pow(voltage / 100, 7));
        curve.voltage[i] = std::round(voltage * 10) / 10;
        curve.current[i] = std::round(current * 1e4) / 1e4;
    }
    return curve;
}

void BM_PlainPass(benchmark::State& state) {
    const Curve curve = SlowlyBentCurve();
    for (auto _ : state) {
        for (const std::size_t step : {2, 1, 1}) {
            double steepest = 0;
            for (std::size_t upper = kPoints - 1; upper >= step; --upper) {
                const std::size_t lower = upper - step;
                const double relI =
                    (curve.current[upper] - curve.current[lower]) / curve.current[lower];
                const double relV =
                    (curve.voltage[upper] - curve.voltage[lower]) / curve.voltage[lower];
                steepest = std::max(steepest, relI / relV);
            }
            benchmark::DoNotOptimize(steepest);
        }
    }
}

void BM_ThreeKneepoints(benchmark::State& state) {
    const Curve curve = SlowlyBentCurve();
    for (auto _ : state) {
        for (const KneeRule rule : kKneeRules)
            benchmark::DoNotOptimize(ComputeKneepoint(rule, curve.current, curve.voltage));
    }
}

void BM_GridPoints(benchmark::State& state) {
    const Curve curve = SlowlyBentCurve();
    for (auto _ : state)
        benchmark::DoNotOptimize(WithGridPoints(curve.current, curve.voltage));
}

void BM_JudgedKneepoints(benchmark::State& state) {
    const Curve curve = SlowlyBentCurve();
    std::vector<CurvePoint> points;
    for (std::size_t i = 0; i < kPoints; ++i)
        points.push_back({curve.current[i], curve.voltage[i]});
    for (auto _ : state)
        benchmark::DoNotOptimize(KneesOf(points));
}

BENCHMARK(BM_PlainPass);
BENCHMARK(BM_ThreeKneepoints);
BENCHMARK(BM_GridPoints);
BENCHMARK(BM_JudgedKneepoints);

// Prints the table as usual and then the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            times_.push_back(run.GetAdjustedCPUTime());
    }

    void Finalize() override {
        if (times_.size() != 4) return;
        GetOutputStream() << "\nratio three kneepoints / plain pass: " << times_[1] / times_[0]
                          << "\nratio grid points / plain pass: " << times_[2] / times_[0]
                          << "\nthree kneepoints of 32 points: " << times_[1] / 1000
                          << " microseconds\njudged kneepoints of 32 points: " << times_[3] / 1000
                          << " microseconds" << std::endl;
    }

  private:
    std::vector<double> times_;
};

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    davo::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
