// SPDX-License-Identifier: GPL-3.0-or-later
// The file utilities on disks that only this system can make.
#include "files/frmFileUtilOverlay.h"
#include "tests/files/file_window.h"
#include "tests/support/small_disk.h"

namespace davo::test {
namespace {

class FileUtilDisk : public FileWindow<frmFileUtilOverlay> {
  protected:
    void SetUp() override {
        if (!SmallDisk::Can()) GTEST_SKIP() << "a small disk can be mounted by root only";
        disk.emplace(settings.dataPath);
        for (const char* name : {"one", "two", "three"})
            AddRecord(QLatin1String(name));
    }
    void DeleteTwo() {
        ListRecords();
        window = std::make_unique<frmFileUtilOverlay>(
            FileUtilMode::FileUtilities,
            FileUtilSurroundings{settings, directory, prompts, nullptr});
        ShowWindow();
        ASSERT_EQ(List()->topLevelItemCount(), 3);
        ClickRecord("two");
        prompts.answers = {Answer::Yes};
        Click("cmdOp2");
        EXPECT_EQ(Shown().front(), "Delete file: two\r\n");
        EXPECT_TRUE(Unloaded());
    }

    std::optional<SmallDisk> disk;
};

// A list that cannot be written does not keep from deleting what is in the way.
TEST_F(FileUtilDisk, ThatIsFullLetsRecordsBeDeleted) {
    disk->Fill();
    DeleteTwo();
    EXPECT_THAT(Shown(), SizeIs(1));
    EXPECT_FALSE(FileExists(DataFile(u"two"_s)));
    EXPECT_EQ(directory.recordCount, 2);
}

TEST_F(FileUtilDisk, ThatIsWriteProtectedSaysThatARecordStays) {
    disk->Protect();
    DeleteTwo();
    EXPECT_THAT(Shown(), SizeIs(2));
    EXPECT_THAT(Shown().back(), StartsWith("Run-time error '70': Permission denied"));
    EXPECT_TRUE(FileExists(DataFile(u"two"_s)));
    EXPECT_EQ(directory.recordCount, 3);
}

}  // namespace
}  // namespace davo::test
