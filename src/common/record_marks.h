// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace davo {

// What a record is between, on the wire and in the capture file.
inline constexpr std::string_view kRecordStart = "DATA";
inline constexpr std::string_view kRecordEnd = "DONE";

}  // namespace davo
