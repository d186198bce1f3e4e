// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "records/capture_file.h"
#include "testing/shot_screen.h"
#include "testing/shot_steps.h"
#include "testing/surroundings.h"

namespace davo {

inline constexpr int kShotRefusal = 101;  // shotCount at which a completed shot is refused

// The test window's rules without the window: one value (Screen) that the window shows, and one
// operation for each event. It never nests an event loop except inside Link::SendCommand and the
// prompts. Operations throw RunTimeError; the window catches it once.
class ShotSequence : public ShotHooks {
  public:
    explicit ShotSequence(const TestSurroundings& around);

    // Events of the window, by their own names.
    void Form_Load();
    void ResetTestWindow();
    void cmdStart_Click();
    void cmdContinue_Click();
    void cmdCancel_Click();
    void EscapePressed();  // stops polling and sends ESC; the window then closes
    // The port was lost: a running shot ends like a cancel, but nothing is sent and cmdStart can
    // start it again. The prompt and the session's shots stay.
    void PortLost();
    void txtHVolt_LostFocus();
    void txtXVolt_LostFocus();
    void timDateTime_Timer();
    void timBeep_Timer();

    // Polls the port and runs RunTestStep when the awaited text is in the window, block by block
    // until nothing is left to examine. Called when text has arrived, when the operator has acted,
    // and when Timer1 ticks; without new text nothing happens.
    void Timer1_Timer();

    // Examines sessionWindow and moves the test on; public for tests and the benchmark. What was
    // examined leaves sessionPending, so that no prompt acts twice; a record whose "DATA" has
    // begun to arrive and an unfinished last line stay (an unfinished reading not in testState 2).
    void RunTestStep();

    // Appends the pending shot to the capture file, flushes it and takes it out of the journal;
    // nothing without one. When the disk refuses, the error is thrown and the shot stays pending.
    void WriteShotTrailer();
    // The block that WriteShotTrailer would append now: the record, the three ratio lines and an
    // empty line, each ended by CR LF.
    std::string ShotTrailer() const;

    // The journal is rewritten: header, notes or nameplate inputs have changed. Throws the errors
    // of SessionJournal::Write.
    void UpdateJournal() const;

    ShotScreen& Screen() { return shot_.screen; }
    const ShotScreen& Screen() const { return shot_.screen; }
    int TestState() const { return shot_.testState; }
    bool Saturating() const { return shot_.saturating; }
    // cmdContinue would drop the shot that is complete.
    bool RepeatOffered() const;
    // What has happened since this was called last.
    std::vector<ShotEvent> TakeEvents() { return std::exchange(shot_.events, {}); }
    SessionReply& Reply() { return shot_.reply; }
    bool ShotPending() const { return shotPending_; }
    bool Aborted() const { return aborted_; }       // by ESC
    bool Polling() const { return shot_.polling; }  // Timer1
    bool Clocking() const { return clocking_; }     // timDateTime
    bool Beeping() const { return shot_.beeping; }  // timBeep
    // Those that the rules name here: a beep under way goes on to its end.
    void StopTimers() { shot_.polling = clocking_ = false; }
    CaptureFile& Capture() { return capture_; }
    const TestSurroundings& Around() const { return around_; }

  private:
    // One pass; unexamined: sessionPending holds what the last block left. Whether it does now.
    bool Pass(bool unexamined);
    void ShowBeginning();
    void CreateCapture();
    bool EnsurePortOpen();
    void AskRatioOnly();
    void StampHeader();  // with the date and time of the first shot
    void ClearBlankNameplate();
    void Beep(int times) const;
    void HideDamage();

    void CompleteShot();
    void AcceptShot();

    void UpdateNameplateRatio();
    // Shows it where it can be computed.
    void ComputePercentError();
    void AdjustShotCounters(int delta);

    TestSurroundings around_;
    ShotState shot_;
    CaptureFile capture_;
    int confirmCount_ = 0;
    std::int16_t satCount_ = 0;
    std::int16_t ratioCount_ = 0;
    int shotsInCapture_ = 0;
    bool shotPending_ = false;
    bool clocking_ = false;
    bool aborted_ = false;
};

}  // namespace davo
