// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>

#include "records/header_table.h"

namespace davo {

// What a session needs besides its capture file to be saved after the program was killed: header,
// first shot's date and time, notes, and the shot that is shown as complete but not yet in the
// capture file. It is beside the capture file as "TESTFILE.jnl" and is replaced whole
// (atomically) whenever one of these changes.
struct SessionJournal {
    HeaderTable header;  // slots 1, 2 and 4 to 11
    std::string testNotes;
    int shotsInCapture = 0;   // complete shots in the capture file when the journal was written
    std::string pendingShot;  // block as WriteShotTrailer will append it; empty when none
    bool saved = false;       // the session has become a record file: nothing to recover

    // Throws the errors of ReplaceFile.
    void Write(const QString& path) const;
    // Throws 53 when there is none, 13 when it is damaged: its last line is a check sum.
    static SessionJournal Read(const QString& path);
};

inline constexpr const char* kJournalFileName = "TESTFILE.jnl";

}  // namespace davo
