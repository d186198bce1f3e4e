// SPDX-License-Identifier: GPL-3.0-or-later
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>

#include "app/crash_trace.h"
#include "common/version.h"

namespace davo {

namespace {

constexpr std::array<int, 5> kCrashSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr int kMostCalls = 64;

// All that a crash's handler reaches: it takes no memory and calls only what a handler may.
std::array<char, 4096> traceFolder;
std::array<char, 4096> tracePath;
std::array<char, 4096> traceHead;
// Its own, since the program's may be what has run out.
std::array<char, 65536> handlerStack;

void Keep(std::array<char, 4096>& place, const QByteArray& text) {
    const auto size = std::min(static_cast<std::size_t>(text.size()), place.size() - 1);
    std::copy_n(text.data(), size, place.data());
}

extern "C" void Crashed(int signal) {
    mkdir(traceFolder.data(), S_IRWXU);
    const int file =
        open(tracePath.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0) {
        std::array<char, 3> number = {static_cast<char>('0' + signal / 10),
                                      static_cast<char>('0' + signal % 10), '\n'};
        [[maybe_unused]] auto written =
            write(file, traceHead.data(), std::strlen(traceHead.data()));
        written = write(file, number.data(), number.size());
        std::array<void*, kMostCalls> calls{};
        backtrace_symbols_fd(calls.data(), backtrace(calls.data(), kMostCalls), file);
        close(file);
    }
    // The handler is not set any more: the signal ends the process when this returns.
    raise(signal);
}

}  // namespace

void LeaveCrashTraces(const QString& folder) {
    Keep(traceFolder, QFile::encodeName(folder));
    Keep(tracePath, QFile::encodeName(folder + QStringLiteral("davo-crash.txt")));
    Keep(traceHead,
         QStringLiteral("DAVO PC-Interface V.%1").arg(QLatin1String(kVersion)).toLatin1() +
             ", signal ");
    // The first one takes memory.
    std::array<void*, 1> call{};
    backtrace(call.data(), 1);

    stack_t stack = {};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = Crashed;
    action.sa_flags = SA_RESETHAND | SA_ONSTACK;
    for (const int signal : kCrashSignals)
        sigaction(signal, &action, nullptr);
}

}  // namespace davo
