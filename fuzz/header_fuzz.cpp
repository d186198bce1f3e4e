// SPDX-License-Identifier: GPL-3.0-or-later
// The reply to "Fr" and the header file: what is read is written back as it was, and nothing grows.
#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "records/header_table.h"
#include "retrieval/header_slots.h"

namespace {

using namespace davo;
using fuzz::Require;

constexpr std::size_t kSlotBytes = kHeaderFieldCount * kHeaderFieldWidth;

void CheckSlot(const std::string& slot) {
    HeaderBoxes boxes = UnpackSlot(slot);
    const HeaderBoxes shown = boxes;
    const std::string packed = PackSlot(boxes);
    Require(boxes == shown, "what a slot holds is not cut");
    Require(packed.size() == kSlotBytes, "160 characters");
    // By the instrument's rule it is then an empty one.
    if (packed.front() == kEmptySlotFill) return;
    HeaderBoxes again = UnpackSlot(packed);
    Require(again == shown, "a slot is read as it was packed");
    Require(PackSlot(again) == packed, "packing changes nothing twice");
}

void CheckReply(const std::string& reply) {
    const auto slots = CutSlots(reply);
    Require(slots.has_value() == (reply.size() == kHeaderSlotCount * kSlotBytes + kLineEnd.size()),
            "of its length it is taken, of no other");
    if (!slots) return;
    for (std::size_t i = 0; i < kHeaderSlotCount; ++i)
        CheckSlot(slots->at(i));
    const std::string upload = JoinSlots(*slots);
    Require(upload.size() == kHeaderSlotCount * kSlotBytes, "1600 characters");
    Require(EchoesOf(upload).size() == upload.size(), "an echo for each");
    const auto back = CutSlots(upload + std::string(kLineEnd));
    Require(back && JoinSlots(*back) == upload, "what is uploaded is read back");
}

bool HasKey(const HeaderTable& table) {
    return std::any_of(table.Fields().begin(), table.Fields().end(),
                       [](const std::string& text) { return FieldOfHeaderLine(text).has_value(); });
}

void CheckHeaderFile(const std::string& bytes) {
    const fuzz::Folder folder;
    ReplaceFile(folder.Path("Davo.ini"), bytes);
    HeaderTable table;
    LoadHeaderFile(table, folder.Path());
    std::size_t size = 0;
    for (const std::string& field : table.Fields()) {
        Require(field.size() >= kHeaderFieldWidth, "a field is filled");
        size += field.size();
    }
    Require(size <= bytes.size() + kSlotBytes, "no more than the file and its filling");
    SaveHeaderFile(table, folder.Path());
    HeaderTable again;
    LoadHeaderFile(again, folder.Path());
    if (!HasKey(table)) {
        Require(again.headerFields == table.headerFields, "it is read as it was written");
    }
    const std::size_t written = ReadWholeFile(folder.Path("Davo.ini")).size();
    SaveHeaderFile(again, folder.Path());
    Require(ReadWholeFile(folder.Path("Davo.ini")).size() <= written + kSlotBytes,
            "writing it again adds filling at most");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string bytes = input.Rest();
    CheckReply(bytes);
    // Any text of the right length, so that the slots have their turn.
    std::string reply = bytes;
    reply.resize(kHeaderSlotCount * kSlotBytes, ' ');
    CheckReply(reply + std::string(kLineEnd));
    CheckHeaderFile(bytes);
    return 0;
}
