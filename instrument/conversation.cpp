// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/conversation.h"

#include <algorithm>
#include <array>
#include <utility>

namespace davo::instrument {

namespace {

constexpr char kCr = '\r';
constexpr char kEsc = '\x1B';
// An upload that stops half way must not leave the instrument deaf for ever.
constexpr Micros kUploadPatience = std::chrono::seconds(30);

}  // namespace

std::optional<Scenario> ScenarioByName(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, Scenario>, 5> kNames = {{
        {"full", Scenario::Full},
        {"ratio-only", Scenario::RatioOnly},
        {"over-voltage", Scenario::OverVoltage},
        {"out-of-phase", Scenario::OutOfPhase},
        {"undetermined", Scenario::Undetermined},
    }};
    for (const auto& [known, scenario] : kNames) {
        if (known == name) return scenario;
    }
    return std::nullopt;
}

Conversation::Conversation(ConversationOptions options)
    : options_(std::move(options)),
      random_(options_.seed),
      controlled_(options_.underComputerControl),
      headers_(options_.headerMemory) {
    headers_.resize(kHeaderMemorySize, kErased);
    if (options_.scenarios.empty()) options_.scenarios = {Scenario::Full};
    if (options_.transformers.empty()) {
        const auto presets = TransformerPresets();
        options_.transformers.assign(presets.begin(), presets.end());
    }
}

void Conversation::Receive(std::string_view bytesFromPc) {
    for (const char c : bytesFromPc)
        TakeCharacter(c);
}

void Conversation::Advance(Micros now) {
    while (due_ && *due_ <= now) {
        now_ = std::max(now_, *due_);
        due_.reset();
        RunStep();
    }
    now_ = now;
    if (uploadGivenUp_ && *uploadGivenUp_ <= now) {
        uploadGivenUp_.reset();
        uploadAt_ = kHeaderMemorySize;
    }
}

std::optional<Micros> Conversation::NextDue() const {
    const std::optional<Micros> send = out_.NextDue();
    if (send && due_) return std::min(*send, *due_);
    return send ? send : due_;
}

void Conversation::TakeCharacter(char c) {
    if (!options_.underComputerControl) return;
    if (uploadAt_ < kHeaderMemorySize) {
        TakeHeaderCharacter(c);
        return;
    }
    if (!command_.empty() && FinishCommand(c)) return;
    Command(c);
}

// True when c belongs to the command that was begun.
bool Conversation::FinishCommand(char c) {
    if (command_[0] == 'L') {
        const bool digit = c >= '0' && c <= '9';
        if (digit) command_ += c;
        if (!digit || command_.size() == 4) Locate();
        return digit;
    }
    command_.clear();
    if (c == 'r') {
        Bulk(headers_ + "\r\n");
        return true;
    }
    if (c != 'h') return false;
    headers_.assign(kHeaderMemorySize, kErased);
    uploadAt_ = 0;
    uploadGivenUp_ = now_ + kUploadPatience;
    Line("ERASING...");
    out_.Put("H:\r\n", out_.Last() + Pause(600, 1200));
    return true;
}

void Conversation::Command(char c) {
    if (c == 'B') controlled_ = true;
    if (!controlled_) return;
    switch (c) {
        case 'B':
            Line("RDY\r\n");
            break;
        case 'W':
            Line("\r\n" + options_.model + "\r\n");
            break;
        case 'X':
            EndShot();
            controlled_ = false;
            break;
        case 'T':
        case 't':
            StartShot(c == 't');
            break;
        case kCr:
            Confirm();
            break;
        case kEsc:
            EndShot();
            break;
        case 'd':
            Bulk(DirectoryReply(options_.memory));
            break;
        case 'R':
            SendRecord();
            break;
        case 'L':
        case 'F':
            command_ = c;
            break;
        default:  // an "S" on its own too: what cancels is the ESC after it
            break;
    }
}

void Conversation::Locate() {
    const int number = command_.size() == 4 ? std::stoi(command_.substr(1)) : 0;
    command_.clear();
    const auto found =
        std::find_if(options_.memory.begin(), options_.memory.end(),
                     [&](const MemoryRecord& record) { return record.number == number; });
    located_ = found == options_.memory.end() ? nullptr : &*found;
    Line(located_ ? "Record Found\r\n" : "Record Not Found\r\n");
}

void Conversation::SendRecord() {
    Bulk(located_ ? RecordReply(*located_) : "\r\nDONE\r\n");
}

void Conversation::TakeHeaderCharacter(char c) {
    headers_[uploadAt_] = c;
    ++uploadAt_;
    uploadGivenUp_ = now_ + kUploadPatience;
    if (uploadAt_ == kHeaderMemorySize) uploadGivenUp_.reset();
    if (std::cmp_equal(uploadAt_, options_.droppedEcho)) return;
    out_.Put(std::string(1, c == kErased ? ' ' : c), now_ + Pause(0, 2));
}

Micros Conversation::Pause(int low, int high) {
    const double milliseconds = low + (high - low) * random_.Unit();
    return Micros{static_cast<std::int64_t>(milliseconds * 1000 * options_.pauseScale)};
}

void Conversation::Line(const std::string& text) {
    out_.Put({}, now_ + Pause(10, 40));
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t length = text.size() - at;
        if (random_.Chance(0.5)) length = 1 + random_.Next() % length;
        out_.Put(text.substr(at, length), out_.Last());
        at += length;
        if (at < text.size()) out_.Put({}, out_.Last() + Pause(1, 25));
    }
}

void Conversation::Bulk(const std::string& text) {
    out_.Put(text, now_ + Pause(20, 120));
}

}  // namespace davo::instrument
