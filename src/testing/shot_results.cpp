// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <optional>

#include "common/numbers.h"
#include "common/text.h"
#include "testing/session_text.h"
#include "testing/shot_sequence.h"

namespace davo {

namespace {

bool IsBlank(const ControlView& box) {
    return TrimBlanks(box.text).empty();
}

// H / X to three decimals, in general number form; nothing for texts that are no numbers and for
// an X current of zero or below.
std::optional<std::string> NameplateRatio(const std::string& hCurrent,
                                          const std::string& xCurrent) {
    const auto h = WholeNumericValue(hCurrent);
    const auto x = WholeNumericValue(xCurrent);
    if (!h || !x || !(*x > 0) || !std::isfinite(*h / *x)) return std::nullopt;
    return GeneralNumber(RoundByPicture(*h / *x, "##0.000"));
}

// |M - N| / N in percent; nothing where that cannot be computed.
std::optional<std::string> PercentError(const std::string& measured, const std::string& nameplate) {
    const auto m = WholeNumericValue(measured);
    const auto n = WholeNumericValue(nameplate);
    if (!m || !n) return std::nullopt;
    // A nameplate ratio of zero gives no finite number.
    const double percent = std::abs(*m - *n) / *n * 100;
    if (!std::isfinite(percent)) return std::nullopt;
    return Picture(percent, "##0.00");
}

}  // namespace

void ShotSequence::ParseRatioReply() {
    if (const auto ratio = RatioIn(reply_.sessionWindow)) screen_.txtRatio.text = *ratio;
    switch (PolarityIn(reply_.sessionWindow).value_or('\0')) {
        case '+':
            screen_.txtPolarity.text = "IN PHASE";
            break;
        case '-':
            screen_.txtPolarity.text = "OUT OF PHASE";
            break;
        case ' ':
            screen_.txtPolarity.text = "UNDETERMINED";
            break;
        default:
            break;
    }
}

void ShotSequence::UpdateNameplateRatio() {
    screen_.txtCRatio.text.clear();
    if (const auto ratio = NameplateRatio(screen_.txtHVolt.text, screen_.txtXVolt.text)) {
        screen_.txtCRatio.text = *ratio;
        screen_.lblCRatio.enabled = true;
    }
    ShowPercentError();
    if (screen_.txtCRatio.text.empty()) screen_.txtPE.text.clear();
    if (shotPending_) UpdateJournal();
}

void ShotSequence::ShowPercentError() {
    if (screen_.txtRatio.text.empty() || screen_.txtCRatio.text.empty()) return;
    const auto percent = PercentError(screen_.txtRatio.text, screen_.txtCRatio.text);
    if (percent) screen_.lblPE.enabled = true;
    screen_.txtPE.text = percent.value_or("");
}

void ShotSequence::ComputePercentError() {
    ShowPercentError();
    shotPending_ = true;
}

void ShotSequence::AdjustShotCounters(int delta) {
    const bool ratioOnly = around_.modes.testRatioOnlyMode;
    const std::int16_t saturations = ToInteger16(satCount_ + (ratioOnly ? 0 : delta));
    const std::int16_t ratios = ToInteger16(ratioCount_ + delta);
    around_.session.shotCount = ToInteger16(around_.session.shotCount + delta);
    satCount_ = saturations;
    ratioCount_ = ratios;
    screen_.lblCRCount.text = "(" + std::to_string(confirmCount_) + ")";
    screen_.lblRatioCount.text = "Ratio - " + std::to_string(ratioCount_);
    if (!ratioOnly) screen_.lblSatCount.text = "Sat. - " + std::to_string(satCount_);
}

std::string ShotSequence::ShotTrailer() const {
    const std::string end(kLineEnd);
    // The capture file is read by its lines: a line end that noise put into the ratio's text would
    // push the lines after it out of their places.
    std::string ratio = screen_.txtRatio.text;
    std::erase_if(ratio, [](char c) { return c == '\r' || c == '\n'; });
    std::string block = rawRecord_ + end + "MEASURED RATIO: " + ratio + end;
    if (IsBlank(screen_.txtHVolt) || IsBlank(screen_.txtXVolt) || IsBlank(screen_.txtCRatio) ||
        IsBlank(screen_.txtPE)) {
        block += "NAMEPLATE RATIO: N/A" + end + "PERCENT ERROR: N/A" + end;
    } else {
        block += "NAMEPLATE RATIO: " + TrimBlanks(screen_.txtCRatio.text) + " (" +
                 TrimBlanks(screen_.txtHVolt.text) + ":" + TrimBlanks(screen_.txtXVolt.text) + ")" +
                 end;
        block += "PERCENT ERROR: " + TrimBlanks(screen_.txtPE.text) + "%" + end;
    }
    return block + end;
}

}  // namespace davo
