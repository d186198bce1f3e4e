// SPDX-License-Identifier: GPL-3.0-or-later
// What a backlog of the line costs the test sequence, from 1 to 64 MB of three kinds of text in a
// saturation test: the time in all and for each megabyte, the longest pass (between two passes the
// window answers), and all of it against the time for 1 MB. Linear is a ratio of 1 for a megabyte.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

#include "bench/testing/quiet_sequence.h"

namespace davo {
namespace {

constexpr std::size_t kMegabyte = 1 << 20;

struct Taken {
    double all = 0;      // ms
    double longest = 0;  // ms, of a pass
};

Taken Examine(std::string_view line, std::size_t size) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    Sequence sequence;
    sequence.Start();
    std::string backlog;
    backlog.reserve(size + line.size());
    while (backlog.size() < size)
        backlog += line;
    sequence.Arrive(std::move(backlog));
    Taken taken;
    do {
        const auto start = std::chrono::steady_clock::now();
        (*sequence).Timer1_Timer();
        const double pass = Milliseconds(std::chrono::steady_clock::now() - start).count();
        taken.all += pass;
        taken.longest = std::max(taken.longest, pass);
    } while ((*sequence).Unexamined());
    return taken;
}

Taken Best(std::string_view line, std::size_t size) {
    constexpr int kTimes = 5;
    Taken best = Examine(line, size);
    for (int i = 1; i < kTimes; ++i) {
        const Taken next = Examine(line, size);
        best.all = std::min(best.all, next.all);
        best.longest = std::min(best.longest, next.longest);
    }
    return best;
}

void Curve(const char* kind, std::string_view line) {
    const double one = Best(line, kMegabyte).all;
    for (std::size_t megabytes = 1; megabytes <= 64; megabytes *= 2) {
        const Taken taken = Best(line, megabytes * kMegabyte);
        const double each = taken.all / static_cast<double>(megabytes);
        std::printf("%-10s %3zu MB: %8.2f ms, %6.2f ms a MB, longest pass %5.2f ms, ratio %.2f\n",
                    kind, megabytes, taken.all, each, taken.longest, each / one);
    }
}

}  // namespace
}  // namespace davo

int main() {
    davo::Curve("readings", "I=0.0123 V=491.2\r\n");
    davo::Curve("lines", "MESSAGE=SOMETHING ELSE IS SAID HERE\r\n");
    davo::Curve("no lines", "................................");
    return 0;
}
