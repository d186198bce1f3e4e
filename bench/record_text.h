// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <string>

namespace davo::bench {

// A record file of shots, each of 32 points; number tells records apart and spreads their dates.
inline std::string RecordText(int number, int shots = 3) {
    constexpr int kPoints = 32;
    char lines[64];
    std::snprintf(lines, sizeof lines,
                  "DATE: %02d/%02d/%02d\r\nTIME: 10:15\r\n# OF SHOTS: %02d\r\n", 1 + number % 12,
                  1 + number % 28, 20 + number % 7, shots);
    std::string text = "TEST NUMBER: T" + std::to_string(number) + "\r\n" + lines;
    for (const char* key :
         {"COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR"}) {
        text += std::string(key) + ": SUBSTATION NORTH 12 \r\n";
    }
    for (int shot = 1; shot <= shots; ++shot) {
        text += "REC NUMBER: " + std::to_string(shot) + "\r\n";
        for (int point = 0; point < kPoints; ++point)
            text += "CURRENT: 0.0124VOLTAGE: 152.3\r\n";
        text += "NUMBER OF DATA POINTS: 32\r\nKNEE VOLTAGE: 152.3 VOLTS\r\n";
    }
    return text;
}

}  // namespace davo::bench
