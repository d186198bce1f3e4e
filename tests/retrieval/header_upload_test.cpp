// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/header_upload.h"

#include <algorithm>

#include "common/text.h"
#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

// Against a scripted instrument.
class HeaderUploadTest : public ::testing::Test, public ScriptedLine {
  protected:
    HeaderUploadTest() {
        exchange.OnStatus = [this](const QString& text) { statuses.push_back(text.toStdString()); };
        exchange.OnProgress = [this](std::size_t done) { progress.push_back(done); };
        slots[0] = PadRight("XB X", 160);
        slots[9] = PadRight("LAST", 160);
    }
    // Echoes every character of an upload, remembering it.
    void EchoAll() {
        for (int c = 0; c < 256; ++c) {
            const std::string one(1, static_cast<char>(c));
            if (one != "B") port.Always(one, one == "\xFF" ? " " : one);
        }
        port.Always("B", "RDY\r\nB");
    }
    std::string Stored() const { return JoinSlots(slots); }

    // The instrument is ready and answers the erasing.
    void Erases(const char* answer = "ERASING...H:\r\n") {
        port.OnOutput("B", "RDY\r\n").OnOutput("Fh", answer);
    }
    void ExpectNotReady() const {
        EXPECT_THAT(prompts.Texts(), ElementsAre("DAVO is not ready.  Please check equipment."));
    }

    int opened = 0;
    HeaderExchange exchange{link,
                            prompts,
                            [this] {
                                ++opened;
                                return link.OpenComPort(3);
                            },
                            {milliseconds(100), milliseconds(100), milliseconds(150)}};
    HeaderSlots slots;
    std::vector<std::string> statuses;
    std::vector<std::size_t> progress;
};

TEST_F(HeaderUploadTest, ReadOpensThePortAndTakesTheSlots) {
    port.OnOutput("B", "RDY\r\n").OnOutput("Fr", Stored() + "\r\n");
    HeaderSlots read;
    EXPECT_TRUE(exchange.Read(read));
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(read[0], slots[0]);
    EXPECT_EQ(read[1], std::string(160, '\xFF'));
    EXPECT_EQ(read[9], slots[9]);
    EXPECT_THAT(port.sent, ElementsAre("B", "Fr"));
    EXPECT_THAT(prompts.shown, IsEmpty());
    port.OnOutput("B", "RDY\r\n").OnOutput("Fr", Stored() + "\r\n");
    EXPECT_TRUE(exchange.Read(read));
    EXPECT_EQ(opened, 1) << "an open port stays as it is";
}

TEST_F(HeaderUploadTest, AReplyOf1601CharactersIsIgnoredWithoutAMessage) {
    const HeaderSlots before = slots;
    for (const std::size_t length : {1599U, 1601U, 0U}) {
        port.OnOutput("B", "RDY\r\n").OnOutput("Fr", std::string(length, 'x') + "\r\n");
        EXPECT_FALSE(exchange.Read(slots)) << length;
    }
    port.OnOutput("B", "RDY\r\n").OnOutput("Fr", std::string(1000, 'x'));
    EXPECT_FALSE(exchange.Read(slots)) << "a reply that stops";
    EXPECT_EQ(slots, before);
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(HeaderUploadTest, ReadSaysWhenTheInstrumentIsSilent) {
    EXPECT_FALSE(exchange.Read(slots));
    ExpectNotReady();
    EXPECT_THAT(port.sent, ElementsAre("B"));
}

TEST_F(HeaderUploadTest, ReadSaysSoToWhenThePortDoesNotOpen) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    EXPECT_FALSE(exchange.Read(slots));
    ExpectNotReady();
}

TEST_F(HeaderUploadTest, NothingIsWrittenToASilentInstrument) {
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B"));
    ExpectNotReady();
    EXPECT_FALSE(exchange.Unfinished());
}

TEST_F(HeaderUploadTest, AnAnswerThatOnlyHoldsTheLetterOfTheQuestionSendsNothing) {
    for (const char* reply : {"BUSY\r\n", "xB", "B\r\n", "RDYB"}) {
        for (const bool upload : {false, true}) {
            port.sent.clear();
            prompts.shown.clear();
            port.OnOutput("B", reply);
            if (upload) {
                EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
            } else {
                EXPECT_FALSE(exchange.Read(slots));
            }
            EXPECT_THAT(port.sent, ElementsAre("B")) << reply;
            ExpectNotReady();
        }
    }
}

