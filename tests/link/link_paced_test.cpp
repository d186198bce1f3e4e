// SPDX-License-Identifier: GPL-3.0-or-later

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include "link/link.h"
#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{60};

class LinkPacedTest : public ::testing::Test, public ScriptedLine {
  protected:
    LinkPacedTest() { link.OpenComPort(1); }
    std::size_t Send(const std::string& characters, const std::string& echoes) {
        return link.SendPaced(characters, echoes, kPatience, [this](std::size_t done, bool echoed) {
            steps.push_back(done);
            if (!echoed) missing.push_back(done);
        });
    }

    std::vector<std::size_t> steps;
    std::vector<std::size_t> missing;  // echoes
    QObject context;
};

TEST_F(LinkPacedTest, EachCharacterWaitsForTheEchoOfTheOneBefore) {
    std::vector<std::size_t> doneBefore;
    for (const char* c : {"a", "B", "X"}) {
        port.OnOutputDo(c, [this, c, &doneBefore] {
            doneBefore.push_back(steps.size());
            port.Deliver(c, milliseconds(5));
        });
    }
    EXPECT_EQ(Send("aBX", "aBX"), 3U);
    EXPECT_THAT(port.sent, ElementsAre("a", "B", "X"));
    EXPECT_THAT(doneBefore, ElementsAre(0U, 1U, 2U));
    EXPECT_THAT(steps, ElementsAre(1U, 2U, 3U));
    EXPECT_EQ(port.inputs, 3) << "nothing is read before an echo has arrived";
    EXPECT_FALSE(link.CurrentWait());
    EXPECT_FALSE(link.LastWaitEnded());
}

TEST_F(LinkPacedTest, AMissingOrWrongEchoTakesThePatienceAndTheNextIsSent) {
    port.OnOutput("a", "a");
    port.OnOutput("b", "");
    port.OnOutput("c", "?");
    port.OnOutput("d", " ");
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(Send("abcd", "abc "), 4U);
    EXPECT_GE(elapsed.elapsed(), 2 * kPatience.count());
    EXPECT_THAT(port.sent, ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(missing, ElementsAre(2U, 3U));
}

TEST_F(LinkPacedTest, AnEchoInSeveralPiecesAmongNoiseCounts) {
    port.OnOutputDo("a", [this] {
        port.Deliver("x");
        port.Deliver("ya", milliseconds(10));
    });
    EXPECT_EQ(Send("a", "a"), 1U);
    EXPECT_THAT(missing, IsEmpty()) << "it did not take the patience";
}

TEST_F(LinkPacedTest, GoesOnInsideTheEventLoopOfAQuestion) {
    port.Always("a", "a");
    QEventLoop question;
    std::size_t sentBehindIt = 0;
    const std::string characters(50, 'a');
    const std::size_t done =
        link.SendPaced(characters, characters, kPatience, [&](std::size_t at, bool) {
            if (at == 1) {
                QTimer::singleShot(0, &question, [&] {
                    QTimer::singleShot(300, &question, &QEventLoop::quit);
                    question.exec();
                    sentBehindIt = port.sent.size();
                });
            }
        });
    EXPECT_EQ(done, 50U);
    EXPECT_EQ(sentBehindIt, 50U);
}

TEST_F(LinkPacedTest, EndWaitEndsIt) {
    port.Always("a", "a");
    const std::string characters(9, 'a');
    EXPECT_EQ(link.SendPaced(characters, characters, kPatience,
                             [this](std::size_t at, bool) {
                                 if (at == 4) link.EndWait();
                             }),
              4U);
    EXPECT_TRUE(link.LastWaitEnded());
    EXPECT_EQ(port.sent.size(), 4U) << "the next one is kept back";
    EXPECT_EQ(link.SendCommand("a", "a"), "a") << "the link is free again";
}

TEST_F(LinkPacedTest, UnpluggingEndsItWithTheMessage) {
    port.OnOutput("a", "a");
    port.OnOutputDo("b", [this] { port.Unplug(); });
    EXPECT_EQ(Send("abc", "abc"), 1U);
    EXPECT_TRUE(link.LastWaitEnded());
    EXPECT_FALSE(state.portOpen);
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
    EXPECT_EQ(Send("abc", "abc"), 0U) << "nothing is sent on a closed port";
}

TEST_F(LinkPacedTest, IsRefusedInsideAWait) {
    port.OnOutputDo("W", [this] {
        QTimer::singleShot(0, &context, [this] {
            EXPECT_EQ(Send("a", "a"), 0U);
            port.Deliver("\r\n");
        });
    });
    link.SendCommand("W", "\r\n");
    EXPECT_THAT(port.sent, ElementsAre("W"));
}

TEST_F(LinkPacedTest, ACommandWithALimitGivesUpWhenNothingComes) {
    port.OnOutputDo("Fh", [this] {
        port.Deliver("ERA", milliseconds(40));
        port.Deliver("SI", milliseconds(80));
    });
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(link.SendCommand("Fh", "ERASING", kPatience), "ERASI");
    EXPECT_GE(elapsed.elapsed(), 130);
    EXPECT_FALSE(link.LastWaitEnded());
    port.OnOutput("Fh", "ERASING...");
    EXPECT_EQ(link.SendCommand("Fh", "ERASING", kPatience), "ERASING...");
    EXPECT_THAT(port.sent, ElementsAre("Fh", "Fh"));
}

}  // namespace
}  // namespace davo::test
