// SPDX-License-Identifier: GPL-3.0-or-later
// The steps of one shot, as the instrument leads the operator through it.

#include <algorithm>
#include <cmath>

#include "instrument/conversation.h"

namespace davo::instrument {

namespace {

// The PC may throw away what follows a reading in the same gulp, so the instrument keeps silent for
// a moment between the last reading and a message. Not scaled below this.
constexpr Micros kLeastSilence = std::chrono::milliseconds(40);
// A reading takes about 12 ms on the line; more often would make it lag ever further behind.
constexpr Micros kLeastInterval = std::chrono::milliseconds(15);
constexpr int kRisingReadings = 12;
constexpr int kOverVoltageReading = 6;

}  // namespace

bool Conversation::WaitsForConfirmation() const {
    return step_ == Step::RangeSwitch || step_ == Step::Saturation || step_ == Step::Ratio;
}

Micros Conversation::ReadingInterval() const {
    const Micros interval{
        static_cast<std::int64_t>(1e6 / options_.readingsPerSecond * options_.pauseScale)};
    return std::max(interval, kLeastInterval);
}

void Conversation::Go(Step step, Micros due) {
    step_ = step;
    due_ = due;
}

void Conversation::StartShot(bool ratioOnly) {
    EndShot();
    scenario_ = options_.scenarios[started_ % options_.scenarios.size()];
    transformer_ = &options_.transformers[started_ % options_.transformers.size()];
    ++started_;
    Polarity polarity = Polarity::AsWired;
    if (scenario_ == Scenario::OutOfPhase) polarity = Polarity::OutOfPhase;
    if (scenario_ == Scenario::Undetermined) polarity = Polarity::Undetermined;
    shot_ = MeasureShot(*transformer_, ratioOnly, polarity, random_);
    Go(Step::AskZero, now_ + Pause(50, 200));
}

void Conversation::EndShot() {
    step_ = Step::Idle;
    due_.reset();
    out_.Clear();
}

void Conversation::Confirm() {
    const Micros quiet = std::max(out_.Last(), now_) + kLeastSilence;
    switch (step_) {
        case Step::RangeSwitch:
            Go(Step::AskSaturation, now_ + Pause(300, 800));
            break;
        case Step::Saturation:
            Go(Step::AskLower, quiet + Pause(100, 400));
            break;
        case Step::Ratio:
            Go(Step::TellRatio, quiet + Pause(300, 900));
            break;
        default:
            break;
    }
}

void Conversation::RunStep() {
    switch (step_) {
        case Step::AskZero:
            Line("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...\r\n");
            Go(shot_.ratioOnly ? Step::AskRatio : Step::AskRange, out_.Last() + Pause(800, 1600));
            break;
        case Step::AskRange:
            Line("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH\r\n");
            step_ = Step::RangeSwitch;
            break;
        case Step::AskSaturation:
            AskSaturation();
            break;
        case Step::Saturation:
            SaturationReading();
            break;
        case Step::AskLower:
            AskLower();
            break;
        case Step::Lowering:
            LoweringReading();
            break;
        case Step::AskRatio:
            AskRatio();
            break;
        case Step::Ratio:
            RatioReading();
            break;
        case Step::TellRatio:
            Line("RATIO=" + shot_.ratioText + "\r\n");
            Go(Step::TellPolarity, out_.Last() + Pause(20, 200));
            break;
        case Step::TellPolarity:
            Line(std::string("POLARITY=") + shot_.polarity + "\r\n");
            Go(Step::TellRecord, out_.Last() + Pause(100, 600));
            break;
        case Step::TellRecord:
            TellRecord();
            break;
        case Step::Idle:
        case Step::RangeSwitch:
            break;
    }
}

void Conversation::AskSaturation() {
    Line("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)\r\n");
    reading_ = 0;
    Go(Step::Saturation, out_.Last() + kLeastSilence + Pause(200, 500));
}

void Conversation::AskLower() {
    Line("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...\r\n");
    reading_ = 0;
    lowerings_ = random_.Between(6, 10);
    Go(Step::Lowering, out_.Last() + kLeastSilence + Pause(200, 500));
}

void Conversation::AskRatio() {
    Line("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)\r\n");
    reading_ = 0;
    Go(Step::Ratio, out_.Last() + kLeastSilence + Pause(200, 500));
}

void Conversation::Reading(double current, double voltage) {
    Line("I=" + FixedText(current, 4) + " V=" + FixedText(voltage, 1) + "\r\n");
}

void Conversation::SaturationReading() {
    ++reading_;
    if (scenario_ == Scenario::OverVoltage && reading_ == kOverVoltageReading) {
        out_.Put({}, out_.Last() + kLeastSilence + Pause(100, 300));
        Line("MESSAGE=VOLTAGE TOO HIGH!\r\n");
        Go(Step::Saturation, out_.Last() + kLeastSilence + Pause(100, 300));
        return;
    }
    const double highest = shot_.image.excitationCurrent * shot_.image.CurrentScale();
    const double part = std::min(1.0, static_cast<double>(reading_) / kRisingReadings);
    const double current = highest * std::pow(part, 3) * (1 - 0.01 * random_.Unit());
    Reading(current, ExcitationVoltage(*transformer_, current));
    Go(Step::Saturation, std::max(now_ + ReadingInterval(), out_.Last()));
}

void Conversation::LoweringReading() {
    ++reading_;
    const double highest = shot_.image.excitationCurrent * shot_.image.CurrentScale();
    const double part = 1 - static_cast<double>(reading_) / lowerings_;
    const double current = highest * std::pow(part, 3);
    Reading(current, reading_ < lowerings_ ? ExcitationVoltage(*transformer_, current) : 0);
    if (reading_ < lowerings_) {
        Go(Step::Lowering, std::max(now_ + ReadingInterval(), out_.Last()));
    } else {
        Go(Step::AskRatio, out_.Last() + kLeastSilence + Pause(300, 800));
    }
}

void Conversation::RatioReading() {
    ++reading_;
    const double highest = transformer_->turnsRatio < 10 ? 20 : 95;
    const double part = std::min(1.0, static_cast<double>(reading_) / kRisingReadings);
    const double voltage = 5 + (highest - 5) * part + 0.4 * random_.Unit();
    Reading(ExcitationCurrent(*transformer_, std::min(voltage, transformer_->kneeVoltage)),
            voltage);
    Go(Step::Ratio, std::max(now_ + ReadingInterval(), out_.Last()));
}

// Digits are in lines of varying length with blanks here and there. There is always a line end
// between DATA and DONE, and DATA is at the beginning of a line.
std::string Conversation::RecordText() {
    std::string digits = EncodeRecordImage(shot_.image);
    const int wanted = static_cast<int>(digits.size()) + options_.extraDigits;
    digits.resize(static_cast<std::size_t>(std::max(0, wanted)), '7');

    static constexpr std::string_view kStart = "DATA";  // a digit follows at once
    std::string text(kStart);
    const bool blanks = random_.Chance(0.4);
    auto left = static_cast<std::size_t>(random_.Between(8, 64));
    for (const char digit : digits) {
        if (left == 0) {
            text += "\r\n";
            left = static_cast<std::size_t>(random_.Between(8, 64));
        } else if (blanks && text.size() > kStart.size() && random_.Chance(0.1)) {
            text += ' ';
        }
        text += digit;
        --left;
    }
    if (digits.size() < 64 || random_.Chance(0.7)) text += "\r\n";
    text += "DONE";
    if (random_.Chance(0.5)) text += "\r\n";
    return text;
}

void Conversation::TellRecord() {
    Line(RecordText());
    shots_.push_back(shot_);
    step_ = Step::Idle;
}

std::string RecordedShot::Bytes() const {
    std::string bytes;
    for (const Piece& piece : pieces)
        bytes += piece.bytes;
    return bytes;
}

RecordedShot RecordShot(const ConversationOptions& options, bool ratioOnly) {
    constexpr int kReadingsSeen = 15;  // before the operator confirms
    RecordedShot recorded;
    Conversation conversation(options);
    conversation.Receive(ratioOnly ? "t" : "T");
    while (conversation.ShotUnderWay() || conversation.NextDue()) {
        const std::optional<Micros> due = conversation.NextDue();
        const bool enough = !due || conversation.ReadingsOfStep() >= kReadingsSeen;
        if (conversation.WaitsForConfirmation() && enough) {
            conversation.Receive("\r");
            continue;
        }
        conversation.Advance(*due);
        const std::string bytes = conversation.TakeOutput();
        if (!bytes.empty()) recorded.pieces.push_back({*due, bytes});
    }
    recorded.shot = conversation.Shots().front();
    return recorded;
}

}  // namespace davo::instrument
