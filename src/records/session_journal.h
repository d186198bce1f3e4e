// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <vector>

#include "records/header_table.h"

namespace davo {

// What a session needs besides its capture file to be saved after the program was killed: header,
// first shot's date and time, notes, and the shot that is shown as complete but not yet in the
// capture file. It lies beside the capture file as "TESTFILE.jnl" and is replaced whole
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

// A session that was never saved and was set aside.
struct UnsavedSession {
    QString capturePath;  // dated name in the scratch folder
    QString journalPath;
    SessionJournal journal;  // without anything when it is missing or damaged
    int shots = 0;           // complete shots of the capture file
};

// Sets the earlier session in scratchFolder aside when it was never saved and holds at least one
// complete shot (in the capture file, or pending in the journal): capture with the pending shot
// appended, and journal, under dated names ("TESTFILE-20261121-093215.txt", the time of the last
// change). Capture file and journal of a session that was set aside or saved are then deleted.
// Then lists every session set aside and not yet answered for, oldest first. A kill in between
// loses nothing and lists nothing twice. A capture file without a journal counts as unsaved; a
// damaged journal does not hide its capture file. Throws the errors of ReadWholeFile, ReplaceFile
// and DeleteFile: the session is then still there, so no new capture file may be created.
std::vector<UnsavedSession> SetAsideUnsavedSessions(const QString& scratchFolder);

// The operator has answered for session: it is not listed again. Saved, its two files are deleted;
// not saved, they are kept.
void CloseUnsavedSession(const UnsavedSession& session, bool saved);

}  // namespace davo
