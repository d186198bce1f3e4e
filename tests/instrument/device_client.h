// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <string_view>

#include "tests/support/testing.h"

namespace davo::test {

inline constexpr std::chrono::seconds kPatience{60};

inline bool LinkExists(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

// The PC's end of the device, opened like any serial port.
class DeviceClient {
  public:
    explicit DeviceClient(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        EXPECT_GE(descriptor_, 0) << path;
    }
    ~DeviceClient() { close(descriptor_); }
    DeviceClient(const DeviceClient&) = delete;
    DeviceClient& operator=(const DeviceClient&) = delete;

    void Send(std::string_view bytes) const {
        EXPECT_EQ(write(descriptor_, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    // Everything through awaited; what has come when patience ends or the device is gone.
    std::string Until(std::string_view awaited, std::chrono::milliseconds patience = kPatience) {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (pending_.find(awaited) == std::string::npos) {
            if (!Gather(end)) return std::exchange(pending_, {});
        }
        std::string text = pending_.substr(0, pending_.find(awaited) + awaited.size());
        pending_.erase(0, text.size());
        return text;
    }

    // What comes within time.
    std::string During(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (Gather(end)) {
        }
        return std::exchange(pending_, {});
    }

    // True when the other side hangs up in time.
    bool HungUp() const {
        pollfd wait{descriptor_, 0, 0};
        return poll(&wait, 1, static_cast<int>(kPatience.count()) * 1000) == 1 &&
               (wait.revents & POLLHUP) != 0;
    }

    int Descriptor() const { return descriptor_; }

  private:
    bool Gather(std::chrono::steady_clock::time_point end) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd wait{descriptor_, POLLIN, 0};
        if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count()) + 1) <= 0) {
            return false;
        }
        std::array<char, 4096> part{};
        const ssize_t length = read(descriptor_, part.data(), part.size());
        if (length <= 0) return false;
        pending_.append(part.data(), static_cast<std::size_t>(length));
        return true;
    }

    int descriptor_;
    std::string pending_;
};

}  // namespace davo::test
