// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/replay.h"

#include <utility>

namespace davo::instrument {

namespace {

// "54 'T'"
std::string ByteInWords(char c) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(c);
    std::string text = {kDigits[value >> 4U], kDigits[value & 15U]};
    if (value > 32 && value < 127) text += std::string(" '") + c + "'";
    return text;
}

}  // namespace

Replay::Replay(std::vector<LoggedBytes> log) : log_(std::move(log)) {}

void Replay::GoOn(Micros now) {
    ++next_;
    within_ = 0;
    last_ = now;
}

void Replay::Receive(std::string_view bytes, Micros now) {
    early_ += bytes;
    Compare(now);
}

void Replay::Compare(Micros now) {
    std::size_t taken = 0;
    while (departure_.empty() && taken < early_.size()) {
        const char got = early_[taken];
        if (Ended()) {
            Depart("nothing: the recording has ended");
        } else if (log_[next_].toPc) {
            break;
        } else if (const char wanted = log_[next_].bytes[within_]; wanted != got) {
            Depart(ByteInWords(wanted) + " (line " + std::to_string(log_[next_].line) +
                   " of the log)");
        }
        if (!departure_.empty()) {
            departure_ += ", got " + ByteInWords(got);
            break;
        }
        ++taken;
        ++compared_;
        if (++within_ == log_[next_].bytes.size()) GoOn(now);
    }
    early_.erase(0, taken);
}

void Replay::Depart(const std::string& expected) {
    departure_ = "byte " + std::to_string(compared_ + 1) + " from the PC: expected " + expected;
}

std::string Replay::Take(Micros now) {
    std::string bytes;
    for (std::optional<Micros> due = NextDue(); due && *due <= now; due = NextDue()) {
        bytes += log_[next_].bytes;
        GoOn(*due);
        Compare(*due);
    }
    return bytes;
}

std::optional<Micros> Replay::NextDue() const {
    if (Ended() || !departure_.empty() || !log_[next_].toPc) return std::nullopt;
    const Micros before = next_ == 0 ? Micros{0} : log_[next_ - 1].at;
    return last_ + (log_[next_].at - before);
}

std::string Replay::State() const {
    if (!departure_.empty()) return "departed at " + departure_;
    const std::string sent = std::to_string(compared_) + " bytes from the PC as recorded";
    if (Ended()) return "whole: " + sent;
    return "stopped at line " + std::to_string(log_[next_].line) + " of the log: " + sent +
           (log_[next_].toPc ? ", more to send" : ", the next one has not come");
}

}  // namespace davo::instrument
