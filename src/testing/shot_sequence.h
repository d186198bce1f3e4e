// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "records/capture_file.h"
#include "records/session_journal.h"
#include "testing/shot_screen.h"
#include "testing/shot_steps.h"
#include "testing/surroundings.h"

namespace davo {

inline constexpr int kShotRefusal = 101;  // shotCount at which a completed shot is refused
// So many characters are examined before the window has its turn.
inline constexpr std::size_t kMostExaminedAtOnce = 256 * kSessionBlock;

// The test window's rules without the window: one value (Screen) that the window shows, and one
// operation for each event. It never nests an event loop except inside Link::SendCommand and the
// prompts. Operations throw RunTimeError; the window catches it once.
class ShotSequence : public ShotHooks {
  public:
    explicit ShotSequence(const TestSurroundings& around) : around_(around) {}

    // Events of the window, by their own names.
    void Form_Load();
    void ResetTestWindow();
    void cmdStart_Click();
    void cmdContinue_Click();
    void cmdCancel_Click();
    void EscapePressed();  // stops polling and sends ESC; the window then closes
    // The port was lost: a running shot ends like a cancel, but nothing is sent and cmdStart can
    // start it again. What the shot showed goes, the session's shots stay. The window says so until
    // the port is open again, which is tried once a second.
    void PortLost();
    void txtHVolt_LostFocus() { UpdateNameplateRatio(); }
    void txtXVolt_LostFocus() { UpdateNameplateRatio(); }
    void timDateTime_Timer();
    void timBeep_Timer();
    // Once a second, whether or not the timers run: whether a lost port is back, and the capture
    // file and the shot in the journal still there. A journal that is not is written again.
    void LookAround();

    // Polls the port and runs RunTestStep when the awaited text is in the window, block by block
    // until nothing is left to examine or kMostExaminedAtOnce is done. Called when text has
    // arrived, when the operator has acted, when Timer1 ticks, and again soon while Unexamined.
    // Without new text it only looks how long nothing has come.
    void Timer1_Timer();
    // Text is left that no block has had yet.
    bool Unexamined() const { return shot_.polling && unexamined_; }

    // Examines sessionWindow and moves the test on; public for tests and the benchmark. What was
    // examined leaves sessionPending, so that no prompt acts twice; a record whose "DATA" has
    // begun to arrive and an unfinished last line stay (an unfinished reading not in testState 2).
    void RunTestStep();

    // Appends the pending shot to the capture file, flushes it and takes it out of the journal;
    // nothing without one. When the disk refuses, the error is thrown and the shot stays pending.
    void WriteShotTrailer();
    // Makes the capture file and the journal anew when their folder was deleted, and says so. False
    // when that is not possible: the session is only in memory.
    bool KeepCapture();
    // Whether the session is on the disk, has no shot, or is given up by the operator.
    bool MayLeave();
    // The block that WriteShotTrailer would append now: the record, the three ratio lines and an
    // empty line, each ended by CR LF.
    std::string ShotTrailer() const;

    // The journal is rewritten: header, notes or nameplate inputs have changed. Throws the errors
    // of SessionJournal::Write.
    void UpdateJournal();

    ShotScreen& Screen() { return shot_.screen; }
    const ShotScreen& Screen() const { return shot_.screen; }
    int TestState() const { return shot_.testState; }
    bool Saturating() const { return shot_.saturating; }
    // cmdContinue would drop the shot that is complete.
    bool RepeatOffered() const { return shot_.screen.cmdContinue.text == kCaptionRepeat; }
    // What has happened since this was called last.
    std::vector<ShotEvent> TakeEvents() { return std::exchange(shot_.events, {}); }
    SessionReply& Reply() { return shot_.reply; }
    bool ShotPending() const { return shotPending_; }
    // The last shot was one more than a session can hold.
    bool ShotRefused() const { return shotRefused_; }
    bool Aborted() const { return aborted_; }       // by ESC
    bool Polling() const { return shot_.polling; }  // Timer1
    bool Clocking() const { return clocking_; }     // timDateTime
    bool Beeping() const { return shot_.beeping; }  // timBeep
    // Those that the rules name here: a beep under way goes on to its end.
    void StopTimers() { shot_.polling = clocking_ = false; }
    CaptureFile& Capture() { return capture_; }
    const TestSurroundings& Around() const { return around_; }

  private:
    // One block, the first of a call with a look at the port; then unexamined_ is up to date.
    void Pass(bool first);
    void ShowBeginning();
    void CreateCapture();
    void ClearShot();
    bool AskReady();
    bool EnsurePortOpen();
    // Nothing when the operator goes back to the shot that is complete.
    std::optional<bool> AskRatioOnly();
    void StampHeader();  // with the date and time of the first shot
    void Beep(int times) const;
    void HideDamage();  // of the shot; that of a folder which is still gone stays
    void ShowDamage();

    QString JournalPath() const {
        return around_.places.scratchFolder + QLatin1String(kJournalFileName);
    }
    bool JournalHasShot() const;
    // UpdateJournal; why it could not, empty when it could. shotOnDisk says so, too, and LookAround
    // tries again.
    QString NoteInJournal();

    void CompleteShot();
    void AcceptShot();

    void UpdateNameplateRatio();
    void AdjustShotCounters(int delta);

    TestSurroundings around_;
    ShotState shot_;
    CaptureFile capture_;
    int confirmCount_ = 0;
    std::int16_t satCount_ = 0;
    std::int16_t ratioCount_ = 0;
    int shotsInCapture_ = 0;
    std::string damageText_;     // lblDamage: of the shot
    std::string folderText_;     // lblDamage: of the session's folder
    bool journalDue_ = false;    // the folder was deleted, and not all is made again
    bool journalStale_ = false;  // what is now could not be written yet
    bool shotPending_ = false;
    bool clocking_ = false;
    bool aborted_ = false;
    bool shotRefused_ = false;
    bool unexamined_ = false;
    bool lost_ = false;  // the port, and no shot was started since
};

}  // namespace davo
