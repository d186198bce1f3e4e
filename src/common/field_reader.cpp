// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/field_reader.h"

#include <algorithm>

#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

std::string FieldReader::Next() {
    if (AtEnd()) throw RunTimeError(ErrorNumber::InputPastEnd);
    const std::size_t start = std::min(bytes_.find_first_not_of(' ', at_), bytes_.size());
    std::size_t rest = start;
    std::string field;
    const bool quoted = start < bytes_.size() && bytes_[start] == '"';
    if (quoted) {
        const std::size_t close = std::min(bytes_.find('"', start + 1), bytes_.size());
        field = bytes_.substr(start + 1, close - start - 1);
        rest = std::min(close + 1, bytes_.size());
    }
    const std::size_t end = std::min(bytes_.find_first_of(",\r\n", rest), bytes_.size());
    if (!quoted) field = TrimBlanks(bytes_.substr(start, end - start));

    const bool lineEndOfTwo = bytes_.substr(end, 2) == kLineEnd;
    at_ = std::min(end + (lineEndOfTwo ? 2 : 1), bytes_.size());
    return field;
}

}  // namespace davo
