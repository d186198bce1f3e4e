// SPDX-License-Identifier: GPL-3.0-or-later
// One pass of the test sequence over a full block of session text, against copying the same text
// and looking through it once.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "bench/testing/quiet_sequence.h"

namespace davo {
namespace {

// Just below a block: readings, the results, and a record that has not ended.
std::string SessionText() {
    std::string text;
    while (text.size() < 650)
        text += "I=0.0123 V=152.4\r\n";
    text += "RATIO=241.2\r\nPOLARITY=+\r\nDATA";
    while (text.size() < kSessionBlock - 1)
        text += '0';
    return text;
}

void Bare(const std::string& text) {
    std::string copy = text;
    benchmark::DoNotOptimize(copy.data());
    benchmark::DoNotOptimize(copy.find("TURN VOLTAGE DRIVE TO ZERO..."));
}

void BM_RunTestStep(benchmark::State& state) {
    const std::string text = SessionText();
    Sequence sequence;
    for ([[maybe_unused]] auto _ : state)
        sequence.Pass(text);
}

void BM_CopyAndFind(benchmark::State& state) {
    const std::string text = SessionText();
    for ([[maybe_unused]] auto _ : state)
        Bare(text);
}

BENCHMARK(BM_RunTestStep);
BENCHMARK(BM_CopyAndFind);

template <class Work>
double Microseconds(const Work& work) {
    constexpr int kTimes = 20000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kTimes; ++i)
        work();
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count() / kTimes;
}

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    const std::string text = davo::SessionText();
    davo::Sequence sequence;
    const double pass = davo::Microseconds([&] { sequence.Pass(text); });
    const double bare = davo::Microseconds([&] { davo::Bare(text); });
    std::printf("RunTestStep over %zu bytes: %.2f us, copy and find: %.3f us, ratio %.1f\n",
                text.size(), pass, bare, pass / bare);
    return 0;
}
