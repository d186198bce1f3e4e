// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>
// After it.
#include <dbghelp.h>

#include <QDir>
#include <csignal>
#include <string>

#include "app/crash_trace.h"

namespace davo {

namespace {

constexpr DWORD kAborted = 0xE0000001;     // an exception of our own
constexpr ULONG kHandlersStack = 0x10000;  // where the stack has run out

std::wstring dumpPath;

LONG WINAPI WriteDump(EXCEPTION_POINTERS* exception) {
    const HANDLE file = ::CreateFileW(dumpPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        MINIDUMP_EXCEPTION_INFORMATION about{::GetCurrentThreadId(), exception, FALSE};
        ::MiniDumpWriteDump(::GetCurrentProcess(), ::GetCurrentProcessId(), file, MiniDumpNormal,
                            &about, nullptr, nullptr);
        ::CloseHandle(file);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void LeaveCrashTraces(const QString& folder) {
    QDir().mkpath(folder);
    dumpPath = (folder + QStringLiteral("davo-crash.dmp")).toStdWString();
    ULONG stack = kHandlersStack;
    ::SetThreadStackGuarantee(&stack);
    ::SetUnhandledExceptionFilter(WriteDump);
    // An exception that nobody catches ends here, and so does what Qt calls fatal.
    std::signal(SIGABRT,
                [](int) { ::RaiseException(kAborted, EXCEPTION_NONCONTINUABLE, 0, nullptr); });
}

}  // namespace davo
