// SPDX-License-Identifier: GPL-3.0-or-later
// What is Windows's own about files: other programs that hold them, long paths, and the numbers of
// the system's errors.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "common/file_system.h"
#include "common/files.h"
#include "common/places.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/thrown.h"

// After the others: its macros rename what they declare.
#include <windows.h>

// The system's headers call them ReplaceFileW and DeleteFileW.
#undef ReplaceFile
#undef DeleteFile

namespace davo {
namespace {

std::wstring Wide(const QString& path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

// Holds a file as another program would, letting others do what sharing says.
class Holder {
  public:
    Holder(const QString& path, DWORD sharing)
        : file_(::CreateFileW(Wide(path).c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(file_, INVALID_HANDLE_VALUE);
    }
    ~Holder() { ::CloseHandle(file_); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

  private:
    HANDLE file_;
};

class FilesOnWindows : public testing::Test {
  protected:
    test::TemporaryFolder folder;
    QString t1 = folder.Path("T1.txt");
};

TEST_F(FilesOnWindows, AreNotReplacedWhileAnotherProgramHoldsThem) {
    ReplaceFile(t1, "old");
    {
        const Holder holder(t1, FILE_SHARE_READ);
        EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(t1, "new"); }), 70);
        EXPECT_EQ(test::ErrorBy([&] { DeleteFile(t1); }), 70);
        EXPECT_EQ(ReadWholeFile(t1), "old");
        EXPECT_EQ(folder.Names(), QStringList(QStringLiteral("T1.txt")));
    }
    ReplaceFile(t1, "new");
    EXPECT_EQ(ReadWholeFile(t1), "new");
}

TEST_F(FilesOnWindows, AreNotReadWhileAnotherProgramLocksThem) {
    ReplaceFile(t1, "old");
    const Holder holder(t1, 0);
    EXPECT_EQ(test::ErrorBy([&] { ReadWholeFile(t1); }), 70);
}

TEST_F(FilesOnWindows, ThatAreReadOnlyStayAsTheyAre) {
    ReplaceFile(t1, "old");
    ASSERT_TRUE(::SetFileAttributesW(Wide(t1).c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(t1, "new"); }), 70);
    EXPECT_EQ(test::ErrorBy([&] { DeleteFile(t1); }), 70);
    EXPECT_EQ(ReadWholeFile(t1), "old");
    ASSERT_TRUE(::SetFileAttributesW(Wide(t1).c_str(), FILE_ATTRIBUTE_NORMAL));
}

TEST_F(FilesOnWindows, TellAMissingDriveAndShareAsAMissingFolder) {
    for (const QString& path :
         {QStringLiteral("Q:\\Shots_Data\\T1.txt"),
          QStringLiteral("\\\\davo-no-such-server\\share\\Shots_Data\\T1.txt")}) {
        EXPECT_EQ(test::ErrorBy([&] { ReadWholeFile(path); }), 76) << path.toStdString();
        EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(path, "x"); }), 76) << path.toStdString();
        EXPECT_FALSE(FileExists(path));
    }
}

TEST_F(FilesOnWindows, AreTheSameInAnyCaseOfLetters) {
    ReplaceFile(folder.Path() + QStringLiteral("Prüfung.txt"), "old");
    EXPECT_TRUE(FileExists(folder.Path() + QStringLiteral("PRÜFUNG.TXT")));
    EXPECT_EQ(ReadWholeFile(folder.Path() + QStringLiteral("prüfung.Txt")), "old");
    ReplaceFile(folder.Path() + QStringLiteral("prüfung.txt"), "new");
    EXPECT_EQ(folder.Names().size(), 1);
}

