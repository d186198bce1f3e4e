// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/text.h"

namespace davo {

// What the instrument says in a shot, found in the text that gathered so far. The line delivers it
// in any pieces, so each of these tells a line that is whole from one that is still arriving.

inline constexpr std::string_view kSaturationPrompt = "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES";

// One live reading, "I=0.0123 V=152.4": amperes and volts as received, parts of the text.
struct Reading {
    std::string_view current;
    std::string_view voltage;
};

// The readings that are there up to their CR LF, in their order. A "V=" belongs to the nearest
// "I=" before it; the character just before "V=" is a separator and no part of the current.
std::vector<Reading> CompleteReadings(std::string_view text);

// The saturation prompt as it is shown: the prompt, a blank, and the bracket that is behind it
// on its line. Nothing while neither the bracket nor the line end has arrived.
std::optional<std::string> SaturationPrompt(std::string_view text);

// The last "RATIO=" line's value, up to its CR LF; nothing without a whole one.
std::optional<std::string_view> RatioIn(std::string_view text);

// The character behind the last "POLARITY=" that has one.
std::optional<char> PolarityIn(std::string_view text);

// From "DATA" through the "DONE" behind it; nothing while one of them is missing.
std::optional<std::string_view> RecordIn(std::string_view text);

// Where the part begins that still has to be examined once more text is there: a record without
// its "DONE" (also when only a part of the word "DATA" has arrived) or the last line without a
// CR LF, whichever comes first. Without keepReading such a line is left out when it is a reading.
// text.size() when nothing is left.
std::size_t UnfinishedFrom(std::string_view text, bool keepReading);

}  // namespace davo
