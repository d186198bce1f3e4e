// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QFile>

#include "common/flush_to_disk.h"
#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "tests/support/temporary_folder.h"

// After the others: its macros rename what they declare.
#include <windows.h>

namespace davo {
namespace {

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

TEST(CaptureFileOnWindows, IsDeniedWhileAnotherProgramHoldsIt) {
    const test::TemporaryFolder folder;
    const QString path = folder.Path("TESTFILE.txt");
    CaptureFile capture;
    capture.Create(path);
    capture.Close();
    HANDLE held = ::CreateFileW(path.toStdWString().c_str(), GENERIC_READ, 0, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    try {
        capture.Create(path);
        ADD_FAILURE() << "created over a file in use";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), ErrorNumber::PermissionDenied);
    }
    ::CloseHandle(held);
    capture.Create(path);
    EXPECT_TRUE(capture.IsOpen());
}

}  // namespace
}  // namespace davo
