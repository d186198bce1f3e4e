// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
// After them, and before what needs its types.
#include <windows.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <iostream>
#include <string>

#include "link/link.h"
#include "link/serial_port.h"
#include "tests/link/serial_port_rig.h"

// COM1 is a pseudo terminal whose far end is played by wine_line.py.
namespace davo::test {
namespace {

using testing::ElementsAre;

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

class WineLine : public SerialLine {
  public:
    QString Device() const override { return QStringLiteral("COM1"); }
    QString MissingDevice() const override { return QStringLiteral("COM77"); }
    void Write(const std::string& bytes) override { Line("write " + Hex(bytes)); }
    std::string Read(std::size_t size) override {
        const std::string digits = Line("read " + std::to_string(size));
        return QByteArray::fromHex(QByteArray::fromStdString(digits)).toStdString();
    }
    std::string InputOf(SerialPort& port, std::size_t size) override {
        std::string got = port.Input();
        const auto end = steady_clock::now() + std::chrono::seconds(10);
        while (got.size() < size && port.WaitForText(end))
            got += port.Input();
        return got;
    }
    void Unplug() override { Line("unplug"); }
    void PlugIn() override { Line("plug"); }
};

}  // namespace

std::unique_ptr<SerialLine> MakeSerialLine() {
    return std::make_unique<WineLine>();
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

namespace {

TEST_F(SerialPortTest, TheSettingsReachTheLine) {
    Open();
    EXPECT_EQ(Line("settings"), "19200,N,8,1");
    port->SetPortOpen(false);
    // A pseudo terminal keeps the speed and the stop bits only.
    port->SetSettings("9600,N,8,2");
    Open();
    EXPECT_EQ(Line("settings"), "9600,N,8,2");
}

TEST_F(SerialPortTest, ALongBurstArrivesInOrder) {
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

TEST_F(SerialPortTest, ALongOutputLeavesInOrderAndDoesNotBlock) {
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
        got += line->Read(1);
    }
    EXPECT_EQ(got.size(), sent.size());
    EXPECT_TRUE(got == sent);
}

TEST_F(SerialPortTest, WaitForTextSleepsUntilTheTimeAndNotLonger) {
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

TEST_F(SerialPortTest, WaitForTextWakesWhenTextComes) {
    Open();
    Line("writelater 200 " + Hex("late"));
    const auto start = steady_clock::now();
    // Longer than the test may take: only the text ends it.
    EXPECT_TRUE(port->WaitForText(start + std::chrono::hours(1)));
    EXPECT_GE(Since(start), milliseconds(100));
    RunEvents(milliseconds(20));
    EXPECT_EQ(port->Input(), "late");
}

TEST_F(SerialPortTest, WhatIsNoPortDoesNotOpen) {
    devices.device = QStringLiteral("NUL");
    EXPECT_EQ(OpenError(*port), ErrorNumber::PortAlreadyOpen);
}

TEST_F(SerialLinkTest, AQuietLinesLossIsNoticed) {
    Line("unpluglater 200");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_FALSE(state.portOpen);
    RunEvents(milliseconds(20));
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
    line->PlugIn();
    EXPECT_TRUE(link.OpenComPort(1));
}

TEST_F(SerialLinkTest, AnExchangeStartedByWaitingTextIsAnswered) {
    std::string reply;
    link.OnTextWaiting = [&] {
        link.Input();
        Line("writelater 100 " + Hex("W-reply\r\n"));
        QTimer::singleShot(5000, qApp, [&] { link.EndWait(); });
        reply = link.SendCommand("W", "\r\n");
    };
    line->Write("prompt\r\n");
    EXPECT_TRUE(RunEventsUntil([&] { return !reply.empty(); }));
    EXPECT_EQ(reply, "W-reply\r\n");
}

TEST_F(SerialLinkTest, AnUnansweredHandshakeLastsThreeSecondsAndTheClockTicks) {
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
    OneDevice devices{QStringLiteral("COM1")};
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
