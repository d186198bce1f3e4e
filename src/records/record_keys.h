// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string_view>

namespace davo {

// The keys of a record file's lines in their order; a blank and the value follow.
inline constexpr std::string_view kTestNumberKey = "TEST NUMBER:";
inline constexpr std::string_view kDateKey = "DATE:";
inline constexpr std::string_view kTimeKey = "TIME:";
inline constexpr std::string_view kShotsKey = "# OF SHOTS:";
// Those of the header's fields, which the header file has too; without their colon.
inline constexpr int kHeaderFieldCount = 8;
inline constexpr std::array<const char*, kHeaderFieldCount> kHeaderKeys = {
    "COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR"};

inline constexpr std::string_view kRecordKey = "REC NUMBER:";
inline constexpr std::string_view kDescriptionKey = "TEST DESCRIPTION:";
inline constexpr std::string_view kTestNotesKey = "TEST NOTES:";
inline constexpr std::string_view kCurrentKey = "CURRENT:";
inline constexpr std::string_view kVoltageKey = "VOLTAGE:";
inline constexpr std::string_view kPointCountKey = "NUMBER OF DATA POINTS:";
inline constexpr std::string_view kKneeVoltageKey = "KNEE VOLTAGE:";
inline constexpr std::string_view kKneeCurrentKey = "KNEE CURRENT:";
inline constexpr std::string_view kExcitationCurrentKey = "EXCITATION CUR:";
inline constexpr std::string_view kExcitationVoltageKey = "EXCITATION VTG:";
inline constexpr std::string_view kMeasuredRatioKey = "MEASURED RATIO:";
inline constexpr std::string_view kPolarityKey = "POLARITY:";
inline constexpr std::string_view kPhaseAngleKey = "PHASE ANGLE:";
inline constexpr std::string_view kNameplateRatioKey = "NAMEPLATE RATIO:";
inline constexpr std::string_view kPercentErrorKey = "PERCENT ERROR:";
inline constexpr std::string_view kKneeTypeKey = "KNEE POINT TYPE:";

inline constexpr std::string_view kNotesKey = "NOTES:";  // alone in its line

}  // namespace davo
