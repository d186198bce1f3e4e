// SPDX-License-Identifier: GPL-3.0-or-later
// A burst of 10,000 readings through the test sequence's step: bare, with a display that does
// nothing, and with the live curve; and what the curve keeps of a burst. The three take turns in a
// random order, and their medians are compared.

#include <QApplication>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "bench/testing/quiet_sequence.h"
#include "testing/live_curve.h"

namespace davo {
namespace {

constexpr int kReadings = 10000;

// The readings as they come off the line, cut into blocks as the receive buffer hands them on.
std::vector<std::string> Burst() {
    std::vector<std::string> blocks(1);
    for (int i = 0; i < kReadings; ++i) {
        char line[40];
        std::snprintf(line, sizeof line, "I=%.4f V=%.1f\r\n", 0.001 + 0.0001 * i, 1 + 0.08 * i);
        if (blocks.back().size() + sizeof line > kSessionBlock) blocks.emplace_back();
        blocks.back() += line;
    }
    return blocks;
}

double Milliseconds(Sequence& sequence, const std::vector<std::string>& blocks) {
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& block : blocks)
        sequence.Pass(block);
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double ResidentMegabytes() {
    std::ifstream status("/proc/self/statm");
    long all = 0;
    long resident = 0;
    status >> all >> resident;
    return static_cast<double>(resident) * 4096 / 1e6;
}

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    using namespace davo;
    const QApplication application(argc, argv);
    const std::vector<std::string> blocks = Burst();
    QWidget window;
    LiveCurve curve(&window);
    window.resize(900, 500);
    window.show();
    curve.Chart()->resize(window.size());
    curve.Chart()->show();

    Sequence bare;
    Sequence idle;
    Sequence live;
    (*idle).OnReadings = [](std::string_view) {};
    (*live).OnReadings = [&](std::string_view text) { curve.AddReadings(text); };
    struct Way {
        Sequence& sequence;
        std::vector<double> taken;
    };
    std::array<Way, 3> ways{{{bare, {}}, {idle, {}}, {live, {}}}};
    constexpr int kRounds = 300;
    constexpr unsigned kSeed = 20261121;
    std::mt19937 order(kSeed);
    const double before = ResidentMegabytes();
    std::size_t kept = 0;
    for (int round = 0; round < kRounds; ++round) {
        curve.StartShot(false);
        curve.BeginSaturation();
        std::array<std::size_t, 3> turns{0, 1, 2};
        std::shuffle(turns.begin(), turns.end(), order);
        for (const std::size_t turn : turns)
            ways.at(turn).taken.push_back(Milliseconds(ways.at(turn).sequence, blocks));
        // What the timer would do, outside of the step.
        kept = curve.Readings().size();
        QApplication::processEvents();
    }
    const double step = Median(ways[0].taken);
    std::printf(
        "burst of %d readings, medians of %d: step %.3f ms; with a display that does "
        "nothing %.3f; with the live curve %.3f, ratio %.3f; kept %zu; memory %.1f to %.1f "
        "MB\n",
        kReadings, kRounds, step, Median(ways[1].taken), Median(ways[2].taken),
        Median(ways[2].taken) / step, kept, before, ResidentMegabytes());
    return 0;
}
