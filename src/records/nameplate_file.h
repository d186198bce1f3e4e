// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>
#include <string>
#include <string_view>

namespace davo {

// The file of all nameplates in a data folder: a heading, then a line for each serial number;
// fields are parted by tabs.
inline constexpr const char* kNameplateFileName = "nameplates.tsv";

// Behind the serial number, as the heading has them.
inline constexpr std::array<std::string_view, 12> kNameplateFields = {"class",
                                                                      "secondary_A",
                                                                      "Rct_ohm",
                                                                      "Ek_V",
                                                                      "Ie_A",
                                                                      "turns_ratio",
                                                                      "ratio_limit_percent",
                                                                      "ALF",
                                                                      "burden_VA",
                                                                      "connected_ohm",
                                                                      "C_voltage_V",
                                                                      "taps"};

// Texts as they were typed, of kNameplateFields; empty ones where nothing was.
using NameplateTexts = std::array<std::string, kNameplateFields.size()>;

// Whether two serial numbers are one: blanks at the ends, repeated ones, and capitals do not count.
// Empty ones are none.
bool IsSameSerial(std::string_view one, std::string_view other);

// The nameplate of a serial number in folder (ends with the separator), empty texts where there is
// none. Throws RunTimeError 13 with the first line that is none of such a file, and the errors of
// ReadWholeFile.
NameplateTexts ReadNameplate(const QString& folder, std::string_view serial);

// Keeps it, in place of an earlier one; empty texts take it away. The other lines stay as they are.
// No text has a tab or a line end. Throws what ReadNameplate and ReplaceFile throw, and has changed
// nothing then.
void KeepNameplate(const QString& folder, std::string_view serial, const NameplateTexts& texts);

}  // namespace davo
