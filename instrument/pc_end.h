// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace davo::instrument {

// The end of a line that the program opens as its port: on Linux a pseudo terminal with a link at
// name, on Windows the port of that name, which a second one is coupled to. The callbacks come from
// the event loop.
class PcEnd {
  public:
    virtual ~PcEnd() = default;
    virtual void Write(std::string_view bytes) = 0;

    std::function<void(std::string bytes)> OnBytes;
    std::function<void()> OnStop;  // the user or the system ends the program
};

// Throws RunTimeError 57, 75, 8002 or 8005 when it cannot be had.
std::unique_ptr<PcEnd> MakePcEnd(const QString& name);

}  // namespace davo::instrument
