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

}  // namespace davo
