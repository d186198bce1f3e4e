// SPDX-License-Identifier: GPL-3.0-or-later
// Kills a session and its recovery at every single change of the disk, before it, in the middle of
// a write and after it, and looks at what the next start finds.

#include "common/files.h"
#include "records/capture_file.h"
#include "records/unsaved_sessions.h"
#include "tests/records/captures.h"
#include "tests/support/killed_program.h"
#include "tests/support/random_rounds.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::FileBytes;
using test::KilledRun;
using test::PutFile;
using test::TemporaryFolder;

std::string Shot(int number) {
    return test::CaptureBlock(test::ImageWithPoints(number));
}

// What: what the program does in a folder that prepare fills.
int KillEverywhere(const char* what, const std::function<void(const TemporaryFolder&)>& prepare,
                   const std::function<void(const TemporaryFolder&, const KilledRun&)>& look,
                   int every = 10) {
    SCOPED_TRACE(what);
    return test::KillEverywhere(
        DAVO_KILL_SESSION,
        [&](const TemporaryFolder& folder) {
            prepare(folder);
            return QStringList{QString::fromLatin1(what), folder.Path()};
        },
        look, every);
}

// The next start lists one session of the given bytes, and so does the one after it.
void ExpectRecovered(const TemporaryFolder& folder, const std::string& bytes) {
    for (int start = 1; start <= 2; ++start) {
        const std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder.Path());
        ASSERT_EQ(sessions.size(), 1U);
        EXPECT_EQ(FileBytes(sessions[0].capturePath), bytes);
        EXPECT_EQ(sessions[0].journal.testNotes, "notes");
        EXPECT_FALSE(QFile::exists(folder.Path("TESTFILE.txt")));
        EXPECT_FALSE(QFile::exists(folder.Path("TESTFILE.jnl")));
    }
}

void ExpectShotsRecovered(const TemporaryFolder& folder, const KilledRun& result, bool equal) {
    const std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder.Path());
    ASSERT_LE(sessions.size(), 1U);
    const int shots = sessions.empty() ? 0 : sessions[0].shots;
    // A shot may be on the disk before the screen says so, never the other way round.
    const auto completed = result.output.count("complete");
    EXPECT_GE(shots, completed);
    EXPECT_LE(shots, completed + 1);
    std::string bytes;
    for (int shot = 1; shot <= shots; ++shot)
        bytes += Shot(equal ? 1 : shot);
    const std::size_t emptyLine = 2;
    const std::string found = sessions.empty() ? "" : FileBytes(sessions[0].capturePath);
    // The empty line behind the last shot may be missing: it separates only.
    EXPECT_TRUE(bytes.starts_with(found) && found.size() + emptyLine >= bytes.size()) << found;
    if (shots > 0) {
        EXPECT_EQ(sessions[0].journal.testNotes, "notes");
    }
    EXPECT_EQ(SetAsideUnsavedSessions(folder.Path()).size(), sessions.size());
}

TEST(Kill, NoCompleteShotOfASessionIsLost) {
    for (const bool equal : {false, true}) {
        const int kills = KillEverywhere(
            equal ? "equal" : "session", [](const TemporaryFolder&) {},
            [equal](const TemporaryFolder& folder, const KilledRun& result) {
                ExpectShotsRecovered(folder, result, equal);
            });
        EXPECT_GT(kills, test::TakesLong() ? 60 : 3);
    }
}

void PrepareSession(const TemporaryFolder& folder, const std::string& capture, int shotsInCapture,
                    const std::string& pending) {
    PutFile(folder.Path("TESTFILE.txt"), capture);
    SessionJournal journal;
    journal.testNotes = "notes";
    journal.shotsInCapture = shotsInCapture;
    journal.pendingShot = pending;
    journal.Write(folder.Path("TESTFILE.jnl"));
}

TEST(Kill, SettingAsideNeitherLosesNorDoubles) {
    struct Case {
        std::string capture;
        int shotsInCapture;
        std::string pending;
        std::string expected;
    };
    const std::string both = Shot(1) + Shot(2);
    for (const Case& before :
         {Case{both, 2, "", both}, Case{Shot(1), 1, Shot(2), both}, Case{"", 0, Shot(1), Shot(1)},
          Case{both, 1, Shot(2), both}, Case{Shot(1), 1, Shot(1), Shot(1) + Shot(1)},
          Case{Shot(1) + Shot(2).substr(0, 700), 1, Shot(2), both}}) {
        const int kills = KillEverywhere(
            "set-aside",
            [&before](const TemporaryFolder& folder) {
                PrepareSession(folder, before.capture, before.shotsInCapture, before.pending);
            },
            [&before](const TemporaryFolder& folder, const KilledRun&) {
                ExpectRecovered(folder, before.expected);
            });
        EXPECT_TRUE(kills >= 10 || !test::TakesLong()) << kills;
    }
}

// The case in which a repetition that forgets what was done doubles the session: no kill is left
// out.
TEST(Kill, SettingAsideAPendingShotIsNeverRepeated) {
    const int kills = KillEverywhere(
        "set-aside",
        [](const TemporaryFolder& folder) { PrepareSession(folder, Shot(1), 1, Shot(2)); },
        [](const TemporaryFolder& folder, const KilledRun&) {
            ExpectRecovered(folder, Shot(1) + Shot(2));
        },
        1);
    EXPECT_GE(kills, 10);
}

TEST(Kill, SettingAsideAPendingShotWithoutACapture) {
    KillEverywhere(
        "set-aside",
        [](const TemporaryFolder& folder) {
            PrepareSession(folder, "", 0, Shot(1));
            DeleteFile(folder.Path("TESTFILE.txt"));
        },
        [](const TemporaryFolder& folder, const KilledRun&) { ExpectRecovered(folder, Shot(1)); });
}

TEST(Kill, SettingAsideWithADamagedJournalOrNone) {
    for (const bool damaged : {false, true}) {
        KillEverywhere(
            "set-aside",
            [damaged](const TemporaryFolder& folder) {
                PutFile(folder.Path("TESTFILE.txt"), Shot(1));
                if (damaged) PutFile(folder.Path("TESTFILE.jnl"), "damaged");
            },
            [](const TemporaryFolder& folder, const KilledRun&) {
                const std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder.Path());
                ASSERT_EQ(sessions.size(), 1U);
                EXPECT_EQ(FileBytes(sessions[0].capturePath), Shot(1));
                EXPECT_FALSE(QFile::exists(folder.Path("TESTFILE.txt")));
            });
    }
}

TEST(Kill, DeletingASavedSessionLeavesTheWholeOrNothing) {
    KillEverywhere(
        "saved",
        [](const TemporaryFolder& folder) {
            PrepareSession(folder, Shot(1), 1, "");
            ASSERT_EQ(SetAsideUnsavedSessions(folder.Path()).size(), 1U);
        },
        [](const TemporaryFolder& folder, const KilledRun& result) {
            const std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder.Path());
            EXPECT_LE(sessions.size(), result.killed ? 1U : 0U);
            for (const UnsavedSession& session : sessions) {
                EXPECT_EQ(FileBytes(session.capturePath), Shot(1));
                EXPECT_EQ(session.journal.testNotes, "notes");
            }
        });
}

}  // namespace
}  // namespace davo
