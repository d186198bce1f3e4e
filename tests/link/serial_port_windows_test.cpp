// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/serial_port.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
// After them, and before what needs its types.
#include <windows.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <iostream>
#include <string>

#include "common/run_time_error.h"
#include "link/link.h"
#include "tests/support/fake_prompts.h"

// COM1 is a pseudo terminal whose far end is played by wine_line.py.
namespace davo::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;

milliseconds Since(steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

milliseconds ProcessorTime() {
    FILETIME ignored{};
    FILETIME kernel{};
    FILETIME user{};
    ::GetProcessTimes(::GetCurrentProcess(), &ignored, &ignored, &kernel, &user);
    constexpr int kTicksPerMillisecond = 10'000;
    const auto of = [](const FILETIME& time) {
        return ((static_cast<qint64>(time.dwHighDateTime) << 32) | time.dwLowDateTime) /
               kTicksPerMillisecond;
    };
    return milliseconds(of(kernel) + of(user));
}

void RunEvents(milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

bool RunEventsUntil(const std::function<bool()>& reached) {
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (!reached() && steady_clock::now() < end)
        RunEvents(milliseconds(1));
    return reached();
}

std::string EveryByte() {
    std::string bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    return bytes;
}

std::string Hex(const std::string& bytes) {
    return QByteArray::fromStdString(bytes).toHex().toStdString();
}

// Has the far end do something, and its answer.
std::string Line(const std::string& command) {
    std::cout << "line: " << command << std::endl;
    std::string answer;
    std::getline(std::cin, answer);
    while (!answer.empty() && answer.back() == '\r')
        answer.pop_back();
    return answer;
}

void Write(const std::string& bytes) {
    Line("write " + Hex(bytes));
}

std::string Read(std::size_t size) {
    return QByteArray::fromHex(QByteArray::fromStdString(Line("read " + std::to_string(size))))
        .toStdString();
}

class OnePort : public PortDevices {
  public:
    QString DeviceOf(std::int16_t) const override { return device; }
    std::vector<PresentPort> Present() const override { return {}; }
    void Assign(std::int16_t, const QString&) override {}
    bool NeedsAssignment() const override { return false; }

    QString device = QStringLiteral("COM1");
};

class WindowsSerialPortTest : public testing::Test {
  protected:
    WindowsSerialPortTest() { port->SetSettings("19200,N,8,1"); }
    void Open() { port->SetPortOpen(true); }

    ErrorNumber OpenError() {
        try {
            port->SetPortOpen(true);
        } catch (const RunTimeError& error) {
            EXPECT_FALSE(port->PortOpen());
            return error.Number();
        }
        ADD_FAILURE() << "opened";
        return {};
    }

    OnePort devices;
    std::unique_ptr<SerialPort> port = MakeSerialPort(devices);
};

TEST_F(WindowsSerialPortTest, EveryByteGoesBothWaysUnchanged) {
    Open();
    port->Output(EveryByte());
    EXPECT_EQ(Read(256), EveryByte()) << "Output must not wait for the event loop";
    Write(EveryByte());
    std::string got;
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (got.size() < 256 && port->WaitForText(end))
        got += port->Input();
    EXPECT_EQ(got, EveryByte());
    EXPECT_EQ(port->Input(), "");
}

TEST_F(WindowsSerialPortTest, TheSettingsReachTheLine) {
    Open();
    EXPECT_EQ(Line("settings"), "19200,N,8,1");
    port->SetPortOpen(false);
    // A pseudo terminal keeps the speed and the stop bits only.
    port->SetSettings("9600,N,8,2");
    Open();
    EXPECT_EQ(Line("settings"), "9600,N,8,2");
}

TEST_F(WindowsSerialPortTest, ALongBurstArrivesInOrder) {
    Open();
    std::string sent;
    for (int i = 0; sent.size() < 100'000; ++i)
        sent += std::to_string(i) + EveryByte();
    std::string got;
    port->OnTextWaiting = [&] { got += port->Input(); };
    const auto start = steady_clock::now();
    constexpr std::size_t kPart = 4000;
    for (std::size_t at = 0; at < sent.size(); at += kPart) {
        Line("writelater 0 " + Hex(sent.substr(at, kPart)));
        RunEvents(milliseconds(1));
    }
    EXPECT_TRUE(RunEventsUntil([&] { return got.size() >= sent.size(); })) << got.size();
    EXPECT_TRUE(got == sent);
    std::cout << sent.size() << " bytes received in " << Since(start).count() << " ms\n";
}

TEST_F(WindowsSerialPortTest, ALongOutputLeavesInOrderAndDoesNotBlock) {
    Open();
    std::string sent;
    for (int i = 0; sent.size() < 100'000; ++i)
        sent += std::to_string(i) + EveryByte();
    // The far end takes nothing yet: an output that waited until it has left would never return.
    const auto start = steady_clock::now();
    constexpr std::size_t kPart = 1000;
    for (std::size_t at = 0; at < sent.size(); at += kPart)
        port->Output(sent.substr(at, kPart));
    std::cout << sent.size() << " bytes put out in " << Since(start).count() << " ms\n";
    std::string got;
    const auto end = steady_clock::now() + std::chrono::seconds(30);
    while (got.size() < sent.size() && steady_clock::now() < end) {
        RunEvents(milliseconds(1));
        got += Read(1);
    }
    EXPECT_EQ(got.size(), sent.size());
    EXPECT_TRUE(got == sent);
}

TEST_F(WindowsSerialPortTest, TextIsAnnouncedFromTheEventLoopOnly) {
    Open();
    int announced = 0;
    int events = 0;
    port->OnTextWaiting = [&] { ++announced; };
    port->OnComm = [&](CommEvent) { ++events; };
    Write("abc");
    EXPECT_TRUE(port->WaitForText(steady_clock::now() + std::chrono::seconds(5)));
    EXPECT_EQ(announced, 0);
    EXPECT_TRUE(RunEventsUntil([&] { return announced > 0; }))
        << "text that a wait has taken in must be announced still";
    EXPECT_EQ(events, 0);
    EXPECT_EQ(port->Input(), "abc");
}

TEST_F(WindowsSerialPortTest, ReceiveEventsComeWhileTheThresholdIsOne) {
    Open();
    std::string got;
    std::vector<CommEvent> events;
    port->OnComm = [&](CommEvent event) {
        events.push_back(event);
        got += port->Input();
    };
    Write("before");
    RunEvents(milliseconds(50));
    EXPECT_TRUE(events.empty());
    port->SetRThreshold(1);
    EXPECT_TRUE(RunEventsUntil([&] { return got == "before"; })) << "text that waited already";
    Write(" after");
    EXPECT_TRUE(RunEventsUntil([&] { return got == "before after"; }));
    port->SetRThreshold(0);
    const std::size_t count = events.size();
    Write("silent");
    RunEvents(milliseconds(50));
    EXPECT_EQ(events.size(), count);
    EXPECT_THAT(events, testing::Each(CommEvent::Received));
}

TEST_F(WindowsSerialPortTest, WaitForTextSleepsUntilTheTimeAndNotLonger) {
    Open();
    auto shortest = std::chrono::microseconds::max();
    for (int i = 0; i < 50; ++i) {
        const auto start = steady_clock::now();
        EXPECT_FALSE(port->WaitForText(start + std::chrono::microseconds(300)));
        const auto waited =
            std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - start);
        shortest = std::min(shortest, waited);
    }
    std::cout << "shortest wait of 300 us: " << shortest.count() << " us\n";
    EXPECT_GE(shortest.count(), 250);
    // One undisturbed wait shows that it is not longer; on a busy machine it takes some to have
    // one.
    auto longer = milliseconds::max();
    for (int i = 0; i < 50 && longer >= milliseconds(600); ++i) {
        const auto start = steady_clock::now();
        EXPECT_FALSE(port->WaitForText(start + milliseconds(200)));
        longer = Since(start);
        EXPECT_GE(longer, milliseconds(199));
    }
    EXPECT_LT(longer, milliseconds(600));
    EXPECT_FALSE(port->WaitForText(steady_clock::now() - milliseconds(5)));
}

TEST_F(WindowsSerialPortTest, WaitForTextWakesWhenTextComes) {
    Open();
    Line("writelater 200 " + Hex("late"));
    const auto start = steady_clock::now();
    // Longer than the test may take: only the text ends it.
    EXPECT_TRUE(port->WaitForText(start + std::chrono::hours(1)));
    EXPECT_GE(Since(start), milliseconds(100));
    RunEvents(milliseconds(20));
    EXPECT_EQ(port->Input(), "late");
}

TEST_F(WindowsSerialPortTest, AQuietLineUsesNoProcessor) {
    Open();
    const auto start = steady_clock::now();
    const auto used = ProcessorTime();
    RunEvents(milliseconds(1000));
    EXPECT_LT(ProcessorTime() - used, Since(start) / 2) << "what spins takes all of it";
}

TEST_F(WindowsSerialPortTest, APortThatIsNotThereIs8002) {
    devices.device.clear();
    EXPECT_EQ(OpenError(), ErrorNumber::InvalidPortNumber);
    devices.device = QStringLiteral("COM77");
    EXPECT_EQ(OpenError(), ErrorNumber::InvalidPortNumber);
    devices.device = QStringLiteral("COM1");
    Open();
    EXPECT_TRUE(port->PortOpen());
}

TEST_F(WindowsSerialPortTest, WhatIsNoPortDoesNotOpen) {
    devices.device = QStringLiteral("NUL");
    EXPECT_EQ(OpenError(), ErrorNumber::PortAlreadyOpen);
}

TEST_F(WindowsSerialPortTest, AClosedPortIsSilent) {
    port->Output("B");
    port->SetRThreshold(1);
    port->SetRThreshold(0);
    EXPECT_EQ(port->Input(), "");
    EXPECT_FALSE(port->WaitForText(steady_clock::now() + std::chrono::seconds(5)));
    port->SetPortOpen(false);
    EXPECT_FALSE(port->PortOpen());
}

TEST_F(WindowsSerialPortTest, TheLastOutputLeavesBeforeThePortCloses) {
    Open();
    port->Output("X");
    port->SetPortOpen(false);
    EXPECT_EQ(Read(1), "X");
}

TEST_F(WindowsSerialPortTest, ReopenedItCarriesOn) {
    for (int i = 0; i < 3; ++i) {
        Open();
        Write("again");
        RunEvents(milliseconds(50));
        EXPECT_EQ(port->Input(), "again");
        port->SetPortOpen(false);
    }
}

TEST_F(WindowsSerialPortTest, ALossIsToldOnceFromTheEventLoopAndThePortIsClosed) {
    Open();
    int lost = 0;
    QString reason;
    port->OnLost = [&](const QString& text) {
        ++lost;
        reason = text;
        EXPECT_FALSE(port->PortOpen());
    };
    Line("unplug");
    EXPECT_FALSE(port->WaitForText(steady_clock::now() + std::chrono::seconds(5)));
    EXPECT_EQ(lost, 0);
    EXPECT_TRUE(RunEventsUntil([&] { return lost > 0; }));
    RunEvents(milliseconds(300));
    EXPECT_EQ(lost, 1);
    EXPECT_FALSE(reason.isEmpty());
    std::cout << "reason of the loss: " << reason.toStdString() << "\n";
    Line("plug");
    Open();
    Write("back");
    EXPECT_TRUE(port->WaitForText(steady_clock::now() + std::chrono::seconds(5)));
    RunEvents(milliseconds(20));
    EXPECT_EQ(port->Input(), "back");
}

TEST_F(WindowsSerialPortTest, AFailedWriteIsALoss) {
    Open();
    int lost = 0;
    port->OnLost = [&](const QString&) { ++lost; };
    Line("unplug");
    port->Output("T");
    EXPECT_TRUE(RunEventsUntil([&] { return lost > 0; }));
    EXPECT_FALSE(port->PortOpen());
    Line("plug");
}

TEST_F(WindowsSerialPortTest, AQuietLinesLossIsNoticed) {
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link(*port, state, prompts, pointer);
    ASSERT_TRUE(link.OpenComPort(1));
    Line("unpluglater 200");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_FALSE(state.portOpen);
    RunEvents(milliseconds(20));
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
    Line("plug");
    EXPECT_TRUE(link.OpenComPort(1));
}

TEST_F(WindowsSerialPortTest, AnExchangeStartedByWaitingTextIsAnswered) {
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link(*port, state, prompts, pointer);
    ASSERT_TRUE(link.OpenComPort(1));
    std::string reply;
    link.OnTextWaiting = [&] {
        link.Input();
        Line("writelater 100 " + Hex("W-reply\r\n"));
        QTimer::singleShot(5000, qApp, [&] { link.EndWait(); });
        reply = link.SendCommand("W", "\r\n");
    };
    Write("prompt\r\n");
    EXPECT_TRUE(RunEventsUntil([&] { return !reply.empty(); }));
    EXPECT_EQ(reply, "W-reply\r\n");
}

TEST_F(WindowsSerialPortTest, AnUnansweredHandshakeLastsThreeSecondsAndTheClockTicks) {
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link(*port, state, prompts, pointer);
    ASSERT_TRUE(link.OpenComPort(1));
    int ticks = 0;
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, [&] { ++ticks; });
    clock.start(20);
    const auto used = ProcessorTime();
    const auto start = steady_clock::now();
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    const auto lasted = Since(start);
    std::cout << "handshake unanswered: " << lasted.count() << " ms, processor "
              << (ProcessorTime() - used).count() << " ms\n";
    EXPECT_GE(lasted, milliseconds(3000));
    EXPECT_GT(ticks, 1);
}

// With the simulated instrument on the line.
TEST(WindowsInstrumentTest, HandshakeModelAndDirectory) {
    OnePort devices;
    const auto port = MakeSerialPort(devices);
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link(*port, state, prompts, pointer);
    ASSERT_TRUE(link.OpenComPort(1));
    std::string model;
    const auto start = steady_clock::now();
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    std::cout << "handshake and model in " << Since(start).count() << " ms\n";
    EXPECT_THAT(model, testing::StartsWith("DAVO"));
    constexpr int kRounds = 100;
    const auto rounds = steady_clock::now();
    for (int i = 0; i < kRounds; ++i)
        EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "RDY\r\n");
    std::cout << kRounds << " handshakes in " << Since(rounds).count() << " ms\n";
    const std::string directory = link.SendCommandAwaitDone("d", "\r\nDONE");
    EXPECT_THAT(directory, testing::HasSubstr("DONE"));
    EXPECT_TRUE(prompts.shown.empty());
    link.CloseComPort();
}

}  // namespace
}  // namespace davo::test
