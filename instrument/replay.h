// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "instrument/conversation_log.h"

namespace davo::instrument {

// The instrument's side of a recorded conversation, without a clock and without input or output. It
// waits for every byte that the PC sent then, and sends what the instrument sent, as long after
// what came before as then.
class Replay {
  public:
    // log has a byte at least.
    explicit Replay(std::vector<LoggedBytes> log);

    // bytes from the PC, at now. Bytes that come before their turn wait for it.
    void Receive(std::string_view bytes, Micros now);
    // What the instrument has sent by now.
    std::string Take(Micros now);
    // When Take has something to give next; nothing: not before bytes arrive, or never.
    std::optional<Micros> NextDue() const;

    // The first byte from the PC that is not the recorded one, in words; empty while there is none.
    // Nothing is sent after it.
    const std::string& Departure() const { return departure_; }
    bool Ended() const { return next_ == log_.size(); }
    // What the replay waits for, or how it ended, in words.
    std::string State() const;

  private:
    void Compare(Micros now);
    void Depart(const std::string& expected);
    void GoOn(Micros now);

    std::vector<LoggedBytes> log_;
    std::size_t next_ = 0;    // of log_
    std::size_t within_ = 0;  // bytes of it that the PC has sent
    std::string early_;       // from the PC, not compared yet
    std::size_t compared_ = 0;
    Micros last_{0};  // when the piece before next_ was done with
    std::string departure_;
};

}  // namespace davo::instrument
