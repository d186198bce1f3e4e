// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_sequence.h"

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_image.h"
#include "records/session_journal.h"
#include "testing/captions.h"
#include "testing/session_text.h"
#include "testing/shot_results.h"

namespace davo {

namespace {

constexpr int kCancelTimes = 10;
constexpr int kBeepsOfPrompt = 2;
constexpr std::string_view kEscape = "\x1b";

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
    shot_.screen.cmdHeader.enabled = true;
    timDateTime_Timer();
    shot_.screen.cmdCancel.enabled = true;
    shot_.screen.txtPE.text.clear();
    shot_.screen.txtCRatio.text.clear();
    if (around_.modes.testRatioOnlyMode) shot_.screen.lblTest = {"RATIO TEST", true, true};
    clocking_ = true;
    shot_.polling = false;
}

void ShotSequence::CreateCapture() {
    capture_.Create(around_.places.scratchFolder + QLatin1String(kCaptureFileName));
    shotsInCapture_ = 0;
    UpdateJournal();
}

void ShotSequence::ResetTestWindow() {
    if (!around_.link.State().portOpen) return;
    if (!around_.link.AskReady(kNotReadyMessage)) return;
    ShowBeginning();
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.txtVolt.text.clear();
    shot_.screen.txtCur.text.clear();
    shot_.screen.cmdContinue.text = kCaptionContinueTest;
    if (shotsInCapture_ == 0 && !shotPending_) CreateCapture();
}

void ShotSequence::cmdStart_Click() {
    // The readiness check is under way: its reply must not be mixed with the shot's.
    if (around_.link.CurrentWait()) return;
    if (shot_.screen.cmdStart.text == kCaptionNext) {
        WriteShotTrailer();
        AskRatioOnly();
    }
    if (!EnsurePortOpen()) return;
    if (around_.session.firstShot) {
        StampHeader();
    } else if (shot_.screen.cmdStart.text == kCaptionStart) {
        if (around_.modes.testRatioOnlyMode) shot_.screen.cmdStart.enabled = false;
        ClearBlankNameplate();
    }
    shot_.screen.cmdExit.enabled = false;
    // What still waits was said before this shot, for example the rest of a cancelled one.
    around_.link.Input();
    around_.link.Output(around_.modes.testRatioOnlyMode ? "t" : "T");
    shot_.testState = kStateStarted;
    shot_.reply = {};
    shot_.awaitText = kLineEnd;
    for (ControlView* view :
         {&shot_.screen.txtVolt, &shot_.screen.txtCur, &shot_.screen.txtPolarity,
          &shot_.screen.txtRatio, &shot_.screen.lblTest, &shot_.screen.txtPE}) {
        view->text.clear();
    }
    shot_.screen.ShowMessage({});
    HideDamage();
    // The shot that could be repeated has just been written.
    if (RepeatOffered()) {
        shot_.screen.cmdContinue.text = kCaptionContinueTest;
        shot_.screen.cmdContinue.enabled = false;
    }
    shot_.screen.lblPE.enabled = false;
    shot_.screen.cmdHeader.enabled = false;
    shot_.screen.cmdCancel.enabled = true;
    shot_.saturating = false;
    shot_.polling = true;
    shot_.events.push_back(ShotEvent::Started);
}

void ShotSequence::AskRatioOnly() {
    if (!around_.modes.testBothMode) return;
    const Answer answer = around_.prompts.YesNo(QStringLiteral("Run Ratio test only?"), Answer::No);
    around_.modes.testRatioOnlyMode = answer == Answer::Yes;
    shot_.screen.cmdStart.text = kCaptionStart;
}

bool ShotSequence::EnsurePortOpen() {
    if (around_.link.State().portOpen) return true;
    if (around_.reopenPort && around_.reopenPort()) return true;
    around_.prompts.Message(QLatin1String(kNotReadyMessage));
    return false;
}

void ShotSequence::StampHeader() {
    const QDateTime now = around_.clock.Now();
    around_.header.headerFields.at(kHeaderDate) = ShortDateText(now);
    around_.header.headerFields.at(kHeaderTime) = ShortTimeText(now);
    UpdateJournal();
    around_.session.firstShot = false;
}

void ShotSequence::ClearBlankNameplate() {
    const bool blank = TrimBlanks(shot_.screen.txtHVolt.text).empty() ||
                       TrimBlanks(shot_.screen.txtXVolt.text).empty();
    if (!blank) return;
    shot_.screen.txtHVolt.text.clear();
    shot_.screen.txtXVolt.text.clear();
    shot_.screen.txtCRatio.text.clear();
}

void ShotSequence::cmdContinue_Click() {
    Beep(2);
    if (RepeatOffered()) {
        if (std::exchange(shotPending_, false)) {
            AdjustShotCounters(-1);
            shot_.events.push_back(ShotEvent::Dropped);
        }
        shot_.screen.cmdContinue.enabled = false;
        shot_.screen.cmdContinue.text = kCaptionContinue;
        HideDamage();
        UpdateJournal();
        return;
    }
    shot_.polling = false;
    ++confirmCount_;
    // The range switch is confirmed once, however often the button was hit: a second hit must not
    // bring the slow-lowering prompt into the saturation test.
    shot_.confirmsThisShot =
        shot_.testState == kStateRangeConfirmed ? 1 : shot_.confirmsThisShot + 1;
    around_.link.Output("\r");
    shot_.screen.lblCRCount.text = "(" + std::to_string(confirmCount_) + ")";
    shot_.satConfirmed = shot_.testState == kStateRunning;
    if (shot_.satConfirmed) ClearBlankNameplate();
    shot_.polling = true;
}

void ShotSequence::cmdCancel_Click() {
    Beep(2);
    shot_.screen.cmdExit.enabled = true;
    StopTimers();
    shot_.events.push_back(ShotEvent::Dropped);
    shot_.screen.lblConfirm.visible = false;
    shot_.screen.cmdContinue.enabled = false;
    for (int i = 0; i < kCancelTimes; ++i) {
        around_.link.Output("S\x1b");
    }
}

bool ShotSequence::RepeatOffered() const {
    return shot_.screen.cmdContinue.text == kCaptionRepeat;
}

void ShotSequence::EscapePressed() {
    shot_.polling = false;
    around_.link.Output(kEscape);
    aborted_ = true;
}

void ShotSequence::PortLost() {
    if (!shot_.polling) return;
    shot_.polling = false;
    shot_.beeping = false;
    shot_.events.push_back(ShotEvent::Dropped);
    shot_.confirmsThisShot = 0;
    shot_.screen.lblConfirm.visible = false;
    // A caption of "&OK" would keep the restarted shot from asking for the range switch.
    shot_.screen.cmdContinue.text = kCaptionContinueTest;
    shot_.screen.cmdContinue.enabled = false;
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.cmdExit.enabled = true;
    shot_.screen.cmdHeader.enabled = true;
    shot_.screen.cmdStart.enabled = true;
}

void ShotSequence::txtHVolt_LostFocus() {
    UpdateNameplateRatio();
}

void ShotSequence::txtXVolt_LostFocus() {
    UpdateNameplateRatio();
}

void ShotSequence::timDateTime_Timer() {
    shot_.screen.lblTime.text = ClockText(around_.clock.Now());
}

void ShotSequence::timBeep_Timer() {
    if (!shot_.beeping) return;
    Beep(1);
    ++shot_.beepCount;
    if (shot_.beepCount >= kBeepsOfPrompt) shot_.beeping = false;
}

void ShotSequence::Timer1_Timer() {
    bool unexamined = false;
    do {
        unexamined = shot_.polling && Pass(unexamined);
    } while (unexamined);
}

bool ShotSequence::Pass(bool unexamined) {
    const std::size_t before = shot_.reply.sessionPending.size();
    const bool found =
        WaitForSessionReplyPass(around_.link, shot_.reply, shot_.awaitText, around_.prompts);
    std::string& window = shot_.reply.sessionWindow;
    shot_.windowIsCut = window.size() >= kSessionBlock;
    const bool newText = shot_.windowIsCut || shot_.reply.sessionPending.size() != before;
    if (!newText && !unexamined) return false;
    if (shot_.windowIsCut) {
        // What goes on behind the block is examined with what follows it.
        const std::size_t from = UnfinishedFrom(window, shot_.testState != kStateRunning);
        if (from > 0) {
            shot_.reply.sessionPending.insert(0, window, from);
            window.resize(from);
        }
    }
    // A record may come without a line end or after a prompt that noise has spoilt.
    const bool record = shot_.testState != kStateRecordArriving && Contains(window, kRecordStart);
    if (found || record) {
        shot_.polling = shot_.testState == kStateRunning;
        RunTestStep();
    }
    return shot_.windowIsCut;
}

void ShotSequence::RunTestStep() {
    if (RunShotSteps(around_, *this, shot_)) CompleteShot();
}

void ShotSequence::CompleteShot() {
    // Whatever is said here is said in a dialogue, under which no pass may run.
    shot_.polling = false;
    shot_.testState = kStateShotComplete;
    shot_.saturating = false;
    shot_.screen.ShowMessage({});
    shot_.screen.cmdExit.enabled = true;
    shot_.screen.cmdHeader.enabled = true;
    if (around_.session.shotCount != kShotRefusal) {
        AcceptShot();
        return;
    }
    shot_.screen.lblTest = {"TEST COMPLETE.", true, true};
    shot_.events.push_back(ShotEvent::Dropped);
    around_.prompts.Message(QStringLiteral("You have ran the maximum limit (100) of shots."));
}

void ShotSequence::AcceptShot() {
    shot_.screen.cmdContinue.text = kCaptionRepeat;
    shot_.screen.cmdStart.text = kCaptionNext;
    shot_.afterShot = true;
    shot_.confirmsThisShot = 0;
    AdjustShotCounters(+1);
    shot_.screen.cmdStart.enabled = true;
    shot_.screen.cmdContinue.enabled = true;
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.lblConfirm.visible = false;
    shot_.reply = {};
    ComputePercentError();
    shotPending_ = true;
    shot_.events.push_back(ShotEvent::Complete);

    QString notSafe;
    try {
        UpdateJournal();
    } catch (const RunTimeError& error) {
        notSafe = NotSafeText(error);
    }
    // Only now: what the screen calls complete is on the disk.
    shot_.screen.lblTest = {"TEST COMPLETE.", true, true};
    if (!notSafe.isEmpty()) around_.prompts.Message(notSafe);

    const std::string damage = DescribeRecordDamage(shot_.rawRecord);
    if (damage.empty()) return;
    const QString text = DamageText(damage);
    shot_.screen.lblDamage = {text.toStdString(), true, true};
    around_.prompts.Message(text);
}

void ShotSequence::UpdateNameplateRatio() {
    shot_.screen.txtCRatio.text.clear();
    if (const auto ratio = NameplateRatio(shot_.screen.txtHVolt.text, shot_.screen.txtXVolt.text)) {
        shot_.screen.txtCRatio.text = *ratio;
        shot_.screen.lblCRatio.enabled = true;
    }
    ComputePercentError();
    if (shot_.screen.txtCRatio.text.empty()) shot_.screen.txtPE.text.clear();
    if (shotPending_) UpdateJournal();
}

void ShotSequence::ComputePercentError() {
    if (shot_.screen.txtRatio.text.empty() || shot_.screen.txtCRatio.text.empty()) return;
    const auto percent = PercentError(shot_.screen.txtRatio.text, shot_.screen.txtCRatio.text);
    if (percent) shot_.screen.lblPE.enabled = true;
    shot_.screen.txtPE.text = percent.value_or("");
}

void ShotSequence::AdjustShotCounters(int delta) {
    const bool ratioOnly = around_.modes.testRatioOnlyMode;
    const std::int16_t saturations = ToInteger16(satCount_ + (ratioOnly ? 0 : delta));
    const std::int16_t ratios = ToInteger16(ratioCount_ + delta);
    around_.session.shotCount = ToInteger16(around_.session.shotCount + delta);
    satCount_ = saturations;
    ratioCount_ = ratios;
    shot_.screen.lblCRCount.text = "(" + std::to_string(confirmCount_) + ")";
    shot_.screen.lblRatioCount.text = "Ratio - " + std::to_string(ratioCount_);
    if (!ratioOnly) shot_.screen.lblSatCount.text = "Sat. - " + std::to_string(satCount_);
}

std::string ShotSequence::ShotTrailer() const {
    return ShotBlock(shot_.rawRecord, shot_.screen);
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
    shot_.screen.lblDamage = {"", true, false};
}

}  // namespace davo
