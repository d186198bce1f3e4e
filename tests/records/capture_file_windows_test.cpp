// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/capture_file.h"

#include <gtest/gtest.h>

#include "common/run_time_error.h"
#include "tests/support/temporary_folder.h"

// After the others: its macros rename what they declare.
#include <windows.h>

namespace davo {
namespace {

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
