// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_steps.h"

#include "common/text.h"
#include "records/record_image.h"
#include "testing/session_text.h"
#include "testing/shot_results.h"

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

class Steps {
  public:
    Steps(const TestSurroundings& around, const ShotHooks& hooks, ShotState& shot)
        : around_(around), hooks_(hooks), shot_(shot), screen_(shot.screen) {}

    bool Run() {
        DriveToZero();
        RangeSwitch();
        Saturation();
        RatioTestStart();
        LiveReadings();
        SlowLowering();
        RatioAndPolarity();
        OverVoltage();
        RecordStart();
        return RecordEnd();
    }

  private:
    // In their order.
    void DriveToZero() {
        if (shot_.testState != kStateStarted || !WindowHolds(kDriveToZero)) return;
        screen_.ShowMessage(kDriveToZero);
        screen_.cmdStart.enabled = false;
        screen_.cmdContinue.enabled = false;
        screen_.lblConfirm.visible = false;
        if (around_.modes.testRatioOnlyMode) {
            shot_.awaitText = kRatioTestMessage;
            shot_.testState = kStateRunning;
        } else {
            shot_.awaitText = kRangeSwitch;
        }
    }

    void RangeSwitch() {
        if (shot_.testState != kStateStarted || !WindowHolds(kRangeSwitch)) return;
        shot_.testState = kStateRangeConfirmed;
        shot_.awaitText = kLineEnd;
        if (screen_.cmdContinue.text == kCaptionOk) return;
        screen_.ShowMessage(kRangeSwitch);
        screen_.cmdStart.enabled = false;
        OpenConfirmation(kCaptionOk);
    }

    void Saturation() {
        if (shot_.testState != kStateRangeConfirmed) return;
        const auto prompt = SaturationPrompt(shot_.reply.sessionWindow);
        if (!prompt) return;
        screen_.lblConfirm.visible = false;
        screen_.cmdContinue.enabled = false;
        shot_.liveConfirm = true;
        shot_.awaitText = kLineEnd;
        screen_.lblTest = {"SATURATION TEST", true, true};
        shot_.saturating = true;
        shot_.events.push_back(ShotEvent::SaturationBegun);
        screen_.ShowMessage(*prompt);
        shot_.testState = kStateRunning;
        if (shot_.satConfirmed && !around_.modes.testRatioOnlyMode) {
            around_.link.Output("\r");
            shot_.satConfirmed = false;
            screen_.cmdCancel.enabled = false;
        }
    }

    void RatioTestStart() {
        const std::size_t start = shot_.reply.sessionWindow.find(kRatioTestMessage);
        if (start == std::string::npos) return;
        shot_.liveConfirm = true;
        shot_.awaitText = kLineEnd;
        if (around_.modes.testRatioOnlyMode) screen_.cmdStart.enabled = false;
        shot_.readingInStep = false;
        ShowRatioPrompt();
        if (hooks_.OnShow) hooks_.OnShow();
        const std::size_t end = start + kRatioTestMessage.size();
        shot_.reply.sessionWindow.erase(0, end);
        if (!shot_.windowIsCut) shot_.reply.sessionPending.DropFirst(end);
    }

    void LiveReadings() {
        if (!WindowHolds("I=") && !WindowHolds("V=")) return;
        screen_.cmdCancel.enabled = true;
        shot_.awaitText = kLineEnd;
        const auto readings = CompleteReadings(shot_.reply.sessionWindow);
        if (readings.empty()) return;
        shot_.lastReading = around_.clock.Ticks();
        shot_.readingInStep = true;
        const Reading& latest = readings.back();
        screen_.txtCur = {std::string(latest.current.substr(0, kCurrentWidth)), true,
                          screen_.txtCur.visible};
        screen_.txtVolt = {std::string(latest.voltage), true, screen_.txtVolt.visible};
        if (hooks_.OnReadings) hooks_.OnReadings(shot_.reply.sessionWindow);
        if (!shot_.liveConfirm) return;
        const bool open = screen_.cmdContinue.enabled && screen_.lblConfirm.visible;
        screen_.cmdContinue.enabled = true;
        screen_.lblConfirm.visible = true;
        if (!open && hooks_.OnFocus) hooks_.OnFocus("cmdContinue");
        // Of a flood only the end is painted.
        if (hooks_.OnShow && !shot_.windowIsCut) hooks_.OnShow();
    }

