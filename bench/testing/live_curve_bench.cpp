// A burst of 10,000 readings through the test sequence's step, with and without the live curve that
// notes each of them; and what the curve keeps of a burst.

#include <QApplication>
#include <chrono>
#include <cstdio>
#include <fstream>
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

    Sequence without;
    Sequence with;
    int noted = 0;
    (*with).OnReading = [&](const std::string& current, const std::string& voltage) {
        ++noted;
        curve.AddReading(current, voltage);
    };
    constexpr int kRounds = 40;
    double bare = 0;
    double observed = 0;
    const double before = ResidentMegabytes();
    for (int round = 0; round < kRounds; ++round) {
        curve.StartShot(false);
        bare += Milliseconds(without, blocks);
        observed += Milliseconds(with, blocks);
        // What the timer would do, outside of the step.
        QApplication::processEvents();
    }
    std::printf(
        "burst of %d readings: step %.2f ms, with the live curve %.2f ms, ratio %.3f; noted %d; "
        "memory %.1f to %.1f MB\n",
        kReadings, bare / kRounds, observed / kRounds, observed / bare, noted / kRounds, before,
        ResidentMegabytes());
    return 0;
}
