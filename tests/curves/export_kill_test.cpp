// SPDX-License-Identifier: GPL-3.0-or-later
// Kills the saving of a chart and a certificate at every single change of the disk, before it, in
// the middle of a write and after it.

#include "common/files.h"
#include "tests/support/in_the_way.h"
#include "tests/support/killed_program.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {
namespace {

// The earlier file, or a whole one by its first and last bytes.
void ExpectOldOrWhole(const QString& path, bool killed, const std::string& first,
                      const std::string& last) {
    const std::string bytes = ReadWholeFile(path);
    const bool isWhole = bytes.starts_with(first) && bytes.ends_with(last);
    EXPECT_TRUE(isWhole || (killed && bytes == "old")) << bytes.size() << " bytes";
}

TEST(KilledExport, LeavesTheOldOrTheNewFile) {
    const int kills = KillEverywhere(
        DAVO_KILL_EXPORT,
        [](const TemporaryFolder& folder) {
            ReplaceFile(folder.Path("chart.png"), "old");
            ReplaceFile(folder.Path("page.pdf"), "old");
            return QStringList(folder.Path());
        },
        [](const TemporaryFolder& folder, const KilledRun& run) {
            const QString picture = folder.Path("chart.png");
            const QString page = folder.Path("page.pdf");
            ExpectOldOrWhole(picture, run.killed, "\x89PNG", std::string("IEND\xAE\x42\x60\x82"));
            ExpectOldOrWhole(page, run.killed, "%PDF", "%%EOF\n");
            QStringList left = AllNamesIn(folder.Path());
            for (const QString& path : {picture, page}) {
                left.removeOne(QFileInfo(path).fileName());
                if (run.killed) left.removeOne(QFileInfo(NameWhileWriting(path)).fileName());
            }
            EXPECT_EQ(left, QStringList());
        });
    // Each is made, written, flushed and renamed.
    EXPECT_GE(kills, 2 * 3 * 4);
}

}  // namespace
}  // namespace davo::test
