// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/unsaved_sessions.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <optional>
#include <utility>

#include "common/files.h"
#include "common/places.h"
#include "common/text.h"
#include "records/capture_file.h"

namespace davo {

namespace {

// What an earlier run left under the names of the running session.
struct EarlierSession {
    std::string capture;
    std::string journalBytes;               // empty when there is none
    std::optional<SessionJournal> journal;  // nothing when there is none or it is damaged
    QDateTime time;                         // when one of the two was changed last
};

std::optional<SessionJournal> ReadableJournal(const QString& path) {
    try {
        return SessionJournal::Read(path);
    } catch (const RunTimeError&) {
        return std::nullopt;
    }
}

EarlierSession ReadEarlierSession(const QString& capturePath, const QString& journalPath) {
    EarlierSession session;
    if (FileExists(journalPath)) {
        session.journalBytes = ReadWholeFile(journalPath);
        session.journal = ReadableJournal(journalPath);
        session.time = QFileInfo(journalPath).lastModified();
    }
    if (FileExists(capturePath)) {
        session.capture = ReadWholeFile(capturePath);
        session.time = std::max(session.time, QFileInfo(capturePath).lastModified());
    }
    return session;
}

// capture with the journal's pending shot behind the shots that were in it. The kill may have
// come while that shot was being appended: a part of it gives way to the whole, and one that is
// there already is not appended again.
std::string WithPendingShot(std::string capture, const SessionJournal& journal) {
    if (journal.pendingShot.empty()) return capture;
    const std::vector<CapturedShot> shots = CapturedShots(capture);
    const auto before = static_cast<std::size_t>(std::max(journal.shotsInCapture, 0));
    if (shots.size() > before && shots[before].trailerWhole) return capture;
    const std::size_t kept = std::min(shots.size(), before);
    capture.resize(kept == 0 ? 0 : shots[kept - 1].end);
    // A shot that a bad disk has cut must not take the pending one's lines for its own.
    while (kept > 0 && !CapturedShots(capture).back().trailerWhole)
        capture += kLineEnd;
    return capture + journal.pendingShot;
}

constexpr const char* kTimeOfName = "yyyyMMdd-HHmmss";

struct DatedNames {
    QString capturePath;
    QString journalPath;
};

// Names that belong to this very session: a repetition after a kill finds its own file again,
// while another session of the same second keeps its own.
DatedNames NamesFor(const QDir& folder, const QDateTime& time, const std::string& capture) {
    const QString stem = QStringLiteral("TESTFILE-") + time.toString(QLatin1String(kTimeOfName));
    for (int number = 1;; ++number) {
        const QString name = number == 1 ? stem : QStringLiteral("%1-%2").arg(stem).arg(number);
        const QString path = folder.filePath(name + QStringLiteral(".txt"));
        if (!FileExists(path) || ReadWholeFile(path) == capture) {
            return {path, folder.filePath(name + QStringLiteral(".jnl"))};
        }
    }
}

void DeleteIfThere(const QString& path) {
    if (FileExists(path)) DeleteFile(path);
}

// Deletes what a saved session left. The journal, which says so, goes last.
void DeleteSaved(const QString& capturePath, const QString& journalPath) {
    DeleteIfThere(capturePath);
    DeleteFile(journalPath);
}

// What NamesFor has put into a name.
void ReadName(const QString& name, UnsavedSession& session) {
    static const QRegularExpression kName(QStringLiteral("^TESTFILE-(\\d{8}-\\d{6})(?:-(\\d+))?$"));
    const QRegularExpressionMatch match = kName.match(name);
    session.lastChange = QDateTime::fromString(match.captured(1), QLatin1String(kTimeOfName));
    session.number = std::max(match.captured(2).toInt(), 1);
}

UnsavedSession ReadSession(const QDir& folder, const QString& name) {
    UnsavedSession session;
    ReadName(name, session);
    session.capturePath = ShownPath(folder.filePath(name + QStringLiteral(".txt")));
    session.journalPath = ShownPath(folder.filePath(name + QStringLiteral(".jnl")));
    session.journal = ReadableJournal(session.journalPath).value_or(SessionJournal{});
    session.shots = static_cast<int>(CapturedShots(ReadWholeFile(session.capturePath)).size());
    return session;
}

}  // namespace

void SetSessionAside(const QString& scratchFolder) {
    const QDir folder(scratchFolder);
    const QString capturePath = folder.filePath(QLatin1String(kCaptureFileName));
    const QString journalPath = folder.filePath(QLatin1String(kJournalFileName));
    const EarlierSession earlier = ReadEarlierSession(capturePath, journalPath);
    SessionJournal journal = earlier.journal.value_or(SessionJournal{});
    if (journal.saved) {
        DeleteSaved(capturePath, journalPath);
        return;
    }
    const std::string capture = WithPendingShot(earlier.capture, journal);
    const std::size_t shots = CapturedShots(capture).size();
    if (shots == 0) return;

    journal.pendingShot.clear();
    journal.shotsInCapture = static_cast<int>(shots);
    const DatedNames names = NamesFor(folder, earlier.time, capture);
    const bool damaged = !earlier.journal && !earlier.journalBytes.empty();
    // The journal first: a dated capture file is listed as soon as it is there. What cannot be
    // read is kept as it is.
    if (damaged) {
        ReplaceFile(names.journalPath, earlier.journalBytes);
    } else {
        journal.Write(names.journalPath);
    }
    ReplaceFile(names.capturePath, capture);
    // From here on the session is under its dated names only: up to this write a repetition
    // makes the same two files again, after it there is nothing to repeat.
    journal.saved = true;
    journal.Write(journalPath);
    DeleteSaved(capturePath, journalPath);
}

std::vector<UnsavedSession> SetAsideUnsavedSessions(const QString& scratchFolder,
                                                    std::vector<RunTimeError>* unreadable) {
    try {
        SetSessionAside(scratchFolder);
    } catch (const RunTimeError& error) {
        if (unreadable == nullptr) throw;
        unreadable->push_back(error);
    }
    const QDir folder(scratchFolder);
    QStringList names = folder.entryList({QStringLiteral("TESTFILE-*.txt")}, QDir::Files);
    for (QString& name : names)
        name.chop(4);
    std::sort(names.begin(), names.end());

    std::vector<UnsavedSession> sessions;
    for (const QString& name : names) {
        try {
            UnsavedSession session = ReadSession(folder, name);
            if (session.shots > 0) sessions.push_back(std::move(session));
        } catch (const RunTimeError& error) {
            if (unreadable != nullptr) unreadable->push_back(error);
        }
    }
    return sessions;
}

void DeleteSavedSession(const UnsavedSession& session) {
    DeleteIfThere(session.capturePath);
    DeleteIfThere(session.journalPath);
}

}  // namespace davo
