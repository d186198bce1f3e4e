// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_image.h"

#include "tests/records/captures.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::ImageWithPoints;

// 296 digits whose bytes are all zero but those given as offset and two digits.
std::string Digits(std::initializer_list<std::pair<std::size_t, const char*>> bytes) {
    std::string digits(kImageDigits, '0');
    for (const auto& [offset, text] : bytes)
        digits.replace(2 * offset, 2, text);
    return digits;
}

TEST(DecodeRecordImage, OffsetsAndByteOrder) {
    const RecordImage image = DecodeRecordImage(
        Digits({{0, "34"},   {1, "12"},   {2, "78"},   {3, "56"},   {124, "01"}, {127, "02"},
                {128, "F3"}, {129, "05"}, {130, "7C"}, {132, "D3"}, {133, "04"}, {134, "D0"},
                {135, "07"}, {136, "E0"}, {137, "CD"}, {138, "24"}, {139, "80"}, {140, "0F"},
                {142, "B0"}, {143, "04"}, {144, "32"}, {146, "02"}, {147, "0A"}}));
    EXPECT_EQ(image.slots[0].current, 0x1234);
    EXPECT_EQ(image.slots[0].voltage, 0x5678);
    EXPECT_EQ(image.slots[31].current, 1);
    EXPECT_EQ(image.slots[31].voltage, 0x200);
    EXPECT_EQ(image.kneeVoltage, 1523);
    EXPECT_EQ(image.kneeCurrent, 124);
    EXPECT_EQ(image.excitationCurrent, 1235);
    EXPECT_EQ(image.excitationVoltage, 2000);
    EXPECT_EQ(image.measuredRatio, 0x8024CDE0LL);
    EXPECT_EQ(image.phaseAngle, 15);
    EXPECT_EQ(image.nameplateH, 1200);
    EXPECT_EQ(image.nameplateX, 50);
    EXPECT_EQ(image.kneeTypeCode, 2);
    EXPECT_EQ(image.currentRangeCode, 10);
}

TEST(DecodeRecordImage, MissingDigitsReadAsZero) {
    const RecordImage none = DecodeRecordImage("");
    EXPECT_TRUE(none.Points().empty());
    EXPECT_EQ(none.kneeVoltage, 0);
    EXPECT_EQ(none.phaseAngle, 0);
    const RecordImage part = DecodeRecordImage("3412A");
    EXPECT_EQ(part.slots[0].current, 0x1234);
    EXPECT_EQ(part.slots[0].voltage, 10);
}

TEST(DecodeRecordImage, CharactersThatAreNoDigitsCountAsTheParserHasThem) {
    const RecordImage image = DecodeRecordImage("ab00G000");
    EXPECT_EQ(image.slots[0].current, -17);
    EXPECT_EQ(image.slots[0].voltage, 256);
    EXPECT_TRUE(image.Points().empty());
}

TEST(RecordImage, CurrentScaleFollowsTheRangeCode) {
    RecordImage image;
    image.slots[0] = {500, 1};
    image.currentRangeCode = 10;
    EXPECT_DOUBLE_EQ(image.Points().at(0).current, 0.1);
    image.currentRangeCode = 16;
    EXPECT_DOUBLE_EQ(image.Points().at(0).current, 0.05);
}

TEST(RecordImage, SlotsWithAZeroAreNoPoints) {
    RecordImage image;
    image.slots[1] = {0, 5};
    image.slots[2] = {5, 0};
    image.slots[3] = {7, 1523};
    image.slots[31] = {65535, 65535};
    const std::vector<DataPoint> points = image.Points();
    ASSERT_EQ(points.size(), 2U);
    EXPECT_DOUBLE_EQ(points[0].current, 0.0007);
    EXPECT_DOUBLE_EQ(points[0].voltage, 152.3);
    EXPECT_DOUBLE_EQ(points[1].current, 6.5535);
    EXPECT_DOUBLE_EQ(points[1].voltage, 6553.5);
}

