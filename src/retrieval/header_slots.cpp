// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/header_slots.h"

#include "common/text.h"

namespace davo {

bool IsEmptySlot(std::string_view slot) {
    return TrimBlanks(slot).empty() || slot.front() == kEmptySlotFill;
}

HeaderBoxes UnpackSlot(std::string_view slot) {
    HeaderBoxes boxes;
    if (IsEmptySlot(slot)) return boxes;
    std::size_t at = 0;
    for (std::string& box : boxes) {
        box = TrimBlanks(Middle(slot, at, kHeaderFieldWidth));
        at += kHeaderFieldWidth;
    }
    return boxes;
}

std::string PackSlot(HeaderBoxes& boxes) {
    std::string slot;
    for (std::string& box : boxes)
        slot += PadRight(TakeHeaderField(box), kHeaderFieldWidth);
    if (TrimBlanks(slot).empty()) slot.assign(kHeaderSlotWidth, kEmptySlotFill);
    return slot;
}

std::optional<HeaderSlots> CutSlots(std::string_view reply) {
    if (reply.size() != kHeaderMemoryWidth + kLineEnd.size()) return std::nullopt;
    HeaderSlots slots;
    for (std::size_t i = 0; i < kHeaderSlotCount; ++i)
        slots.at(i) = reply.substr(i * kHeaderSlotWidth, kHeaderSlotWidth);
    return slots;
}

std::string JoinSlots(const HeaderSlots& slots) {
    std::string upload;
    for (std::size_t i = 0; i < kHeaderSlotCount; ++i) {
        const std::string& slot = slots.at(i);
        upload += IsEmptySlot(slot) ? std::string(kHeaderSlotWidth, kEmptySlotFill)
                                    : PadRight(slot, kHeaderSlotWidth);
    }
    return upload;
}

std::string EchoesOf(std::string_view upload) {
    std::string echoes;
    for (std::size_t at = 0; at < upload.size(); at += kHeaderSlotWidth) {
        const std::string_view slot = upload.substr(at, kHeaderSlotWidth);
        echoes +=
            slot.front() == kEmptySlotFill ? std::string(slot.size(), ' ') : std::string(slot);
    }
    return echoes;
}

}  // namespace davo
