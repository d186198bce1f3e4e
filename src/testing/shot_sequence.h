// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "common/clock.h"
#include "common/places.h"
#include "common/prompts.h"
#include "link/link.h"
#include "link/session_reply.h"
#include "records/capture_file.h"
#include "records/header_table.h"
#include "records/session_journal.h"
#include "testing/shot_screen.h"

namespace davo {

// Mode flags that the main window sets.
struct TestModes {
    bool testBothMode = false;
    bool testRatioOnlyMode = false;
    bool modelIsExtended = false;
};

// Process-wide state of the running session.
struct SessionState {
    std::int16_t shotCount = 0;
    std::string testNotes;
    bool firstShot = true;  // until the first shot of the window has been started
    bool testWindowOpen = false;
};

// What the test window needs from around it; all outlive it.
struct TestSurroundings {
    Link& link;
    Prompts& prompts;
    const Clock& clock;
    const Places& places;
    TestModes& modes;
    SessionState& session;
    HeaderTable& header;
    std::function<void()> beep;
    // Opens the port of the settings again when cmdStart finds it closed; whether it is open then.
    std::function<bool()> reopenPort;
};

// testState.
inline constexpr int kStateStarted = 0;
inline constexpr int kStateRangeConfirmed = 1;
inline constexpr int kStateRunning = 2;
inline constexpr int kStateRecordArriving = 3;
inline constexpr int kStateShotComplete = 99;

inline constexpr int kShotRefusal = 101;  // shotCount at which a completed shot is refused

// The test window's rules without the window: one value (Screen) that the window shows, and one
// operation for each event. It never nests an event loop except inside Link::SendCommand and the
// prompts. Operations throw RunTimeError; the window catches it once.
class ShotSequence {
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

    ShotScreen& Screen() { return screen_; }
    const ShotScreen& Screen() const { return screen_; }
    int TestState() const { return testState_; }
    SessionReply& Reply() { return reply_; }
    bool ShotPending() const { return shotPending_; }
    bool Aborted() const { return aborted_; }    // by ESC
    bool Polling() const { return polling_; }    // Timer1
    bool Clocking() const { return clocking_; }  // timDateTime
    bool Beeping() const { return beeping_; }    // timBeep
    void StopTimers() { polling_ = clocking_ = false; }
    CaptureFile& Capture() { return capture_; }
    const TestSurroundings& Around() const { return around_; }

    // Called with the control's name when a step moves the focus ("cmdContinue"). Readings move it
    // only when they open a confirmation, not while the operator types a nameplate current.
    std::function<void(const char* control)> OnFocus;
    // Called where the rules let pending window events be processed: the window repaints; it runs
    // no events of the operator, so that no step runs inside a step.
    std::function<void()> OnShow;
    // The examined text when it holds complete readings (CompleteReadings finds them); for a live
    // display, which is not to read it within the step.
    std::function<void(std::string_view window)> OnReadings;

  private:
    // One pass; unexamined: sessionPending holds what the last block left. Whether it does now.
    bool Pass(bool unexamined);
    void ShowBeginning();
    void CreateCapture();
    bool PortReady();
    void AskRatioOnly();
    void MarkFirstShot();
    void ClearBlankNameplate();
    void Beep(int times) const;
    void HideDamage();

    // The steps of RunTestStep, in their order.
    void DriveToZero();
    void RangeSwitch();
    void Saturation();
    void RatioTestStart();
    void LiveReadings();
    void SlowLowering();
    void RatioAndPolarity();
    void OverVoltage();
    void RecordStart();
    void RecordEnd();

    void OpenConfirmation(const char* caption);
    void ShowRatioPrompt();
    void ShowSlowLowering();
    void CompleteShot();
    void AcceptShot();
    void DropExamined();
    bool WindowHolds(std::string_view text) const;

    void ParseRatioReply();
    void UpdateNameplateRatio();
    void ShowPercentError();
    void ComputePercentError();
    void AdjustShotCounters(int delta);

    TestSurroundings around_;
    ShotScreen screen_;
    SessionReply reply_;
    CaptureFile capture_;
    std::string awaitText_;
    std::string rawRecord_;
    int testState_ = kStateStarted;
    int beepCount_ = 0;
    int confirmCount_ = 0;
    int confirmsThisShot_ = 0;
    std::int16_t satCount_ = 0;
    std::int16_t ratioCount_ = 0;
    int shotsInCapture_ = 0;
    bool liveConfirm_ = false;
    bool satConfirmed_ = false;
    bool afterShot_ = false;
    bool shotPending_ = false;
    bool polling_ = false;
    bool clocking_ = false;
    bool beeping_ = false;
    bool aborted_ = false;
    bool windowIsCut_ = false;  // sessionWindow is a block cut off sessionPending, not a copy of it
};

}  // namespace davo
