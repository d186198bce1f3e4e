// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>

#include "link/link.h"
#include "link/serial_port.h"
#include "tests/link/serial_port_rig.h"
#include "tests/support/processor_share.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/testing.h"

// The line is a pseudo terminal, which is as quick as memory.
namespace davo::test {

class PseudoTerminalLine : public SerialLine {
  public:
    QString Device() const override { return terminal.Path(); }
    QString MissingDevice() const override { return terminal.Path() + u"-missing"_s; }
    void Write(const std::string& bytes) override { terminal.Write(bytes); }
    std::string Read(std::size_t) override { return terminal.Read(); }
    std::string InputOf(SerialPort& port, std::size_t) override { return port.Input(); }
    void Unplug() override { terminal.Unplug(); }
    void PlugIn() override { terminal.PlugIn(); }

    PseudoTerminal terminal;
};

std::unique_ptr<SerialLine> MakeSerialLine() {
    return std::make_unique<PseudoTerminalLine>();
}

milliseconds ProcessorTime() {
    return milliseconds(std::clock() * 1000 / CLOCKS_PER_SEC);
}

namespace {

using std::chrono::microseconds;

// Counts how often the event loop is run.
class EventLoopPasses {
  public:
    EventLoopPasses() {
        timer_.callOnTimeout([this] { ++count_; });
        timer_.start(0);
    }
    int Count() const { return count_; }

