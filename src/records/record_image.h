// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/text.h"

namespace davo {

// current in amperes, voltage in volts.
struct DataPoint {
    double current = 0;
    double voltage = 0;
};

inline constexpr int kPointSlots = 32;
inline constexpr std::size_t kImageBytes = 148;
inline constexpr std::size_t kImageDigits = 2 * kImageBytes;

// The binary record of one shot. Counts are as the instrument sends them, little-endian.
struct RecordImage {
    struct Slot {
        int current = 0;  // counts of CurrentScale()
        int voltage = 0;  // counts of 0.1 V
    };
    Slot slots[kPointSlots];
    int kneeVoltage = 0;
    int kneeCurrent = 0;
    int excitationCurrent = 0;
    int excitationVoltage = 0;
    std::int64_t measuredRatio = 0;  // 0.0001 per count
    int phaseAngle = 0;              // 0.1 degree per count
    int nameplateH = 0;              // word at 142; 0 or 65535: none
    int nameplateX = 0;              // word at 144
    int kneeTypeCode = 0;            // 1 IEEE 30, 2 IEEE 45, else ASA 10/50
    int currentRangeCode = 0;        // 10: 0.0002 A per count, else 0.0001

    double CurrentScale() const { return currentRangeCode == 10 ? 0.0002 : 0.0001; }
    // A current's count in steps of 0.0001 A, whatever the range.
    int CurrentSteps(int count) const { return currentRangeCode == 10 ? 2 * count : count; }
    // The points whose current and voltage are both above zero, in slot order; the doubles that
    // their decimal texts are.
    std::vector<DataPoint> Points() const;
};

// Decodes hexadecimal text without blanks and line ends. Digits that are missing read as 0;
// characters that are no digits count as ParseHexText has them.
RecordImage DecodeRecordImage(std::string_view hexText);

// The 296 digits of an image, upper case.
std::string EncodeRecordImage(const RecordImage& image);

// What is wrong with the hexadecimal text of a record, in words ("290 of 296 digits", "2
// characters that are no digits"); empty when it is whole. rawRecord runs from "DATA" to "DONE".
std::string DescribeRecordDamage(std::string_view rawRecord);

// The polarity verdict of a phase angle in degrees: "IN PHASE" from 0 to 90 and from 270 to 360,
// "OUT OF PHASE" from 90.1 to 269.9, else "N/A".
std::string PolarityOfPhase(double degrees);

// "IEEE 30 DEGREE TANGENT" (1), "IEEE 45 DEGREE TANGENT" (2), else "ASA 10%VTG -> 50%CUR".
std::string KneePointTypeText(int kneeTypeCode);

}  // namespace davo
