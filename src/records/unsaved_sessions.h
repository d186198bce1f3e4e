// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <vector>

#include "common/run_time_error.h"
#include "records/session_journal.h"

namespace davo {

// A session that was never saved and was set aside.
struct UnsavedSession {
    QString capturePath;  // dated name in the scratch folder
    QString journalPath;
    SessionJournal journal;  // without anything when it is missing or damaged
    int shots = 0;           // complete shots of the capture file
    QDateTime lastChange;    // as the dated name says
    int number = 1;          // among the sessions of that second
};

// Sets the earlier session in scratchFolder aside when it was never saved and holds at least one
// complete shot (in the capture file, or pending in the journal): capture with the pending shot
// appended, and journal, under dated names ("TESTFILE-20261121-093215.txt", the time of the last
// change). Capture file and journal of a session that was set aside or saved are then deleted. A
// kill in between loses nothing and sets nothing aside twice. A capture file without a journal
// counts as unsaved; a damaged journal does not hide its capture file. Throws the errors of
// ReadWholeFile, ReplaceFile and DeleteFile: the session is then still there, so no new capture
// file may be created.
void SetSessionAside(const QString& scratchFolder);

// The same, then lists every session that was set aside and is there still, oldest first. One that
// cannot be read or set aside is left out; its error, which names the file, goes to unreadable.
// Without unreadable it throws what SetSessionAside throws.
std::vector<UnsavedSession> SetAsideUnsavedSessions(
    const QString& scratchFolder, std::vector<RunTimeError>* unreadable = nullptr);

// session has become a record file: its two files are deleted.
void DeleteSavedSession(const UnsavedSession& session);

}  // namespace davo
