// SPDX-License-Identifier: GPL-3.0-or-later

#include <QDateTime>

#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "records/unsaved_sessions.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::FileBytes;
using test::PutFile;
using test::TemporaryFolder;

const QDateTime kLastShot(QDate(2026, 11, 21), QTime(9, 32, 15));

std::string Shot(int number) {
    return test::CaptureBlock(EncodeRecordImage(test::ImageWithPoints(number)),
                              std::to_string(number));
}

SessionJournal Journal(int shotsInCapture, const std::string& pending = {}) {
    SessionJournal journal;
    journal.header.Field(0) = "ACME";
    journal.header.headerFields[kHeaderDate] = "11/21/26";
    journal.testNotes = "notes";
    journal.shotsInCapture = shotsInCapture;
    journal.pendingShot = pending;
    return journal;
}

class UnsavedSessionsTest : public testing::Test {
  protected:
    static void SetTime(const QString& path, const QDateTime& time) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
    }
    void PutCapture(const std::string& bytes, const QDateTime& time = kLastShot) const {
        PutFile(capture_, bytes);
        SetTime(capture_, time);
    }

    // A journal that was written before the capture file's last change.
    std::vector<UnsavedSession> SetAside() const {
        if (QFile::exists(journal_)) SetTime(journal_, kLastShot.addSecs(-1));
        return SetAsideUnsavedSessions(folder_.Path());
    }

    // One session of the wanted bytes under the wanted name, and nothing under the running names.
    void ExpectSetAside(const std::string& bytes, int shots, const char* stem) const {
        const std::vector<UnsavedSession> sessions = SetAside();
        ASSERT_EQ(sessions.size(), 1U);
        EXPECT_EQ(sessions[0].capturePath, folder_.Path(stem) + u".txt"_s);
        EXPECT_EQ(sessions[0].journalPath, folder_.Path(stem) + u".jnl"_s);
        EXPECT_EQ(FileBytes(sessions[0].capturePath), bytes);
        EXPECT_EQ(sessions[0].shots, shots);
        ExpectNothingRunning();
    }

    void ExpectNothingRunning() const {
        EXPECT_FALSE(QFile::exists(capture_));
        EXPECT_FALSE(QFile::exists(journal_));
    }

    QStringList Files() const { return QDir(folder_.Path()).entryList(QDir::Files | QDir::Hidden); }

    TemporaryFolder folder_;
    QString capture_ = folder_.Path("TESTFILE.txt");
    QString journal_ = folder_.Path("TESTFILE.jnl");
    const char* stem_ = "TESTFILE-20261121-093215";
};

