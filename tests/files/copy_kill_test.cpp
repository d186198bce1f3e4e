// SPDX-License-Identifier: GPL-3.0-or-later
// Kills the copying of a record at every single change of the disk, before it, in the middle of a
// write and after it, and looks at what the record list shows then.

#include <QDateTime>
#include <QFileInfo>

#include "common/files.h"
#include "records/directory_file.h"
#include "tests/support/in_the_way.h"
#include "tests/support/killed_program.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {
namespace {

class KilledCopy : public ::testing::TestWithParam<const char*> {
  protected:
    // Before the copy there is a record of that name, or a file left over from an earlier kill.
    QStringList Prepare(const TemporaryFolder& folder) const {
        CreateFolder(folder.Path("data"));
        CreateFolder(folder.Path("disk"));
        ReplaceFile(folder.Path("data/T7.txt"), new_);
        if (GetParam() == std::string("record")) ReplaceFile(folder.Path("disk/T7.txt"), old_);
        if (GetParam() == std::string("left over file")) {
            ReplaceFile(NameWhileWriting(folder.Path("disk/T7.txt")), std::string(9000, 'x'));
        }
        return {folder.Path("data/"), folder.Path("disk/")};
    }
    // The record is the earlier one or the new one whole; nothing else is shown.
    void Look(const TemporaryFolder& folder, bool killed) const {
        const QString path = folder.Path("disk/T7.txt");
        const bool hadOld = GetParam() == std::string("record");
        const std::string bytes = FileExists(path) ? ReadWholeFile(path) : std::string();
        EXPECT_TRUE(bytes == new_ || (killed && bytes == (hadOld ? old_ : ""))) << bytes;
        DirectoryTables tables;
        const RebuildResult result = RebuildDirectory(folder.Path("disk/"), tables);
        EXPECT_EQ(result.count, bytes.empty() ? 0 : 1);
        EXPECT_TRUE(result.skipped.empty());
        EXPECT_EQ(ReadWholeFile(folder.Path("data/T7.txt")), new_);
    }
    // The next copy is whole and leaves nothing beside it.
    static void CopyAgain(const TemporaryFolder& folder) {
        const QString source = folder.Path("data/T7.txt");
        const QString target = folder.Path("disk/T7.txt");
        EXPECT_EQ(CopyFileOver(source, target), QString());
        EXPECT_EQ(ReadWholeFile(target), ReadWholeFile(source));
        EXPECT_EQ(QFileInfo(target).lastModified(), QFileInfo(source).lastModified());
        EXPECT_FALSE(QFileInfo::exists(NameWhileWriting(target)));
    }

    const std::string old_ = HeaderOfT1("Earlier", "1") + ShotText(1);
    const std::string new_ = HeaderOfT1("Hilltop", "2") + ShotText(1) + ShotText(2);
};

TEST_P(KilledCopy, LeavesNothingThatTheListShows) {
    const int kills = KillEverywhere(
        DAVO_KILL_COPY, [this](const TemporaryFolder& folder) { return Prepare(folder); },
        [this](const TemporaryFolder& folder, const KilledRun& run) {
            Look(folder, run.killed);
            CopyAgain(folder);
        });
    // To make it, write it, flush it and rename it.
    EXPECT_GE(kills, 3 * 4);
}
INSTANTIATE_TEST_SUITE_P(
    Over, KilledCopy, ::testing::Values("nothing", "record", "left over file"),
    [](const auto& test) {
        return QString::fromLatin1(test.param).remove(QLatin1Char(' ')).toStdString();
    });

}  // namespace
}  // namespace davo::test
