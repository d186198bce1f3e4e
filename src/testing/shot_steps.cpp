// SPDX-License-Identifier: GPL-3.0-or-later
#include <string_view>

#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_image.h"
#include "testing/captions.h"
#include "testing/session_text.h"
#include "testing/shot_sequence.h"

namespace davo {

namespace {

constexpr std::string_view kDriveToZero = "TURN VOLTAGE DRIVE TO ZERO...";
constexpr std::string_view kRangeSwitch = "SET THE VOLTAGE RANGE SELECTOR SWITCH";
constexpr std::string_view kRatioTestMessage =
    "MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)";
constexpr std::string_view kRatioPrompt = "SET VOLTAGE FROM 5V TO 100V MAX";
constexpr std::string_view kSlowMessage = "MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...";
constexpr std::string_view kOverVoltageMessage = "MESSAGE=VOLTAGE TOO HIGH!";
constexpr std::size_t kCurrentWidth = 6;
constexpr int kConfirmsBeforeLowering = 2;

QString DamageText(const std::string& damage) {
    return QStringLiteral(
               "The record of this shot is damaged: %1. Press Repeat Test to drop the shot and run "
               "it again.")
        .arg(FromPage(damage));
}

QString NotSafeText(const RunTimeError& error) {
    return QStringLiteral(
               "The shot is complete, but it is not yet safe on disk: %1.\r\n"
               "Please make room on the disk, then go on with Next Test or Exit, which save it.")
        .arg(QString::fromUtf8(error.what()));
}

}  // namespace

bool ShotSequence::WindowHolds(std::string_view text) const {
    return Contains(reply_.sessionWindow, text);
}

void ShotSequence::RunTestStep() {
    DriveToZero();
    RangeSwitch();
    Saturation();
    RatioTestStart();
    LiveReadings();
    SlowLowering();
    RatioAndPolarity();
    OverVoltage();
    RecordStart();
    RecordEnd();
}

void ShotSequence::DriveToZero() {
    if (testState_ != kStateStarted || !WindowHolds(kDriveToZero)) return;
    screen_.lblMessage.text = kDriveToZero;
    screen_.cmdStart.enabled = false;
    screen_.cmdContinue.enabled = false;
    screen_.lblConfirm.visible = false;
    if (around_.modes.testRatioOnlyMode) {
        awaitText_ = kRatioTestMessage;
        testState_ = kStateRunning;
    } else {
        awaitText_ = kRangeSwitch;
    }
}

void ShotSequence::RangeSwitch() {
    if (testState_ != kStateStarted || !WindowHolds(kRangeSwitch)) return;
    testState_ = kStateRangeConfirmed;
    awaitText_ = kLineEnd;
    if (screen_.cmdContinue.text == kCaptionOk) return;
    screen_.lblMessage.text = kRangeSwitch;
    screen_.cmdStart.enabled = false;
    OpenConfirmation(kCaptionOk);
}

void ShotSequence::Saturation() {
    if (testState_ != kStateRangeConfirmed) return;
    const auto prompt = SaturationPrompt(reply_.sessionWindow);
    if (!prompt) return;
    screen_.lblConfirm.visible = false;
    screen_.cmdContinue.enabled = false;
    liveConfirm_ = true;
    awaitText_ = kLineEnd;
    screen_.lblTest = {"SATURATION TEST", true, true};
    screen_.lblMessage.text = *prompt;
    testState_ = kStateRunning;
    if (satConfirmed_ && !around_.modes.testRatioOnlyMode) {
        around_.link.Output("\r");
        satConfirmed_ = false;
        screen_.cmdCancel.enabled = false;
    }
}

void ShotSequence::RatioTestStart() {
    const std::size_t start = reply_.sessionWindow.find(kRatioTestMessage);
    if (start == std::string::npos) return;
    liveConfirm_ = true;
    awaitText_ = kLineEnd;
    if (around_.modes.testRatioOnlyMode) screen_.cmdStart.enabled = false;
    // The lowering is over; its prompt must not take the place of this one.
    if (confirmsThisShot_ == kConfirmsBeforeLowering) afterShot_ = false;
    ShowRatioPrompt();
    if (OnShow) OnShow();
    const std::size_t end = start + kRatioTestMessage.size();
    reply_.sessionWindow.erase(0, end);
    if (!windowIsCut_) reply_.sessionPending.erase(0, end);
}

void ShotSequence::LiveReadings() {
    if (!WindowHolds("I=") && !WindowHolds("V=")) return;
    screen_.cmdCancel.enabled = true;
    awaitText_ = kLineEnd;
    const auto readings = CompleteReadings(reply_.sessionWindow);
    if (readings.empty()) return;
    const Reading& latest = readings.back();
    screen_.txtCur = {latest.current.substr(0, kCurrentWidth), true, screen_.txtCur.visible};
    screen_.txtVolt = {latest.voltage, true, screen_.txtVolt.visible};
    if (OnReadings) OnReadings(reply_.sessionWindow);
    if (!liveConfirm_) return;
    const bool open = screen_.cmdContinue.enabled && screen_.lblConfirm.visible;
    screen_.cmdContinue.enabled = true;
    screen_.lblConfirm.visible = true;
    if (!open && OnFocus) OnFocus("cmdContinue");
    polling_ = false;
    if (OnShow) OnShow();
    polling_ = true;
}

void ShotSequence::SlowLowering() {
    if (WindowHolds(kSlowMessage)) {
        ShowSlowLowering();
    } else if (afterShot_ && testState_ == kStateRunning &&
               confirmsThisShot_ == kConfirmsBeforeLowering) {
        ShowSlowLowering();
        afterShot_ = false;
    }
}

void ShotSequence::ShowSlowLowering() {
    screen_.lblMessage.text = "S-L-O-W-L-Y LOWER THE CURRENT NOW...";
    screen_.cmdContinue.enabled = false;
    screen_.lblConfirm.visible = false;
    liveConfirm_ = false;
}

void ShotSequence::RatioAndPolarity() {
    if (!WindowHolds("RATIO=") && !WindowHolds("POLARITY=")) return;
    ParseRatioReply();
    if (screen_.lblMessage.text != kRatioPrompt) ShowRatioPrompt();
}

void ShotSequence::ShowRatioPrompt() {
    screen_.lblTest.text = "RATIO TEST";
    beepCount_ = 0;
    beeping_ = true;
    screen_.lblMessage.text = kRatioPrompt;
    OpenConfirmation(kCaptionOk);
}

void ShotSequence::OpenConfirmation(const char* caption) {
    screen_.lblConfirm.visible = true;
    screen_.cmdContinue = {caption, true, screen_.cmdContinue.visible};
    if (OnFocus) OnFocus("cmdContinue");
}

void ShotSequence::OverVoltage() {
    if (!WindowHolds(kOverVoltageMessage)) return;
    screen_.lblMessage.text = "VOLTAGE TOO HIGH! TURN VOLTAGE DOWN!";
}

void ShotSequence::RecordStart() {
    if (testState_ != kStateRunning || !WindowHolds(kRecordStart)) return;
    testState_ = kStateRecordArriving;
    awaitText_ = kRecordEnd;
}

void ShotSequence::RecordEnd() {
    if (const auto record = RecordIn(reply_.sessionWindow)) {
        rawRecord_ = *record;
        CompleteShot();
    } else {
        DropExamined();
        polling_ = true;
    }
}

void ShotSequence::DropExamined() {
    // The rest behind a block was not examined yet.
    if (windowIsCut_) return;
    const bool keepReading = testState_ != kStateRunning;
    reply_.sessionPending.erase(0, UnfinishedFrom(reply_.sessionPending, keepReading));
}

void ShotSequence::CompleteShot() {
    // Whatever is said here is said in a dialogue, under which no pass may run.
    polling_ = false;
    testState_ = kStateShotComplete;
    screen_.lblMessage.text.clear();
    screen_.cmdExit.enabled = true;
    screen_.cmdHeader.enabled = true;
    if (around_.session.shotCount != kShotRefusal) {
        AcceptShot();
        return;
    }
    screen_.lblTest = {"TEST COMPLETE.", true, true};
    around_.prompts.Message(QStringLiteral("You have ran the maximum limit (100) of shots."));
}

void ShotSequence::AcceptShot() {
    screen_.cmdContinue.text = kCaptionRepeat;
    screen_.cmdStart.text = kCaptionNext;
    afterShot_ = true;
    confirmsThisShot_ = 0;
    AdjustShotCounters(+1);
    screen_.cmdStart.enabled = true;
    screen_.cmdContinue.enabled = true;
    screen_.cmdCancel.enabled = false;
    screen_.lblConfirm.visible = false;
    reply_ = {};
    ComputePercentError();

    QString notSafe;
    try {
        UpdateJournal();
    } catch (const RunTimeError& error) {
        notSafe = NotSafeText(error);
    }
    // Only now: what the screen calls complete is on the disk.
    screen_.lblTest = {"TEST COMPLETE.", true, true};
    if (!notSafe.isEmpty()) around_.prompts.Message(notSafe);

    const std::string damage = DescribeRecordDamage(rawRecord_);
    if (damage.empty()) return;
    const QString text = DamageText(damage);
    screen_.lblDamage = {text.toStdString(), true, true};
    around_.prompts.Message(text);
}

}  // namespace davo