TEST_F(HeaderUploadTest, AnEchoOfTheQuestionSendsNothingUnlessTheOperatorAgrees) {
    port.OnOutput("B", "B");
    prompts.answers = {Answer::No};
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_THAT(
        prompts.Texts(),
        ElementsAre("The DAVO seems to wait for the rest of headers that were once saved to it.\r\n"
                    "Until it has them it takes no commands. The rest can be sent as empty "
                    "headers.\r\n"
                    "Do you want to send empty headers?"));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));

    port.sent.clear();
    prompts.answers = {Answer::Yes};
    port.OnOutput("B", "B");
    for (int i = 0; i < 3; ++i)
        port.OnOutput("\xFF", " ");
    port.OnOutput("\xFF", "").OnOutput("B", "RDY\r\n").OnOutput("Fr", Stored() + "\r\n");
    EXPECT_TRUE(exchange.Read(slots));
    EXPECT_THAT(port.sent, ElementsAre("B", "\xFF", "\xFF", "\xFF", "\xFF", "B", "Fr"));
    port.sent.clear();
    prompts.answers = {Answer::No};
    port.OnOutput("B", "B");
    EXPECT_FALSE(exchange.Read(slots));
    EXPECT_THAT(port.sent, ElementsAre("B")) << "the upload that was finished is over";
}

TEST_F(HeaderUploadTest, LeavingWhileTheRestIsSentSendsNothingElse) {
    port.OnOutput("B", "B").OnOutputDo("\xFF", [this] { exchange.Leave(); });
    prompts.answers = {Answer::Yes};
    EXPECT_FALSE(exchange.Read(slots));
    EXPECT_THAT(port.sent, ElementsAre("B", "\xFF"));
    EXPECT_THAT(prompts.shown, SizeIs(1)) << "the question";
}

TEST_F(HeaderUploadTest, AReadyAnswerMayHoldTheLetterOfTheQuestion) {
    port.OnOutput("B", "B\r\nRDY\r\n").OnOutput("Fr", Stored() + "\r\n");
    EXPECT_TRUE(exchange.Read(slots));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

// The instrument has erased its slots and waits for the new ones.
TEST_F(HeaderUploadTest, WhatBrokeOffAfterTheEraseIsFinishedWithoutAQuestion) {
    Erases("ERASING...\r\nH:");  // and no more
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    port.sent.clear();
    prompts.shown.clear();
    port.OnOutput("B", "B").OnOutput("\xFF", " ").OnOutput("\xFF", "");
    port.OnOutput("B", "RDY\r\n").OnOutput("Fr", Stored() + "\r\n");
    EXPECT_TRUE(exchange.Read(slots));
    EXPECT_THAT(port.sent, ElementsAre("B", "\xFF", "\xFF", "B", "Fr"));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(HeaderUploadTest, LeavingWhileItErasesWaitsForThePromptAndSendsEmptySlots) {
    port.OnOutput("B", "RDY\r\n").OnOutputDo("Fh", [this] {
        exchange.Leave();
        port.Deliver("ERASING...H:\r\n");
    });
    port.Always("\xFF", " ");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::Ended);
    EXPECT_EQ(std::ranges::count(port.sent, "\xFF"), 1600);
    EXPECT_EQ(port.sent.size(), 2U + 1600U);
    port.sent.clear();
    prompts.answers = {Answer::No};
    port.OnOutput("B", "B");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B")) << "the upload that was left came to its end";
}

// An instrument that was ready meanwhile waits for no rest of headers any more.
TEST_F(HeaderUploadTest, ABrokenUploadIsOverOnceTheInstrumentIsReady) {
    Erases("ERASING...\r\nH:");  // and no more
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    Erases("?");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    port.sent.clear();
    prompts.shown.clear();
    port.OnOutput("B", "BUSY\r\n");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B"));
    ExpectNotReady();
}

TEST_F(HeaderUploadTest, NothingIsSentWhenTheEraseIsNotAnswered) {
    Erases("?");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B", "Fh"));
    ExpectNotReady();
}

TEST_F(HeaderUploadTest, NothingIsSentWhenThePromptNeverComes) {
    Erases("ERASING...\r\nH:");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B", "Fh"));
    ExpectNotReady();
}

TEST_F(HeaderUploadTest, SendsEveryCharacterOnItsOwnAndReadsBack) {
    Erases();
    EchoAll();
    port.Always("Fr", Stored() + "\r\n");
    const UploadResult result = exchange.Upload(slots);
    EXPECT_EQ(result.end, UploadEnd::Stored);
    EXPECT_THAT(result.differing, IsEmpty());
    ASSERT_EQ(port.sent.size(), 2U + 1600U + 2U);
    std::string sent;
    for (std::size_t i = 2; i < 1602; ++i)
        sent += port.sent[i];
    EXPECT_EQ(sent, Stored());
    EXPECT_EQ(port.sent[1602], "B");
    EXPECT_EQ(port.sent[1603], "Fr");
    EXPECT_EQ(progress.size(), 1600U);
    EXPECT_EQ(progress.back(), 1600U);
    EXPECT_FALSE(exchange.Sending());
    EXPECT_THAT(
        statuses,
        ElementsAre("Preparing the DAVO for the headers...", "The DAVO is erasing its headers...",
                    "slot 1 of 10", "slot 2 of 10", "slot 3 of 10", "slot 4 of 10", "slot 5 of 10",
                    "slot 6 of 10", "slot 7 of 10", "slot 8 of 10", "slot 9 of 10", "slot 10 of 10",
                    "Reading the headers back..."));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(HeaderUploadTest, AnUploadThatWasSentWholeIsNotFinishedAgain) {
    EXPECT_FALSE(exchange.Sending());
    EXPECT_FALSE(exchange.Unfinished());
    bool sending = false;
    exchange.OnProgress = [&](std::size_t) { sending = exchange.Sending(); };
    Erases();
    EchoAll();
    port.Always("Fr", Stored() + "\r\n");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::Stored);
    EXPECT_TRUE(sending);
    port.sent.clear();
    prompts.answers = {Answer::No};
    port.OnOutput("B", "B");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReady);
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_THAT(prompts.shown, SizeIs(1)) << "the question";
}

