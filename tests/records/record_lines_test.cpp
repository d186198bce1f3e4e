// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_lines.h"

#include "common/numbers.h"
#include "records/record_image.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// From below what characters that are no digits can come to, to above it.
constexpr int kLowest = -5000;
constexpr int kHighest = 160000;

TEST(CountText, IsThePictureOfEveryVoltageCount) {
    for (int count = kLowest; count <= kHighest; ++count) {
        const double volts = count * 0.1;
        ASSERT_EQ(FixedText(count, 1), Picture(volts, "###0.0")) << count;
        ASSERT_EQ(ShortestText(count, 1), GeneralNumber(volts)) << count;
    }
}

TEST(CountText, IsThePictureOfEveryCurrentCountInBothRanges) {
    for (const int rangeCode : {0, 10}) {
        RecordImage image;
        image.currentRangeCode = rangeCode;
        for (int count = kLowest; count <= kHighest; ++count) {
            const double amperes = count * image.CurrentScale();
            const int steps = image.CurrentSteps(count);
            ASSERT_EQ(FixedText(steps, 4), Picture(amperes, "###0.0000")) << count;
            ASSERT_EQ(ShortestText(steps, 4), GeneralNumber(amperes)) << count;
            ASSERT_EQ(FixedText(RoundedToTens(steps), 3), Picture(amperes, "###0.000")) << count;
        }
    }
}

}  // namespace
}  // namespace davo