// A user's name may have letters of any alphabet, and a path may be longer than the 260 characters
// of the older calls, with either separator.
TEST_F(FilesOnWindows, LieInFoldersOfAnyNameAndDepth) {
    const QString part = QStringLiteral("Иван Ωμέγα 測試 ") + QString(60, QLatin1Char('x'));
    QString deep = QDir::cleanPath(folder.Path());
    for (int depth = 0; depth < 8; ++depth) {
        deep += QLatin1Char('/') + part;
        CreateFolder(deep + QLatin1Char('/'));
        ASSERT_TRUE(FolderExists(deep + QLatin1Char('/'))) << depth;
        for (const QString& path :
             {deep + QStringLiteral("/T1.txt"), ShownPath(deep) + QStringLiteral("\\T1.txt")}) {
            ReplaceFile(path, "1");
            ReplaceFile(path, "22");
            EXPECT_TRUE(FileExists(path));
            EXPECT_EQ(ReadWholeFile(path), "22");
            EXPECT_EQ(test::ErrorBy([&] { CreateFolder(path); }), 70);
            DeleteFile(path);
            EXPECT_EQ(test::ErrorBy([&] { DeleteFile(path); }), 53);
        }
    }
    ASSERT_GT(deep.size(), 500);
    CreateFolder(deep + QStringLiteral("/a/b/c/"));
    EXPECT_TRUE(FolderExists(deep + QStringLiteral("/a/b/c")));
    EXPECT_EQ(test::ErrorBy([&] { ReadWholeFile(deep + QStringLiteral("/none/T1.txt")); }), 76);
}

TEST_F(FilesOnWindows, GiveTheSystemsErrorsTheirMeaning) {
    struct Case {
        int error;
        std::errc meaning;
    };
    for (const Case& one : {
             Case{ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory},
             Case{ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory},
             Case{ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory},
             Case{ERROR_BAD_NET_NAME, std::errc::no_such_file_or_directory},
             Case{ERROR_ACCESS_DENIED, std::errc::permission_denied},
             Case{ERROR_SHARING_VIOLATION, std::errc::permission_denied},
             Case{ERROR_LOCK_VIOLATION, std::errc::permission_denied},
             Case{ERROR_WRITE_PROTECT, std::errc::permission_denied},
             Case{ERROR_FILE_EXISTS, std::errc::file_exists},
             Case{ERROR_ALREADY_EXISTS, std::errc::file_exists},
             Case{ERROR_DISK_FULL, std::errc::no_space_on_device},
             Case{ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device},
             Case{1295, std::errc::no_space_on_device},
             Case{ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long},
             Case{ERROR_NETNAME_DELETED, std::errc::io_error},
             Case{ERROR_UNEXP_NET_ERR, std::errc::io_error},
             Case{ERROR_NOT_READY, std::errc::io_error},
             Case{ERROR_CRC, std::errc::io_error},
             Case{ERROR_IO_DEVICE, std::errc::io_error},
         }) {
        EXPECT_EQ(MeaningOf({one.error, std::system_category()}), one.meaning) << one.error;
    }
}

TEST_F(FilesOnWindows, ReplaceWhatAKillLeftAtTheTemporaryNameButNoFolder) {
    const QString beside = folder.Path("~T1_txt.new");
    ReplaceFile(beside, "left over");
    ASSERT_TRUE(::SetFileAttributesW(Wide(beside).c_str(), FILE_ATTRIBUTE_READONLY));
    ReplaceFile(t1, "new");
    EXPECT_EQ(ReadWholeFile(t1), "new");
    EXPECT_EQ(folder.Names(), QStringList(QStringLiteral("T1.txt")));
    CreateFolder(beside);
    EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(t1, "newer"); }), 70);
    EXPECT_EQ(ReadWholeFile(t1), "new");
    EXPECT_TRUE(FolderExists(beside));
}

TEST(FlushToDisk, FlushesAnOpenFileOnly) {
    const test::TemporaryFolder folder;
    QFile file(folder.Path("T1.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    file.write("shot");
    const int descriptor = file.handle();
    EXPECT_TRUE(FlushToDisk(descriptor));
    file.write("more");
    EXPECT_TRUE(FlushToDisk(file.handle()));
    file.close();
    EXPECT_FALSE(FlushToDisk(-1));
}

TEST_F(FilesOnWindows, RefuseNamesThatCannotBe) {
    EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(folder.Path("a?b.txt"), "x"); }), 52);
    EXPECT_EQ(test::ErrorBy([&] { CreateFolder(folder.Path("a<b")); }), 52);
    EXPECT_EQ(folder.Names(), QStringList());
}

}  // namespace
}  // namespace davo
