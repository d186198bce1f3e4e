#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "common/clock.h"
#include "common/places.h"
#include "common/prompts.h"
#include "link/link.h"
#include "link/session_reply.h"
#include "records/capture_file.h"
#include "records/header_table.h"
#include "records/session_journal.h"
#include "testing/test_screen.h"

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
    bool firstShot = true;         // until the first shot of the window has been started
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
class TestSequence {
 public:
    explicit TestSequence(const TestSurroundings& around);

    // Events of the window, by their own names.
    void Form_Load();
    void ResetTestWindow();
    void cmdStart_Click();
    void cmdContinue_Click();
    void cmdCancel_Click();
    void EscapePressed();  // stops polling and sends ESC; the window then closes
    void txtHVolt_LostFocus();
    void txtXVolt_LostFocus();
    void timDateTime_Timer();
    void timBeep_Timer();

    // One pass: polls the port and runs RunTestStep when the awaited text is in the window.
    // Called when text has arrived, when the operator has acted, and when Timer1 ticks; a pass
    // without new text or an act of the operator since the last one does nothing.
    void Timer1_Timer();

    // Examines sessionWindow and moves the test on; public for tests and the benchmark.
    void RunTestStep();

    // Appends the pending shot to the capture file and flushes it; nothing without one. When the
    // disk refuses, the error is thrown and the shot stays pending.
    void WriteShotTrailer();
    // The block that WriteShotTrailer would append now.
    std::string ShotTrailer() const;

    // The journal is rewritten: header, notes or nameplate inputs have changed.
    void UpdateJournal();

    TestScreen& Screen() { return screen_; }
    const TestScreen& Screen() const { return screen_; }
    int TestState() const { return testState_; }
    bool ShotPending() const { return shotPending_; }
    bool Polling() const { return polling_; }         // Timer1
    bool Clocking() const { return clocking_; }       // timDateTime
    bool Beeping() const { return beeping_; }         // timBeep
    void StopTimers() { polling_ = clocking_ = false; }
    CaptureFile& Capture() { return capture_; }
    const TestSurroundings& Around() const { return around_; }

    // Called with the control's name when a step moves the focus ("cmdContinue").
    std::function<void(const char* control)> OnFocus;
    // Called where the rules let pending window events be processed: the window repaints.
    std::function<void()> OnShow;
    // Each complete reading as it arrives (amperes and volts as received); for a live display.
    std::function<void(const std::string& current, const std::string& voltage)> OnReading;

 private:
    friend class TestSteps;
    void ParseRatioReply();
    void UpdateNameplateRatio();
    void ComputePercentError();
    void AdjustShotCounters(int delta);
    void ClearBuffers();  // keeps a record whose "DATA" has begun to arrive

    TestSurroundings around_;
    TestScreen screen_;
    SessionReply reply_;
    CaptureFile capture_;
    std::string awaitText_;
    std::string rawRecord_;
    int testState_ = kStateStarted;
    int beepCount_ = 0;
    int confirmCount_ = 0;
    int confirmsThisShot_ = 0;
    int satCount_ = 0;
    int ratioCount_ = 0;
    bool liveConfirm_ = false;
    bool satConfirmed_ = false;
    bool afterShot_ = false;
    bool shotPending_ = false;
    bool polling_ = false;
    bool clocking_ = false;
    bool beeping_ = false;
    bool acted_ = false;  // the operator has acted since the last pass
};

}  // namespace davo
