// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_results.h"

#include <cmath>

#include "common/numbers.h"
#include "common/text.h"
#include "records/record_keys.h"
#include "records/record_lines.h"

namespace davo {

namespace {

bool IsBlank(const ControlView& box) {
    return TrimBlanks(box.text).empty();
}

// The capture file is read by its lines: a line end that noise put into the ratio's text would push
// the lines after it out of their places.
std::string OneLine(std::string text) {
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
    return text;
}

}  // namespace

std::optional<std::string> NameplateRatio(const std::string& hCurrent,
                                          const std::string& xCurrent) {
    const auto h = WholeNumericValue(hCurrent);
    const auto x = WholeNumericValue(xCurrent);
    if (!h || !x || !(*x > 0) || !std::isfinite(*h / *x)) return std::nullopt;
    return GeneralNumber(RoundByPicture(*h / *x, "##0.000"));
}

std::optional<std::string> PercentError(const std::string& measured, const std::string& nameplate) {
    const auto m = LeadingNumericValue(measured);
    const auto n = WholeNumericValue(nameplate);
    if (!m || !n) return std::nullopt;
    // A nameplate ratio of zero gives no finite number.
    const double percent = std::abs(*m - *n) / *n * 100;
    if (!std::isfinite(percent)) return std::nullopt;
    return Picture(percent, "##0.00");
}

void ComputePercentError(ShotScreen& screen) {
    if (screen.txtRatio.text.empty() || screen.txtCRatio.text.empty()) return;
    const auto percent = PercentError(screen.txtRatio.text, screen.txtCRatio.text);
    if (percent) screen.lblPE.enabled = true;
    screen.txtPE.text = percent.value_or("");
}

void ClearBlankNameplate(ShotScreen& screen) {
    if (!IsBlank(screen.txtHVolt) && !IsBlank(screen.txtXVolt)) return;
    for (ControlView* box : {&screen.txtHVolt, &screen.txtXVolt, &screen.txtCRatio})
        box->text.clear();
}

std::optional<std::string> PolarityWord(char sign) {
    switch (sign) {
        case '+':
            return "IN PHASE";
        case '-':
            return "OUT OF PHASE";
        case ' ':
            return "UNDETERMINED";
        default:
            return std::nullopt;
    }
}

std::string DescribeRatio(const std::string& ratio) {
    std::string text = TrimBlanks(OneLine(ratio));
    const std::size_t colon = text.find(':');
    const bool plain = WholeNumericValue(text.substr(0, colon)) &&
                       (colon == std::string::npos || WholeNumericValue(text.substr(colon + 1)));
    if (text.empty() || plain) return {};
    // A line whose end was lost is as long as what follows it.
    constexpr std::size_t kMostCharacters = 24;
    if (text.size() > kMostCharacters) text = text.substr(0, kMostCharacters) + "...";
    return "The ratio of this shot is no plain number: \"" + text +
           "\". Press Repeat Test to drop the shot and run it again.";
}

std::string ShotBlock(std::string_view rawRecord, const ShotScreen& screen) {
    const std::string end(kLineEnd);
    std::string block = std::string(rawRecord) + end;
    PutRecordLine(block, kMeasuredRatioKey, OneLine(screen.txtRatio.text));
    if (IsBlank(screen.txtHVolt) || IsBlank(screen.txtXVolt) || IsBlank(screen.txtCRatio) ||
        IsBlank(screen.txtPE)) {
        PutRecordLine(block, kNameplateRatioKey, "N/A");
        PutRecordLine(block, kPercentErrorKey, "N/A");
    } else {
        PutRecordLine(block, kNameplateRatioKey,
                      TrimBlanks(screen.txtCRatio.text) + " (" + TrimBlanks(screen.txtHVolt.text) +
                          ":" + TrimBlanks(screen.txtXVolt.text) + ")");
        PutRecordLine(block, kPercentErrorKey, TrimBlanks(screen.txtPE.text), "%");
    }
    return block + end;
}

}  // namespace davo
