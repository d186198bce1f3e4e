// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "common/prompts.h"
#include "link/link.h"

namespace davo {

// The test session's reply buffers.
struct SessionReply {
    std::string sessionPending;  // polled from the port and not yet examined
    std::string sessionWindow;   // the part being examined for the awaited reply
};

inline constexpr std::size_t kSessionBlock = 1024;
inline constexpr std::size_t kSessionLimit = 2000;

// One pass of WaitForSessionReply: takes everything waiting at the port, lays the window (the
// first 1024 characters, which then leave sessionPending, once that many have gathered; a copy of
// sessionPending before that) and tells whether it contains awaited. A text that straddles two
// blocks is not found here: who examines a block puts its unfinished end back before the next pass.
bool WaitForSessionReplyPass(Link& link, SessionReply& reply, std::string_view awaited,
                             Prompts& prompts);

}  // namespace davo
