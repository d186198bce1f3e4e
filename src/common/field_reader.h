// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace davo {

// Reads text as comma-delimited fields: a field ends at a comma or a line end (CR LF, LF or CR);
// blanks around it are dropped; a field that starts with a double quote runs to the next double
// quote and loses both, and what stands between that quote and the next comma or line end is
// passed over.
class FieldReader {
  public:
    // bytes must live as long as the reader.
    explicit FieldReader(std::string_view bytes) : bytes_(bytes) {}

    bool AtEnd() const { return at_ >= bytes_.size(); }

    // The next field. Throws RunTimeError 62 (Input past end of file) at the end.
    std::string Next();

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

}  // namespace davo
