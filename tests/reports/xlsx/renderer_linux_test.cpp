// SPDX-License-Identifier: GPL-3.0-or-later
// What full disks do to a report, by the means that this platform has for it.
#include <sys/mount.h>

#include <QDir>
#include <QFile>

#include "common/files.h"
#include "reports/xlsx/renderer.h"
#include "tests/reports/xlsx/report.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

// A folder that is a disk of its own while this lives.
class SmallDisk {
  public:
    SmallDisk() { mounted_ = ::mount("none", Name().constData(), "tmpfs", 0, "size=24k") == 0; }
    ~SmallDisk() {
        const bool isLeft = !mounted_ || ::umount(Name().constData()) == 0;
        EXPECT_TRUE(isLeft);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    void RefuseWriting() const {
        ASSERT_EQ(::mount("none", Name().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    }

    bool IsMounted() const { return mounted_; }
    QString Path(const char* name) const { return folder_.Path(name); }
    QByteArray Name() const { return QFile::encodeName(folder_.Path()); }

  private:
    test::TemporaryFolder folder_;
    bool mounted_ = false;
};

int ErrorAt(const QString& path) {
    return test::ErrorBy([&] { XlsxRenderer().Render(test::ReportOf(31), {}, path, {}, {}); });
}

TEST(XlsxRendererOnLinux, KeepsTheEarlierWorkbookWhenTheDiskIsFull) {
    const SmallDisk disk;
    if (!disk.IsMounted()) GTEST_SKIP() << "a small disk can be mounted by root only";
    const QString path = disk.Path("T0012.xlsx");
    ReplaceFile(path, "old");
    EXPECT_EQ(ErrorAt(path), 61);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(QDir(disk.Path("")).entryList(test::kAllEntries), QStringList(u"T0012.xlsx"_s));
}

TEST(XlsxRendererOnLinux, KeepsTheEarlierWorkbookInAFolderThatMayNotBeWritten) {
    const SmallDisk disk;
    if (!disk.IsMounted()) GTEST_SKIP() << "a small disk can be mounted by root only";
    const QString path = disk.Path("T0012.xlsx");
    ReplaceFile(path, "old");
    disk.RefuseWriting();
    EXPECT_EQ(ErrorAt(path), 70);
    EXPECT_EQ(ReadWholeFile(path), "old");
}

TEST(XlsxRendererOnLinux, KeepsTheEarlierWorkbookWhenThereIsNoRoomToPrepareIt) {
    const SmallDisk disk;
    if (!disk.IsMounted()) GTEST_SKIP() << "a small disk can be mounted by root only";
    const test::TemporaryFolder folder;
    const QString path = folder.Path("T0012.xlsx");
    ReplaceFile(path, "old");
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", disk.Name());
    EXPECT_EQ(ErrorAt(path), 61);
    before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
    EXPECT_EQ(ReadWholeFile(path), "old");
}

}  // namespace
}  // namespace davo
