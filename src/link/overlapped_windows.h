// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <windows.h>

#include <QtGlobal>
#include <chrono>
#include <string>

namespace davo {

// What Windows says about an error of its own, in UTF-8.
std::string SystemText(DWORD error);

// A timer as fine as the system has it; where it has no fine one, an ordinary one.
class FineTimer {
  public:
    FineTimer();
    Q_DISABLE_COPY_MOVE(FineTimer)
    ~FineTimer();

    HANDLE Handle() const { return timer_; }

  private:
    HANDLE timer_;
};

// One overlapped operation of a handle at a time, with its event. The handle must be cancelled
// before it is closed: the system writes into what lies here.
class Overlapped {
  public:
    Overlapped();
    Q_DISABLE_COPY_MOVE(Overlapped)
    ~Overlapped();

    // Begin an operation; bytes must stay where they are until it has ended. 0 or a system error.
    DWORD Read(HANDLE file, char* bytes, DWORD size);
    DWORD Write(HANDLE file, const char* bytes, DWORD size);

    // One was begun and its result was not taken.
    bool Pending() const { return pending_; }
    // Its result: 0 and the bytes moved, ERROR_IO_INCOMPLETE while it goes on, or its error.
    DWORD Result(HANDLE file, DWORD& size);
    // The same, and waits for its end; ends it after longest, with what was moved until then.
    DWORD Finish(HANDLE file, DWORD& size, std::chrono::milliseconds longest, HANDLE timer);
    // Sleeps until it ends (true) or the time has come; timer is free to be used.
    bool Wait(std::chrono::steady_clock::time_point until, HANDLE timer);
    // Ends it and waits for that; the bytes moved until then.
    DWORD Cancel(HANDLE file);

    HANDLE Event() const { return state_.hEvent; }

  private:
    DWORD Begun(BOOL done);

    OVERLAPPED state_{};
    bool pending_ = false;
};

}  // namespace davo
