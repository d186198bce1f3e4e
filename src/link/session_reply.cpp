// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/session_reply.h"

#include "common/text.h"

namespace davo {

bool WaitForSessionReplyPass(Link& link, SessionReply& reply, std::string_view awaited,
                             Prompts& prompts) {
    reply.sessionPending += link.Input();
    if (reply.sessionPending.size() >= kSessionBlock) {
        reply.sessionWindow = reply.sessionPending.substr(0, kSessionBlock);
        reply.sessionPending.erase(0, kSessionBlock);
    } else {
        reply.sessionWindow = reply.sessionPending;
    }
    // The cut above keeps the window far below this limit; a change of the block must not pass
    // unnoticed.
    if (reply.sessionWindow.size() > kSessionLimit) {
        reply.sessionWindow.clear();
        prompts.Message(QStringLiteral("Buffer to big!"));
    }
    return Contains(reply.sessionWindow, awaited);
}

}  // namespace davo
