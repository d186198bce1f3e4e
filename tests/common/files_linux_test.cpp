// SPDX-License-Identifier: GPL-3.0-or-later
// What a full disk, a user without rights and a kill do to a file that is being replaced, by the
// means that this platform has for it.
#include <grp.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/settings_store.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/in_the_way.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

constexpr unsigned kNobody = 65534;

// The number of the run-time error that operation throws in a process of a user who has no special
// rights; 0 when it throws none.
int ErrorOfPlainUser(const std::function<void()>& operation) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool plain = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 &&
                                                ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        ::_exit(plain ? test::ErrorBy(operation) : 255);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void SetMode(const QString& path, mode_t mode) {
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

mode_t ModeOf(const QString& path) {
    struct stat now {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &now), 0);
    return now.st_mode & 0777U;
}

class ReplaceFileOnLinux : public testing::Test {
  protected:
    ReplaceFileOnLinux() { ReplaceFile(path, "old"); }

    test::TemporaryFolder folder;
    QString path = folder.Path("T1.txt");
};

TEST_F(ReplaceFileOnLinux, KeepsTheOldFileWhenTheFileGrowsTooLarge) {
    int number = 0;
    {
        const test::FileSizeLimit limit(4096);
        number = test::ErrorBy([&] { ReplaceFile(path, std::string(100000, 'n')); });
    }
    EXPECT_EQ(number, 61);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(folder.Names(), QStringList(u"T1.txt"_s));
}

TEST_F(ReplaceFileOnLinux, KeepsTheOldFileWhenTheDiskIsFull) {
    const QByteArray disk = QFile::encodeName(folder.Path());
    if (::mount("none", disk.constData(), "tmpfs", 0, "size=64k") != 0) {
        GTEST_SKIP() << "a small disk can be mounted by root only";
    }
    ReplaceFile(path, std::string(20000, 'o'));
    EXPECT_EQ(test::ErrorBy([&] { ReplaceFile(path, std::string(100000, 'n')); }), 61);
    EXPECT_EQ(ReadWholeFile(path), std::string(20000, 'o'));
    EXPECT_EQ(folder.Names(), QStringList(u"T1.txt"_s));
    EXPECT_EQ(::umount(disk.constData()), 0);
}

TEST_F(ReplaceFileOnLinux, IsDeniedWhereTheUserMayNotWrite) {
    SetMode(path, 0666);
    SetMode(folder.Path(), 0555);
    EXPECT_EQ(ErrorOfPlainUser([&] { ReplaceFile(path, "new"); }), 70);
    EXPECT_EQ(ErrorOfPlainUser([&] { DeleteFile(path); }), 70);
    EXPECT_EQ(ErrorOfPlainUser([&] { CreateFolder(folder.Path("sub/sub")); }), 70);
    SetMode(folder.Path(), 0777);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(ErrorOfPlainUser([&] { ReplaceFile(path, "new"); }), 0);
    EXPECT_EQ(ReadWholeFile(path), "new");
}

TEST_F(ReplaceFileOnLinux, IsDeniedOverAFileThatTheUserMayNotWrite) {
    SetMode(folder.Path(), 0777);
    SetMode(path, 0444);
    EXPECT_EQ(ErrorOfPlainUser([&] { ReplaceFile(path, "new"); }), 70);
    EXPECT_EQ(ReadWholeFile(path), "old");
    SetMode(path, 0);
    EXPECT_EQ(ErrorOfPlainUser([&] { ReadWholeFile(path); }), 70);
}

TEST_F(ReplaceFileOnLinux, KeepsWhoMayReadAndWrite) {
    SetMode(path, 0640);
    ReplaceFile(path, "new");
    EXPECT_EQ(ModeOf(path), 0640U);
}

TEST_F(ReplaceFileOnLinux, LeavesTheOldOrTheNewFileAfterAKill) {
    const std::string one(300000, '1');
    const std::string two(70000, '2');
    ReplaceFile(path, one);
    std::mt19937_64 random(test::RandomSeed(7));
    for (int round = 0; round < 40; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (;;) {
                ReplaceFile(path, two);
                ReplaceFile(path, one);
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 8000));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const std::string left = ReadWholeFile(path);
        ASSERT_TRUE(left == one || left == two) << left.size() << " bytes in round " << round;
        int records = 0;
        for (const QString& name : folder.Names()) {
            if (name.contains(".txt"_L1, Qt::CaseInsensitive)) ++records;
        }
        ASSERT_EQ(records, 1);
    }
    ReplaceFile(path, "after");
    EXPECT_EQ(ReadWholeFile(path), "after");
    EXPECT_EQ(folder.Names(), QStringList(u"T1.txt"_s));
}

