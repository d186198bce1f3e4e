// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/replay_device.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace davo::instrument {

ReplayDevice::ReplayDevice(std::vector<LoggedBytes> log, const std::string& linkPath)
    : replay_(std::move(log)), pty_(linkPath) {}

void ReplayDevice::Run(int stopDescriptor) {
    const auto start = std::chrono::steady_clock::now();
    const auto now = [start] {
        return std::chrono::duration_cast<Micros>(std::chrono::steady_clock::now() - start);
    };
    std::array<pollfd, 2> waits{};
    while ((waits[1].revents & POLLIN) == 0) {
        replay_.Receive(pty_.Read(), now());
        if (!replay_.Departure().empty()) return;
        pty_.Write(replay_.Take(now()));
        const auto ready = static_cast<short>(pty_.WriteWaits() ? POLLIN | POLLOUT : POLLIN);
        waits = {{{pty_.Descriptor(), ready, 0}, {stopDescriptor, POLLIN, 0}}};
        timespec timeout{};
        const std::optional<Micros> due = replay_.NextDue();
        if (due) {
            const Micros wait = std::max(Micros{0}, *due - now());
            timeout = {wait.count() / 1000000, wait.count() % 1000000 * 1000};
        }
        ppoll(waits.data(), waits.size(), due ? &timeout : nullptr, nullptr);
    }
}

}  // namespace davo::instrument
