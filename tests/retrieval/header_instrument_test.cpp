// SPDX-License-Identifier: GPL-3.0-or-later
#include <QElapsedTimer>
#include <QTimer>

#include "common/text.h"
#include "retrieval/header_upload.h"
#include "tests/retrieval/header_line.h"
#include "tests/support/random_seed.h"

namespace davo::test {

namespace {

using instrument::FaultKind;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the instrument says before the first echo: "RDY" and a line end, "ERASING...", "H:" and one.
constexpr double kBeforeEchoes = 5 + 10 + 4;

// Longer than any machine takes for an answer that comes, and than a test may wait for one that
// does not.
constexpr std::chrono::minutes kAmplePatience{10};
// For an echo that does not come.
constexpr milliseconds kLittlePatience{150};

// The uploads against the simulated instrument.
class HeaderInstrument : public ::testing::Test {
  protected:
    HeaderExchange MakeExchange() { return MakeExchange(line); }
    static HeaderExchange MakeExchange(HeaderLine& on, milliseconds echo = kAmplePatience) {
        return {on.link,
                on.prompts,
                [&on] { return on.Open(); },
                {echo, kAmplePatience, kAmplePatience}};
    }
    static HeaderSlots SomeSlots() {
        HeaderSlots slots;
        for (std::size_t i = 0; i < 10; i += 2) {
            HeaderBoxes boxes{"COMPANY " + std::to_string(i), "XB", "", "M\xFCller"};
            slots[i] = PackSlot(boxes);
        }
        return slots;
    }
    // The instrument is ready for commands.
    bool Answers() { return line.link.SendCommand("B", "RDY\r\n") == "RDY\r\n"; }

    HeaderLine line;
};

TEST_F(HeaderInstrument, WhatIsUploadedIsReadBack) {
    HeaderExchange exchange = MakeExchange();
    HeaderSlots slots;
    ASSERT_TRUE(exchange.Read(slots));
    EXPECT_EQ(UnpackSlot(slots[0])[0], "CENTRAL POWER");
    EXPECT_EQ(UnpackSlot(slots[2]), HeaderBoxes());
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Stored);
    EXPECT_EQ(line.Instrument().HeaderMemory(), JoinSlots(SomeSlots()));
    EXPECT_THAT(line.prompts.shown, IsEmpty());
    EXPECT_TRUE(Answers());
}

TEST_F(HeaderInstrument, RandomSlotsComeBackAsTheyWerePacked) {
    std::mt19937_64 random(RandomSeed(31));
    HeaderExchange exchange = MakeExchange();
    for (int run = 0; run < 5; ++run) {
        HeaderSlots slots;
        std::array<HeaderBoxes, 10> shown;
        for (std::size_t i = 0; i < 10; ++i) {
            HeaderBoxes boxes;
            for (std::string& box : boxes)
                box = RandomHeaderText(random);
            if (random() % 3 == 0) boxes.fill("");
            slots[i] = PackSlot(boxes);
            shown[i] = UnpackSlot(slots[i]);
        }
        ASSERT_EQ(exchange.Upload(slots).end, UploadEnd::Stored);
        HeaderSlots read;
        ASSERT_TRUE(exchange.Read(read));
        for (std::size_t i = 0; i < 10; ++i)
            ASSERT_EQ(UnpackSlot(read[i]), shown[i]);
    }
}

TEST_F(HeaderInstrument, ADroppedEchoTakesThePatienceAndAllIsStored) {
    HeaderLine dropping({{FaultKind::DroppedEcho, 325, 0}});
    HeaderExchange exchange = MakeExchange(dropping, kLittlePatience);
    std::vector<std::size_t> late;
    QElapsedTimer since;
    since.start();
    exchange.OnProgress = [&](std::size_t done) {
        if (since.restart() >= 140) late.push_back(done);
    };
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Stored);
    EXPECT_THAT(late, ::testing::Contains(325U));
    EXPECT_EQ(dropping.Instrument().HeaderMemory(), JoinSlots(SomeSlots()));
}

TEST_F(HeaderInstrument, TheUsualPatienceIsTwoSecondsWithAnEchoAndAMinuteWithTheErase) {
    EXPECT_EQ(HeaderPatience().echo, milliseconds(2000));
    EXPECT_EQ(HeaderPatience().reply, milliseconds(5000));
    EXPECT_EQ(HeaderPatience().erasing, milliseconds(60000));
}

TEST_F(HeaderInstrument, NothingIsWrittenToASilentInstrument) {
    line.Instrument().SetFaults({{FaultKind::Silent, 0, 0}});
    const std::string before = line.Instrument().HeaderMemory();
    HeaderExchange exchange = MakeExchange();
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::NotReady);
    EXPECT_THAT(line.prompts.shown,
                ElementsAre(QStringLiteral("DAVO is not ready.  Please check equipment.")));
    EXPECT_EQ(line.Instrument().HeaderMemory(), before);
    EXPECT_EQ(line.Instrument().AllFromPc(), "B");
}

TEST_F(HeaderInstrument, ASlotThatComesBackWithAWrongBitIsNamed) {
    const double readBack = kBeforeEchoes + 1600 + 5;
    line.Instrument().SetFaults({{FaultKind::Flip, readBack + 2 * 160 + 3, 1}});
    HeaderExchange exchange = MakeExchange();
    const UploadResult result = exchange.Upload(SomeSlots());
    EXPECT_EQ(result.end, UploadEnd::Differs);
    EXPECT_THAT(result.differing, ElementsAre(3));
}

