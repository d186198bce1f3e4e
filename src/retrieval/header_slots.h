// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "records/header_table.h"

namespace davo {

inline constexpr int kHeaderSlotCount = 10;
// Eight fields of 20 characters without separators.
inline constexpr std::size_t kHeaderSlotWidth = kHeaderFieldCount * kHeaderFieldWidth;
inline constexpr std::size_t kHeaderMemoryWidth = kHeaderSlotCount * kHeaderSlotWidth;
// Fills a slot without a header.
inline constexpr char kEmptySlotFill = '\xFF';

// The instrument's header slots; the last string is not used. Windows-1252.
using HeaderSlots = std::array<std::string, kHeaderSlotCount + 1>;

// The texts of the eight boxes, in the order of kHeaderKeys.
using HeaderBoxes = std::array<std::string, kHeaderFieldCount>;

// A slot is empty when it is blank or its first character is kEmptySlotFill.
bool IsEmptySlot(std::string_view slot);

// The boxes of a slot, each trimmed; all clear for an empty one.
HeaderBoxes UnpackSlot(std::string_view slot);

// The 160 characters of a slot: every field trimmed and filled to 20. All boxes blank give an
// empty slot. A box whose trimmed text is longer than 20 is cut to its first 20 characters in
// boxes, so that the user sees the cut.
std::string PackSlot(HeaderBoxes& boxes);

// The reply to "Fr" as slots: 1600 characters and CR LF; nothing when it is of any other length.
std::optional<HeaderSlots> CutSlots(std::string_view reply);

// The 1600 characters of an upload. An empty slot is 160 times kEmptySlotFill.
std::string JoinSlots(const HeaderSlots& slots);

// What the instrument answers to each character of an upload: the character itself, and a blank
// throughout an empty slot.
std::string EchoesOf(std::string_view upload);

}  // namespace davo
