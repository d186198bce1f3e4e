// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "instrument/conversation_log.h"

namespace davo::instrument {

// A text that the instrument sent, and where in the log each part of it is.
class LoggedText {
  public:
    void Add(const LoggedBytes& piece);
    const std::string& All() const { return all_; }
    // Of the byte at a place of All; the last one's for a place behind it.
    const LoggedBytes& PieceAt(std::size_t place) const;

  private:
    std::string all_;
    std::vector<std::pair<std::size_t, LoggedBytes>> begins_;
};

// A command of the PC and all that came until the next one. Confirmations and cancels belong to
// the shot that they are in; the characters of headers that are written belong to "Fh".
struct Exchange {
    std::string command;  // "B", "L012", "Fh"; empty: before the first command
    LoggedBytes sent;     // its first byte
    std::string upload;   // what the PC sent after "Fh"
    bool cancelled = false;
    LoggedText reply;
};

std::vector<Exchange> ExchangesOf(const std::vector<LoggedBytes>& log);

}  // namespace davo::instrument
