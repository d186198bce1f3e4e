// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "link/port_devices.h"

namespace davo {

// Event codes of the serial control.
enum class CommEvent {
    None = 0,
    Send = 1,
    Received = 2,
    Cts = 3,
    Dsr = 4,
    Cd = 5,
    Ring = 6,
    EndOfFile = 7,
    Break = 1001,
    Framing = 1004,
    Overrun = 1006,
    ReceiveOverflow = 1008,
    Parity = 1009,
    TransmitFull = 1010,
    DeviceControlBlock = 1011,
};

// The serial control with its own property names. One thread; the callbacks come from the event
// loop, never from inside a call of this interface other than WaitForText.
class SerialPort {
  public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~SerialPort() = default;

    virtual void SetCommPort(std::int16_t port) = 0;          // 1 = COM1
    virtual void SetSettings(std::string_view settings) = 0;  // "19200,N,8,1", no other parity
    // 0: Input takes everything waiting, which it always does.
    virtual void SetInputLen(int /*characters*/) {}
    // The buffer grows as needed: losing text because a window was busy helps nobody.
    virtual void SetInBufferSize(int /*characters*/) {}
    // 1: OnComm is called when text has arrived; 0: it is not, and text waits for Input.
    virtual void SetRThreshold(int characters) = 0;

    virtual bool PortOpen() const = 0;
    // Opens or closes. Opening and configuring succeed together or the port ends closed and
    // RunTimeError 8002 (no such port) or 8005 (in use, not permitted) is thrown.
    virtual void SetPortOpen(bool open) = 0;

    // Sends bytes; returns before they have left. Nothing happens on a closed port.
    virtual void Output(std::string_view bytes) = 0;
    // Takes everything waiting; empty on a closed port.
    virtual std::string Input() = 0;

    // Sleeps until text waits for Input, the port is lost or the time has come, without running
    // other events. True when text waits. For waits far below a millisecond.
    virtual bool WaitForText(Time until) = 0;

    std::function<void(CommEvent)> OnComm;       // receive event, see SetRThreshold; and the errors
    std::function<void()> OnTextWaiting;         // text has arrived, whatever RThreshold
    std::function<void(QString reason)> OnLost;  // the device went away; the port is closed
};

// The platform's serial port. devices must outlive it.
std::unique_ptr<SerialPort> MakeSerialPort(const PortDevices& devices);

}  // namespace davo
