// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_sequence.h"

#include <QScopeGuard>
#include <chrono>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_image.h"
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

QString NotSafeText(const QString& refused) {
    return QStringLiteral(
               "The shot is complete, but it is not yet safe on disk: %1.\r\n"
               "Please make room on the disk, then go on with Next Test or Exit, which save it.")
        .arg(refused);
}

}  // namespace

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
    if (!AskReady()) return;
    ShowBeginning();
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.txtVolt.text.clear();
    shot_.screen.txtCur.text.clear();
    shot_.screen.cmdContinue.text = kCaptionContinueTest;
    if (shotsInCapture_ == 0 && !shotPending_) CreateCapture();
}

bool ShotSequence::AskReady() {
    const bool startable = std::exchange(shot_.screen.cmdStart.enabled, false);
    shot_.screen.asking = true;
    if (OnShow) OnShow();
    const auto restore = qScopeGuard([&] {
        shot_.screen.cmdStart.enabled = startable;
        shot_.screen.asking = false;
    });
    return around_.link.AskReady(kNotReadyMessage);
}

void ShotSequence::cmdStart_Click() {
    // The readiness check is under way: its reply must not be mixed with the shot's.
    if (around_.link.CurrentWait()) return;
    // Nothing is written before it is certain that the next shot begins.
    const bool next = shot_.screen.cmdStart.text == kCaptionNext;
    const bool asks = next && around_.modes.testBothMode;
    const std::optional<bool> ratioOnly =
        asks ? AskRatioOnly() : std::optional(around_.modes.testRatioOnlyMode);
    if (!ratioOnly || !EnsurePortOpen()) return;
    if (next) WriteShotTrailer();
    around_.modes.testRatioOnlyMode = *ratioOnly;
    if (asks) shot_.screen.cmdStart.text = kCaptionStart;
    if (around_.session.firstShot) {
        StampHeader();
    } else if (shot_.screen.cmdStart.text == kCaptionStart) {
        if (around_.modes.testRatioOnlyMode) shot_.screen.cmdStart.enabled = false;
        ClearBlankNameplate(shot_.screen);
    }
    shot_.screen.cmdExit.enabled = false;
    // What still waits was said before this shot, for example the rest of a cancelled one.
    around_.link.Input();
    around_.link.Output(around_.modes.testRatioOnlyMode ? "t" : "T");
    shot_.testState = kStateStarted;
    shot_.reply = {};
    unexamined_ = false;
    shot_.awaitText = kLineEnd;
    ClearShot();
    // The shot that could be repeated has just been written.
    if (RepeatOffered()) {
        shot_.screen.cmdContinue.text = kCaptionContinueTest;
        shot_.screen.cmdContinue.enabled = false;
    }
    shot_.screen.cmdHeader.enabled = false;
    shot_.screen.cmdCancel.enabled = true;
    shotRefused_ = lost_ = false;
    shot_.lastText = around_.clock.Ticks();
    shot_.polling = true;
    shot_.events.push_back(ShotEvent::Started);
}

// Nothing of a shot is to be seen any more.
void ShotSequence::ClearShot() {
    for (ControlView* view :
         {&shot_.screen.txtVolt, &shot_.screen.txtCur, &shot_.screen.txtPolarity,
          &shot_.screen.txtRatio, &shot_.screen.lblTest, &shot_.screen.txtPE}) {
        view->text.clear();
    }
    shot_.screen.txtVolt.enabled = shot_.screen.txtCur.enabled = true;
    shot_.screen.ShowMessage({});
    shot_.screen.HideNotice();
    HideDamage();
    shot_.screen.lblPE.enabled = false;
    shot_.screen.shotShown = 0;
    shot_.screen.shotDropped = false;
    shot_.saturating = shot_.readingInStep = shot_.recordBegun = false;
    shot_.lastReading.reset();
}

