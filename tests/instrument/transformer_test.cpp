// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/transformer.h"

#include <cmath>

#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;

const Transformer& Preset(std::size_t i) {
    return TransformerPresets()[i];
}

TEST(Transformer, CurvesRiseInBothDirections) {
    for (const Transformer& t : TransformerPresets()) {
        double before = 0;
        for (double voltage = 1; voltage <= kMaxVoltage; voltage *= 1.1) {
            const double current = ExcitationCurrent(t, voltage);
            EXPECT_GT(current, before) << t.name;
            before = current;
        }
    }
}

TEST(Transformer, VoltageIsTheInverseOfCurrentUpToTheDrive) {
    for (const Transformer& t : TransformerPresets()) {
        const double most = ExcitationCurrent(t, kMaxVoltage);
        for (double current = 0.001; current < 10; current *= 1.3) {
            const double voltage = ExcitationVoltage(t, current);
            if (current >= most) {
                EXPECT_EQ(voltage, kMaxVoltage) << t.name;
            } else {
                EXPECT_NEAR(ExcitationCurrent(t, voltage), current, current * 1e-9) << t.name;
            }
        }
    }
}

TEST(Transformer, ShotsHaveFallingPointsInTheFirstSlots) {
    Random random(RandomSeed(3));
    for (const Transformer& t : TransformerPresets()) {
        const RecordImage image = MeasureShot(t, false, Polarity::AsWired, random).image;
        EXPECT_EQ(image.Points().size(), static_cast<std::size_t>(t.points)) << t.name;
        for (int i = 1; i < t.points; ++i) {
            EXPECT_LT(image.slots[i].current, image.slots[i - 1].current) << t.name << i;
            EXPECT_LT(image.slots[i].voltage, image.slots[i - 1].voltage) << t.name << i;
        }
        EXPECT_EQ(image.excitationCurrent, image.slots[0].current);
        EXPECT_EQ(image.excitationVoltage, image.slots[0].voltage);
        EXPECT_LE(image.excitationVoltage, 10000);
    }
}

TEST(Transformer, TheCoarseRangeServesLargeCurrents) {
    Random random(1);
    const Shot coarse = MeasureShot(Preset(3), false, Polarity::AsWired, random);
    EXPECT_EQ(coarse.image.currentRangeCode, 10);
    EXPECT_NEAR(coarse.image.excitationCurrent * 0.0002, 9.5, 0.001);
    const Shot fine = MeasureShot(Preset(0), false, Polarity::AsWired, random);
    EXPECT_NE(fine.image.currentRangeCode, 10);
    EXPECT_NEAR(fine.image.excitationCurrent * 0.0001, 2, 0.001);
}

// The knee must satisfy its definition on the curve, by small differences.
TEST(Transformer, KneesAreWhereTheirDefinitionsPutThem) {
    Random random(1);
    for (const Transformer& t : TransformerPresets()) {
        const RecordImage image = MeasureShot(t, false, Polarity::AsWired, random).image;
        if (image.kneeVoltage == 0) {
            EXPECT_GT(t.kneeVoltage, kMaxVoltage) << t.name;
            continue;
        }
        const double knee = image.kneeVoltage * 0.1;
        const double growth =
            std::log(ExcitationCurrent(t, knee * 1.0001) / ExcitationCurrent(t, knee)) /
            std::log(1.0001);
        if (t.kneeTypeCode == 1) {
            EXPECT_NEAR(growth, std::sqrt(3.0), 0.07) << t.name;
        } else if (t.kneeTypeCode == 2) {
            EXPECT_NEAR(growth, 1, 0.07) << t.name;
        } else {
            EXPECT_NEAR(ExcitationCurrent(t, knee * 1.1) / ExcitationCurrent(t, knee), 1.5, 0.01)
                << t.name;
        }
        EXPECT_NEAR(image.kneeCurrent * image.CurrentScale(), ExcitationCurrent(t, knee),
                    0.01 * ExcitationCurrent(t, knee) + image.CurrentScale())
            << t.name;
    }
}

TEST(Transformer, TheRatioTextIsTheRecordedRatio) {
    Random random(RandomSeed(4));
    for (const Transformer& t : TransformerPresets()) {
        const Shot shot = MeasureShot(t, true, Polarity::AsWired, random);
        const double ratio = static_cast<double>(shot.image.measuredRatio) / 10000;
        EXPECT_NEAR(std::stod(shot.ratioText), ratio, 0.0501) << t.name;
        EXPECT_NEAR(ratio, t.turnsRatio, 0.02 * t.turnsRatio) << t.name;
    }
    const Shot bushing = MeasureShot(Preset(0), true, Polarity::AsWired, random);
    EXPECT_EQ(bushing.ratioText, "241.2");
}

TEST(Transformer, NameplatesAgreeWithTheTurns) {
    for (const Transformer& t : TransformerPresets()) {
        if (t.nameplateX == 0) continue;
        EXPECT_NEAR(t.nameplateH / (t.nameplateX * 0.1), t.turnsRatio, 1e-9) << t.name;
    }
}

TEST(FixedText, HasAPointWhateverTheLocale) {
    EXPECT_EQ(FixedText(152.4, 1), "152.4");
    EXPECT_EQ(FixedText(0.01234, 4), "0.0123");
    EXPECT_EQ(FixedText(0, 4), "0.0000");
}

}  // namespace
}  // namespace davo::test
