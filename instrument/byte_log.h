// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "instrument/send_queue.h"

namespace davo::instrument {

// Every byte that crossed the device, with its direction and time.
class ByteLog {
  public:
    // An empty path: kept in memory only. Throws RunTimeError 75 when the file cannot be written.
    explicit ByteLog(const std::string& path = {});

    // A line "  12.345678 > 52 44 59  RDY": seconds since the start, '>' to the PC or '<' from it,
    // the bytes, and what of them is readable (others as '.').
    void ToPc(std::string_view bytes, Micros at) { Write('>', bytes, at, toPc_); }
    void FromPc(std::string_view bytes, Micros at) { Write('<', bytes, at, fromPc_); }

    // Whether the file has all of it; a log in memory always has.
    bool IsWhole() const { return !file_.is_open() || file_.good(); }

    const std::string& AllToPc() const { return toPc_; }
    const std::string& AllFromPc() const { return fromPc_; }

  private:
    void Write(char direction, std::string_view bytes, Micros at, std::string& all);

    std::ofstream file_;
    std::string toPc_;
    std::string fromPc_;
};

}  // namespace davo::instrument
