// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "link/session_reply.h"
#include "testing/shot_screen.h"
#include "testing/surroundings.h"

namespace davo {

// testState.
inline constexpr int kStateStarted = 0;
inline constexpr int kStateRangeConfirmed = 1;
inline constexpr int kStateRunning = 2;
inline constexpr int kStateRecordArriving = 3;
inline constexpr int kStateShotComplete = 99;

// What becomes of a shot, in the order in which it happens.
enum class ShotEvent {
    Started,
    SaturationBegun,
    Complete,  // ShotTrailer has it
    Dropped,   // cancelled, refused, or to be repeated
    Lost,      // the port was lost
};

using TimePoint = std::chrono::steady_clock::time_point;

// Where a shot is: what the steps know and change.
struct ShotState {
    ShotScreen screen;
    SessionReply reply;
    std::string awaitText;
    std::string rawRecord;
    int testState = kStateStarted;
    int beepCount = 0;
    int confirmsThisShot = 0;
    bool saturating = false;  // the saturation test is under way
    bool liveConfirm = false;
    bool satConfirmed = false;
    bool afterShot = false;
    bool polling = false;
    bool beeping = false;
    std::optional<TimePoint> lastReading;  // of this shot
    bool readingInStep = false;            // one has come since the instrument's last prompt
    bool recordBegun = false;              // its "DATA" has come
    TimePoint lastText;                    // when something came, or else the shot began
    std::vector<ShotEvent> events;
    bool windowIsCut = false;  // sessionWindow is a block cut off sessionPending, not a copy of it
};

// What the steps tell the window.
struct ShotHooks {
    // Called with the control's name when a step moves the focus ("cmdContinue"). Readings move it
    // only when they open a confirmation, not while the operator types a nameplate current.
    std::function<void(const char* control)> OnFocus;
    // Called where the rules let pending window events be processed: the window repaints; it runs
    // no events of the operator, so that no step runs inside a step.
    std::function<void()> OnShow;
    // The examined text when it holds complete readings (CompleteReadings finds them); for a live
    // display, which is not to read it within the step.
    std::function<void(std::string_view window)> OnReadings;
};

// Examines sessionWindow and moves the shot on. True when the window holds a whole record, which is
// then in rawRecord.
bool RunShotSteps(const TestSurroundings& around, const ShotHooks& hooks, ShotState& shot);

// Readings that have aged are not to be taken for what is now, nor a line that has died for one
// that is about to say something.
void ShowAge(TimePoint now, ShotState& shot);

}  // namespace davo
