// SPDX-License-Identifier: GPL-3.0-or-later
// The instrument in the background of a test, spoken to over its device.

#include "instrument/instrument.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

#include "common/run_time_error.h"
#include "instrument/command_line.h"
#include "tests/instrument/device_client.h"
#include "tests/instrument/image_fields.h"
#include "tests/support/processor_share.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

class Device : public testing::Test {
  protected:
    InstrumentOptions Quick() const {
        InstrumentOptions options;
        options.linkPath = Path("davo");
        options.paced = false;
        options.conversation.pauseScale = kQuickScale;
        options.conversation.seed = seed_;
        return options;
    }
    InstrumentOptions QuickWith(const char* fault) const {
        InstrumentOptions options = Quick();
        options.faults = {ParseFault(fault).value()};
        return options;
    }
    std::string Path(const char* name) const { return folder_.Path(name).toStdString(); }

  private:
    TemporaryFolder folder_;
    std::uint64_t seed_ = RandomSeed(51);
};

// The whole of a full shot; ends with DONE.
std::string RunShot(DeviceClient& pc) {
    pc.Send("T");
    std::string said = pc.Until("SWITCH\r\n");
    pc.Send("\r");
    said += pc.Until("1000V)\r\n");
    said += pc.Until("V=");
    pc.Send("\r");
    said += pc.Until("10:1)\r\n");
    said += pc.Until("V=");
    pc.Send("\r");
    return said + pc.Until("DONE");
}

TEST_F(Device, AnswersAndMayBeClosedAndOpenedAgain) {
    const InstrumentThread instrument(Quick());
    for (int i = 0; i < 3; ++i) {
        DeviceClient pc(Path("davo"));
        pc.Send("B");
        EXPECT_EQ(pc.Until("\r\n"), "RDY\r\n");
    }
}

TEST_F(Device, IsRaw) {
    InstrumentThread instrument(Quick());
    DeviceClient pc(Path("davo"));
    pc.Send("BB");
    EXPECT_EQ(pc.Until("RDY\r\nRDY\r\n"), "RDY\r\nRDY\r\n") << "no echo, no translation";
    pc.Send("Fh");
    pc.Until("H:\r\n");
    for (const char c : std::string("\x03\x04\x0A\x0D\x11\x13\x1A\x7F\x80\xFE", 10)) {
        pc.Send(std::string(1, c));
        EXPECT_EQ(pc.Until(std::string(1, c)), std::string(1, c));
    }
}

TEST_F(Device, AShotOverTheDeviceIsTheShotThatWasMeasured) {
    InstrumentThread instrument(Quick());
    DeviceClient pc(Path("davo"));
    const std::string said = RunShot(pc);
    ASSERT_EQ(instrument->Shots().size(), 1U);
    ExpectImage(DigitsOf(said), instrument->Shots()[0].image);
    EXPECT_THAT(said, HasSubstr("RATIO=" + instrument->Shots()[0].ratioText + "\r\n"));
    EXPECT_EQ(instrument->AllFromPc(), "T\r\r\r");
    EXPECT_EQ(instrument->AllToPc().substr(0, said.size()), said);
}

TEST_F(Device, APacedShotCompletesToo) {
    InstrumentOptions options = Quick();
    options.paced = true;
    InstrumentThread instrument(options);
    DeviceClient pc(Path("davo"));
    const std::string said = RunShot(pc);
    ASSERT_EQ(instrument->Shots().size(), 1U);
    ExpectImage(DigitsOf(said), instrument->Shots()[0].image);
}

TEST_F(Device, HeaderSlotsMakeTheRoundTrip) {
    InstrumentThread instrument(Quick());
    DeviceClient pc(Path("davo"));
    std::string slots(1600, '\xFF');
    for (std::size_t i = 160; i < 480; ++i)
        slots[i] = static_cast<char>('A' + i % 26);
    pc.Send("Fh");
    pc.Until("ERASING");
    pc.Until("H:\r\n");
    for (const char c : slots) {
        pc.Send(std::string(1, c));
        const std::string echo(1, c == '\xFF' ? ' ' : c);
        ASSERT_EQ(pc.Until(echo), echo);
    }
    EXPECT_EQ(instrument->HeaderMemory(), slots);
    pc.Send("Fr");
    EXPECT_EQ(pc.Until("\r\n"), slots + "\r\n");
}

TEST_F(Device, ABulkyReplyArrivesWholeWithoutPacing) {
    InstrumentOptions options = Quick();
    options.conversation.memory = MakeMemory(135, 1);
    InstrumentThread instrument(options);
    DeviceClient pc(Path("davo"));
    pc.Send("d");
    std::this_thread::sleep_for(milliseconds(50));  // more than the terminal holds is waiting now
    EXPECT_EQ(pc.Until("DONE"), DirectoryReply(options.conversation.memory));
}

// The bound is the line's; how much longer it takes depends on how busy the machine is.
TEST_F(Device, IsPacedLikeTheLine) {
    InstrumentOptions options = Quick();
    options.paced = true;
    InstrumentThread instrument(options);
    DeviceClient pc(Path("davo"));
    const auto begin = steady_clock::now();
    pc.Send("Fr");
    EXPECT_EQ(pc.Until("\r\n").size(), 1602U);
    const double elapsed = std::chrono::duration<double>(steady_clock::now() - begin).count();
    const double line = 1604 / kBytesPerSecond;  // the command's two characters count as well
    std::cout << "took " << elapsed << " s, the line alone " << line << " s\n";
    EXPECT_GE(elapsed, line * 0.98);
}

