// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "instrument/conversation_log.h"

namespace davo::instrument {

// What a conversation has that the program does not expect of an instrument.
struct LogDeparture {
    std::size_t line = 0;  // of the log's file
    Micros at{0};
    std::string text;
};

struct LogReport {
    std::vector<std::string> seen;         // each command: how often, and how fast the answer was
    std::vector<LogDeparture> departures;  // in the order of the log
    // All of it as lines of text.
    std::string Text() const;
};

// Holds a log against the protocol: bytes that no command asked for, replies without what the
// program waits for, unknown lines and other spellings, lengths of headers and records, bytes that
// are no text, silences that are shorter or longer than the program takes, and times that go back.
LogReport CheckLog(const std::vector<LoggedBytes>& log);

}  // namespace davo::instrument
