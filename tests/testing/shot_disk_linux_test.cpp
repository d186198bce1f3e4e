// SPDX-License-Identifier: GPL-3.0-or-later
// What the window says of a shot's place on a disk that is full, by the means that this platform
// has for it.

#include "tests/support/file_size_limit.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

class ShotOnAFullDisk : public testing::Test, public SequenceRig {};

TEST_F(ShotOnAFullDisk, IsNotSaidToBeOnItUntilThereIsRoom) {
    OpenFor(false);
    StartFullShot();
    {
        const FileSizeLimit full(0);
        EndShot();
        EXPECT_EQ(Screen().lblTest.text, "TEST COMPLETE.");
        EXPECT_EQ(Screen().shotShown, 1);
        EXPECT_FALSE(Screen().shotOnDisk);
        sequence.LookAround();
        EXPECT_FALSE(Screen().shotOnDisk);
        EXPECT_EQ(Journal().pendingShot, "");
    }
    sequence.LookAround();
    EXPECT_TRUE(Screen().shotOnDisk);
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
}

TEST_F(ShotOnAFullDisk, WithWhatIsTypedLaterIsNotSaidToBeOnItEither) {
    OpenFor(false);
    RunFullShot();
    EXPECT_TRUE(Screen().shotOnDisk);
    Screen().txtHVolt.text = "1200";
    Screen().txtXVolt.text = "5";
    {
        const FileSizeLimit full(0);
        sequence.txtXVolt_LostFocus();
        EXPECT_FALSE(Screen().shotOnDisk);
        EXPECT_NE(Journal().pendingShot, sequence.ShotTrailer());
    }
    sequence.LookAround();
    EXPECT_TRUE(Screen().shotOnDisk);
    EXPECT_EQ(Journal().pendingShot, sequence.ShotTrailer());
}

TEST_F(ShotOnAFullDisk, IsOnItAgainWhenItsHeaderIs) {
    OpenFor(false);
    RunFullShot();
    {
        const FileSizeLimit full(0);
        header.Field(0) = "Hilltop";
        EXPECT_THROW(sequence.UpdateJournal(), RunTimeError);
        EXPECT_FALSE(Screen().shotOnDisk);
    }
    sequence.LookAround();
    EXPECT_TRUE(Screen().shotOnDisk);
    EXPECT_EQ(Journal().header.Field(0), "Hilltop");
}

TEST_F(ShotOnAFullDisk, IsTakenOutOfTheJournalLaterWhenItWasDropped) {
    OpenFor(false);
    RunFullShot();
    {
        const FileSizeLimit full(0);
        EXPECT_THROW(sequence.cmdContinue_Click(), RunTimeError);
        EXPECT_NE(Journal().pendingShot, "");
    }
    sequence.LookAround();
    EXPECT_EQ(Journal().pendingShot, "");
}

}  // namespace
}  // namespace davo::test
