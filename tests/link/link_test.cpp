// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/link.h"

#include <QCoreApplication>
#include <QTimer>
#include <stdexcept>

#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

class CountingPointer : public BusyPointer {
  public:
    void ShowBusyPointer() override { calls += "busy "; }
    void RestoreMousePointer() override { calls += "restored "; }
    std::string calls;
};

class ClosedLinkTest : public ::testing::Test,
                       public ScriptedLineOn<FakeSerialPort, CountingPointer> {};

class LinkTest : public ClosedLinkTest {
    void SetUp() override { ASSERT_TRUE(link.OpenComPort(1)); }
};

TEST_F(ClosedLinkTest, OpenComPortSetsThePropertiesInTheirOrder) {
    EXPECT_TRUE(link.OpenComPort(2));
    EXPECT_TRUE(state.portOpen);
    EXPECT_THAT(port.properties, ElementsAre("CommPort=2", "Settings=19200,N,8,1", "InputLen=0",
                                             "InBufferSize=1024", "PortOpen=True"));
    EXPECT_TRUE(port.sent.empty());
    EXPECT_EQ(pointer.calls, "");
}

TEST_F(LinkTest, OpenComPortOnAnOpenPortClosesAndReopensItOnAnotherNumber) {
    port.properties.clear();
    EXPECT_TRUE(link.OpenComPort(3));
    EXPECT_THAT(port.properties, ElementsAre("PortOpen=False", "CommPort=3", "Settings=19200,N,8,1",
                                             "InputLen=0", "InBufferSize=1024", "PortOpen=True"));
    EXPECT_TRUE(port.open);
}

TEST_F(ClosedLinkTest, AFailedOpenIsFalseWithoutAMessage) {
    for (const auto error : {ErrorNumber::InvalidPortNumber, ErrorNumber::PortAlreadyOpen}) {
        port.failOpen = error;
        EXPECT_FALSE(link.OpenComPort(1));
        EXPECT_FALSE(state.portOpen);
        EXPECT_TRUE(state.openFailed);
        EXPECT_EQ(state.openError, RunTimeError(error).what());
    }
    EXPECT_TRUE(prompts.shown.empty());
    port.failOpen.reset();
    EXPECT_TRUE(link.OpenComPort(1));
    EXPECT_EQ(state.openError, "");
    EXPECT_FALSE(state.openFailed);
    link.CloseComPort();
    EXPECT_FALSE(state.openFailed) << "closed in good order";
}

TEST_F(LinkTest, AnOpenPortThatDoesNotReopenIsClosed) {
    port.failOpen = ErrorNumber::PortAlreadyOpen;
    EXPECT_FALSE(link.OpenComPort(1));
    EXPECT_FALSE(state.portOpen);
    EXPECT_FALSE(port.open);
}

TEST_F(LinkTest, CloseComPort) {
    link.CloseComPort();
    EXPECT_FALSE(state.portOpen);
    EXPECT_FALSE(port.open);
}

TEST_F(ClosedLinkTest, OnAClosedPortEveryExchangeIsEmptyAndSilent) {
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_EQ(link.SendCommand("X", ""), "");
    EXPECT_EQ(link.SendCommandAwaitDone("d", "\r\nDONE"), "");
    link.Output("T");
    EXPECT_EQ(link.Input(), "");
    EXPECT_TRUE(port.sent.empty());
    EXPECT_EQ(pointer.calls, "");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(LinkTest, HandshakeAnswered) {
    port.OnOutput("B", "RDY\r\n");
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "RDY\r\n");
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_EQ(pointer.calls, "busy restored ");
    EXPECT_LT(port.inputs, 10);
}

TEST_F(LinkTest, HandshakeReturnsWhatStoodBeforeTheReplyToo) {
    port.OnOutputDo("B", [this] {
        port.Deliver("noise RD");
        port.Deliver("Y\r", milliseconds(1));
        port.Deliver("\nmore", milliseconds(2));
    });
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "noise RDY\r\nmore");
}

