// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <ctime>

namespace davo::test {

// What spins takes the whole of a core; how little sleeping takes depends on the machine.
inline constexpr double kMostOfACore = 0.5;

// What all threads of the process take of one core, from its construction on.
class ProcessorShare {
  public:
    double Now() const {
        const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - start_;
        return static_cast<double>(std::clock() - used_) / CLOCKS_PER_SEC / lasted.count();
    }

  private:
    std::clock_t used_ = std::clock();
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace davo::test
