// SPDX-License-Identifier: GPL-3.0-or-later
// Copies of this process crash.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "app/crash_trace.h"

namespace davo::test {
namespace {

using testing::HasSubstr;
using testing::KilledBySignal;
using testing::StartsWith;

class Crashes : public testing::Test {
  protected:
    // Made by the handler.
    QString Folder() const { return root.path() + QStringLiteral("/traces/"); }
    std::string Trace() const {
        QFile file(Folder() + QStringLiteral("davo-crash.txt"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "no trace";
    }
    QTemporaryDir root;
};

// A call each, or the stack never runs out.
[[gnu::noinline]] int CallWithoutEnd(volatile const int* depth) {
    if (*depth < 0) return 0;
    volatile const int here = *depth;
    return CallWithoutEnd(&here) + here;
}

TEST_F(Crashes, ABadAccessLeavesTheCallsAndEndsTheProcessAsBefore) {
    EXPECT_EXIT(
        {
            LeaveCrashTraces(Folder());
            raise(SIGSEGV);
        },
        KilledBySignal(SIGSEGV), "");
    EXPECT_THAT(Trace(), StartsWith("DAVO PC-Interface V.3."));
    EXPECT_THAT(Trace(), HasSubstr(", signal 11\n"));
    EXPECT_THAT(Trace(), HasSubstr("app_crash_trace_test"));
}

TEST_F(Crashes, AnExceptionThatNobodyCatchesLeavesThem) {
    EXPECT_EXIT(
        {
            LeaveCrashTraces(Folder());
            std::terminate();
        },
        KilledBySignal(SIGABRT), "");
    EXPECT_THAT(Trace(), HasSubstr(", signal 06\n"));
    EXPECT_THAT(Trace(), HasSubstr("libstdc++"));
}

TEST_F(Crashes, SoDoesAStackThatHasRunOut) {
    volatile int depth = 0;
    EXPECT_EXIT(
        {
            LeaveCrashTraces(Folder());
            std::exit(CallWithoutEnd(&depth));
        },
        KilledBySignal(SIGSEGV), "");
    EXPECT_THAT(Trace(), HasSubstr(", signal 11\n"));
}

TEST_F(Crashes, AFolderThatCannotBeWrittenInChangesNothing) {
    const QString folder = QStringLiteral("/proc/davo/");
    EXPECT_EXIT(
        {
            LeaveCrashTraces(folder);
            raise(SIGBUS);
        },
        KilledBySignal(SIGBUS), "");
    EXPECT_EQ(TakeCrashTrace(folder), QString());
}

}  // namespace
}  // namespace davo::test
