// SPDX-License-Identifier: GPL-3.0-or-later
// Reading on without a command, and the growth of a reply.

#include <QCoreApplication>
#include <QTimer>

#include "link/link.h"
#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

class ReadOnTest : public ::testing::Test, public ScriptedLine {
  protected:
    ReadOnTest() {
        link.OpenComPort(1);
        link.OnReplyGrows = [this](std::size_t received) { grown.push_back(received); };
    }

    std::vector<std::size_t> grown;
};

TEST_F(ReadOnTest, GathersUntilTheLineIsQuiet) {
    port.Deliver("one ");
    port.Deliver("two", milliseconds(20));
    EXPECT_EQ(link.ReadOn({}, milliseconds(80)), "one two");
    EXPECT_TRUE(port.sent.empty());
    EXPECT_FALSE(link.LastWaitEnded());
    EXPECT_FALSE(link.CurrentWait());
}

TEST_F(ReadOnTest, EndsAtTheExpectedReply) {
    port.Deliver("one DO");
    port.Deliver("NE", milliseconds(5));
    port.Deliver("later", milliseconds(300));
    EXPECT_EQ(link.ReadOn("DONE", milliseconds(5000)), "one DONE");
}

TEST_F(ReadOnTest, TakesWhatWaitsAlready) {
    port.waiting = "old";
    EXPECT_EQ(link.ReadOn({}, milliseconds(10)), "old");
    EXPECT_EQ(link.ReadOn({}, milliseconds(10)), "");
}

TEST_F(ReadOnTest, IsEmptyWhenItIsEnded) {
    port.Deliver("one");
    QTimer::singleShot(5, qApp, [&] { link.EndWait(); });
    EXPECT_EQ(link.ReadOn({}, milliseconds(5000)), "");
    EXPECT_TRUE(link.LastWaitEnded());
}

// Packets of adapters, which are further apart than the characters on the line.
TEST_F(ReadOnTest, ClearLineTakesTheRestOfAReplyThatWasLeft) {
    QTimer::singleShot(5, qApp, [&] { link.EndWait(); });
    EXPECT_EQ(link.ReadOn({}, milliseconds(5000)), "");
    port.waiting = "the ";
    port.Deliver("rest ", milliseconds(100));
    port.Deliver("DONE", milliseconds(200));
    link.ClearLine();
    EXPECT_EQ(link.ReadOn({}, milliseconds(400)), "");
}

TEST_F(ReadOnTest, ClearLineDoesNotWaitLongForNothing) {
    port.Deliver("answer", milliseconds(1000));
    link.ClearLine();
    EXPECT_EQ(link.ReadOn("answer", milliseconds(5000)), "answer");
}

TEST_F(ReadOnTest, IsEmptyWhenThePortIsLostOrClosed) {
    port.Unplug(milliseconds(5));
    EXPECT_EQ(link.ReadOn({}, milliseconds(5000)), "");
    EXPECT_TRUE(link.LastWaitEnded());
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
    EXPECT_EQ(link.ReadOn({}, milliseconds(5000)), "");
    EXPECT_FALSE(link.LastWaitEnded());
}

TEST_F(ReadOnTest, IsRefusedInsideAWait) {
    port.OnOutput("W", "model\r\n", milliseconds(30));
    std::string inner = "not called";
    QTimer::singleShot(0, qApp, [&] { inner = link.ReadOn({}, milliseconds(5000)); });
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "model\r\n");
    EXPECT_EQ(inner, "");
}

TEST_F(ReadOnTest, TheGrowthOfAReplyIsTold) {
    port.OnOutputDo("R", [&] {
        port.Deliver("12345");
        port.Deliver("678\r\n", milliseconds(20));
    });
    EXPECT_EQ(link.SendCommand("R", "\r\n"), "12345678\r\n");
    EXPECT_THAT(grown, ElementsAre(5, 10));
}

TEST_F(ReadOnTest, TheGrowthOfADirectoryIsTold) {
    port.OnOutputDo("d", [&] {
        port.Deliver("12345");
        port.Deliver("DONE", milliseconds(20));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", "DONE"), "12345DONE");
    EXPECT_THAT(grown, ElementsAre(5, 9));
}

}  // namespace
}  // namespace davo::test