TEST_F(UnsavedSessionsTest, EmptyFolderHasNone) {
    EXPECT_TRUE(SetAside().empty());
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(UnsavedSessionsTest, SessionWithoutAShotIsLeft) {
    PutCapture("");
    Journal(0).Write(journal_);
    EXPECT_TRUE(SetAside().empty());
    EXPECT_EQ(Files().size(), 2);
    PutCapture("DATA0102\r\n");
    EXPECT_TRUE(SetAside().empty());
}

TEST_F(UnsavedSessionsTest, SavedSessionIsNotListed) {
    PutCapture(Shot(1));
    SessionJournal journal = Journal(1, Shot(2));
    journal.saved = true;
    journal.Write(journal_);
    EXPECT_TRUE(SetAside().empty());
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(UnsavedSessionsTest, CaptureWithJournal) {
    PutCapture(Shot(1) + Shot(2));
    Journal(2).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
    const SessionJournal journal = SetAside().at(0).journal;
    EXPECT_EQ(journal.header.headerFields, Journal(0).header.headerFields);
    EXPECT_EQ(journal.testNotes, "notes");
    EXPECT_EQ(journal.shotsInCapture, 2);
    EXPECT_EQ(journal.pendingShot, "");
    EXPECT_FALSE(journal.saved);
}

TEST_F(UnsavedSessionsTest, CaptureWithoutJournalCountsAsUnsaved) {
    PutCapture(Shot(1));
    ExpectSetAside(Shot(1), 1, stem_);
    EXPECT_EQ(SetAside().at(0).journal.shotsInCapture, 1);
}

TEST_F(UnsavedSessionsTest, DamagedJournalDoesNotHideTheCapture) {
    PutCapture(Shot(1));
    PutFile(journal_, "damaged");
    ExpectSetAside(Shot(1), 1, stem_);
    EXPECT_EQ(FileBytes(SetAside().at(0).journalPath), "damaged");
}

TEST_F(UnsavedSessionsTest, PendingShotIsAppended) {
    PutCapture(Shot(1));
    Journal(1, Shot(2)).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
    EXPECT_EQ(SetAside().at(0).journal.pendingShot, "");
    EXPECT_EQ(SetAside().at(0).journal.shotsInCapture, 2);
}

TEST_F(UnsavedSessionsTest, PendingShotEqualToTheLastOneIsAShotOfItsOwn) {
    PutCapture(Shot(1));
    Journal(1, Shot(1)).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(1), 2, stem_);
}

TEST_F(UnsavedSessionsTest, PendingOnlyWithAnEmptyCapture) {
    PutCapture("");
    Journal(0, Shot(1)).Write(journal_);
    ExpectSetAside(Shot(1), 1, stem_);
}

TEST_F(UnsavedSessionsTest, PendingOnlyWithoutACapture) {
    Journal(0, Shot(1)).Write(journal_);
    const std::vector<UnsavedSession> sessions = SetAside();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(FileBytes(sessions[0].capturePath), Shot(1));
    ExpectNothingRunning();
}

TEST_F(UnsavedSessionsTest, AppendedBeforeTheJournalWasRewritten) {
    PutCapture(Shot(1) + Shot(2));
    Journal(1, Shot(2)).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
}

TEST_F(UnsavedSessionsTest, FirstShotAppendedBeforeTheJournalWasRewritten) {
    PutCapture(Shot(1));
    Journal(0, Shot(1)).Write(journal_);
    ExpectSetAside(Shot(1), 1, stem_);
}

TEST_F(UnsavedSessionsTest, DatedFileWithoutAShotIsNotListed) {
    PutFile(folder_.Path("TESTFILE-20240101-000000.txt"), "DATA0102\r\n");
    EXPECT_TRUE(SetAside().empty());
}

TEST_F(UnsavedSessionsTest, PendingShotAppendedInPart) {
    const std::string pending = Shot(2);
    const std::size_t done = pending.find("DONE");
    for (std::size_t length = 0; length < pending.size(); length += length < done ? 29 : 1) {
        PutCapture(Shot(1) + pending.substr(0, length));
        Journal(1, pending).Write(journal_);
        const std::vector<UnsavedSession> sessions = SetAside();
        ASSERT_EQ(sessions.size(), 1U);
        const std::string bytes = FileBytes(sessions[0].capturePath);
        // The empty line at the end separates, it holds nothing.
        const bool allButTheEmptyLine = length >= pending.size() - 2;
        EXPECT_EQ(bytes, Shot(1) + (allButTheEmptyLine ? pending.substr(0, length) : pending))
            << length;
        DeleteSavedSession(sessions[0]);
    }
}

TEST_F(UnsavedSessionsTest, TornTextBeforeThePendingShotGivesWay) {
    PutCapture(Shot(1) + std::string(300, '\0'));
    Journal(1, Shot(2)).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
}

TEST_F(UnsavedSessionsTest, PendingShotIsNotTakenForTheLinesOfADamagedOne) {
    const std::string damaged = Shot(1).substr(0, Shot(1).find("NAMEPLATE"));
    for (const std::string& capture : {damaged, damaged + "NAME", damaged + "\r\n"}) {
        PutCapture(capture);
        Journal(1, Shot(2)).Write(journal_);
        const std::vector<UnsavedSession> sessions = SetAside();
        ASSERT_EQ(sessions.size(), 1U);
        EXPECT_EQ(sessions[0].shots, 2) << capture;
        const std::string bytes = FileBytes(sessions[0].capturePath);
        EXPECT_TRUE(bytes.starts_with(capture) && bytes.ends_with(Shot(2))) << bytes;
        DeleteSavedSession(sessions[0]);
    }
}

TEST_F(UnsavedSessionsTest, SecondTimeListsTheSame) {
    PutCapture(Shot(1));
    Journal(1, Shot(2)).Write(journal_);
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
    const QStringList files = Files();
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
    EXPECT_EQ(Files(), files);
}

TEST_F(UnsavedSessionsTest, SeveralAreListedOldestFirst) {
    PutCapture(Shot(2), kLastShot.addDays(1));
    SetAside();
    PutCapture(Shot(1));
    SetAside();
    PutCapture(Shot(3));  // of the same second
    const std::vector<UnsavedSession> sessions = SetAside();
    ASSERT_EQ(sessions.size(), 3U);
    EXPECT_EQ(FileBytes(sessions[0].capturePath), Shot(1));
    EXPECT_EQ(FileBytes(sessions[1].capturePath), Shot(3));
    EXPECT_EQ(FileBytes(sessions[2].capturePath), Shot(2));
    EXPECT_EQ(sessions[1].capturePath, folder_.Path("TESTFILE-20261121-093215-2.txt"));
}

TEST_F(UnsavedSessionsTest, WhatAnEarlierVersionTookForAnsweredIsListed) {
    PutCapture(Shot(1));
    Journal(1).Write(journal_);
    const UnsavedSession session = SetAside().at(0);
    SessionJournal declined = session.journal;
    declined.saved = true;
    declined.Write(session.journalPath);
    const std::vector<UnsavedSession> sessions = SetAside();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions[0].shots, 1);
    EXPECT_EQ(sessions[0].journal.testNotes, "notes");
}