std::optional<bool> ShotSequence::AskRatioOnly() {
    const Answer answer =
        around_.prompts.YesNoOrBack(QStringLiteral("Run Ratio test only?"), Answer::No);
    if (answer == Answer::Cancel) return std::nullopt;
    return answer == Answer::Yes;
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

void ShotSequence::cmdContinue_Click() {
    Beep(2);
    if (RepeatOffered()) {
        if (std::exchange(shotPending_, false)) {
            AdjustShotCounters(-1);
            shot_.screen.shotShown = 0;
            shot_.screen.shotDropped = true;
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
    if (shot_.satConfirmed) ClearBlankNameplate(shot_.screen);
    shot_.polling = true;
}

void ShotSequence::cmdCancel_Click() {
    Beep(2);
    shot_.screen.cmdExit.enabled = true;
    StopTimers();
    shot_.events.push_back(ShotEvent::Dropped);
    shot_.screen.HideNotice();
    shot_.screen.lblConfirm.visible = false;
    shot_.screen.cmdContinue.enabled = false;
    // Nobody looks any more whether they are of now.
    shot_.screen.txtCur.enabled = shot_.screen.txtVolt.enabled = false;
    for (int i = 0; i < kCancelTimes; ++i) {
        around_.link.Output("S\x1b");
    }
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
    shot_.events.push_back(ShotEvent::Lost);
    shot_.confirmsThisShot = 0;
    ClearShot();
    lost_ = true;
    shot_.screen.ShowNotice("CONNECTION LOST");
    shot_.screen.lblConfirm.visible = false;
    // A caption of "&OK" would keep the restarted shot from asking for the range switch.
    shot_.screen.cmdContinue.text = kCaptionContinueTest;
    shot_.screen.cmdContinue.enabled = false;
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.cmdExit.enabled = true;
    shot_.screen.cmdHeader.enabled = true;
    shot_.screen.cmdStart.enabled = true;
}

void ShotSequence::timDateTime_Timer() {
    shot_.screen.lblTime.text = ClockText(around_.clock.Now());
}

void ShotSequence::LookAround() {
    if (KeepCapture() && (journalStale_ || (shotPending_ && !JournalHasShot()))) NoteInJournal();
    if (!lost_) return;
    if (!around_.link.State().portOpen && !(around_.reopenPort && around_.reopenPort())) return;
    lost_ = false;
    shot_.screen.HideNotice();
}

void ShotSequence::timBeep_Timer() {
    if (!shot_.beeping) return;
    Beep(1);
    ++shot_.beepCount;
    if (shot_.beepCount >= kBeepsOfPrompt) shot_.beeping = false;
}

void ShotSequence::Timer1_Timer() {
    constexpr std::size_t kMostBlocks = kMostExaminedAtOnce / kSessionBlock;
    for (std::size_t block = 0; block < kMostBlocks && shot_.polling; ++block) {
        Pass(block == 0);
        if (!unexamined_) break;
    }
    if (shot_.polling) ShowAge(around_.clock.Ticks(), shot_);
}

void ShotSequence::Pass(bool first) {
    SessionReply& reply = shot_.reply;
    if (first) {
        std::string text = around_.link.Input();
        if (text.empty() && !unexamined_) return;
        if (!text.empty()) shot_.lastText = around_.clock.Ticks();
        reply.sessionPending.Append(std::move(text));
    }
    const bool found = ExamineSessionReply(reply, shot_.awaitText, around_.prompts);
    std::string& window = reply.sessionWindow;
    shot_.windowIsCut = window.size() >= kSessionBlock;
    unexamined_ = shot_.windowIsCut;
    if (shot_.windowIsCut) {
        // What goes on behind the block is examined with what follows it.
        const std::size_t from = UnfinishedFrom(window, shot_.testState != kStateRunning);
        if (from > 0) {
            reply.sessionPending.PutBack(window.size() - from);
            window.resize(from);
        }
    }
    // A record may come without a line end or after a prompt that noise has spoilt.
    const bool holdsRecord = Contains(window, kRecordStart);
    shot_.recordBegun = shot_.recordBegun || holdsRecord;
    const bool record = shot_.testState != kStateRecordArriving && holdsRecord;
    if (found || record) {
        shot_.polling = shot_.testState == kStateRunning;
        RunTestStep();
    }
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
    shot_.screen.HideNotice();
    shot_.screen.cmdExit.enabled = true;
    shot_.screen.cmdHeader.enabled = true;
    if (around_.session.shotCount != kShotRefusal) {
        AcceptShot();
        return;
    }
    shot_.screen.lblTest = {"TEST COMPLETE.", true, true};
    shot_.events.push_back(ShotEvent::Dropped);
    shotRefused_ = true;
    shot_.screen.lblConfirm.visible = false;
    shot_.screen.cmdContinue.enabled = false;
    shot_.screen.cmdCancel.enabled = false;
    shot_.screen.ShowNotice("NO MORE SHOTS.\nPRESS EXIT TO SAVE.", false);
    around_.prompts.MessageAfter(QStringLiteral("You have ran the maximum limit (100) of shots."));
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
    ComputePercentError(shot_.screen);
    shotPending_ = true;
    shot_.screen.shotShown = around_.session.shotCount;
    // They are of before.
    shot_.screen.txtCur.enabled = shot_.screen.txtVolt.enabled = false;
    shot_.events.push_back(ShotEvent::Complete);

    // Where the folder is gone the window says so, and room on the disk is no help.
    const QString refused = KeepCapture() ? NoteInJournal() : QString();
    // Only now: what the screen calls complete is on the disk.
    shot_.screen.lblTest = {"TEST COMPLETE.", true, true};
    if (!refused.isEmpty()) around_.prompts.MessageAfter(NotSafeText(refused));

    const std::string damage = DescribeRecordDamage(shot_.rawRecord);
    const QString text = DamageText(damage);
    damageText_ = DescribeRatio(shot_.screen.txtRatio.text);
    if (!damage.empty()) {
        damageText_ = text.toStdString() + (damageText_.empty() ? "" : "\r\n") + damageText_;
    }
    ShowDamage();
    if (!damage.empty()) around_.prompts.MessageAfter(text);
}

void ShotSequence::UpdateNameplateRatio() {
    shot_.screen.txtCRatio.text.clear();
    if (const auto ratio = NameplateRatio(shot_.screen.txtHVolt.text, shot_.screen.txtXVolt.text)) {
        shot_.screen.txtCRatio.text = *ratio;
        shot_.screen.lblCRatio.enabled = true;
    }
    ComputePercentError(shot_.screen);
    if (shot_.screen.txtCRatio.text.empty()) shot_.screen.txtPE.text.clear();
    if (shotPending_) NoteInJournal();
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
    KeepCapture();
    if (!shotPending_) return;
    capture_.Append(ShotTrailer());
    shotPending_ = false;
    ++shotsInCapture_;
    // A journal that is not written calls the shot pending, but also says how many shots were
    // before it in the capture file, so it is not taken for a second one.
    NoteInJournal();
    shot_.screen.shotOnDisk = true;
}

bool ShotSequence::KeepCapture() {
    const bool gone = capture_.IsGone();
    if (!gone && !journalDue_) return true;
    const QString& folder = around_.places.scratchFolder;
    QString text;
    try {
        journalDue_ = true;
        shot_.screen.shotOnDisk = false;
        if (gone) {
            CreateFolder(folder);
            capture_.MakeAgain();
        }
        UpdateJournal();
        journalDue_ = false;
        text =
            QStringLiteral(
                "The folder of the running session was deleted: %1. The session goes on in a new "
                "one; all complete shots are in it.")
                .arg(ShownPath(folder));
    } catch (const RunTimeError& error) {
        text = QStringLiteral(
                   "The folder of the running session is gone: %1. Its shots are in memory: do not "
                   "leave this window. %2")
                   .arg(ShownPath(folder), QString::fromUtf8(error.what()));
    }
    // In the window: a box would keep the prompts of a running shot from being seen.
    folderText_ = ToPage(text).value_or(text.toLatin1().toStdString());
    ShowDamage();
    return !journalDue_;
}

bool ShotSequence::MayLeave() {
    const bool safe = KeepCapture() || (shotsInCapture_ == 0 && !shotPending_);
    // On a disk that was full the shot may not have been noted.
    if (safe && (!shotPending_ || NoteInJournal().isEmpty())) return true;
    return around_.prompts.YesNo(
               QStringLiteral("The shots of this session are only in memory and will be lost. Do "
                              "you still want to exit? "),
               Answer::No) == Answer::Yes;
}

bool ShotSequence::JournalHasShot() const {
    try {
        return SessionJournal::Read(JournalPath()).pendingShot == ShotTrailer();
    } catch (const RunTimeError&) {
        return false;
    }
}

void ShotSequence::UpdateJournal() {
    shot_.screen.shotOnDisk = false;
    journalStale_ = true;
    SessionJournal journal;
    journal.header = around_.header;
    journal.testNotes = around_.session.testNotes;
    journal.shotsInCapture = shotsInCapture_;
    if (shotPending_) journal.pendingShot = ShotTrailer();
    journal.Write(JournalPath());
    journalStale_ = false;
    shot_.screen.shotOnDisk = true;
}

QString ShotSequence::NoteInJournal() {
    try {
        UpdateJournal();
        return {};
    } catch (const RunTimeError& error) {
        return QString::fromUtf8(error.what());
    }
}

void ShotSequence::Beep(int times) const {
    for (int i = 0; i < times; ++i) {
        around_.beep();
    }
}

void ShotSequence::HideDamage() {
    damageText_.clear();
    if (!journalDue_) folderText_.clear();
    ShowDamage();
}

void ShotSequence::ShowDamage() {
    const bool both = !folderText_.empty() && !damageText_.empty();
    const std::string text = folderText_ + (both ? "\r\n" : "") + damageText_;
    shot_.screen.lblDamage = {text, true, !text.empty()};
}

}  // namespace davo
