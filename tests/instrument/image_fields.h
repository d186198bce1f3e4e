// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "records/record_image.h"

#include "tests/support/testing.h"

namespace davo::test {

// The number of little-endian bytes that begin at byte offset of the hexadecimal text.
inline std::int64_t Field(const std::string& hex, std::size_t offset, std::size_t bytes) {
    std::int64_t value = 0;
    for (std::size_t i = bytes; i-- > 0;) {
        value = value * 256 + std::stoi(hex.substr((offset + i) * 2, 2), nullptr, 16);
    }
    return value;
}

// Compares every field of the 296 digits with image, by the offsets of the record's layout.
inline void ExpectImage(const std::string& hex, const RecordImage& image) {
    ASSERT_EQ(hex.size(), 296U);
    ASSERT_EQ(hex.find_first_not_of("0123456789ABCDEF"), std::string::npos);
    for (std::size_t slot = 0; slot < 32; ++slot) {
        EXPECT_EQ(Field(hex, 4 * slot, 2), image.slots[slot].current) << slot;
        EXPECT_EQ(Field(hex, 4 * slot + 2, 2), image.slots[slot].voltage) << slot;
    }
    EXPECT_EQ(Field(hex, 128, 2), image.kneeVoltage);
    EXPECT_EQ(Field(hex, 130, 2), image.kneeCurrent);
    EXPECT_EQ(Field(hex, 132, 2), image.excitationCurrent);
    EXPECT_EQ(Field(hex, 134, 2), image.excitationVoltage);
    EXPECT_EQ(Field(hex, 136, 4), image.measuredRatio);
    EXPECT_EQ(Field(hex, 140, 2), image.phaseAngle);
    EXPECT_EQ(Field(hex, 142, 2), image.nameplateH);
    EXPECT_EQ(Field(hex, 144, 2), image.nameplateX);
    EXPECT_EQ(Field(hex, 146, 1), image.kneeTypeCode);
    EXPECT_EQ(Field(hex, 147, 1), image.currentRangeCode);
}

// The digits of a shot's record: what is between DATA and DONE without blanks and line ends.
inline std::string DigitsOf(const std::string& record) {
    const std::size_t begin = record.find("DATA");
    const std::size_t end = record.find("DONE");
    if (begin == std::string::npos || end == std::string::npos) return {};
    std::string digits;
    for (const char c : record.substr(begin + 4, end - begin - 4)) {
        if (c != ' ' && c != '\r' && c != '\n') digits += c;
    }
    return digits;
}

}  // namespace davo::test