TEST_F(UnsavedSessionsTest, OneThatCannotBeReadHidesNoOther) {
    PutCapture(Shot(1));
    // A file that every user may open, and none can read.
    const QString unreadable = folder_.Path("TESTFILE-20201121-093215.txt");
    if (!QFile::link(u"/proc/self/mem"_s, unreadable) || !QFileInfo(unreadable).isFile())
        GTEST_SKIP() << "no such file on this platform";
    EXPECT_EQ(SetAside().size(), 1U);
    std::vector<RunTimeError> told;
    EXPECT_EQ(SetAsideUnsavedSessions(folder_.Path(), &told).size(), 1U);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told[0].what(), testing::EndsWith(unreadable.toStdString()));
}

TEST_F(UnsavedSessionsTest, HaveTheTimeOfTheirLastChange) {
    PutCapture(Shot(1));
    SetAside();
    PutCapture(Shot(2));
    SetAside();
    // A shot that is in the journal only came after the capture file was made.
    PutCapture("");
    Journal(0, Shot(3)).Write(journal_);
    SetTime(journal_, kLastShot.addSecs(41));
    const auto sessions = SetAsideUnsavedSessions(folder_.Path());
    ASSERT_EQ(sessions.size(), 3U);
    EXPECT_EQ(sessions[0].lastChange, kLastShot);
    EXPECT_EQ(sessions[0].number, 1);
    EXPECT_EQ(sessions[1].lastChange, kLastShot);
    EXPECT_EQ(sessions[1].number, 2);
    EXPECT_EQ(sessions[2].lastChange, kLastShot.addSecs(41));
}

TEST_F(UnsavedSessionsTest, SavedOneLeavesNothing) {
    PutCapture(Shot(1));
    DeleteSavedSession(SetAside().at(0));
    EXPECT_TRUE(SetAside().empty());
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(UnsavedSessionsTest, FolderWithoutASeparatorAtItsEnd) {
    PutCapture(Shot(1));
    QString path = folder_.Path();
    path.chop(1);
    EXPECT_EQ(SetAsideUnsavedSessions(path).size(), 1U);
}

TEST_F(UnsavedSessionsTest, FailureLeavesTheSessionUnderItsOwnNames) {
    PutCapture(Shot(1));
    Journal(1, Shot(2)).Write(journal_);
    ASSERT_TRUE(QDir().mkpath(folder_.Path("TESTFILE-20261121-093215.jnl")));
    EXPECT_THROW(SetAside(), RunTimeError);
    EXPECT_EQ(FileBytes(capture_), Shot(1));
    EXPECT_EQ(SessionJournal::Read(journal_).pendingShot, Shot(2));
    ASSERT_TRUE(QDir().rmdir(folder_.Path("TESTFILE-20261121-093215.jnl")));
    ExpectSetAside(Shot(1) + Shot(2), 2, stem_);
}

}  // namespace
}  // namespace davo
