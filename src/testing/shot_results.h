// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "testing/shot_screen.h"

namespace davo {

// H / X to three decimals, in general number form; nothing for texts that are no numbers and for
// an X current of zero or below.
std::optional<std::string> NameplateRatio(const std::string& hCurrent, const std::string& xCurrent);

// |M - N| / N in percent, M the number that measured, the instrument's text, begins with; nothing
// where that cannot be computed.
std::optional<std::string> PercentError(const std::string& measured, const std::string& nameplate);

// What the sign behind "POLARITY=" is shown as; nothing for another character.
std::optional<std::string> PolarityWord(char sign);

// Shows the percent error of screen where it can be computed.
void ComputePercentError(ShotScreen& screen);

// Empties the nameplate currents and their ratio when one of them is blank.
void ClearBlankNameplate(ShotScreen& screen);

// What is to be said of the text of a measured ratio; empty of none, of a number, and of two with a
// colon between them.
std::string DescribeRatio(const std::string& ratio);

// A shot as the capture file holds it: the record, the three ratio lines of what the screen shows,
// and an empty line, each ended by CR LF.
std::string ShotBlock(std::string_view rawRecord, const ShotScreen& screen);

}  // namespace davo
