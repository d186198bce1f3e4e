// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "instrument/send_queue.h"

namespace davo::instrument {

inline constexpr double kBytesPerSecond = 1920;  // 19200 baud, 10 bits a character

// One direction of a serial line: what is put in comes out one byte after the other, each when its
// last bit has passed. The times follow from the beginning of a burst, so that they never drift.
class PacedLine {
  public:
    // 0 bytes per second: no pacing.
    explicit PacedLine(double bytesPerSecond = kBytesPerSecond) : bytesPerSecond_(bytesPerSecond) {}

    void Put(std::string_view bytes, Micros now);
    // The bytes that have arrived by now.
    std::string Take(Micros now);
    // When the next byte arrives.
    std::optional<Micros> NextDue() const;
    bool Empty() const { return queue_.empty(); }
    void Clear() { queue_.clear(); }

  private:
    Micros ArrivalOf(double byteOfBurst) const;

    double bytesPerSecond_;
    std::deque<char> queue_;
    Micros burstStart_{0};
    double taken_ = 0;  // bytes of the burst that have come out
};

}  // namespace davo::instrument