TEST_F(HeaderUploadTest, ThePromptMayComeInPieces) {
    for (const auto& [first, second] :
         {std::pair("ERASING", "...\r\nH:\r\n"), std::pair("ERASING...H", ":\r\n"),
          std::pair("ERASING...H:\r", "\n"), std::pair("..ERASING..HH:", "\r\n")}) {
        FakeSerialPort line;
        Link pieces(line, state, prompts, pointer);
        pieces.OpenComPort(1);
        HeaderExchange upload(pieces, prompts, [] { return false; },
                              {milliseconds(1), milliseconds(100), milliseconds(500)});
        line.OnOutput("B", "RDY\r\n").OnOutputDo("Fh", [&line, a = first, b = second] {
            line.Deliver(a);
            line.Deliver(b, milliseconds(20));
        });
        std::size_t done = 0;
        upload.OnProgress = [&](std::size_t sent) {
            done = sent;
            if (sent == 3) pieces.EndWait();
        };
        EXPECT_EQ(upload.Upload(slots).end, UploadEnd::Ended);
        EXPECT_EQ(done, 3U) << first;
    }
}

TEST_F(HeaderUploadTest, SlotsThatComeBackOtherwiseAreNamed) {
    HeaderSlots stored = slots;
    stored[0] = PadRight("XB x", 160);
    stored[4] = PadRight("?", 160);
    stored[5] = std::string(160, ' ');
    stored[9] = PadRight("LOST", 160);
    Erases();
    EchoAll();
    std::string back;
    for (std::size_t i = 0; i < 10; ++i)
        back += stored[i].empty() ? std::string(160, '\xFF') : stored[i];
    port.Always("Fr", back + "\r\n");
    const UploadResult result = exchange.Upload(slots);
    EXPECT_EQ(result.end, UploadEnd::Differs);
    EXPECT_THAT(result.differing, ElementsAre(1, 5, 10)) << "blanks are as empty as code 255";
}

TEST(DifferingMessage, NamesTheSlots) {
    EXPECT_EQ(DifferingMessage({7}),
              u"The DAVO did not store header slot 7 as sent.\r\n"
              "Please save the headers to the DAVO again."_s);
    EXPECT_EQ(DifferingMessage({1, 5, 10}),
              u"The DAVO did not store header slots 1, 5 and 10 as sent.\r\n"
              "Please save the headers to the DAVO again."_s);
}

TEST_F(HeaderUploadTest, SlotsThatDoNotComeBackAreSaid) {
    Erases();
    EchoAll();
    port.Always("Fr", "1\r\n");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::NotReadBack);
}

TEST_F(HeaderUploadTest, UnansweredCharactersAreCounted) {
    Erases();
    port.OnOutput("X", "X").OnOutput("B", "?").OnOutput(" ", "");
    EchoAll();
    port.Always("Fr", Stored() + "\r\n");
    EXPECT_EQ(exchange.Upload(slots).end, UploadEnd::Stored);
    EXPECT_THAT(statuses, IsSupersetOf({"slot 1 of 10, 1 character not answered",
                                        "slot 10 of 10, 2 characters not answered"}));
}

}  // namespace
}  // namespace davo::test
