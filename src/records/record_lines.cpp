// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_lines.h"

#include <iterator>

#include "common/text.h"
#include "records/record_keys.h"

namespace davo {

void PutLine(std::string& file, std::string_view line) {
    file += line;
    file += kLineEnd;
}

void PutRecordLine(std::string& file, std::string_view key, std::string_view value,
                   std::string_view unit) {
    file += key;
    file += ' ';
    file += value;
    file += unit;
    file += kLineEnd;
}

void PutPointLines(std::string& file, const RecordImage& image) {
    constexpr int kCurrentDecimals = 4;
    constexpr int kVoltageDecimals = 1;
    int points = 0;
    for (auto slot = std::rbegin(image.slots); slot != std::rend(image.slots); ++slot) {
        if (slot->current <= 0 || slot->voltage <= 0) continue;
        ++points;
        file.append(kCurrentKey).append(" ");
        file += FixedText(image.CurrentSteps(slot->current), kCurrentDecimals);
        PutRecordLine(file, kVoltageKey, FixedText(slot->voltage, kVoltageDecimals));
    }
    PutRecordLine(file, kPointCountKey, std::to_string(points));
}

std::string FixedText(int units, int decimals) {
    const auto behindPoint = static_cast<std::size_t>(decimals);
    std::string text = std::to_string(units);
    const std::size_t sign = units < 0 ? 1 : 0;
    if (text.size() <= sign + behindPoint)
        text.insert(sign, sign + behindPoint + 1 - text.size(), '0');
    text.insert(text.size() - behindPoint, 1, '.');
    return text;
}

std::string ShortestText(int units, int decimals) {
    std::string text = FixedText(units, decimals);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

int RoundedToTens(int units) {
    constexpr int kHalf = 5;
    return (units < 0 ? units - kHalf : units + kHalf) / 10;
}

}  // namespace davo
