// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "link/link.h"
#include "link/serial_port.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/thrown.h"

namespace davo::test {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A line whose near end the port under test opens, by the means that a platform has for it.
class SerialLine {
  public:
    SerialLine() = default;
    virtual ~SerialLine() = default;
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    virtual QString Device() const = 0;
    virtual QString MissingDevice() const = 0;
    virtual void Write(const std::string& bytes) = 0;
    // What has come from the port; where the line takes time, when it is so much.
    virtual std::string Read(std::size_t size) = 0;
    // What port has of so much that was just written.
    virtual std::string InputOf(SerialPort& port, std::size_t size) = 0;
    virtual void Unplug() = 0;
    virtual void PlugIn() = 0;
};
std::unique_ptr<SerialLine> MakeSerialLine();

// Of all threads of this process.
milliseconds ProcessorTime();

inline milliseconds Since(steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

inline void RunEvents(milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

inline bool RunEventsUntil(const std::function<bool()>& reached) {
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (!reached() && steady_clock::now() < end)
        RunEvents(milliseconds(1));
    return reached();
}

inline std::string EveryByte() {
    std::string bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    return bytes;
}

// The port alone.
class SerialPortTest : public testing::Test {
  protected:
    SerialPortTest() {
        port->SetSettings("19200,N,8,1");
        port->OnLost = [this](const QString& why) {
            ++lost;
            reason = why;
            EXPECT_FALSE(port->PortOpen());
        };
    }
    void Open() { port->SetPortOpen(true); }
    bool WaitForText() { return port->WaitForText(steady_clock::now() + std::chrono::seconds(5)); }
    static ErrorNumber OpenError(SerialPort& opened) {
        const ErrorNumber number = NumberThrownBy([&] { opened.SetPortOpen(true); });
        EXPECT_FALSE(opened.PortOpen());
        return number;
    }

    std::unique_ptr<SerialLine> line = MakeSerialLine();
    OneDevice devices{line->Device()};
    std::unique_ptr<SerialPort> port = MakeSerialPort(devices);
    int lost = 0;
    QString reason;  // of the last loss
};

// Exchanges over it.
class SerialLinkTest : public SerialPortTest {
  protected:
    SerialLinkTest() { EXPECT_TRUE(link.OpenComPort(1)); }

    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{*port, state, prompts, pointer};
};

}  // namespace davo::test
