// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <QString>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace davo {

// LibreOffice's own process, apart from whatever LibreOffice the user has open: with a profile
// folder and a pipe of its own. A thread of this object starts it and looks after it; the process
// dies with that thread, whatever way this program ends. All functions may be called from any
// thread.
class CalcProcess {
  public:
    // programFolder: where soffice.bin is.
    explicit CalcProcess(const QString& programFolder);
    // Ends the process at once and deletes its folder.
    ~CalcProcess();
    Q_DISABLE_COPY_MOVE(CalcProcess)

    // Starts a process unless there is one; returns at once. A new one begins with a new profile.
    void Start();
    // True from Start until the process is seen to have ended.
    bool IsRunning() const;
    // Ends the process when the moment comes; none: no such moment.
    void EndAt(std::optional<std::chrono::steady_clock::time_point> moment);
    // Ends the process and returns when it is gone.
    void Kill();
    // Returns when the process has ended, or after patience; true when it has ended.
    bool WaitForEnd(std::chrono::milliseconds patience) const;

    // The name of the pipe on which the process started last listens; a new one for each.
    QString PipeName() const;
    // A folder for files that go to and fro, ends with '/'. It lasts as long as the process.
    QString ScratchFolder() const;

  private:
    void LookAfter(const std::stop_token& stop);
    void MakeFolder();
    void Launch();
    void SeeWhetherItEnded(bool wait);

    const QString programFolder_;
    mutable std::mutex mutex_;
    mutable std::condition_variable_any changed_;
    bool isWanted_ = false;
    bool mustEnd_ = false;
    bool isNews_ = false;
    bool mayRelaunch_ = false;
    pid_t pid_ = 0;
    int launches_ = 0;
    QString folder_;
    QString pipeName_;
    std::optional<std::chrono::steady_clock::time_point> endAt_;
    std::jthread keeper_;  // last: it uses all of the above
};

}  // namespace davo
