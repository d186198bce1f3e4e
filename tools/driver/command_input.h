// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <memory>

namespace davo::test {

// The lines of the standard input, as they come, in the event loop. When this is destroyed nothing
// calls any more, though the input may still be open.
class CommandInput {
  public:
    virtual ~CommandInput() = default;
};

// onEnd is called when the input has ended.
std::unique_ptr<CommandInput> ReadCommands(std::function<void(const QString&)> onLine,
                                           std::function<void()> onEnd);

}  // namespace davo::test
