// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "instrument/byte_log.h"
#include "instrument/conversation.h"
#include "instrument/faults.h"
#include "instrument/paced_line.h"
#include "instrument/pty.h"

namespace davo::instrument {

struct InstrumentOptions {
    std::string linkPath;  // where the PC finds the device
    bool paced = true;     // both directions at 19200 baud
    ConversationOptions conversation;
    std::vector<Fault> faults;
    std::string logPath;  // empty: no log file
};

// The instrument on its device: conversation, faults, line and log, run by one loop that sleeps
// until something is due. All functions may be called from any thread.
class Instrument {
  public:
    // Throws the errors of Pty and ByteLog. The device exists when the constructor returns.
    explicit Instrument(InstrumentOptions options);
    ~Instrument();
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    // Runs until Stop, or until stopDescriptor (-1: none) has something to read.
    void Run(int stopDescriptor = -1);
    void Stop();

    void Unplug();
    void PlugIn();
    // Faults of the line from now on, in place of the earlier ones; their positions count from now.
    void SetFaults(std::vector<Fault> faults);

    bool PluggedIn() const;
    std::vector<Shot> Shots() const;
    std::string HeaderMemory() const;
    // Everything that crossed the device so far.
    std::string AllToPc() const;
    std::string AllFromPc() const;
    const std::string& LinkPath() const { return options_.linkPath; }
    const InstrumentOptions& Options() const { return options_; }

  private:
    Micros Now() const;
    // One round: takes what came, does what is due, sends what has arrived.
    void Serve();
    void UnplugWhenRead(Micros now);
    std::optional<Micros> NextDue() const;
    void Sleep(int stopDescriptor);
    void Wake();
    // 0 when the line is not paced.
    double BytesPerSecondToPc() const;

    InstrumentOptions options_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    Conversation conversation_;
    FaultyLine faulty_;
    PacedLine toPc_;
    PacedLine fromPc_;
    ByteLog log_;
    Pty pty_;
    std::optional<Micros> nextUnplugLook_;
    std::optional<Micros> unplugLatest_;
    int wake_ = -1;
    bool stopped_ = false;
};

// An instrument that runs in the background as long as this lives.
class InstrumentThread {
  public:
    explicit InstrumentThread(InstrumentOptions options);
    ~InstrumentThread();
    InstrumentThread(const InstrumentThread&) = delete;
    InstrumentThread& operator=(const InstrumentThread&) = delete;

    Instrument& operator*() { return instrument_; }
    Instrument* operator->() { return &instrument_; }

  private:
    Instrument instrument_;
    std::thread thread_;
};

}  // namespace davo::instrument
