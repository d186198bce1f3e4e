// SPDX-License-Identifier: GPL-3.0-or-later

#include <QCoreApplication>
#include <QDeadlineTimer>

#include "link/link.h"
#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

class PointerState : public BusyPointer {
  public:
    void ShowBusyPointer() override { busy = true; }
    void RestoreMousePointer() override { busy = false; }
    bool busy = false;
};

class LinkLostTest : public ::testing::Test, public ScriptedLineOn<FakeSerialPort, PointerState> {
  protected:
    LinkLostTest() {
        link.OpenComPort(1);
        link.OnLost = [this] {
            ++lost;
            openAtLoss = state.portOpen;
            shownAtLoss = prompts.shown.size();
        };
        prompts.onMessage = [this](const QString&) { busyAtMessage = pointer.busy; };
    }

    void ExpectLostOnceAndReopened() {
        EXPECT_EQ(lost, 1);
        EXPECT_FALSE(openAtLoss);
        EXPECT_EQ(shownAtLoss, 0U);
        EXPECT_FALSE(busyAtMessage);
        EXPECT_FALSE(state.portOpen);
        EXPECT_TRUE(state.openFailed);
        EXPECT_FALSE(link.CurrentWait());
        EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
        EXPECT_EQ(link.SendCommand("W", "\r\n"), "");

        EXPECT_TRUE(link.OpenComPort(1));
        port.OnOutput("W", "DAVO\r\n");
        EXPECT_EQ(link.SendCommand("W", "\r\n"), "DAVO\r\n");
        EXPECT_EQ(prompts.shown.size(), 1U);
    }

    int lost = 0;
    bool openAtLoss = true;
    bool busyAtMessage = true;
    std::size_t shownAtLoss = 99;
};

TEST_F(LinkLostTest, InTheHandshake) {
    port.OnOutputDo("B", [this] { port.Unplug(); });
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    EXPECT_LT(port.inputs, 30001);
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, InAWaitForText) {
    port.OnOutputDo("W", [this] {
        port.Deliver("half a rep");
        port.Unplug(milliseconds(5));
    });
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_TRUE(link.LastWaitEnded());
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, InTheWaitForDone) {
    port.OnOutputDo("d", [this] {
        port.Deliver("half a directory");
        port.Unplug(milliseconds(5));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", "\r\nDONE"), "");
    EXPECT_EQ(port.rThreshold, 0);
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, BetweenExchanges) {
    port.Unplug();
    QCoreApplication::processEvents();
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, InTheModelQueryOneMessageIsEnough) {
    std::string model;
    port.OnOutputDo("B", [this] { port.Unplug(); });
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, AfterTheHandshakeOfTheModelQuery) {
    std::string model;
    port.OnOutput("B", "RDY\r\n").OnOutputDo("W", [this] {
        port.Deliver("\r\nDAV");
        port.Unplug(milliseconds(5));
    });
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "");
    ExpectLostOnceAndReopened();
}

TEST_F(LinkLostTest, ItIsSaidAfterWhatIsOpen) {
    struct Waiting : test::FakePrompts {
        void MessageAfter(const QString& text) override { after.push_back(text); }
        std::vector<QString> after;
    } waiting;
    test::ScriptedLink line(waiting);
    std::vector<bool> changes;
    line.link.OnPortChanged = [&] { changes.push_back(line.state.portOpen); };
    ASSERT_TRUE(line.link.OpenComPort(1));
    line.port.Raise(CommEvent::Overrun);
    line.port.Raise(CommEvent::ReceiveOverflow);
    line.port.Unplug(milliseconds(5));
    const QDeadlineTimer patience(10000);
    while (waiting.after.size() < 3 && !patience.hasExpired())
        QCoreApplication::processEvents();
    EXPECT_THAT(waiting.after,
                ElementsAre(u"Data Lost"_s, u"Receive buffer overflow"_s, Link::LostMessage()));
    EXPECT_THAT(waiting.shown, IsEmpty());
    EXPECT_THAT(changes, ElementsAre(true, false));
    line.link.OpenComPort(1);
    line.link.CloseComPort();
    EXPECT_THAT(changes, ElementsAre(true, false, true, false));
}

TEST_F(LinkLostTest, TheMessageSaysWhatToDo) {
    const QString message = Link::LostMessage();
    EXPECT_TRUE(message.contains(u"connection to the DAVO was lost"_s));
    EXPECT_TRUE(message.contains(u"cable"_s));
    EXPECT_TRUE(message.contains(u"adapter"_s));
    EXPECT_TRUE(message.contains(u"try again"_s));
    EXPECT_TRUE(message.contains(u"kept"_s));
}

TEST_F(LinkLostTest, EachLossIsSaid) {
    for (std::size_t time = 1; time <= 3; ++time) {
        port.Unplug();
        QCoreApplication::processEvents();
        EXPECT_EQ(prompts.shown.size(), time);
        EXPECT_TRUE(link.OpenComPort(1));
    }
}

}  // namespace
}  // namespace davo::test
