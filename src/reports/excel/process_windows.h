// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <windows.h>

#include <QtGlobal>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace davo::excel {

// Looks after Excel's process from a thread of its own: ends it when its moment comes, which lets a
// call that hangs in it fail.
class ExcelProcess {
  public:
    // The process whose window this is; nothing happens to one that may not be opened.
    explicit ExcelProcess(HWND window);
    // Gives the process patience to end by itself and ends it then.
    ~ExcelProcess();
    Q_DISABLE_COPY_MOVE(ExcelProcess)

    // From any thread. EndWithin counts from now and keeps an earlier end when onlyEarlier.
    void EndWithin(std::chrono::milliseconds time, bool onlyEarlier = false);

  private:
    void Watch(const std::stop_token& stop);

    HANDLE process_ = nullptr;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::optional<std::chrono::steady_clock::time_point> end_;
    std::jthread watcher_;  // last: it uses all of the above
};

}  // namespace davo::excel
