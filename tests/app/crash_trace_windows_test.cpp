// SPDX-License-Identifier: GPL-3.0-or-later
// Copies of this process crash.

#include <gtest/gtest.h>
#include <windows.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

#include "app/crash_trace.h"

namespace davo::test {
namespace {

bool IsDump(const QString& folder) {
    QFile file(folder + QStringLiteral("davo-crash.dmp"));
    return file.open(QIODevice::ReadOnly) && file.read(4) == "MDMP";
}

TEST(Crashes, ABadAccessLeavesADump) {
    const QTemporaryDir root;
    const QString folder = root.path() + QStringLiteral("/traces/");
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
    const QTemporaryDir root;
    const QString folder = root.path() + QStringLiteral("/traces/");
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
