// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScopedValueRollback>
#include <QString>
#include <exception>
#include <utility>

#include "common/prompts.h"

namespace davo {

// Where a window's event handlers run: what stops one is shown here, once, with its text; nothing
// thrown ever crosses Qt's event dispatch.
class EventHandlers {
  public:
    // prompts must outlive it.
    explicit EventHandlers(Prompts& prompts) : prompts_(prompts) {}

    // Runs handler, also inside another one that waits.
    template <class Handler>
    void Run(Handler&& handler) {
        const QScopedValueRollback depth(running_, running_ + 1);
        try {
            std::forward<Handler>(handler)();
        } catch (const std::exception& error) {
            prompts_.Message(QString::fromUtf8(error.what()));
        }
    }

    // Runs handler unless another one is under way: that one waits for the instrument or for an
    // answer of the operator, and what it works on must not change under it.
    template <class Handler>
    void RunAlone(Handler&& handler) {
        if (!Running()) Run(std::forward<Handler>(handler));
    }

    bool Running() const { return running_ > 0; }

  private:
    Prompts& prompts_;
    int running_ = 0;
};

}  // namespace davo
