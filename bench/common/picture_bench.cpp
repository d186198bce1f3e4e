// SPDX-License-Identifier: GPL-3.0-or-later
// The time of a number picture and of the general form as ratios to snprintf in the same run.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "common/numbers.h"

namespace davo {
namespace {

// Counts of the instrument, scaled as the records scale them.
std::vector<double> Values() {
    std::vector<double> values;
    for (int count = 1; count <= 65536; count += 67)
        values.push_back(count * 0.0001);
    return values;
}

template <class Write>
void Run(benchmark::State& state, Write write) {
    const std::vector<double> values = Values();
    for (auto _ : state) {
        for (const double value : values)
            benchmark::DoNotOptimize(write(value));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

std::string Printed(const char* format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

void BM_Snprintf(benchmark::State& state) {
    Run(state, [](double value) { return Printed("%.4f", value); });
}

void BM_Picture(benchmark::State& state) {
    Run(state, [](double value) { return Picture(value, "###0.0000"); });
}

void BM_SnprintfGeneral(benchmark::State& state) {
    Run(state, [](double value) { return Printed("%.15G", value); });
}

void BM_GeneralNumber(benchmark::State& state) {
    Run(state, [](double value) { return GeneralNumber(value); });
}

BENCHMARK(BM_Snprintf);
BENCHMARK(BM_Picture);
BENCHMARK(BM_SnprintfGeneral);
BENCHMARK(BM_GeneralNumber);

// Prints the table as usual and then the two ratios.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            times_.push_back(run.GetAdjustedCPUTime());
    }

    void Finalize() override {
        if (times_.size() != 4) return;
        GetOutputStream() << "\nratio Picture / snprintf: " << times_[1] / times_[0]
                          << "\nratio GeneralNumber / snprintf: " << times_[3] / times_[2]
                          << std::endl;
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