TEST(EncodeRecordImage, DecodesToTheSame) {
    RecordImage image = ImageWithPoints(32);
    image.measuredRatio = 0xFEDCBA98;
    image.currentRangeCode = 10;
    const std::string digits = EncodeRecordImage(image);
    EXPECT_EQ(digits.size(), kImageDigits);
    const RecordImage back = DecodeRecordImage(digits);
    for (int i = 0; i < kPointSlots; ++i) {
        EXPECT_EQ(back.slots[i].current, image.slots[i].current);
        EXPECT_EQ(back.slots[i].voltage, image.slots[i].voltage);
    }
    EXPECT_EQ(back.kneeVoltage, image.kneeVoltage);
    EXPECT_EQ(back.kneeCurrent, image.kneeCurrent);
    EXPECT_EQ(back.excitationCurrent, image.excitationCurrent);
    EXPECT_EQ(back.excitationVoltage, image.excitationVoltage);
    EXPECT_EQ(back.measuredRatio, image.measuredRatio);
    EXPECT_EQ(back.phaseAngle, image.phaseAngle);
    EXPECT_EQ(back.nameplateH, image.nameplateH);
    EXPECT_EQ(back.nameplateX, image.nameplateX);
    EXPECT_EQ(back.kneeTypeCode, image.kneeTypeCode);
    EXPECT_EQ(back.currentRangeCode, image.currentRangeCode);
}

TEST(DescribeRecordDamage, WholeRecordHasNone) {
    const std::string digits = EncodeRecordImage(ImageWithPoints(3));
    EXPECT_EQ(DescribeRecordDamage("DATA" + digits + "DONE"), "");
    EXPECT_EQ(DescribeRecordDamage("DATA\r\n" + digits.substr(0, 99) + " \r\n" + digits.substr(99) +
                                   "\r\nDONE"),
              "");
}

TEST(DescribeRecordDamage, SaysWhatIsWrong) {
    const std::string digits(kImageDigits, 'A');
    const auto damage = [](const std::string& text) {
        return DescribeRecordDamage("DATA" + text + "DONE");
    };
    EXPECT_EQ(damage(digits.substr(6)), "290 of 296 digits");
    EXPECT_EQ(damage(digits + "00"), "298 of 296 digits");
    EXPECT_EQ(damage(""), "0 of 296 digits");
    EXPECT_EQ(damage(digits + "g"), "1 character that is no digit");
    EXPECT_EQ(damage(digits + "\t\xE4"), "2 characters that are no digits");
    EXPECT_EQ(damage(digits.substr(2) + "aG"),
              "294 of 296 digits, 2 characters that are no digits");
    EXPECT_EQ(damage(std::string(kImageDigits, '9')), "");
    EXPECT_EQ(damage(std::string(kImageDigits, '0')), "");
    EXPECT_EQ(damage(std::string(kImageDigits, 'F')), "");
    EXPECT_EQ(damage(digits + "/:@G"), "4 characters that are no digits");
    EXPECT_EQ(DescribeRecordDamage(digits + "DONE"), "no DATA");
    EXPECT_EQ(DescribeRecordDamage("DATA" + digits), "no DONE");
    EXPECT_EQ(DescribeRecordDamage(""), "no DATA");
}

TEST(PolarityOfPhase, BoundsAndGaps) {
    for (const double inPhase : {0.0, 0.1, 90.0, 270.0, 300.0, 360.0}) {
        EXPECT_EQ(PolarityOfPhase(inPhase), "IN PHASE") << inPhase;
    }
    for (const double outOfPhase : {90.1, 180.0, 269.9}) {
        EXPECT_EQ(PolarityOfPhase(outOfPhase), "OUT OF PHASE") << outOfPhase;
    }
    for (const double neither : {-0.1, 90.05, 90.0001, 269.95, 269.99, 360.1, 6553.5}) {
        EXPECT_EQ(PolarityOfPhase(neither), "N/A") << neither;
    }
}

TEST(PolarityOfPhase, CountsTimesATenthOfADegree) {
    EXPECT_EQ(PolarityOfPhase(900 * 0.1), "IN PHASE");
    EXPECT_EQ(PolarityOfPhase(901 * 0.1), "OUT OF PHASE");
    EXPECT_EQ(PolarityOfPhase(2698 * 0.1), "OUT OF PHASE");
    EXPECT_EQ(PolarityOfPhase(2699 * 0.1), "N/A");
    EXPECT_EQ(PolarityOfPhase(2700 * 0.1), "IN PHASE");
}

TEST(KneePointTypeText, ByCode) {
    EXPECT_EQ(KneePointTypeText(1), "IEEE 30 DEGREE TANGENT");
    EXPECT_EQ(KneePointTypeText(2), "IEEE 45 DEGREE TANGENT");
    for (const int other : {0, 3, 255, -1}) {
        EXPECT_EQ(KneePointTypeText(other), "ASA 10%VTG -> 50%CUR");
    }
}

}  // namespace
}  // namespace davo