TEST_F(HeaderInstrument, UnpluggingInTheMiddleEndsItAndItCanBeRepeated) {
    line.Instrument().SetFaults({{FaultKind::Unplugged, kBeforeEchoes + 500, 0}});
    HeaderExchange exchange = MakeExchange();
    std::size_t sent = 0;
    exchange.OnProgress = [&](std::size_t done) { sent = done; };
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Ended);
    EXPECT_LT(sent, 600U);
    EXPECT_GE(sent, 400U);
    EXPECT_THAT(line.prompts.shown, ElementsAre(Link::LostMessage()));
    EXPECT_FALSE(exchange.Unfinished());
    line.Instrument().SetFaults({});
    line.Instrument().PlugIn();
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Stored);
    EXPECT_EQ(line.Instrument().HeaderMemory(), JoinSlots(SomeSlots()));
}

TEST_F(HeaderInstrument, AnUploadThatAnotherWindowBrokeOffIsFinishedAfterAQuestion) {
    line.Instrument().SetFaults({{FaultKind::Unplugged, kBeforeEchoes + 500, 0}});
    HeaderExchange first = MakeExchange();
    EXPECT_EQ(first.Upload(SomeSlots()).end, UploadEnd::Ended);
    line.Instrument().SetFaults({});
    line.Instrument().PlugIn();
    line.prompts.shown.clear();
    line.prompts.answers = {Answer::No, Answer::Yes};
    HeaderExchange second = MakeExchange();
    const std::size_t before = line.Instrument().AllFromPc().size();
    EXPECT_EQ(second.Upload(SomeSlots()).end, UploadEnd::NotReady);
    EXPECT_EQ(line.Instrument().AllFromPc().substr(before), "B");
    EXPECT_EQ(second.Upload(SomeSlots()).end, UploadEnd::Stored);
    EXPECT_EQ(line.Instrument().HeaderMemory(), JoinSlots(SomeSlots()));
    EXPECT_EQ(line.prompts.shown.size(), 2U);
}

TEST_F(HeaderInstrument, LeavingSendsTheSlotUnderWayWholeAndTheOthersEmpty) {
    HeaderExchange exchange = MakeExchange();
    HeaderSlots whole = SomeSlots();
    for (std::size_t i = 3; i < 10; ++i)
        whole[i].clear();
    for (const std::size_t leaveAt : {2 * 160 + 7, 2 * 160 + 1, 3 * 160}) {
        bool unfinished = false;
        exchange.OnProgress = [&](std::size_t done) {
            if (done != leaveAt) return;
            unfinished = exchange.Unfinished();
            exchange.Leave();
        };
        EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Ended);
        EXPECT_TRUE(unfinished);
        EXPECT_FALSE(exchange.Unfinished());
        EXPECT_EQ(line.Instrument().HeaderMemory(), JoinSlots(whole)) << leaveAt;
        EXPECT_TRUE(Answers()) << "the instrument takes commands again";
        EXPECT_THAT(line.prompts.shown, IsEmpty());
    }
    exchange.OnProgress = [](std::size_t) {};
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Stored) << "and another upload";
}

TEST_F(HeaderInstrument, LeavingWhileItErasesLeavesTheSlotsEmpty) {
    HeaderExchange exchange = MakeExchange();
    exchange.OnStatus = [&](const QString& text) {
        if (text.contains(QStringLiteral("erasing"))) exchange.Leave();
    };
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Ended);
    EXPECT_EQ(line.Instrument().HeaderMemory(), std::string(1600, '\xFF'));
    EXPECT_TRUE(Answers());
}

TEST_F(HeaderInstrument, LeavingADeafInstrumentIsNotHeldUp) {
    line.Instrument().SetFaults({{FaultKind::CutLine, kBeforeEchoes + 40, 0}});
    HeaderExchange exchange = MakeExchange(line, kLittlePatience);
    std::size_t sent = 0;
    bool left = false;
    int waits = 0;  // begun after leaving
    line.link.OnWaitChanged = [&] { waits += left && line.link.CurrentWait() ? 1 : 0; };
    exchange.OnProgress = [&](std::size_t done) {
        sent = done;
        if (done != 41) return;
        exchange.Leave();
        left = true;
    };
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Ended);
    EXPECT_EQ(sent, 41U) << "the first that was not echoed";
    EXPECT_EQ(waits, 0);
}

TEST_F(HeaderInstrument, ASecondLeaveWaitsForNothing) {
    HeaderLine slow({{FaultKind::CutLine, kBeforeEchoes + 40, 0}});
    HeaderExchange exchange = MakeExchange(slow);
    bool left = false;
    exchange.OnProgress = [&](std::size_t done) {
        if (done == 40) {
            QTimer::singleShot(50, [&] {
                exchange.Leave();
                exchange.Leave();
                left = true;
            });
        }
    };
    EXPECT_EQ(exchange.Upload(SomeSlots()).end, UploadEnd::Ended);
    EXPECT_TRUE(left) << "and nothing waited for the patience";
}

}  // namespace

}  // namespace davo::test
