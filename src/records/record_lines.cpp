// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_lines.h"

#include "common/text.h"
#include "records/count_text.h"
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

// The last point comes first, so the lines are made from the last one of the file up.
void PutPointLines(std::string& file, const RecordImage& image) {
    constexpr int kCurrentDecimals = 4;
    constexpr int kVoltageDecimals = 1;
    BackwardText lines;
    int points = 0;
    for (const auto& [current, voltage] : image.slots) {
        if (current <= 0 || voltage <= 0) continue;
        ++points;
        lines.Put(kLineEnd);
        lines.PutFixed(voltage, kVoltageDecimals);
        lines.Put(" ");
        lines.Put(kVoltageKey);
        lines.PutFixed(image.CurrentSteps(current), kCurrentDecimals);
        lines.Put(" ");
        lines.Put(kCurrentKey);
    }
    file += lines.Text();
    PutRecordLine(file, kPointCountKey, std::to_string(points));
}

}  // namespace davo
