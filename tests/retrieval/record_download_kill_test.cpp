// SPDX-License-Identifier: GPL-3.0-or-later
// Kills a download at every single change of the disk, before it, in the middle of a write and
// after it, and looks at what is there then.

#include "retrieval/record_reply.h"
#include "tests/retrieval/kill_download_records.h"
#include "tests/support/killed_program.h"
#include "tests/support/random_rounds.h"

namespace davo::test {
namespace {

constexpr const char* kOldDirectory = "REC==000\r\n";

std::string WholeFile(const instrument::MemoryRecord& record, const std::string& name) {
    return RecordHeaderLines(EntryOfRecord(record), name) +
           ConvertRecordReply(RecordReply(record)).lines;
}

std::string Bytes(const TemporaryFolder& folder, const char* name) {
    const QString path = folder.Path(name);
    return FileExists(path) ? ReadWholeFile(path) : "(none)";
}

void ExpectNothingHalf(const TemporaryFolder& folder, bool killed) {
    const auto records = KillRecords();
    const std::string twelve = Bytes(folder, "TST_012.txt");
    const std::string thirteen = Bytes(folder, "TST_013.txt");
    const bool newTwelve = twelve == WholeFile(records[0], "TST_012");
    const bool newThirteen = thirteen == WholeFile(records[1], "TST_013");
    EXPECT_TRUE(newTwelve || twelve == "old") << twelve;
    EXPECT_TRUE(newThirteen || thirteen == "(none)") << thirteen;
    // The directory file loads, and what it lists is there.
    DirectoryTables tables;
    LoadDirectoryFile(folder.Path(), tables);
    EXPECT_LE(tables.recordCount, (newTwelve ? 1 : 0) + (newThirteen ? 1 : 0));
    if (!killed) {
        EXPECT_TRUE(newTwelve && newThirteen);
        EXPECT_EQ(tables.recordCount, 2);
    }
}

TEST(KilledDownload, LeavesNothingHalf) {
    const int kills = KillEverywhere(
        DAVO_KILL_DOWNLOAD,
        [](const TemporaryFolder& folder) {
            ReplaceFile(folder.Path("TST_012.txt"), "old");
            ReplaceFile(folder.Path(kDirectoryFileName), kOldDirectory);
            return QStringList(folder.Path());
        },
        [](const TemporaryFolder& folder, const KilledRun& run) {
            ExpectNothingHalf(folder, run.killed);
        },
        10);
    EXPECT_GT(kills, TakesLong() ? 40 : 2);
}

}  // namespace
}  // namespace davo::test
