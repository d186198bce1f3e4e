// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace davo::test {

// The first twelve lines of a record file named T1.
inline std::string HeaderText(const std::string& station, const std::string& circuit) {
    return "TEST NUMBER: T1\r\nDATE: 11/21/26\r\nTIME: 10:15\r\n# OF SHOTS: 03\r\n"
           "COMPANY: ACME                \r\nSTATION: " +
           station + "\r\nCIRCUIT: " + circuit +
           "\r\nMFR: Maker               \r\nMODEL: M-5                 \r\n"
           "SN: 4711                \r\nCOMMENTS: fine                \r\n"
           "OPERATOR: J. Operator         \r\n";
}

// The lines of a shot; texts are whole lines that stand behind the first one.
inline std::string ShotText(int number, const std::string& texts = {}) {
    return "REC NUMBER: " + std::to_string(number) + "\r\n" + texts +
           "CURRENT: 0.0200VOLTAGE: 20.0\r\nCURRENT: 0.0124VOLTAGE: 152.3\r\n"
           "NUMBER OF DATA POINTS: 2\r\n"
           "KNEE VOLTAGE: 152.3 VOLTS\r\nKNEE CURRENT: 0.02 AMPS\r\n"
           "EXCITATION CUR: 0.012 AMPS\r\nEXCITATION VTG: 100 VOLTS\r\n"
           "MEASURED RATIO: 240.1\r\nPOLARITY: IN PHASE\r\nPHASE ANGLE: 0.5 DEG\r\n"
           "NAMEPLATE RATIO: 240 (1200:5)\r\nPERCENT ERROR: 0.04%\r\n"
           "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR\r\n";
}

}  // namespace davo::test