  private:
    QTimer timer_;
    int count_ = 0;
};

// --- the port alone ---

TEST_F(SerialPortTest, WhatTheDriverHasNoRoomForIsSentLater) {
    Open();
    std::string sent;
    for (int i = 0; i < 200; ++i) {
        port->Output(EveryByte());
        sent += EveryByte();
    }
    std::string got;
    RunEventsUntil([&] { return (got += line->Read(4096)).size() >= sent.size(); });
    EXPECT_EQ(got, sent);
    EXPECT_EQ(lost, 0);
}

TEST_F(SerialPortTest, ABurstLongerThanTheBufferIsKept) {
    port->SetInBufferSize(1024);
    Open();
    std::string sent;
    for (int i = 0; i < 20; ++i) {
        line->Write(EveryByte());
        sent += EveryByte();
        RunEvents(milliseconds(1));
    }
    std::string got;
    RunEventsUntil([&] { return (got += port->Input()).size() >= sent.size(); });
    EXPECT_EQ(got, sent);
}

TEST_F(SerialPortTest, WaitForTextSleepsUntilTheTimeAndNotLonger) {
    Open();
    auto shortest = microseconds::max();
    // One undisturbed sleep shows that its grain is finer than a millisecond; on a busy machine it
    // takes many to have one.
    constexpr int kMostSleeps = 20'000;
    for (int i = 0; i < 50 || (i < kMostSleeps && shortest >= microseconds(900)); ++i) {
        const auto start = steady_clock::now();
        EXPECT_FALSE(port->WaitForText(start + microseconds(300)));
        const auto waited = std::chrono::duration_cast<microseconds>(steady_clock::now() - start);
        ASSERT_GE(waited, microseconds(300));
        shortest = std::min(shortest, waited);
    }
    EXPECT_LT(shortest, microseconds(900));
    const auto start = steady_clock::now();
    EXPECT_FALSE(port->WaitForText(start - milliseconds(5)));
}

TEST_F(SerialPortTest, WaitForTextSeesTextThatTheEventLoopHasTakenIn) {
    Open();
    line->Write("abc");
    RunEvents(milliseconds(20));
    EXPECT_TRUE(port->WaitForText(steady_clock::now()));
    EXPECT_EQ(port->Input(), "abc");
    EXPECT_FALSE(port->WaitForText(steady_clock::now()));
}

TEST_F(SerialPortTest, APortInUseIs8005) {
    Open();
    const auto second = MakeSerialPort(devices);
    second->SetSettings("19200,N,8,1");
    EXPECT_EQ(OpenError(*second), ErrorNumber::PortAlreadyOpen);
    port->SetPortOpen(false);
    second->SetPortOpen(true);
    EXPECT_TRUE(second->PortOpen());
}

TEST_F(SerialPortTest, WhatIsNoTerminalDoesNotOpen) {
    QTemporaryDir folder;
    devices.device = folder.filePath(u"plain"_s);
    QFile file(devices.device);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    OpenError(*port);
    EXPECT_FALSE(port->PortOpen());
}

TEST_F(SerialPortTest, AnOpenDuringALossCancelsIt) {
    Open();
    line->Unplug();
    port->Output("T");
    line->PlugIn();
    Open();
    RunEvents(milliseconds(50));
    EXPECT_EQ(lost, 0);
    EXPECT_TRUE(port->PortOpen());
}

// A posted call that takes the text after the event loop has seen it and before QSerialPort reads
// leaves that read empty: no loss, and no deafness.
TEST_F(SerialPortTest, TextTakenUnderTheEventLoopsHandsIsNoLoss) {
    Open();
    std::size_t got = 0;
    constexpr std::size_t kRounds = 300;
    for (std::size_t i = 0; i < kRounds; ++i) {
        line->Write("x");
        QMetaObject::invokeMethod(
            qApp, [&] { got += port->Input().size(); }, Qt::QueuedConnection);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(got, kRounds);
    EXPECT_EQ(lost, 0);
    int announced = 0;
    port->OnTextWaiting = [&] { ++announced; };
    line->Write("still listening");
    EXPECT_TRUE(RunEventsUntil([&] { return announced > 0; }));
}

// --- exchanges over it ---

class LinkOverSerialPortTest : public SerialLinkTest {
  protected:
    LinkOverSerialPortTest() {
        terminal.OnText([this](const std::string& text) {
            if (onCommand) onCommand(text);
        });
    }

    PseudoTerminal& terminal = static_cast<PseudoTerminalLine&>(*line).terminal;
    std::function<void(const std::string&)> onCommand;
};

TEST_F(LinkOverSerialPortTest, HandshakeModelAndDirectory) {
    onCommand = [&](const std::string& command) {
        if (command == "B") terminal.Write("RDY\r\n");
        if (command == "W") terminal.Write("\r\nDAVO-E 2.05\r\n");
        if (command == "d") terminal.Write("a directory\r\nDONE");
    };
    std::string model;
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "DAVO-E 2.05");
    EXPECT_EQ(link.SendCommandAwaitDone("d", "\r\nDONE"), "a directory\r\nDONE");
}

TEST_F(LinkOverSerialPortTest, AWaitUsesNoProcessor) {
    onCommand = [&](const std::string&) {
        QTimer::singleShot(1500, qApp, [&] { terminal.Write("DAVO\r\nDONE"); });
    };
    for (const bool done : {false, true}) {
        const ProcessorShare share;
        EXPECT_EQ(done ? link.SendCommandAwaitDone("d", "") : link.SendCommand("W", "DONE"),
                  "DAVO\r\nDONE");
        EXPECT_LT(share.Now(), kMostOfACore);
    }
}

TEST_F(LinkOverSerialPortTest, AnUnansweredHandshakeLastsThreeSecondsAndTheClockTicks) {
    const EventLoopPasses ticks;
    const ProcessorShare share;
    const auto start = steady_clock::now();
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    const auto lasted = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    const double used = share.Now();
    std::cout << "handshake unanswered: " << lasted.count() << " ms, processor " << used
              << " of a core\n";
    EXPECT_GE(lasted, milliseconds(3000));
    EXPECT_GT(ticks.Count(), kHandshakePolls / 2);
    EXPECT_LE(ticks.Count(), kHandshakePolls);
    EXPECT_LT(used, kMostOfACore);
}

TEST_F(LinkOverSerialPortTest, TheHandshakeTakesTheReplyTheMomentItIsThere) {
    onCommand = [&](const std::string&) {
        QTimer::singleShot(500, qApp, [&] { terminal.Write("RDY\r\n"); });
    };
    const EventLoopPasses polls;
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "RDY\r\n");
    EXPECT_LT(polls.Count(), kHandshakePolls / 3);
}

TEST_F(LinkOverSerialPortTest, AnExchangeStartedByWaitingTextIsAnswered) {
    onCommand = [&](const std::string& command) { terminal.Write(command + "-reply\r\n"); };
    std::string reply;
    link.OnTextWaiting = [&] {
        link.Input();
        reply = link.SendCommand("W", "\r\n");
    };
    terminal.Write("prompt\r\n");
    EXPECT_TRUE(RunEventsUntil([&] { return !reply.empty(); }));
    EXPECT_EQ(reply, "W-reply\r\n");
}

TEST_F(LinkOverSerialPortTest, AMessageInsideAReceiveEventDoesNotStopReception) {
    prompts.onMessage = [&](const QString&) {
        terminal.Write("while the box is open ");
        RunEvents(milliseconds(50));
        terminal.Write("DONE");
    };
    onCommand = [&](const std::string&) { port->OnComm(CommEvent::Overrun); };
    EXPECT_EQ(link.SendCommandAwaitDone("d", ""), "while the box is open DONE");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Data Lost"_s));
}

class UnplugTest : public LinkOverSerialPortTest {
  protected:
    void ExpectLostAndBack() {
        EXPECT_FALSE(state.portOpen);
        EXPECT_FALSE(port->PortOpen());
        RunEvents(milliseconds(20));
        EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
        EXPECT_EQ(link.SendCommand("W", "\r\n"), "");

        terminal.PlugIn();
        EXPECT_TRUE(link.OpenComPort(1));
        terminal.OnText([this](const std::string&) { terminal.Write("DAVO\r\n"); });
        EXPECT_EQ(link.SendCommand("W", "\r\n"), "DAVO\r\n");
        EXPECT_EQ(prompts.shown.size(), 1U);
    }
    void UnplugSoon() {
        QTimer::singleShot(50, qApp, [this] { terminal.Unplug(); });
    }
};

TEST_F(UnplugTest, InTheHandshake) {
    UnplugSoon();
    const EventLoopPasses polls;
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    EXPECT_LT(polls.Count(), kHandshakePolls / 2);
    ExpectLostAndBack();
}

TEST_F(UnplugTest, InAWaitForText) {
    UnplugSoon();
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    ExpectLostAndBack();
}

TEST_F(UnplugTest, InTheWaitForDone) {
    UnplugSoon();
    terminal.Write("half");
    EXPECT_EQ(link.SendCommandAwaitDone("d", ""), "");
    ExpectLostAndBack();
}

TEST_F(UnplugTest, BetweenExchanges) {
    terminal.Unplug();
    EXPECT_TRUE(RunEventsUntil([&] { return !state.portOpen; }));
    ExpectLostAndBack();
}

TEST_F(UnplugTest, NoticedByTheNextCommandOnly) {
    terminal.Unplug();
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    ExpectLostAndBack();
}

}  // namespace
}  // namespace davo::test