TEST_F(LinkTest, AnUnansweredHandshakeMakesExactly30001Polls) {
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "");
    EXPECT_EQ(port.inputs, 30001);
    EXPECT_EQ(port.waits, 30001);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(LinkTest, AHandshakeThatBringsOtherTextReturnsItAfterItsPolls) {
    port.OnOutput("B", "rdy\r\n");
    EXPECT_EQ(link.SendCommand("B", "RDY\r\n"), "rdy\r\n");
    EXPECT_EQ(port.inputs, 30001);
}

TEST_F(LinkTest, OtherCommandsWaitWithoutAPollLimit) {
    port.OnOutput("W", "DAVO-E R1.2\r\n", milliseconds(300));
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "DAVO-E R1.2\r\n");
    EXPECT_LT(port.inputs, 10) << "the wait must sleep, not poll";
    EXPECT_EQ(pointer.calls, "busy restored ");
}

TEST_F(LinkTest, TheReplyIsGatheredPieceByPieceAndSearchedAcrossThem) {
    port.OnOutputDo("L", [this] {
        for (int i = 0; i < 4; ++i)
            port.Deliver(std::string(1, "abOK"[i]), milliseconds(i));
    });
    EXPECT_EQ(link.SendCommand("L", "OK"), "abOK");
}

TEST_F(LinkTest, TextAlreadyWaitingBelongsToTheReply) {
    port.waiting = "stale\r\n";
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "stale\r\n");
}

TEST_F(LinkTest, XReturnsAtOnce) {
    EXPECT_EQ(link.SendCommand("X", "\r\n"), "");
    EXPECT_EQ(link.SendCommandAwaitDone("X", "\r\n"), "");
    EXPECT_THAT(port.sent, ElementsAre("X", "X"));
    EXPECT_EQ(port.inputs, 0);
    EXPECT_EQ(pointer.calls, "busy restored busy restored ");
}

