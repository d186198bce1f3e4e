// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/session_reply.h"

#include "common/text.h"

namespace davo {

void PendingText::Append(std::string text) {
    if (text.empty()) return;
    if (size() == 0) {
        text_ = std::move(text);
        from_ = 0;
        return;
    }
    // Moving what is left is paid for by what was dropped.
    if (from_ > text_.size() / 2) {
        text_.erase(0, from_);
        from_ = 0;
    }
    text_ += text;
}

bool ExamineSessionReply(SessionReply& reply, std::string_view awaited, Prompts& prompts) {
    reply.sessionWindow = reply.sessionPending.View().substr(0, kSessionBlock);
    if (reply.sessionWindow.size() == kSessionBlock) reply.sessionPending.DropFirst(kSessionBlock);
    // The cut above keeps the window far below this limit; a change of the block must not pass
    // unnoticed.
    if (reply.sessionWindow.size() > kSessionLimit) {
        reply.sessionWindow.clear();
        prompts.Message(QStringLiteral("Buffer to big!"));
    }
    return Contains(reply.sessionWindow, awaited);
}

}  // namespace davo
