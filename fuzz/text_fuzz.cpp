// SPDX-License-Identifier: GPL-3.0-or-later
// What the instrument says in a shot, cut anywhere: a record is found whole however it arrives.
#include "fuzz/fuzzing.h"
#include "testing/session_text.h"

namespace {

using namespace davo;
using fuzz::Require;

void CheckCut(const std::string& block, const std::string& next, bool keepReading) {
    const std::size_t from = UnfinishedFrom(block, keepReading);
    Require(from <= block.size(), "what is left is a part of it");
    const std::string all = block + next;
    const auto record = RecordIn(all);
    if (!record || RecordIn(block)) return;
    const std::string rest = block.substr(from) + next;
    Require(RecordIn(rest) == record, "a record that a block has cut is whole in the next");
}

void CheckParts(const std::string& text) {
    for (const Reading& reading : CompleteReadings(text)) {
        Require(reading.current.find('\r') == std::string_view::npos, "a current is of one line");
        Require(reading.current.size() + reading.voltage.size() <= text.size(), "a part of it");
    }
    const auto ratio = RatioIn(text);
    Require(!ratio || ratio->find(kLineEnd) == std::string_view::npos, "a ratio is of one line");
    const auto prompt = SaturationPrompt(text);
    Require(!prompt || prompt->starts_with(kSaturationPrompt), "a prompt begins as it does");
    Require(!prompt || prompt->size() <= text.size() + 1, "a prompt is a part of it");
    PolarityIn(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string block = input.Text();
    const std::string next = input.Rest();
    CheckCut(block, next, true);
    CheckCut(block, next, false);
    CheckParts(block + next);
    return 0;
}
