// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/process_windows.h"

namespace davo::excel {

namespace {

constexpr DWORD kPatienceAtEnd = 5000;  // milliseconds
constexpr UINT kEndedByUs = 1;

HANDLE ProcessOf(HWND window) {
    DWORD id = 0;
    ::GetWindowThreadProcessId(window, &id);
    if (id == 0 || id == ::GetCurrentProcessId()) return nullptr;
    return ::OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, id);
}

}  // namespace

ExcelProcess::ExcelProcess(HWND window)
    : process_(ProcessOf(window)), watcher_([this](const std::stop_token& stop) { Watch(stop); }) {}

ExcelProcess::~ExcelProcess() {
    watcher_.request_stop();
    watcher_.join();
    if (process_ == nullptr) return;
    if (::WaitForSingleObject(process_, kPatienceAtEnd) != WAIT_OBJECT_0) {
        ::TerminateProcess(process_, kEndedByUs);
        // Its files can be deleted only when it is gone.
        ::WaitForSingleObject(process_, kPatienceAtEnd);
    }
    ::CloseHandle(process_);
}

void ExcelProcess::EndWithin(std::chrono::milliseconds time, bool onlyEarlier) {
    const std::scoped_lock lock(mutex_);
    const auto end = std::chrono::steady_clock::now() + time;
    if (onlyEarlier && end_ && *end_ < end) return;
    end_ = end;
    changed_.notify_all();
}

void ExcelProcess::Watch(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        if (!end_) {
            changed_.wait(lock, stop, [this] { return end_.has_value(); });
            continue;
        }
        const auto end = *end_;
        const bool isMoved = changed_.wait_until(lock, stop, end, [&] { return end_ != end; });
        if (isMoved || stop.stop_requested()) continue;
        if (process_ != nullptr) ::TerminateProcess(process_, kEndedByUs);
        return;
    }
}

}  // namespace davo::excel
