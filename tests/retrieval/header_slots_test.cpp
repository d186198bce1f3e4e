// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/header_slots.h"

#include <random>

#include "common/text.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

const std::string kEmptySlot(160, '\xFF');

TEST(PackSlot, FillsEachFieldToTwenty) {
    HeaderBoxes boxes{"ACME", "  North  ", "", "M\xFCller", "CT-1200", "12345678901234567890",
                      "a b",  "J. DOE"};
    EXPECT_EQ(PackSlot(boxes),
              "ACME                "
              "North               "
              "                    "
              "M\xFCller              "
              "CT-1200             "
              "12345678901234567890"
              "a b                 "
              "J. DOE              ");
    EXPECT_EQ(boxes[1], "  North  ") << "a text that fits stays as it was typed";
}

TEST(PackSlot, CutsATextOfTwentyFiveInItsBox) {
    HeaderBoxes boxes{"ABCDEFGHIJKLMNOPQRSTUVWXY"};
    EXPECT_EQ(PackSlot(boxes), PadRight("ABCDEFGHIJKLMNOPQRST", 160));
    EXPECT_EQ(boxes[0], "ABCDEFGHIJKLMNOPQRST");
}

TEST(PackSlot, Is160CharactersWideWhateverTheCutLeaves) {
    HeaderBoxes boxes{"  BCDEFGHIJKLMNOPQRSTUVWXY"};
    EXPECT_EQ(PackSlot(boxes), PadRight("BCDEFGHIJKLMNOPQRS", 160));
    EXPECT_EQ(boxes[0], "  BCDEFGHIJKLMNOPQRS");
}

TEST(PackSlot, GivesCode255ForBlankBoxes) {
    HeaderBoxes clear;
    EXPECT_EQ(PackSlot(clear), kEmptySlot);
    HeaderBoxes blank;
    blank.fill("   ");
    EXPECT_EQ(PackSlot(blank), kEmptySlot);
}

TEST(UnpackSlot, TrimsTheEightFields) {
    std::string slot;
    for (int i = 0; i < 8; ++i)
        slot += PadRight(" F" + std::to_string(i), 20);
    EXPECT_EQ(UnpackSlot(slot), (HeaderBoxes{"F0", "F1", "F2", "F3", "F4", "F5", "F6", "F7"}));
}

TEST(UnpackSlot, ClearsTheBoxesForAnEmptySlot) {
    EXPECT_EQ(UnpackSlot(kEmptySlot), HeaderBoxes());
    EXPECT_EQ(UnpackSlot("\xFF"
                         "ACME"),
              HeaderBoxes());
    EXPECT_EQ(UnpackSlot(std::string(160, ' ')), HeaderBoxes());
    EXPECT_EQ(UnpackSlot(""), HeaderBoxes());
}

TEST(CutSlots, WantsExactly1602Characters) {
    std::string reply;
    for (char slot = 'a'; slot <= 'j'; ++slot)
        reply += std::string(160, slot);
    reply += "\r\n";
    const auto slots = CutSlots(reply);
    ASSERT_TRUE(slots);
    EXPECT_EQ(slots->at(0), std::string(160, 'a'));
    EXPECT_EQ(slots->at(9), std::string(160, 'j'));
    EXPECT_EQ(slots->at(10), "");
    EXPECT_FALSE(CutSlots(reply.substr(1))) << "1601 characters";
    EXPECT_FALSE(CutSlots("x" + reply)) << "1603 characters";
    EXPECT_FALSE(CutSlots(""));
}

TEST(JoinSlots, SendsCode255ForBlankAndEmptySlots) {
    HeaderSlots slots;
    slots[1] = PadRight("ACME", 160);
    slots[2] = "\xFF" + std::string(159, 'x');
    slots[3] = std::string(160, ' ');
    const std::string upload = JoinSlots(slots);
    ASSERT_EQ(upload.size(), 1600U);
    for (const std::size_t slot : {0, 2, 3, 4, 9})
        EXPECT_EQ(upload.substr(slot * 160, 160), kEmptySlot) << slot;
    EXPECT_EQ(upload.substr(160, 160), slots[1]);
}

TEST(EchoesOf, IsABlankForEachCharacterOfAnEmptySlotOnly) {
    HeaderSlots slots;
    slots[1] = PadRight(
        "A\xFF"
        "BX",
        160);
    const std::string echoes = EchoesOf(JoinSlots(slots));
    EXPECT_EQ(echoes, std::string(160, ' ') + slots[1] + std::string(1280, ' '));
}

TEST(Slots, RandomBoxesComeBackTrimmedAndCut) {
    std::mt19937_64 random(RandomSeed(20));
    for (int run = 0; run < 2000; ++run) {
        HeaderBoxes boxes;
        HeaderBoxes expected;
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            std::string text(random() % 3 == 0 ? 0 : random() % 30, ' ');
            for (char& c : text)
                c = random() % 4 == 0 ? ' '
                                      : static_cast<char>(random() % 2 ? '!' + random() % 94
                                                                       : 0xA0 + random() % 95);
            boxes[i] = text;
            expected[i] = TrimBlanks(TrimBlanks(text).size() > 20 ? text.substr(0, 20) : text);
        }
        const std::string slot = PackSlot(boxes);
        ASSERT_EQ(slot.size(), 160U);
        ASSERT_EQ(UnpackSlot(slot), expected);
    }
}

}  // namespace
}  // namespace davo::test
