// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "instrument/send_queue.h"

namespace davo::instrument {

// Bytes that crossed the line in one direction, as a line of a log has them.
struct LoggedBytes {
    Micros at{0};  // since the log's start
    bool toPc = false;
    std::string bytes;
    std::size_t line = 0;  // of the log's file, from 1
};

// A log that ByteLog wrote, in its order. Empty lines are passed over, and so is the last one where
// a full disk or a kill has cut it off; cutLine becomes its number then, else 0. Throws
// RunTimeError 53 or 75 when the file cannot be read, 13 with the number of the first line that is
// no line of a log, and 62 for a log without a byte.
std::vector<LoggedBytes> ReadConversationLog(const std::string& path,
                                             std::size_t* cutLine = nullptr);

}  // namespace davo::instrument
