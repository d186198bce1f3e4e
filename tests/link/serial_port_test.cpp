// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/serial_port.h"

#include <chrono>
#include <string>
#include <vector>

#include "tests/link/serial_port_rig.h"

// What every platform's serial port does.
namespace davo::test {
namespace {

TEST_F(SerialPortTest, EveryByteGoesBothWaysUnchanged) {
    Open();
    port->Output(EveryByte());
    EXPECT_EQ(line->Read(256), EveryByte()) << "Output must not wait for the event loop";
    line->Write(EveryByte());
    EXPECT_EQ(line->InputOf(*port, 256), EveryByte()) << "Input must not need the event loop";
    EXPECT_EQ(port->Input(), "");
}

TEST_F(SerialPortTest, TextIsAnnouncedFromTheEventLoopOnly) {
    Open();
    int announced = 0;
    int events = 0;
    port->OnTextWaiting = [&] { ++announced; };
    port->OnComm = [&](CommEvent) { ++events; };
    line->Write("abc");
    EXPECT_TRUE(WaitForText());
    EXPECT_EQ(announced, 0);
    EXPECT_TRUE(RunEventsUntil([&] { return announced > 0; }))
        << "text that a wait has taken in must be announced still";
    EXPECT_EQ(events, 0);
    EXPECT_EQ(port->Input(), "abc");
}

TEST_F(SerialPortTest, ReceiveEventsComeWhileTheThresholdIsOne) {
    Open();
    std::string got;
    std::vector<CommEvent> events;
    port->OnComm = [&](CommEvent event) {
        events.push_back(event);
        got += port->Input();
    };
    line->Write("before");
    RunEvents(milliseconds(50));
    EXPECT_TRUE(events.empty());

    port->SetRThreshold(1);
    EXPECT_TRUE(RunEventsUntil([&] { return got == "before"; })) << "text that waited already";
    line->Write(" after");
    EXPECT_TRUE(RunEventsUntil([&] { return got == "before after"; }));

    port->SetRThreshold(0);
    const std::size_t count = events.size();
    line->Write("silent");
    RunEvents(milliseconds(50));
    EXPECT_EQ(events.size(), count);
    EXPECT_THAT(events, testing::Each(CommEvent::Received));
}

TEST_F(SerialPortTest, AQuietLineUsesNoProcessor) {
    Open();
    const auto start = steady_clock::now();
    const auto used = ProcessorTime();
    RunEvents(milliseconds(1000));
    EXPECT_LT(ProcessorTime() - used, Since(start) / 2) << "what spins takes all of it";
}

TEST_F(SerialPortTest, AClosedPortIsSilent) {
    EXPECT_FALSE(port->PortOpen());
    port->Output("B");
    port->SetRThreshold(1);
    port->SetRThreshold(0);
    EXPECT_EQ(port->Input(), "");
    EXPECT_FALSE(WaitForText());
    port->SetPortOpen(false);
    EXPECT_EQ(line->Read(0), "");
}

TEST_F(SerialPortTest, APortThatIsNotThereIs8002) {
    devices.device.clear();
    EXPECT_EQ(OpenError(*port), ErrorNumber::InvalidPortNumber);
    devices.device = line->MissingDevice();
    EXPECT_EQ(OpenError(*port), ErrorNumber::InvalidPortNumber);
    devices.device = line->Device();
    Open();
    EXPECT_TRUE(port->PortOpen());
}

TEST_F(SerialPortTest, TheLastOutputLeavesBeforeThePortCloses) {
    Open();
    port->Output("X");
    port->SetPortOpen(false);
    EXPECT_EQ(line->Read(1), "X");
}

TEST_F(SerialPortTest, ReopenedItCarriesOn) {
    for (int i = 0; i < 3; ++i) {
        Open();
        line->Write("again");
        EXPECT_TRUE(WaitForText());
        EXPECT_EQ(line->InputOf(*port, 5), "again");
        port->SetPortOpen(false);
    }
}

TEST_F(SerialPortTest, ALossIsToldOnceFromTheEventLoopAndThePortIsClosed) {
    Open();
    line->Unplug();
    EXPECT_FALSE(WaitForText());
    port->Output("B");
    EXPECT_EQ(port->Input(), "");
    EXPECT_EQ(lost, 0);
    EXPECT_TRUE(RunEventsUntil([&] { return lost > 0; }));
    const auto start = steady_clock::now();
    const auto used = ProcessorTime();
    RunEvents(milliseconds(500));
    EXPECT_EQ(lost, 1);
    EXPECT_FALSE(reason.isEmpty());
    EXPECT_LT(ProcessorTime() - used, Since(start) / 2);

    line->PlugIn();
    Open();
    line->Write("back");
    EXPECT_TRUE(WaitForText());
    EXPECT_EQ(line->InputOf(*port, 4), "back");
}

TEST_F(SerialPortTest, AFailedWriteIsALoss) {
    Open();
    line->Unplug();
    port->Output("T");
    EXPECT_TRUE(RunEventsUntil([&] { return lost > 0; }));
    EXPECT_FALSE(port->PortOpen());
    line->PlugIn();
}

}  // namespace
}  // namespace davo::test
