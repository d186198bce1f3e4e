// SPDX-License-Identifier: GPL-3.0-or-later
// What a full disk does to the capture file, and links and pipes to it and the journal; by means of
// Linux.

#include <QDir>

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "records/session_journal.h"
#include "tests/records/captures.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/in_the_way.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::FileBytes;
using test::TemporaryFolder;

TEST(CaptureFileDisk, FullDiskIsError61) {
    CaptureFile capture;
    capture.Create(u"/dev/full"_s);
    EXPECT_EQ(test::NumberThrownBy([&] { capture.Append("x"); }), ErrorNumber::DiskFull);
}

TEST(CaptureFileDisk, PartOfAFailedBlockIsCutOff) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    const std::string block(1000, 'A');
    CaptureFile capture;
    capture.Create(path);
    capture.Append(block);
    {
        const test::FileSizeLimit limit(1500);
        EXPECT_EQ(test::NumberThrownBy([&] { capture.Append(block); }),
                  ErrorNumber::DeviceInputOutput);
        EXPECT_EQ(FileBytes(path), block);
    }
    capture.Append("B");
    EXPECT_EQ(FileBytes(path), block + "B");
}

TEST(CaptureFileDisk, AFailureInAFolderThatIsGoneIsError57) {
    const TemporaryFolder folder;
    CreateFolder(folder.Path("session"));
    CaptureFile capture;
    capture.Create(folder.Path("session/") + QLatin1String(kCaptureFileName));
    QDir(folder.Path("session")).removeRecursively();
    const test::FileSizeLimit nothing(0);
    EXPECT_EQ(test::NumberThrownBy([&] { capture.Append("A"); }), ErrorNumber::DeviceInputOutput);
}

TEST(CaptureFileDisk, ALinkOrAPipeOfItsNameIsNeitherFollowedNorWaitedFor) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    test::ExpectWrittenOverAnything(path, path, [&] {
        CaptureFile capture;
        capture.Create(path);
        capture.Append("shot");
        EXPECT_EQ(FileBytes(path), "shot");
    });
}

TEST(JournalDisk, WhatHasTheTemporaryNameIsNeitherFollowedNorWaitedFor) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
    SessionJournal journal;
    journal.testNotes = "notes";
    test::ExpectWrittenOverAnything(path, test::NameWhileWriting(path), [&] {
        journal.Write(path);
        EXPECT_EQ(SessionJournal::Read(path).testNotes, "notes");
    });
    CreateFolder(test::NameWhileWriting(path));
    EXPECT_EQ(test::NumberThrownBy([&] { journal.Write(path); }), ErrorNumber::PermissionDenied);
}

}  // namespace
}  // namespace davo