TEST_F(LinkTest, AwaitDoneGathersByReceiveEvents) {
    port.properties.clear();
    state.receiveBuffer = "old";
    port.OnOutputDo("d", [this] {
        port.Deliver("one ");
        port.Deliver("two\r\nDO", milliseconds(2));
        port.Deliver("NE\r\n", milliseconds(4));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", "never looked at"), "one two\r\nDONE\r\n");
    EXPECT_EQ(state.receiveBuffer, "one two\r\nDONE\r\n");
    EXPECT_EQ(state.receiveChunk, "NE\r\n");
    EXPECT_THAT(port.properties, ElementsAre("RThreshold=1", "RThreshold=0"));
    EXPECT_EQ(pointer.calls, "busy restored ");
}

TEST_F(LinkTest, AwaitDoneHasNoLimit) {
    port.OnOutput("d", "DONE", milliseconds(300));
    EXPECT_EQ(link.SendCommandAwaitDone("d", "\r\nDONE"), "DONE");
}

TEST_F(LinkTest, NoReceiveEventsOutsideAwaitDone) {
    port.Deliver("text");
    QCoreApplication::processEvents();
    EXPECT_EQ(state.receiveBuffer, "");
    EXPECT_EQ(link.Input(), "text");
}

TEST_F(LinkTest, ErrorEventsAreShownAndReceptionGoesOn) {
    std::string keptAtMessage;
    prompts.onMessage = [&](const QString&) { keptAtMessage = state.receiveBuffer; };
    port.OnOutputDo("d", [this] {
        port.Deliver("first ");
        port.Raise(CommEvent::Overrun, milliseconds(2));
        port.Raise(CommEvent::ReceiveOverflow, milliseconds(4));
        port.Deliver("DONE", milliseconds(6));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", ""), "first DONE");
    EXPECT_EQ(keptAtMessage, "first ");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Data Lost"_s, u"Receive buffer overflow"_s));
}

TEST_F(LinkTest, AMessageThatRunsEventsDoesNotBreakTheWait) {
    prompts.onMessage = [&](const QString&) {
        QEventLoop dialog;
        QTimer::singleShot(20, &dialog, &QEventLoop::quit);
        dialog.exec();
    };
    port.OnOutputDo("d", [this] {
        port.Raise(CommEvent::Overrun);
        port.Deliver("while the box is open ", milliseconds(2));
        port.Deliver("DONE", milliseconds(4));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", ""), "while the box is open DONE");
}

TEST_F(LinkTest, OtherEventsDoNothing) {
    port.OnOutputDo("d", [this] {
        for (const auto event :
             {CommEvent::Break, CommEvent::Framing, CommEvent::Parity, CommEvent::TransmitFull,
              CommEvent::DeviceControlBlock, CommEvent::Send, CommEvent::Cts, CommEvent::Dsr,
              CommEvent::Cd, CommEvent::Ring, CommEvent::EndOfFile}) {
            port.Raise(event);
        }
        port.Deliver("DONE", milliseconds(5));
    });
    EXPECT_EQ(link.SendCommandAwaitDone("d", ""), "DONE");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(LinkTest, ASecondExchangeInsideAWaitIsRefused) {
    std::vector<std::string> nested;
    QTimer::singleShot(5, qApp, [&] {
        nested.push_back(link.SendCommand("W", "\r\n"));
        nested.push_back(link.SendCommand("B", "RDY\r\n"));
        nested.push_back(link.SendCommandAwaitDone("d", "DONE"));
    });
    port.OnOutput("L", "OK\r\n", milliseconds(30));
    EXPECT_EQ(link.SendCommand("L", "\r\n"), "OK\r\n");
    EXPECT_THAT(nested, ElementsAre("", "", ""));
    EXPECT_THAT(port.sent, ElementsAre("L"));
    EXPECT_EQ(pointer.calls, "busy restored ");
}

TEST_F(LinkTest, OutputAndXInsideAWaitAreSent) {
    QTimer::singleShot(1, qApp, [&] { link.Output("\x1B"); });
    QTimer::singleShot(2, qApp, [&] { link.SendCommand("X", ""); });
    port.OnOutput("L", "OK\r\n", milliseconds(20));
    EXPECT_EQ(link.SendCommand("L", "\r\n"), "OK\r\n");
    EXPECT_THAT(port.sent, ElementsAre("L", "\x1B", "X"));
}

TEST_F(LinkTest, EndWaitEndsEachWaitWithAnEmptyReply) {
    port.Always("B", "partial").Always("W", "partial").Always("d", "partial");
    for (const char* command : {"B", "W", "d"}) {
        // The scripted port lets the handshake make all its polls within milliseconds.
        const int delay = command[0] == 'B' ? 0 : 20;
        QTimer::singleShot(delay, qApp, [&] { link.EndWait(); });
        EXPECT_EQ(command[0] == 'd' ? link.SendCommandAwaitDone(command, "")
                                    : link.SendCommand(command, "\r\n"),
                  "");
        EXPECT_TRUE(link.LastWaitEnded());
        EXPECT_EQ(port.rThreshold, 0);
    }
    EXPECT_TRUE(state.portOpen);
    EXPECT_EQ(pointer.calls, "busy restored busy restored busy restored ");
    port.OnOutput("W", "next\r\n");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "next\r\n");
    EXPECT_FALSE(link.LastWaitEnded());
}

TEST_F(LinkTest, EndWaitWithoutAWaitDoesNothing) {
    link.EndWait();
    port.OnOutput("W", "next\r\n");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "next\r\n");
}

TEST_F(LinkTest, ClosingThePortEndsTheWait) {
    QTimer::singleShot(5, qApp, [&] { link.CloseComPort(); });
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(LinkTest, LeavingTheProgramEndsTheWait) {
    std::string reply = "not yet";
    QTimer::singleShot(0, qApp, [&] { reply = link.SendCommand("W", "\r\n"); });
    QTimer::singleShot(10, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_EQ(reply, "");
    EXPECT_TRUE(link.LastWaitEnded());
}

TEST_F(LinkTest, TheWaitUnderWayIsTold) {
    std::vector<std::string> told;
    link.OnWaitChanged = [&] {
        const auto wait = link.CurrentWait();
        told.push_back(wait ? wait->command + ">" + wait->expectedReply : "none");
    };
    port.OnOutput("B", "RDY\r\n").OnOutput("d", "DONE");
    link.SendCommand("B", "RDY\r\n");
    link.SendCommandAwaitDone("d", "\r\nDONE");
    link.SendCommand("X", "");
    EXPECT_THAT(told, ElementsAre("B>RDY\r\n", "none", "d>\r\nDONE", "none"));
}

TEST_F(LinkTest, ARunningClockTicksInsideEveryWait) {
    constexpr int kTicks = 4;
    int ticks = 0;
    std::string reply;
    QTimer clock;
    // The reply comes with the last tick: without ticks the wait would not end.
    QObject::connect(&clock, &QTimer::timeout, [&] {
        if (++ticks == kTicks) port.Deliver(reply);
    });
    const auto startClock = [&](const std::string& text) {
        ticks = 0;
        reply = text;
        clock.start(2);
    };
    port.OnOutputDo("B", [&] { startClock("RDY\r\n"); });
    port.OnOutputDo("d", [&] { startClock("DONE"); });
    link.SendCommand("B", "RDY\r\n");
    EXPECT_GE(ticks, kTicks);
    link.SendCommandAwaitDone("d", "");
    EXPECT_GE(ticks, kTicks);
}

TEST_F(LinkTest, TextOutsideAnExchangeIsAnnouncedAndInsideItIsNot) {
    int announced = 0;
    link.OnTextWaiting = [&] { ++announced; };
    port.OnOutput("W", "reply\r\n");
    link.SendCommand("W", "\r\n");
    EXPECT_EQ(announced, 0);
    port.Deliver("prompt");
    QCoreApplication::processEvents();
    EXPECT_EQ(announced, 1);
}

TEST_F(LinkTest, ThePointerIsRestoredWhenSomethingThrows) {
    port.OnOutputDo("W", [] { throw std::runtime_error("line"); });
    EXPECT_THROW(link.SendCommand("W", "\r\n"), std::runtime_error);
    EXPECT_EQ(pointer.calls, "busy restored ");
    EXPECT_FALSE(link.CurrentWait());
    port.OnOutput("W", "next\r\n");
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "next\r\n");
}

// --- the model ---

class ModelTest : public LinkTest {
  protected:
    ModelTest() { port.OnOutput("B", "RDY\r\n"); }
    std::string model = "before";
};

TEST_F(ModelTest, TheModelStandsBetweenTwoLineEnds) {
    port.OnOutput("W", "\r\nDAVO-E 2.05\r\n");
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "DAVO-E 2.05");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(ModelTest, TheFirstLineEndMayComeAloneAsItDoesOnALine) {
    port.OnOutputDo("W", [this] {
        int at = 0;
        for (const char c : std::string("\r\nDAVO-E 2.05\r\n")) {
            port.Deliver(std::string(1, c), milliseconds(at++));
        }
    });
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "DAVO-E 2.05");
}

TEST_F(ModelTest, BlanksAndOtherTextAroundTheModelAreLeftOut) {
    port.OnOutput("W", "  hello DAVO R1\r\nrest  ");
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "DAVO R1");
}

TEST_F(ModelTest, WithoutDavoTheWholeTrimmedReplyIsKept) {
    port.OnOutput("W", "  MODEL davo 7\r\n  ");
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "MODEL davo 7\r\n");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(ModelTest, ALineEndBeforeTheModelOnlyIsNoModel) {
    port.OnOutput("W", "\r\nDAVO");
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "\r\nDAVO");
}

TEST_F(ModelTest, AHandshakeOfOtherTextCountsAsPresent) {
    port.steps.clear();
    port.OnOutput("B", "?").OnOutput("W", "DAVO\r\n");
    EXPECT_TRUE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "DAVO");
}

TEST_F(ModelTest, NoHandshakeShowsNotAvailable) {
    port.steps.clear();
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_EQ(model, "");
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_THAT(prompts.shown,
                ElementsAre(u"DAVO is not available\r\nor\r\nnot under computer control."_s));
}

TEST_F(ModelTest, AClosedPortShowsNotAvailable) {
    link.CloseComPort();
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_THAT(prompts.shown, ElementsAre(QLatin1String(kNotAvailableMessage)));
}

TEST_F(ModelTest, AnEndedHandshakeNeedsNoMessage) {
    port.steps.clear();
    QTimer::singleShot(0, qApp, [&] { link.EndWait(); });
    EXPECT_FALSE(link.ReadInstrumentModel(model));
    EXPECT_TRUE(prompts.shown.empty());
}

}  // namespace
}  // namespace davo::test
