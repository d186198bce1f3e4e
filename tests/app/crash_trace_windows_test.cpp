// SPDX-License-Identifier: GPL-3.0-or-later
// Copies of this process crash.

#include <gtest/gtest.h>
#include <windows.h>

#include <QDir>
#include <QFile>
#include <cstdlib>

#include "app/crash_trace.h"

namespace davo::test {
namespace {

bool IsDump(const QString& folder) {
    QFile file(folder + QStringLiteral("davo-crash.dmp"));
    return file.open(QIODevice::ReadOnly) && file.read(4) == "MDMP";
}

// The copy runs the test from its beginning: the folder must be the same one in both.
QString EmptyFolder() {
    QDir folder(QDir::tempPath() + QStringLiteral("/davo-crash-trace-test"));
    folder.removeRecursively();
    return folder.path() + QLatin1Char('/');
}

TEST(Crashes, ABadAccessLeavesADump) {
    const QString folder = EmptyFolder();
    const auto any = [](int code) { return code != 0; };
    EXPECT_EXIT(
        {
            LeaveCrashTraces(folder);
            ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
        },
        any, "");
    EXPECT_TRUE(IsDump(folder));
}

TEST(Crashes, AnAbortLeavesADump) {
    const QString folder = EmptyFolder();
    const auto any = [](int code) { return code != 0; };
    EXPECT_EXIT(
        {
            LeaveCrashTraces(folder);
            std::abort();
        },
        any, "");
    EXPECT_TRUE(IsDump(folder));
}

}  // namespace
}  // namespace davo::test
