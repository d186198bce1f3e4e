// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/exchanges.h"

#include <algorithm>
#include <string_view>

#include "instrument/memory.h"

namespace davo::instrument {

namespace {

constexpr char kCancel = '\x1B';
constexpr std::size_t kLocateSize = 4;  // "L" and three digits

class Gathering {
  public:
    Gathering() { exchanges_.emplace_back(); }

    void FromPc(char c, const LoggedBytes& piece) {
        Exchange& current = exchanges_.back();
        std::string& command = current.command;
        const bool isDigit = c >= '0' && c <= '9';
        if (command == "Fh" && current.upload.size() < kHeaderMemorySize) {
            current.upload += c;
        } else if ((command == "F" && (c == 'r' || c == 'h')) ||
                   (command.starts_with('L') && command.size() < kLocateSize && isDigit)) {
            command += c;
        } else if (InShot() && c == kCancel) {
            current.cancelled = true;
        } else if (!InShot() || std::string_view("\rS").find(c) == std::string_view::npos) {
            exchanges_.push_back({std::string(1, c), piece, {}, false, {}});
        }
    }
    void ToPc(const LoggedBytes& piece) { exchanges_.back().reply.Add(piece); }

    std::vector<Exchange> Take() {
        const Exchange& first = exchanges_.front();
        if (first.reply.All().empty()) exchanges_.erase(exchanges_.begin());
        return std::move(exchanges_);
    }

  private:
    bool InShot() const {
        const std::string& command = exchanges_.back().command;
        return command == "T" || command == "t";
    }

    std::vector<Exchange> exchanges_;
};

}  // namespace

void LoggedText::Add(const LoggedBytes& piece) {
    begins_.emplace_back(all_.size(), piece);
    all_ += piece.bytes;
}

const LoggedBytes& LoggedText::PieceAt(std::size_t place) const {
    const auto after = std::upper_bound(
        begins_.begin(), begins_.end(), place,
        [](std::size_t wanted, const auto& begin) { return wanted < begin.first; });
    return std::prev(after)->second;
}

std::vector<Exchange> ExchangesOf(const std::vector<LoggedBytes>& log) {
    Gathering gathering;
    for (const LoggedBytes& piece : log) {
        if (piece.toPc) {
            gathering.ToPc(piece);
            continue;
        }
        for (const char c : piece.bytes)
            gathering.FromPc(c, piece);
    }
    return gathering.Take();
}

}  // namespace davo::instrument