    void SlowLowering() {
        const std::string_view window = shot_.reply.sessionWindow;
        const std::size_t message = window.find(kSlowMessage);
        if (message != std::string_view::npos) {
            ShowSlowLowering();
            shot_.readingInStep = !CompleteReadings(window.substr(message)).empty();
        } else if (shot_.afterShot && shot_.testState == kStateRunning &&
                   shot_.confirmsThisShot == kConfirmsBeforeLowering) {
            ShowSlowLowering();
            shot_.afterShot = false;
        }
    }

    void RatioAndPolarity() {
        if (!WindowHolds("RATIO=") && !WindowHolds("POLARITY=")) return;
        ParseRatioReply();
        if (screen_.lblMessage.text != kRatioPrompt) ShowRatioPrompt();
    }

    void OverVoltage() {
        if (!WindowHolds(kOverVoltageMessage)) return;
        screen_.ShowMessage("VOLTAGE TOO HIGH! TURN VOLTAGE DOWN!", true);
    }

    void RecordStart() {
        if (shot_.testState != kStateRunning || !WindowHolds(kRecordStart)) return;
        shot_.testState = kStateRecordArriving;
        shot_.awaitText = kRecordEnd;
    }

    bool RecordEnd() {
        if (const auto record = RecordIn(shot_.reply.sessionWindow)) {
            shot_.rawRecord = *record;
            return true;
        }
        DropExamined();
        shot_.polling = true;
        return false;
    }

    void OpenConfirmation(const char* caption) {
        screen_.lblConfirm.visible = true;
        screen_.cmdContinue = {caption, true, screen_.cmdContinue.visible};
        if (hooks_.OnFocus) hooks_.OnFocus("cmdContinue");
    }

    void ShowRatioPrompt() {
        screen_.lblTest.text = "RATIO TEST";
        shot_.saturating = false;
        // The lowering is over; its prompt must not take the place of this one.
        shot_.afterShot = false;
        shot_.beepCount = 0;
        shot_.beeping = true;
        screen_.ShowMessage(kRatioPrompt);
        OpenConfirmation(kCaptionOk);
    }

    void ShowSlowLowering() {
        screen_.ShowMessage("S-L-O-W-L-Y LOWER THE CURRENT NOW...");
        screen_.cmdContinue.enabled = false;
        screen_.lblConfirm.visible = false;
        shot_.liveConfirm = false;
    }

    void ParseRatioReply() {
        if (const auto ratio = RatioIn(shot_.reply.sessionWindow)) {
            screen_.txtRatio.text = *ratio;
            // A record cannot hold control characters; here they are seen while the shot can be
            // repeated.
            ReplaceControls(screen_.txtRatio.text, kLineEnd);
        }
        const auto polarity = PolarityWord(PolarityIn(shot_.reply.sessionWindow).value_or('\0'));
        if (polarity) screen_.txtPolarity.text = *polarity;
    }

    void DropExamined() {
        // The rest behind a block was not examined yet.
        if (shot_.windowIsCut) return;
        const bool keepReading = shot_.testState != kStateRunning;
        PendingText& pending = shot_.reply.sessionPending;
        pending.DropFirst(UnfinishedFrom(pending.View(), keepReading));
    }

    bool WindowHolds(std::string_view text) const {
        return Contains(shot_.reply.sessionWindow, text);
    }

    const TestSurroundings& around_;
    const ShotHooks& hooks_;
    ShotState& shot_;
    ShotScreen& screen_;
};

}  // namespace

bool RunShotSteps(const TestSurroundings& around, const ShotHooks& hooks, ShotState& shot) {
    return Steps(around, hooks, shot).Run();
}

void ShowAge(TimePoint now, ShotState& shot) {
    constexpr std::chrono::seconds kAged{2};
    const auto silence = [now](TimePoint since) {
        return std::chrono::duration_cast<std::chrono::seconds>(now - since);
    };
    if (shot.lastReading && silence(*shot.lastReading) >= kAged) {
        shot.screen.txtCur.enabled = shot.screen.txtVolt.enabled = false;
    }
    const auto say = [&](TimePoint since, const QString& text) {
        const auto seconds = silence(since);
        if (seconds < kAged) {
            shot.screen.HideNotice();
        } else {
            shot.screen.ShowNotice(text.arg(seconds.count()).toStdString());
        }
    };
    if (shot.recordBegun) {
        say(shot.lastText, QStringLiteral("NO RECORD DATA FOR %1 s"));
    } else if (shot.readingInStep) {
        say(*shot.lastReading, QStringLiteral("NO READING FOR %1 s"));
    } else if (shot.screen.lblMessage.text.empty()) {
        say(shot.lastText, QStringLiteral("NOTHING RECEIVED FOR %1 s"));
    } else {
        shot.screen.HideNotice();
    }
}

}  // namespace davo
