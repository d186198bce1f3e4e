// SPDX-License-Identifier: GPL-3.0-or-later
// Commands that are answered at once, the header slots, and the way in and out of computer control.

#include "instrument/conversation.h"

#include "tests/instrument/memory_pc.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::seconds;

TEST(Conversation, IsReadyUnderComputerControl) {
    MemoryPc pc({});
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
}

TEST(Conversation, TellsItsModelBetweenTwoLineEnds) {
    MemoryPc pc({});
    pc.Send("W");
    EXPECT_EQ(pc.Rest(), "\r\nDAVO-E R3.15\r\n");
}

TEST(Conversation, TellsTheModelThatItIsGiven) {
    for (const char* model : {"DAVO", "DAVO R2.0", ""}) {
        MemoryPc pc({.model = model});
        pc.Send("W");
        EXPECT_EQ(pc.Rest(), "\r\n" + std::string(model) + "\r\n");
    }
}

TEST(Conversation, IsDeafAtItsOwnPanel) {
    MemoryPc pc({.underComputerControl = false});
    pc.Send("BWdT\r");
    EXPECT_EQ(pc.Rest(), "");
}

TEST(Conversation, XLeavesComputerControlUntilTheNextB) {
    MemoryPc pc({});
    pc.Send("XWdT");
    EXPECT_EQ(pc.Rest(), "");
    pc.Send("BW");
    EXPECT_EQ(pc.Rest(), "RDY\r\n\r\nDAVO-E R3.15\r\n");
}

TEST(Conversation, DoesNotAnswerWhatIsNoCommand) {
    MemoryPc pc({});
    pc.Send("bwrhQ7 \r\x1B");
    EXPECT_EQ(pc.Rest(), "");
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
}

TEST(Conversation, AnswersTakeAMoment) {
    MemoryPc pc({});
    pc.Send("B");
    EXPECT_EQ(pc.Instrument().TakeOutput(), "");
    pc.Rest();
    EXPECT_GE(pc.Now(), Micros{10000});
}

TEST(Conversation, LocatesRecordsByNumber) {
    MemoryPc pc({.memory = MakeMemory(12, 1)});
    pc.Send("L012");
    EXPECT_EQ(pc.Rest(), "Record Found\r\n");
    pc.Send("L013");
    EXPECT_EQ(pc.Rest(), "Record Not Found\r\n");
    pc.Send("L000");
    EXPECT_EQ(pc.Rest(), "Record Not Found\r\n");
}

TEST(Conversation, LocatesInPieces) {
    MemoryPc pc({.memory = MakeMemory(12, 1)});
    pc.Send("L");
    pc.Send("00");
    EXPECT_EQ(pc.Rest(), "");
    pc.Send("7");
    EXPECT_EQ(pc.Rest(), "Record Found\r\n");
}

TEST(Conversation, ANumberThatBreaksOffIsNotFoundAndTheNextCommandIsHeard) {
    MemoryPc pc({.memory = MakeMemory(12, 1)});
    pc.Send("L01B");
    EXPECT_EQ(pc.Rest(), "Record Not Found\r\nRDY\r\n");
}

TEST(Conversation, AnRWithoutALocatedRecordIsAnEmptyRecord) {
    MemoryPc pc({.memory = MakeMemory(2, 1)});
    pc.Send("R");
    EXPECT_EQ(pc.Rest(), "\r\nDONE\r\n");
    pc.Send("L001L009R");
    EXPECT_EQ(pc.Rest(), "Record Found\r\nRecord Not Found\r\n\r\nDONE\r\n");
}

TEST(HeaderSlots, AreReadAs1600CharactersAndALineEnd) {
    MemoryPc pc({});
    pc.Send("Fr");
    const std::string reply = pc.Rest();
    ASSERT_EQ(reply.size(), 1602U);
    EXPECT_EQ(reply.substr(1600), "\r\n");
    EXPECT_EQ(reply.substr(0, 20), "CENTRAL POWER       ");
    EXPECT_EQ(reply.substr(300, 20), "J. DOE              ");
    EXPECT_EQ(reply.substr(320, 160), std::string(160, '\xFF'));
    EXPECT_EQ(reply.substr(500, 20), "STATION 4           ");
    EXPECT_EQ(reply.substr(640, 960), std::string(960, '\xFF'));
}

TEST(HeaderSlots, AreErasedBeforeTheyAreWritten) {
    MemoryPc pc({});
    pc.Send("Fh");
    EXPECT_EQ(pc.Until("H:\r\n"), "ERASING...H:\r\n");
    EXPECT_EQ(pc.Instrument().HeaderMemory(), std::string(1600, '\xFF'));
}

TEST(HeaderSlots, EchoEachCharacterAndABlankForAnErasedOne) {
    MemoryPc pc({});
    pc.Send("Fh");
    pc.Until("H:\r\n");
    std::string sent(1600, '\xFF');
    sent.replace(160, 160, "BTdX\r\x1B" + std::string(153, 'q') + '\xE4');  // no commands here
    for (const char c : sent) {
        pc.Send(std::string(1, c));
        ASSERT_EQ(pc.Rest(), std::string(1, c == '\xFF' ? ' ' : c));
    }
    EXPECT_EQ(pc.Instrument().HeaderMemory(), sent);
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
}

TEST(HeaderSlots, AnUploadThatStopsIsGivenUpAfterHalfAMinute) {
    MemoryPc pc({});
    pc.Send("Fh");
    pc.Until("H:\r\n");
    pc.Send("abc");
    EXPECT_EQ(pc.Rest(), "abc");
    pc.Wait(seconds(29));
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "B");
    pc.Wait(seconds(31));
    pc.Send("B");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
}

TEST(HeaderSlots, FWithAnotherLetterIsThatLetter) {
    MemoryPc pc({});
    pc.Send("FB");
    EXPECT_EQ(pc.Rest(), "RDY\r\n");
}

TEST(Scenarios, AreKnownByName) {
    EXPECT_EQ(ScenarioByName("full"), Scenario::Full);
    EXPECT_EQ(ScenarioByName("ratio-only"), Scenario::RatioOnly);
    EXPECT_EQ(ScenarioByName("over-voltage"), Scenario::OverVoltage);
    EXPECT_EQ(ScenarioByName("out-of-phase"), Scenario::OutOfPhase);
    EXPECT_EQ(ScenarioByName("undetermined"), Scenario::Undetermined);
    EXPECT_EQ(ScenarioByName("Full"), std::nullopt);
}

}  // namespace
}  // namespace davo::test
