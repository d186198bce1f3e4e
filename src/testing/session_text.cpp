// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/session_text.h"

#include <algorithm>

#include "records/record_image.h"

namespace davo {

namespace {

constexpr auto kNone = std::string_view::npos;
constexpr std::string_view kCurrent = "I=";
constexpr std::string_view kVoltage = "V=";

bool IsReading(std::string_view line) {
    return line == kCurrent.substr(0, 1) || Contains(line, kCurrent) || Contains(line, kVoltage);
}

std::string_view CurrentText(std::string_view text, std::size_t from, std::size_t voltageAt) {
    const std::size_t length = voltageAt > from ? voltageAt - from - 1 : 0;
    const std::string_view current = Middle(text, from, length);
    // The voltage may be on a line of its own.
    return current.substr(0, current.find('\r'));
}

// Where the last whole record ends; 0 without one.
std::size_t WholeRecordsUpTo(std::string_view text) {
    std::size_t upTo = 0;
    while (const auto record = RecordIn(text.substr(upTo))) {
        upTo = static_cast<std::size_t>(record->data() + record->size() - text.data());
    }
    return upTo;
}

// Where the word "DATA" begins, or the part of it that has arrived.
std::size_t RecordStartIn(std::string_view text) {
    const std::size_t start = text.find(kRecordStart);
    if (start != kNone) return start;
    for (std::size_t length = kRecordStart.size() - 1; length > 0; --length) {
        if (text.ends_with(kRecordStart.substr(0, length))) return text.size() - length;
    }
    return text.size();
}

}  // namespace

std::vector<Reading> CompleteReadings(std::string_view text) {
    std::vector<Reading> readings;
    std::size_t from = 0;
    while (true) {
        const std::size_t voltage = text.find(kVoltage, from);
        const std::size_t end = text.find(kLineEnd, voltage);
        if (voltage == kNone || end == kNone) return readings;
        const std::size_t current = text.substr(from, voltage - from).rfind(kCurrent);
        if (current != kNone) {
            const std::size_t value = voltage + kVoltage.size();
            readings.push_back({CurrentText(text, from + current + kCurrent.size(), voltage),
                                text.substr(value, end - value)});
        }
        from = end + kLineEnd.size();
    }
}

std::optional<std::string> SaturationPrompt(std::string_view text) {
    const std::size_t start = text.find(kSaturationPrompt);
    if (start == kNone) return std::nullopt;
    const std::size_t lineEnd = text.find(kLineEnd, start);
    const std::string_view behind =
        text.substr(0, lineEnd).substr(start + kSaturationPrompt.size());
    const std::size_t open = behind.find('(');
    const std::size_t close = open == kNone ? kNone : behind.find(')', open);
    if (close == kNone && lineEnd == kNone) return std::nullopt;
    std::string prompt(kSaturationPrompt);
    prompt += ' ';
    if (close != kNone) prompt += behind.substr(open, close - open + 1);
    return prompt;
}

std::optional<std::string_view> RatioIn(std::string_view text) {
    constexpr std::string_view kRatio = "RATIO=";
    const std::size_t end = text.rfind(kLineEnd);
    const std::size_t start = text.substr(0, end).rfind(kRatio);
    if (end == kNone || start == kNone) return std::nullopt;
    const std::string_view value = text.substr(start + kRatio.size());
    return value.substr(0, value.find(kLineEnd));
}

std::optional<char> PolarityIn(std::string_view text) {
    constexpr std::string_view kPolarity = "POLARITY=";
    const std::size_t start = text.substr(0, text.empty() ? 0 : text.size() - 1).rfind(kPolarity);
    if (start == kNone) return std::nullopt;
    return text[start + kPolarity.size()];
}

std::optional<std::string_view> RecordIn(std::string_view text) {
    const std::size_t start = text.find(kRecordStart);
    if (start == kNone) return std::nullopt;
    const std::size_t end = text.find(kRecordEnd, start + kRecordStart.size());
    if (end == kNone) return std::nullopt;
    return text.substr(start, end + kRecordEnd.size() - start);
}

std::size_t UnfinishedFrom(std::string_view text, bool keepReading) {
    // A line end inside a whole record does not cut it.
    const std::size_t recordsUpTo = WholeRecordsUpTo(text);
    const std::string_view rest = text.substr(recordsUpTo);
    const std::size_t lastEnd = rest.rfind(kLineEnd);
    std::size_t line = lastEnd == kNone ? 0 : lastEnd + kLineEnd.size();
    if (!keepReading && IsReading(rest.substr(line))) line = rest.size();
    return recordsUpTo + std::min(line, RecordStartIn(rest));
}

}  // namespace davo