TEST_F(Device, TakesFromThePcAtLineSpeedToo) {
    InstrumentOptions options = Quick();
    options.paced = true;
    InstrumentThread instrument(options);
    DeviceClient pc(Path("davo"));
    const auto begin = steady_clock::now();
    pc.Send(std::string(959, ' ') + "B");  // half a second on the line
    EXPECT_EQ(pc.Until("RDY\r\n"), "RDY\r\n");
    const double elapsed = std::chrono::duration<double>(steady_clock::now() - begin).count();
    std::cout << "took " << elapsed << " s, the line alone 0.5 s\n";
    EXPECT_GE(elapsed, 0.5 * 0.98);
}

TEST_F(Device, ASlowLineTakesItsFactor) {
    InstrumentThread instrument(QuickWith("slow:20"));
    DeviceClient pc(Path("davo"));
    const auto begin = steady_clock::now();
    pc.Send("W");
    EXPECT_EQ(pc.Until("3.15\r\n"), "\r\nDAVO-E R3.15\r\n");
    const double elapsed = std::chrono::duration<double>(steady_clock::now() - begin).count();
    EXPECT_GE(elapsed, 16 * 20 / kBytesPerSecond * 0.98);
}

TEST_F(Device, SleepsWhileNothingIsToDo) {
    InstrumentThread instrument(Quick());
    DeviceClient pc(Path("davo"));
    pc.Send("B");
    pc.Until("RDY\r\n");
    const ProcessorShare share;
    std::this_thread::sleep_for(milliseconds(400));
    EXPECT_LT(share.Now(), kMostOfACore);
}

TEST_F(Device, Silent) {
    InstrumentThread instrument(QuickWith("silent"));
    DeviceClient pc(Path("davo"));
    pc.Send("B");
    EXPECT_EQ(pc.During(milliseconds(200)), "");
    EXPECT_EQ(instrument->AllFromPc(), "B");
    instrument->SetFaults({});
    pc.Send("B");
    EXPECT_EQ(pc.Until("\r\n"), "RDY\r\n");
}

TEST_F(Device, UnpluggedAfterSoManyBytesAndPluggedInAgain) {
    InstrumentThread instrument(QuickWith("unplugged:7"));
    {
        DeviceClient pc(Path("davo"));
        pc.Send("BB");
        EXPECT_EQ(pc.Until("RDY\r\nRD").substr(0, 7), "RDY\r\nRD");
        EXPECT_TRUE(pc.HungUp());
    }
    EXPECT_FALSE(instrument->PluggedIn());
    EXPECT_FALSE(LinkExists(Path("davo")));
    instrument->PlugIn();
    DeviceClient pc(Path("davo"));
    pc.Send("B");
    EXPECT_EQ(pc.Until("\r\n"), "RDY\r\n");
}

TEST_F(Device, UnpluggedByHand) {
    InstrumentThread instrument(Quick());
    const DeviceClient pc(Path("davo"));
    instrument->Unplug();
    EXPECT_TRUE(pc.HungUp());
    EXPECT_FALSE(LinkExists(Path("davo")));
}

TEST_F(Device, TheLinkIsGoneAfterwards) {
    { const InstrumentThread instrument(Quick()); }
    EXPECT_FALSE(LinkExists(Path("davo")));
}

TEST_F(Device, AFileInTheLinksPlaceIsNotReplaced) {
    std::ofstream(Path("davo")) << "precious";
    EXPECT_EQ(NumberThrownBy([&] { const InstrumentThread instrument(Quick()); }),
              ErrorNumber::PathFileAccess);
    EXPECT_TRUE(LinkExists(Path("davo")));
}

TEST_F(Device, LogsEveryByteWithDirectionAndTime) {
    InstrumentOptions options = Quick();
    options.logPath = Path("log");
    {
        InstrumentThread instrument(options);
        DeviceClient pc(Path("davo"));
        pc.Send("W");
        pc.Until("3.15\r\n");
    }
    std::ifstream file(Path("log"));
    std::string line;
    std::string toPc;
    std::string fromPc;
    double before = 0;
    while (std::getline(file, line)) {
        std::istringstream fields(line.substr(0, line.find("  ")));
        double time = -1;
        std::string direction;
        std::string hex;
        fields >> time >> direction;
        EXPECT_GE(time, before);
        before = time;
        while (fields >> hex) {
            (direction == ">" ? toPc : fromPc) += static_cast<char>(std::stoi(hex, nullptr, 16));
        }
    }
    EXPECT_EQ(fromPc, "W");
    EXPECT_EQ(toPc, "\r\nDAVO-E R3.15\r\n");
}

TEST_F(Device, ALogThatCannotBeWrittenIsAnError) {
    InstrumentOptions options = Quick();
    options.logPath = Path("missing/log");
    EXPECT_THROW(InstrumentThread{options}, RunTimeError);
}

}  // namespace
}  // namespace davo::test
