// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/paced_line.h"

#include <cmath>

namespace davo::instrument {

Micros PacedLine::ArrivalOf(double byteOfBurst) const {
    if (bytesPerSecond_ <= 0) return burstStart_;
    return burstStart_ +
           Micros{static_cast<std::int64_t>(std::ceil((byteOfBurst + 1) * 1e6 / bytesPerSecond_))};
}

void PacedLine::Put(std::string_view bytes, Micros now) {
    if (bytes.empty()) return;
    // A burst goes on while the line has no rest between two bytes.
    const bool rested = queue_.empty() && (taken_ == 0 || ArrivalOf(taken_ - 1) < now);
    if (rested) {
        burstStart_ = now;
        taken_ = 0;
    }
    queue_.insert(queue_.end(), bytes.begin(), bytes.end());
}

std::string PacedLine::Take(Micros now) {
    std::string bytes;
    while (!queue_.empty() && ArrivalOf(taken_) <= now) {
        bytes += queue_.front();
        queue_.pop_front();
        ++taken_;
    }
    return bytes;
}

std::optional<Micros> PacedLine::NextDue() const {
    if (queue_.empty()) return std::nullopt;
    return ArrivalOf(taken_);
}

}  // namespace davo::instrument
