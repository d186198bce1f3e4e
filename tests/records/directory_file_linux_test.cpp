// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "tests/records/directory_folder.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/small_disk.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST_F(DirectoryFile, WhatCannotBeSummedUpIsSkippedWithItsReason) {
    Write("a.txt", RecordText("03/09/21"));
    Write("b.txt", "");
    Write("c.txt", "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n");
    Write("d.txt", RecordText("02/30/21"));
    QDir().mkpath(dataPath + "e.txt"_L1);
    ASSERT_TRUE(QFile::link(dataPath + "gone"_L1, dataPath + "f.txt"_L1));
    ASSERT_EQ(mkfifo(QFile::encodeName(dataPath + "g.txt"_L1).constData(), 0600), 0);
    const QString greek = u"\u03A9.txt"_s;
    Write(greek, RecordText("03/09/21"));
    Write("h.txt", std::string(1000000, 'x'));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 1);
    EXPECT_THAT(result.skipped, ElementsAre(SkippedFile{u"b.txt"_s, SkipReason::TooFewLines},
                                            SkippedFile{u"c.txt"_s, SkipReason::TooFewLines},
                                            SkippedFile{u"d.txt"_s, SkipReason::NoDate},
                                            SkippedFile{u"e.txt"_s, SkipReason::Unreadable},
                                            SkippedFile{u"f.txt"_s, SkipReason::Unreadable},
                                            SkippedFile{u"g.txt"_s, SkipReason::Unreadable},
                                            SkippedFile{u"h.txt"_s, SkipReason::TooFewLines},
                                            SkippedFile{greek, SkipReason::NameOutsidePage}));
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, NoFileStaysOpen) {
    Write("a.txt", RecordText("03/09/21"));
    Write("b.txt", "short");
    const auto open = [] { return QDir(u"/proc/self/fd"_s).entryList().size(); };
    const auto before = open();
    Rebuild();
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(open(), before);
}

TEST_F(DirectoryFile, AFailedWriteLeavesTheOldFileAndListsAllTheSame) {
    Write("a.txt", RecordText("03/09/21"));
    Rebuild();
    const std::string before = Listing();
    for (int i = 0; i < 20; ++i) {
        Write(u"T%1.txt"_s.arg(i), RecordText("03/09/21"));
    }
    const QStringList names = Names();
    {
        const FileSizeLimit limit(1000);
        const RebuildResult& result = ListFolder(dataPath, tables);
        EXPECT_EQ(result.notSaved, u"Disk full"_s);
        EXPECT_EQ(NotSavedText(result),
                  u"DIRDNLD.DNL cannot be written (Disk full). The records are listed "
                  "anyway."_s);
    }
    EXPECT_EQ(Listing(), before);
    EXPECT_EQ(Names(), names);
    EXPECT_THAT(tables.dirEntries, SizeIs(21));
    EXPECT_THAT(tables.dirFileNames, SizeIs(21));
    EXPECT_EQ(tables.recordCount, 21);
    EXPECT_EQ(ListFolder(dataPath, tables).notSaved, QString());
    EXPECT_EQ(tables.recordCount, 21);
}

TEST_F(DirectoryFile, WhatSaysTheSameIsNotWrittenAgain) {
    Write("a.txt", RecordText("03/09/21"));
    Rebuild();
    {
        const FileSizeLimit nothing(0);
        EXPECT_EQ(Rebuild().notSaved, QString());
        Write("b.txt", "");
        EXPECT_EQ(Rebuild().skipped.size(), 1U);
    }
    Write("DIRDNLD.DNL", Listing() + "x");
    Rebuild();
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, AFolderInThePlaceOfTheFileIsNamed) {
    QDir().mkpath(dataPath + "DIRDNLD.DNL/x"_L1);
    Write("a.txt", RecordText("03/09/21"));
    EXPECT_EQ(Rebuild().notSaved, u"Permission denied"_s);
    EXPECT_THAT(tables.dirEntries, SizeIs(1));
}

TEST_F(DirectoryFile, AnOldListThatCannotBeRemovedIsNotRead) {
    Write("a.txt", RecordText("03/09/21"));
    Rebuild();
    QFile::remove(dataPath + "a.txt"_L1);
    if (!SmallDisk::Can()) GTEST_SKIP() << "only root can have other rights for a while";
    QFile::setPermissions(folder_.path(), QFile::Permissions(0x7755));
    const NobodysRights rights;
    EXPECT_EQ(ListFolder(dataPath, tables).notSaved, u"Permission denied"_s);
    EXPECT_EQ(tables.recordCount, 0);
}

TEST_F(DirectoryFile, ANameThatWouldBreakItsLineIsSkipped) {
    Write("a.txt", RecordText("03/09/21"));
    Write("two\nlines.txt", RecordText("03/09/21"));
    Write("bell\x07.txt", RecordText("03/09/21"));
    const RebuildResult result = Rebuild();
    EXPECT_THAT(result.skipped,
                ElementsAre(SkippedFile{u"bell?.txt"_s, SkipReason::NameOutsidePage},
                            SkippedFile{u"two?lines.txt"_s, SkipReason::NameOutsidePage}));
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, AKillAtAnyInstantLeavesTheOldFileOrTheNew) {
    for (int i = 0; i < 100; ++i) {
        Write(u"T%1.txt"_s.arg(i), RecordText("03/09/21"));
    }
    Write("U.txt", RecordText("03/09/21"));
    Rebuild();
    const std::string with = Listing();
    QFile::remove(dataPath + "U.txt"_L1);
    Rebuild();
    const std::string without = Listing();
    ASSERT_NE(with, without);

    for (int round = 0; round < 30; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;) {
                Write("U.txt", RecordText("03/09/21"));
                Rebuild();
                QFile::remove(dataPath + "U.txt"_L1);
                Rebuild();
            }
        }
        usleep(static_cast<useconds_t>(5000 + 1777 * round));
        kill(child, SIGKILL);
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        const std::string found = Listing();
        EXPECT_TRUE(found == with || found == without) << found.size();
    }
}

// As a share of the network or a stick does, in the middle of the listing: the files behind that
// are not asked one by one, for each may take its time to fail, and no part passes for the whole.
TEST_F(DirectoryFile, AFolderThatGoesAwayIsNotListedInPart) {
    constexpr int kFiles = 200;
    for (int i = 0; i < kFiles; ++i)
        Write(u"T%1.txt"_s.arg(i), RecordText("03/09/21"));
    const QString away = QDir::cleanPath(dataPath) + "-away"_L1;
    int gone = 0;
    for (int round = 0; round < 100; ++round) {
        std::thread takesItAway([&] {
            usleep(static_cast<useconds_t>(50 * round));
            QDir().rename(dataPath, away);
        });
        const RebuildResult result = Rebuild();
        takesItAway.join();
        QDir().rename(away, dataPath);
        EXPECT_THAT(result.skipped, IsEmpty()) << round;
        EXPECT_EQ(result.count, result.unread.isEmpty() ? kFiles : 0) << round;
        gone += result.unread.isEmpty() ? 0 : 1;
    }
    EXPECT_GT(gone, 0);
}

}  // namespace
}  // namespace davo::test
