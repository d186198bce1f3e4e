// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_sequence.h"

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "testing/captions.h"
#include "testing/session_text.h"

namespace davo {

namespace {

constexpr int kCancelTimes = 10;
constexpr int kBeepsOfPrompt = 2;
constexpr std::string_view kEscape = "\x1b";

QString NotReadyText() {
    return QStringLiteral("DAVO is not ready.  Please check equipment.");
}

}  // namespace

ShotSequence::ShotSequence(const TestSurroundings& around) : around_(around) {}

void ShotSequence::Form_Load() {
    around_.session.firstShot = true;
    around_.session.testNotes.clear();
    around_.session.testWindowOpen = true;
    ShowBeginning();
    CreateCapture();
    around_.session.shotCount = 0;
}

void ShotSequence::ShowBeginning() {
    screen_.cmdHeader.enabled = true;
    timDateTime_Timer();
    screen_.cmdCancel.enabled = true;
    screen_.txtPE.text.clear();
    screen_.txtCRatio.text.clear();
    if (around_.modes.testRatioOnlyMode) screen_.lblTest = {"RATIO TEST", true, true};
    clocking_ = true;
    polling_ = false;
}

void ShotSequence::CreateCapture() {
    capture_.Create(around_.places.scratchFolder + QLatin1String(kCaptureFileName));
    shotsInCapture_ = 0;
    UpdateJournal();
}

void ShotSequence::ResetTestWindow() {
    if (!around_.link.State().portOpen) return;
    const std::string reply = around_.link.SendCommand("B", "RDY\r\n");
    // Leaving the window ended the wait, or the loss of the port, which the operator was told.
    if (around_.link.LastWaitEnded()) return;
    if (reply.empty()) {
        around_.prompts.Message(NotReadyText());
        return;
    }
    ShowBeginning();
    screen_.cmdCancel.enabled = false;
    screen_.txtVolt.text.clear();
    screen_.txtCur.text.clear();
    screen_.cmdContinue.text = kCaptionContinueTest;
    if (shotsInCapture_ == 0 && !shotPending_) CreateCapture();
}

void ShotSequence::cmdStart_Click() {
    // The readiness check is under way: its reply must not be mixed with the shot's.
    if (around_.link.CurrentWait()) return;
    if (screen_.cmdStart.text == kCaptionNext) {
        WriteShotTrailer();
        AskRatioOnly();
    }
    if (!PortReady()) return;
    if (around_.session.firstShot) {
        MarkFirstShot();
    } else if (screen_.cmdStart.text == kCaptionStart) {
        if (around_.modes.testRatioOnlyMode) screen_.cmdStart.enabled = false;
        ClearBlankNameplate();
    }
    screen_.cmdExit.enabled = false;
    // What still waits was said before this shot, for example the rest of a cancelled one.
    around_.link.Input();
    around_.link.Output(around_.modes.testRatioOnlyMode ? "t" : "T");
    testState_ = kStateStarted;
    reply_ = {};
    awaitText_ = kLineEnd;
    for (ControlView* view :
         {&screen_.txtVolt, &screen_.txtCur, &screen_.txtPolarity, &screen_.txtRatio,
          &screen_.lblMessage, &screen_.lblTest, &screen_.txtPE}) {
        view->text.clear();
    }
    HideDamage();
    // The shot that could be repeated has just been written.
    if (screen_.cmdContinue.text == kCaptionRepeat) {
        screen_.cmdContinue.text = kCaptionContinueTest;
        screen_.cmdContinue.enabled = false;
    }
    screen_.lblPE.enabled = false;
    screen_.cmdHeader.enabled = false;
    screen_.cmdCancel.enabled = true;
    polling_ = true;
}

void ShotSequence::AskRatioOnly() {
    if (!around_.modes.testBothMode) return;
    const Answer answer = around_.prompts.YesNo(QStringLiteral("Run Ratio test only?"), Answer::No);
    around_.modes.testRatioOnlyMode = answer == Answer::Yes;
    screen_.cmdStart.text = kCaptionStart;
}

bool ShotSequence::PortReady() {
    if (around_.link.State().portOpen) return true;
    if (around_.reopenPort && around_.reopenPort()) return true;
    around_.prompts.Message(NotReadyText());
    return false;
}

void ShotSequence::MarkFirstShot() {
    const QDateTime now = around_.clock.Now();
    around_.header.headerFields.at(kHeaderDate) = ShortDateText(now);
    around_.header.headerFields.at(kHeaderTime) = ShortTimeText(now);
    UpdateJournal();
    around_.session.firstShot = false;
}

void ShotSequence::ClearBlankNameplate() {
    const bool blank =
        TrimBlanks(screen_.txtHVolt.text).empty() || TrimBlanks(screen_.txtXVolt.text).empty();
    if (!blank) return;
    screen_.txtHVolt.text.clear();
    screen_.txtXVolt.text.clear();
    screen_.txtCRatio.text.clear();
}

void ShotSequence::cmdContinue_Click() {
    Beep(2);
    if (screen_.cmdContinue.text == kCaptionRepeat) {
        if (shotPending_) AdjustShotCounters(-1);
        shotPending_ = false;
        screen_.cmdContinue.enabled = false;
        screen_.cmdContinue.text = kCaptionContinue;
        HideDamage();
        UpdateJournal();
        return;
    }
    polling_ = false;
    ++confirmCount_;
    // The range switch is confirmed once, however often the button was hit: a second hit must not
    // bring the slow-lowering prompt into the saturation test.
    confirmsThisShot_ = testState_ == kStateRangeConfirmed ? 1 : confirmsThisShot_ + 1;
    around_.link.Output("\r");
    screen_.lblCRCount.text = "(" + std::to_string(confirmCount_) + ")";
    satConfirmed_ = testState_ == kStateRunning;
    if (satConfirmed_) ClearBlankNameplate();
    polling_ = true;
}

void ShotSequence::cmdCancel_Click() {
    Beep(2);
    screen_.cmdExit.enabled = true;
    StopTimers();
    screen_.lblConfirm.visible = false;
    screen_.cmdContinue.enabled = false;
    for (int i = 0; i < kCancelTimes; ++i) {
        around_.link.Output("S\x1b");
    }
}

void ShotSequence::EscapePressed() {
    polling_ = false;
    around_.link.Output(kEscape);
    aborted_ = true;
}

void ShotSequence::PortLost() {
    if (!polling_) return;
    polling_ = false;
    beeping_ = false;
    confirmsThisShot_ = 0;
    screen_.lblConfirm.visible = false;
    // A caption of "&OK" would keep the restarted shot from asking for the range switch.
    screen_.cmdContinue.text = kCaptionContinueTest;
    screen_.cmdContinue.enabled = false;
    screen_.cmdCancel.enabled = false;
    screen_.cmdExit.enabled = true;
    screen_.cmdHeader.enabled = true;
    screen_.cmdStart.enabled = true;
}

void ShotSequence::txtHVolt_LostFocus() {
    UpdateNameplateRatio();
}

void ShotSequence::txtXVolt_LostFocus() {
    UpdateNameplateRatio();
}

void ShotSequence::timDateTime_Timer() {
    screen_.lblTime.text = ClockText(around_.clock.Now());
}

void ShotSequence::timBeep_Timer() {
    if (!beeping_) return;
    Beep(1);
    ++beepCount_;
    if (beepCount_ >= kBeepsOfPrompt) beeping_ = false;
}

void ShotSequence::Timer1_Timer() {
    bool unexamined = false;
    do {
        unexamined = polling_ && Pass(unexamined);
    } while (unexamined);
}

bool ShotSequence::Pass(bool unexamined) {
    const std::size_t before = reply_.sessionPending.size();
    const bool found = WaitForSessionReplyPass(around_.link, reply_, awaitText_, around_.prompts);
    std::string& window = reply_.sessionWindow;
    windowIsCut_ = window.size() >= kSessionBlock;
    const bool newText = windowIsCut_ || reply_.sessionPending.size() != before;
    if (!newText && !unexamined) return false;
    if (windowIsCut_) {
        // What goes on behind the block is examined with what follows it.
        const std::size_t from = UnfinishedFrom(window, testState_ != kStateRunning);
        if (from > 0) {
            reply_.sessionPending.insert(0, window, from);
            window.resize(from);
        }
    }
    // A record may come without a line end or after a prompt that noise has spoilt.
    const bool record = testState_ != kStateRecordArriving && Contains(window, kRecordStart);
    if (found || record) {
        polling_ = testState_ == kStateRunning;
        RunTestStep();
    }
    return windowIsCut_;
}

void ShotSequence::WriteShotTrailer() {
    if (!shotPending_) return;
    capture_.Append(ShotTrailer());
    shotPending_ = false;
    ++shotsInCapture_;
    try {
        UpdateJournal();
    } catch (const RunTimeError&) {
        // The shot is safe. The journal that stands calls it pending, but also tells how many
        // shots lay before it in the capture file, so it is not taken for a second one.
    }
}

void ShotSequence::UpdateJournal() const {
    SessionJournal journal;
    journal.header = around_.header;
    journal.testNotes = around_.session.testNotes;
    journal.shotsInCapture = shotsInCapture_;
    if (shotPending_) journal.pendingShot = ShotTrailer();
    journal.Write(around_.places.scratchFolder + QLatin1String(kJournalFileName));
}

void ShotSequence::Beep(int times) const {
    for (int i = 0; i < times; ++i) {
        around_.beep();
    }
}

void ShotSequence::HideDamage() {
    screen_.lblDamage = {"", true, false};
}

}  // namespace davo
