// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "instrument/conversation.h"
#include "tests/support/testing.h"

namespace davo::test {

// A PC that talks to a conversation in memory, in the conversation's own time.
class MemoryPc {
  public:
    explicit MemoryPc(instrument::ConversationOptions options) : instrument_(std::move(options)) {}

    void Send(std::string_view bytes) { instrument_.Receive(bytes); }

    // Everything from here through awaited; fails when the instrument falls silent before.
    std::string Until(std::string_view awaited) {
        std::size_t at = pending_.find(awaited);
        while (at == std::string::npos) {
            if (!Step()) {
                ADD_FAILURE() << "no '" << awaited << "' in '" << pending_ << "'";
                return {};
            }
            at = pending_.find(awaited);
        }
        std::string text = pending_.substr(0, at + awaited.size());
        pending_.erase(0, text.size());
        return text;
    }

    // What comes until nothing is due any more; for steps without endless readings.
    std::string Rest() {
        while (Step()) {
        }
        return std::exchange(pending_, {});
    }

    // Lets time pass. What comes is kept.
    void Wait(instrument::Micros time) {
        const instrument::Micros end = now_ + time;
        while (instrument_.NextDue() && *instrument_.NextDue() <= end)
            Step();
        now_ = end;
        instrument_.Advance(now_);
    }

    instrument::Conversation& Instrument() { return instrument_; }
    instrument::Micros Now() const { return now_; }

  private:
    bool Step() {
        const auto due = instrument_.NextDue();
        if (!due) return false;
        now_ = std::max(now_, *due);
        instrument_.Advance(now_);
        pending_ += instrument_.TakeOutput();
        return true;
    }

    instrument::Conversation instrument_;
    instrument::Micros now_{0};
    std::string pending_;
};

}  // namespace davo::test
