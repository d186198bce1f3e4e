// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "instrument/conversation.h"

namespace davo::instrument {

namespace {

struct Named {
    std::string_view name;
    Fault preset;
};

constexpr std::array<Named, 11> kNamed = {{
    {"silent", {FaultKind::Silent, 0, 0}},
    {"slow", {FaultKind::Slow, 10, 0}},
    {"noise", {FaultKind::Noise, 0.01, 0}},
    {"cut-line", {FaultKind::CutLine, 0, 0}},
    {"dropped-echo", {FaultKind::DroppedEcho, 1, 0}},
    {"wrong-lengths", {FaultKind::WrongLengths, -6, 0}},
    {"unplugged", {FaultKind::Unplugged, 0, 0}},
    {"cut", {FaultKind::Cut, 0, 0}},
    {"stall", {FaultKind::Stall, 0, 0}},
    {"double", {FaultKind::Double, 0, 0}},
    {"flip", {FaultKind::Flip, 0, 0}},
}};

bool ReadNumber(std::string_view text, double& value) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

}  // namespace

std::optional<Fault> ParseFault(std::string_view text) {
    const std::size_t colon = text.find(':');
    const std::string_view name = text.substr(0, colon);
    const auto* const known = std::find_if(kNamed.begin(), kNamed.end(),
                                           [&](const Named& named) { return named.name == name; });
    if (known == kNamed.end()) return std::nullopt;
    Fault fault = known->preset;
    if (colon == std::string_view::npos) return fault;
    const std::string_view arguments = text.substr(colon + 1);
    const std::size_t comma = arguments.find(',');
    if (!ReadNumber(arguments.substr(0, comma), fault.first)) return std::nullopt;
    if (comma != std::string_view::npos && !ReadNumber(arguments.substr(comma + 1), fault.second)) {
        return std::nullopt;
    }
    return fault;
}

FaultyLine::FaultyLine(std::vector<Fault> faults, std::uint64_t seed)
    : faults_(std::move(faults)), random_(seed + 4711) {}

const Fault* FaultyLine::Find(FaultKind kind) const {
    const auto found = std::find_if(faults_.begin(), faults_.end(),
                                    [&](const Fault& fault) { return fault.kind == kind; });
    return found == faults_.end() ? nullptr : &*found;
}

bool FaultyLine::LineIsCut() const {
    const Fault* const cut = Find(FaultKind::CutLine);
    return cut != nullptr && passed_ >= cut->first;
}

double FaultyLine::SlowFactor() const {
    const Fault* const slow = Find(FaultKind::Slow);
    return slow == nullptr ? 1 : slow->first;
}

void FaultyLine::PlugIn() {
    unplugged_ = false;
    std::erase_if(faults_, [](const Fault& fault) { return fault.kind == FaultKind::Unplugged; });
}

std::string_view FaultyLine::FromPc(std::string_view bytes) const {
    return LineIsCut() || unplugged_ ? std::string_view() : bytes;
}

void FaultyLine::FromInstrument(std::string_view bytes, Micros now) {
    for (const char byte : bytes) {
        PassByte(byte, now);
        ++passed_;
    }
    const Fault* const pulled = Find(FaultKind::Unplugged);
    if (pulled != nullptr && passed_ >= pulled->first) unplugged_ = true;
}

void FaultyLine::PassByte(char byte, Micros now) {
    if (Find(FaultKind::Silent) != nullptr || LineIsCut()) return;
    std::string sent(1, byte);
    for (const Fault& fault : faults_) {
        const bool here = passed_ == fault.first;
        switch (fault.kind) {
            case FaultKind::Noise:
                if (random_.Chance(fault.first)) {
                    sent.insert(sent.begin(), static_cast<char>(random_.Between(0, 255)));
                }
                break;
            case FaultKind::Unplugged:
            case FaultKind::Cut:
                if (passed_ >= fault.first) return;
                break;
            case FaultKind::Stall:
                if (passed_ < fault.first) break;
                if (fault.second <= 0) return;
                if (here) {
                    now += Micros{static_cast<std::int64_t>(fault.second * 1000)};
                }
                break;
            case FaultKind::Double:
                if (here) sent += byte;
                break;
            case FaultKind::Flip:
                if (here) {
                    sent.back() = static_cast<char>(static_cast<unsigned char>(sent.back()) ^
                                                    (1U << static_cast<unsigned>(fault.second)));
                }
                break;
            default:
                break;
        }
    }
    out_.Put(sent, now);
}

void ApplyFaults(const std::vector<Fault>& faults, ConversationOptions& options) {
    for (const Fault& fault : faults) {
        if (fault.kind == FaultKind::DroppedEcho) {
            options.droppedEcho = static_cast<int>(fault.first);
        } else if (fault.kind == FaultKind::WrongLengths) {
            options.extraDigits = static_cast<int>(fault.first);
        }
    }
}

}  // namespace davo::instrument
