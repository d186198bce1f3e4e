// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "common/prompts.h"

namespace davo {

// Text that is taken off at its front, at a cost that does not depend on how much is left.
class PendingText {
  public:
    PendingText() = default;
    PendingText(std::string text) : text_(std::move(text)) {}

    void Append(std::string text);
    void DropFirst(std::size_t count) { from_ += count; }
    // Of what was dropped since the last Append.
    void PutBack(std::size_t count) { from_ -= count; }

    std::string_view View() const { return std::string_view(text_).substr(from_); }
    std::size_t size() const { return text_.size() - from_; }
    bool operator==(std::string_view text) const { return View() == text; }

  private:
    std::string text_;
    std::size_t from_ = 0;
};

// The test session's reply buffers.
struct SessionReply {
    PendingText sessionPending;  // polled from the port and not yet examined
    std::string sessionWindow;   // the part being examined for the awaited reply
};

inline constexpr std::size_t kSessionBlock = 1024;
inline constexpr std::size_t kSessionLimit = 2000;

// Lays the window (the first 1024 characters, which then leave sessionPending, once that many have
// gathered; a copy of sessionPending before that) and tells whether it contains awaited. A text
// that straddles two blocks is not found here: who examines a block puts its unfinished end back
// before the next one.
bool ExamineSessionReply(SessionReply& reply, std::string_view awaited, Prompts& prompts);

}  // namespace davo
