// SPDX-License-Identifier: GPL-3.0-or-later
// Capture files and journals: a complete shot is never lost, and what is recovered is a record that
// reads.
#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "records/capture_file.h"
#include "records/record_file_writer.h"
#include "records/unsaved_sessions.h"

namespace {

using namespace davo;
using fuzz::Require;

// The numbers of a record are 16 bits wide, so a shot's part of a record file has an upper limit
// besides the texts that come from its lines.
constexpr std::size_t kMostShotBytes = 4000;

bool SameJournal(const SessionJournal& one, const SessionJournal& other) {
    return one.header.headerFields == other.header.headerFields &&
           one.testNotes == other.testNotes && one.shotsInCapture == other.shotsInCapture &&
           one.pendingShot == other.pendingShot && one.saved == other.saved;
}

void CheckWritten(const QString& path, const SessionJournal& journal) {
    journal.Write(path);
    Require(SameJournal(SessionJournal::Read(path), journal),
            "a journal is read as it was written");
}

// A journal of texts; its header's have no line ends, as boxes of one line give them.
SessionJournal JournalOf(fuzz::Input& input) {
    SessionJournal journal;
    journal.shotsInCapture = input.Below(4);
    journal.saved = input.Below(8) == 7;
    journal.header.headerFields[kHeaderDate] = input.Text();
    journal.header.Field(input.Below(kHeaderFieldCount)) = input.Text();
    journal.testNotes = input.Text();
    journal.pendingShot = input.Text();
    return journal;
}

bool SameShots(const std::string& before, const std::string& after, std::size_t count) {
    const std::vector<CapturedShot> one = CapturedShots(before);
    const std::vector<CapturedShot> other = CapturedShots(after);
    if (other.size() < count) return false;
    return std::equal(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(count), other.begin(),
                      [](const CapturedShot& left, const CapturedShot& right) {
                          return left.hexText == right.hexText &&
                                 (!left.trailerWhole || left.measuredRatio == right.measuredRatio);
                      });
}

// As the test window makes it: one record from its first byte on, and its three lines.
bool IsOneShot(const std::string& block) {
    const std::vector<CapturedShot> shots = CapturedShots(block);
    return block.starts_with(kRecordStart) && shots.size() == 1 && shots.front().trailerWhole;
}

void CheckConverted(const std::string& capture, const SessionJournal& journal, std::size_t shots) {
    const std::string file = ConvertCapture(capture, {}, {"T1", 0, journal.testNotes});
    Require(ParseTestRecordFile(file).records.size() == shots, "every shot is a record");
    Require(file.size() <= capture.size() + journal.testNotes.size() + (shots + 1) * kMostShotBytes,
            "a record file has no more than its shots");
}

void CheckRecovery(const std::string& capture, const SessionJournal& journal,
                   const std::string& journalBytes) {
    const fuzz::Folder folder;
    const QString capturePath = folder.Path(kCaptureFileName);
    const QString journalPath = folder.Path(kJournalFileName);
    ReplaceFile(capturePath, capture);
    if (journalBytes.empty()) {
        CheckWritten(journalPath, journal);
    } else {
        ReplaceFile(journalPath, journalBytes);
    }
    SessionJournal kept;
    const bool isWhole = fuzz::Runs({13}, [&] { kept = SessionJournal::Read(journalPath); });
    if (isWhole && !journalBytes.empty()) CheckWritten(folder.Path("again.jnl"), kept);

    const std::size_t complete = CapturedShots(capture).size();
    const auto noted = static_cast<std::size_t>(std::max(kept.shotsInCapture, 0));
    const std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder.Path());
    Require(sessions.size() <= 1, "one session is one session");
    if (kept.saved) {
        Require(sessions.empty(), "a saved session is not offered");
        return;
    }
    const bool hasPending = !CapturedShots(kept.pendingShot).empty();
    if (complete > 0 && noted >= complete) Require(sessions.size() == 1, "a shot is offered");
    if (sessions.empty()) {
        Require(!hasPending || noted > 0, "a pending shot is offered");
        Require(FileExists(capturePath), "what is not offered is still there");
        return;
    }
    const UnsavedSession& session = sessions.front();
    const std::string saved = ReadWholeFile(session.capturePath);
    const auto shots = static_cast<std::size_t>(session.shots);
    Require(SameShots(capture, saved, std::min(complete, noted)), "a noted shot stays as it is");
    if (kept.pendingShot.empty()) Require(saved == capture, "the capture file stays as it is");
    if (IsOneShot(kept.pendingShot))
        Require(shots > std::min(complete, noted), "the pending shot is there");
    Require(saved.size() <= capture.size() + kept.pendingShot.size() + 4 * kLineEnd.size(),
            "nothing is there twice");
    CheckConverted(saved, session.journal, shots);

    const std::vector<UnsavedSession> again = SetAsideUnsavedSessions(folder.Path());
    Require(again.size() == 1 && again.front().shots == session.shots, "it stays as it is");
    DeleteSavedSession(again.front());
    Require(QDir(folder.Path()).entryList({QStringLiteral("TESTFILE*")}, QDir::Files).isEmpty(),
            "nothing is left of a saved session");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const SessionJournal journal = JournalOf(input);
    const std::string bytes = input.Text();
    const std::string capture = input.Rest();
    CheckConverted(capture, journal, CapturedShots(capture).size());
    CheckRecovery(capture, journal, bytes);
    return 0;
}
