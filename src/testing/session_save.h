// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/settings.h"
#include "records/unsaved_sessions.h"
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

// Asks for the file and saves a session that was set aside as a record file, by the same dialogue;
// a failure is said, and it asks again. Its full path; empty when the operator left the dialogue:
// the session is then still there. That the session's own files cannot be deleted is said, too.
QString SaveUnsavedSession(const UnsavedSession& session, Prompts& prompts, Settings& settings);

}  // namespace davo
