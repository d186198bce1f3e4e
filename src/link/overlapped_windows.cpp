// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/overlapped_windows.h"

#include <QString>
#include <array>

// Windows 10, version 1803; older headers do not know it, older systems refuse it.
#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace davo {

std::string SystemText(DWORD error) {
    return qt_error_string(static_cast<int>(error)).trimmed().toStdString();
}

FineTimer::FineTimer()
    : timer_(::CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                      TIMER_ALL_ACCESS)) {
    if (timer_ == nullptr) timer_ = ::CreateWaitableTimerW(nullptr, FALSE, nullptr);
}

FineTimer::~FineTimer() {
    ::CloseHandle(timer_);
}

Overlapped::Overlapped() {
    state_.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

Overlapped::~Overlapped() {
    ::CloseHandle(state_.hEvent);
}

// An operation that was done at once signals the event, too: one way for both.
DWORD Overlapped::Begun(BOOL done) {
    const DWORD error = done != 0 ? ERROR_SUCCESS : ::GetLastError();
    pending_ = done != 0 || error == ERROR_IO_PENDING;
    return pending_ ? ERROR_SUCCESS : error;
}

DWORD Overlapped::Read(HANDLE file, char* bytes, DWORD size) {
    return Begun(::ReadFile(file, bytes, size, nullptr, &state_));
}

DWORD Overlapped::Write(HANDLE file, const char* bytes, DWORD size) {
    return Begun(::WriteFile(file, bytes, size, nullptr, &state_));
}

// The event decides, not the state: where the state is written first, the event of this operation
// would end the wait for the next one.
DWORD Overlapped::Result(HANDLE file, DWORD& size) {
    if (::WaitForSingleObject(state_.hEvent, 0) != WAIT_OBJECT_0) return ERROR_IO_INCOMPLETE;
    if (::GetOverlappedResult(file, &state_, &size, FALSE) != 0) {
        pending_ = false;
        ::ResetEvent(state_.hEvent);
        return ERROR_SUCCESS;
    }
    const DWORD error = ::GetLastError();
    if (error != ERROR_IO_INCOMPLETE) pending_ = false;
    return error;
}

DWORD Overlapped::Finish(HANDLE file, DWORD& size, std::chrono::milliseconds longest,
                         HANDLE timer) {
    if (Wait(std::chrono::steady_clock::now() + longest, timer)) return Result(file, size);
    size = Cancel(file);
    return ERROR_SUCCESS;
}

bool Overlapped::Wait(std::chrono::steady_clock::time_point until, HANDLE timer) {
    using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;
    const auto left =
        std::chrono::duration_cast<Ticks>(until - std::chrono::steady_clock::now()).count();
    if (left <= 0) return ::WaitForSingleObject(state_.hEvent, 0) == WAIT_OBJECT_0;
    LARGE_INTEGER due{};
    due.QuadPart = -left;  // negative: from now
    ::SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE);
    const std::array<HANDLE, 2> either = {state_.hEvent, timer};
    return ::WaitForMultipleObjects(2, either.data(), FALSE, INFINITE) == WAIT_OBJECT_0;
}

DWORD Overlapped::Cancel(HANDLE file) {
    if (!pending_) return 0;
    ::CancelIoEx(file, &state_);
    DWORD size = 0;
    ::GetOverlappedResult(file, &state_, &size, TRUE);
    pending_ = false;
    ::ResetEvent(state_.hEvent);
    return size;
}

}  // namespace davo