TEST_F(ReplaceFileOnLinux, NeitherFollowsNorWaitsForWhatHasTheTemporaryName) {
    test::ExpectWrittenOverAnything(path, test::NameWhileWriting(path), [&] {
        ReplaceFile(path, "new");
        EXPECT_EQ(ReadWholeFile(path), "new");
    });
}

TEST_F(ReplaceFileOnLinux, NamesTheFolderThatHasTheTemporaryName) {
    const QString beside = test::NameWhileWriting(path);
    CreateFolder(beside);
    EXPECT_EQ(test::MessageThrownBy([&] { ReplaceFile(path, "new"); }),
              "Run-time error '70': Permission denied: " + beside.toStdString());
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_TRUE(FolderExists(beside));
}

TEST(SettingsStoreOnLinux, DoesNotWaitForAPipeThatHasTheNameOfItsLock) {
    const test::TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    const QByteArray lock = QFile::encodeName(folder.Path("configuration/davo.ini.lock"));
    ASSERT_EQ(::mkfifo(lock.constData(), 0666), 0);
    const test::NoWait limit;
    MakeSettingsStore(places)->Write(u"A"_s, u"B"_s, u"C"_s, u"kept"_s);
    EXPECT_EQ(MakeSettingsStore(places)->Read(u"A"_s, u"B"_s, u"C"_s), u"kept"_s);
}

class CopyFileOnLinux : public testing::Test {
  protected:
    test::TemporaryFolder folder;
    QString source = folder.Path("T1.txt");
    QString path = folder.Path("T2.txt");
};

TEST_F(CopyFileOnLinux, NeitherFollowsNorWaitsForWhatHasTheTemporaryName) {
    ReplaceFile(source, "record");
    test::ExpectWrittenOverAnything(path, test::NameWhileWriting(path), [&] {
        EXPECT_EQ(CopyFileOver(source, path), QString());
        EXPECT_EQ(ReadWholeFile(path), "record");
    });
}

TEST_F(CopyFileOnLinux, SaysInWordsWhyItCouldNot) {
    ReplaceFile(path, "old");
    EXPECT_EQ(CopyFileOver(source, path), u"No such file or directory"_s);
    ReplaceFile(source, std::string(10000, 'n'));
    EXPECT_EQ(CopyFileOver(source, folder.Path("none/T2.txt")), u"No such file or directory"_s);
    EXPECT_EQ(CopyFileOver(source, u"/proc/T2.txt"_s), u"No such file or directory"_s);
    {
        const test::FileSizeLimit limit(4096);
        EXPECT_EQ(CopyFileOver(source, path), u"File too large"_s);
    }
    CreateFolder(folder.Path("T3.txt"));
    EXPECT_EQ(CopyFileOver(source, folder.Path("T3.txt")), u"Is a directory"_s);
    const QString beside = test::NameWhileWriting(path);
    CreateFolder(beside);
    EXPECT_EQ(CopyFileOver(source, path), u"Is a directory"_s);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(folder.Names().size(), 4);
}

// Whoever copies may put a copy in the place of a file that is read-only, and may write to it.
TEST_F(CopyFileOnLinux, TakesTheTimeAndNotTheRightsOfWhatWasThere) {
    ReplaceFile(source, "record");
    SetMode(source, 0444);
    ReplaceFile(path, "old");
    SetMode(path, 0400);
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ASSERT_TRUE(file.setFileTime(QDateTime({2019, 3, 4}, {5, 6, 7, 89}),
                                 QFileDevice::FileModificationTime));
    const mode_t mask = ::umask(022);
    EXPECT_EQ(CopyFileOver(source, path), QString());
    ::umask(mask);
    EXPECT_EQ(ReadWholeFile(path), "record");
    EXPECT_EQ(ModeOf(path), 0644U);
    EXPECT_EQ(QFileInfo(path).lastModified(), QDateTime({2019, 3, 4}, {5, 6, 7, 89}));
}

}  // namespace
}  // namespace davo
