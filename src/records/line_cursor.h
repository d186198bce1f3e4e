// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

namespace davo {

// Walks through the lines of bytes without copying them: a line ends at CR LF or a bare LF, and a
// last line without an end counts. bytes must outlive the cursor and the lines that it gave.
class LineCursor {
  public:
    explicit LineCursor(std::string_view bytes) : bytes_(bytes) {}

    // The next line without its end in line; false (line is then empty) when there is none.
    bool Next(std::string_view& line) {
        line = {};
        lineEnded_ = false;
        if (at_ >= bytes_.size()) return false;
        const std::size_t end = bytes_.find('\n', at_);
        lineEnded_ = end != std::string_view::npos;
        line = bytes_.substr(at_, lineEnded_ ? end - at_ : end);
        at_ = lineEnded_ ? end + 1 : bytes_.size();
        if (lineEnded_ && line.ends_with('\r')) line.remove_suffix(1);
        return true;
    }

    // Whether the line given last had a line end.
    bool LineEnded() const { return lineEnded_; }
    // Where the next line begins, in bytes.
    std::size_t Offset() const { return at_; }

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
    bool lineEnded_ = false;
};

}  // namespace davo
