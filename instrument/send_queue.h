// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace davo::instrument {

using Micros = std::chrono::microseconds;

// Bytes that are to leave at given times, in the order in which they were put in.
class SendQueue {
  public:
    // Leaves at the given time, or right after what was put in before when that is later.
    void Put(std::string_view bytes, Micros at) {
        last_ = std::max(last_, at);
        if (!bytes.empty()) queue_.push_back({last_, std::string(bytes)});
    }
    // What has left by now.
    std::string Take(Micros now) {
        std::string bytes;
        while (!queue_.empty() && queue_.front().at <= now) {
            bytes += queue_.front().bytes;
            queue_.pop_front();
        }
        return bytes;
    }
    std::optional<Micros> NextDue() const {
        if (queue_.empty()) return std::nullopt;
        return queue_.front().at;
    }
    // When the last of it leaves, or left.
    Micros Last() const { return last_; }
    void Clear() {
        queue_.clear();
        last_ = Micros{0};
    }

  private:
    struct Send {
        Micros at;
        std::string bytes;
    };
    std::deque<Send> queue_;
    Micros last_{0};
};

}  // namespace davo::instrument
