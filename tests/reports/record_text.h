// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace davo::test {

// The lines of record files, as the program writes them: fields of a header filled to 20.

using PointTexts = std::vector<std::pair<std::string, std::string>>;  // current, voltage

// A curve of seven points with another kneepoint under every rule. The grid adds seven.
inline PointTexts KneeCurve() {
    return {{"0.0500", "10.0"}, {"0.0600", "15.0"}, {"0.0700", "22.0"}, {"0.0900", "30.0"},
            {"0.1500", "37.0"}, {"0.6000", "42.0"}, {"3.0000", "44.0"}};
}
inline constexpr int kKneeCurvePoints = 14;

inline std::string Line(const std::string& text) {
    return text + "\r\n";
}

inline std::string Padded(std::string text) {
    text.resize(20, ' ');
    return text;
}

inline std::string HeaderText(const std::string& name = "T0012",
                              const std::string& station = "Hilltop") {
    return Line("TEST NUMBER: " + name) + Line("DATE: 03/07/24") + Line("TIME: 14:05") +
           Line("# OF SHOTS: 01") + Line("COMPANY: " + Padded("Power & Light")) +
           Line("STATION: " + Padded(station)) + Line("CIRCUIT: " + Padded("Feeder 4")) +
           Line("MFR: " + Padded("Acme")) + Line("MODEL: " + Padded("CT-600")) +
           Line("SN: " + Padded("00012345")) + Line("COMMENTS: " + Padded("a: b, c")) +
           Line("OPERATOR: " + Padded("J. Doe"));
}

struct RecordParts {
    std::string number = " 1";  // behind "REC NUMBER:"
    std::string optionalLines;
    PointTexts points = KneeCurve();
    std::string countText;  // behind "NUMBER OF DATA POINTS:"; empty: that of points
    std::string phase = "1.5 DEG";
    std::string excitationCurrent = "0.124 AMPS";
    std::string excitationVoltage = "200.1 VOLTS";
    std::string measuredRatio = "241.20";
    std::string polarity = "IN PHASE";
    std::string nameplate = "240 (1200:5)";
    std::string percentError = "0.50%";
};

inline std::string RecordText(const RecordParts& parts = {}) {
    std::string text = Line("REC NUMBER:" + parts.number) + parts.optionalLines;
    for (const auto& [current, voltage] : parts.points)
        text += Line("CURRENT: " + current + "VOLTAGE: " + voltage);
    const std::string count =
        parts.countText.empty() ? " " + std::to_string(parts.points.size()) : parts.countText;
    return text + Line("NUMBER OF DATA POINTS:" + count) + Line("KNEE VOLTAGE: 152.3 VOLTS") +
           Line("KNEE CURRENT: 0.0124 AMPS") + Line("EXCITATION CUR: " + parts.excitationCurrent) +
           Line("EXCITATION VTG: " + parts.excitationVoltage) +
           Line("MEASURED RATIO: " + parts.measuredRatio) + Line("POLARITY: " + parts.polarity) +
           Line("PHASE ANGLE: " + parts.phase) + Line("NAMEPLATE RATIO: " + parts.nameplate) +
           Line("PERCENT ERROR: " + parts.percentError) +
           Line("KNEE POINT TYPE: IEEE 30 DEGREE TANGENT");
}

inline std::string RecordText(int number) {
    RecordParts parts;
    parts.number = " " + std::to_string(number);
    return RecordText(parts);
}

// A file of count tests, numbered from 1.
inline std::string FileText(int count) {
    std::string text = HeaderText();
    for (int number = 1; number <= count; ++number)
        text += RecordText(number);
    return text;
}

}  // namespace davo::test
