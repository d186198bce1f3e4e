// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "records/record_image.h"

namespace davo {

// Adds a line, ended by CR LF.
void PutLine(std::string& file, std::string_view line);

// Adds the line key, a blank, value and unit, ended by CR LF.
void PutRecordLine(std::string& file, std::string_view key, std::string_view value,
                   std::string_view unit = {});

// Adds the lines of a shot's points, the last one first, and their number:
// "CURRENT: 0.0124VOLTAGE: 152.3" and "NUMBER OF DATA POINTS: 1".
void PutPointLines(std::string& file, const RecordImage& image);

// The numbers of a record are counts of a decimal step (0.1 V, 0.0001 A), so their texts are the
// counts' digits with a point put in. That is what Picture and GeneralNumber make of the count
// times its step, at a fraction of the time; a file of 100 shots holds 7000 of them.

// units / 10^decimals with all its decimals: 124 with 4 gives "0.0124", as the picture "###0.0000"
// does.
std::string FixedText(int units, int decimals);

// units / 10^decimals without zeros at its end, in general number form: 1520 with 1 gives "152".
// Only for values whose general form has no exponent: decimals from 1 to 4.
std::string ShortestText(int units, int decimals);

// units with one decimal less, rounded half away from zero: 1235 gives 124.
int RoundedToTens(int units);

}  // namespace davo
