// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/settings.h"
#include "testing/shot_sequence.h"

namespace davo {

// How an exit from the test window ended.
struct SaveOutcome {
    bool closeWindow = false;
    QString savedFile;         // full path of the record file; empty when none was written
    bool viewResults = false;  // the operator wants the report
};

// cmdExit_Click: writes the pending shot, asks, saves; also when the last shot was refused because
// the session is full. A failed save says so and leads back to
// the question, so that the session can be saved elsewhere; a pending shot that cannot be written
// keeps the window open. offerResults: there is a report to view, so ask for it after a save.
SaveOutcome ExitAndSave(ShotSequence& sequence, Settings& settings, bool offerResults);

// Asks, for each session set aside and not yet answered for, whether to save it as a record file
// now, and saves it by the same dialogue. Called before a new capture file is created. Throws
// what setting aside or answering for a session throws; no capture file may be created then.
void OfferUnsavedSessions(const TestSurroundings& around, Settings& settings);

}  // namespace davo
