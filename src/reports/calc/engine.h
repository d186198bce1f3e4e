// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "reports/calc/process.h"
#include "reports/calc/uno.h"
#include "reports/renderer.h"

namespace davo {

// A warm LibreOffice to work with, one report after the other, from one thread at a time. A call
// into an engine that hangs would block without limit: every step begins with KeepWatch, and when a
// step takes longer than the patience the engine is ended, which lets the blocked call throw
// lang::DisposedException.
class CalcEngine {
  public:
    explicit CalcEngine(const CalcSettings& settings);
    // Ends LibreOffice in good order, or else at once.
    ~CalcEngine();
    Q_DISABLE_COPY_MOVE(CalcEngine)

    // Starts LibreOffice in the background; returns at once.
    void Start() { process_.Start(); }

    // LibreOffice's own context, started and waited for when needed. Throws RunTimeError 440 when
    // it does not come up.
    calc::Context Connect();

    void KeepWatch();
    // Between reports: nothing is awaited. After so many of them the engine is replaced, because
    // it grows.
    void EndWatch(bool reportIsDone);

    bool IsRunning() const { return process_.IsRunning(); }
    // At once; the next Connect or Start begins a new one. May be called from any thread.
    void Kill() { process_.Kill(); }

    // A folder of the engine's for files that go to and fro, ends with '/'.
    QString ScratchFolder() const { return process_.ScratchFolder(); }

  private:
    void Quit();
    calc::Context TryToConnect();

    const CalcSettings settings_;
    calc::Context remote_;
    int reports_ = 0;
    CalcProcess process_;
};

}  // namespace davo
