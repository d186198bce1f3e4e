// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
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

// The lines before the first test of a file; texts are those of COMPANY to OPERATOR.
struct HeaderParts {
    std::string name = "T0012";
    std::string date = "03/07/24";
    std::string time = "14:05";
    std::string shots = "01";
    std::array<std::string, 8> texts;
};

inline std::string HeaderText(const HeaderParts& parts) {
    static constexpr const char* kKeys[] = {"COMPANY: ", "STATION: ", "CIRCUIT: ",  "MFR: ",
                                            "MODEL: ",   "SN: ",      "COMMENTS: ", "OPERATOR: "};
    std::string text = Line("TEST NUMBER: " + parts.name) + Line("DATE: " + parts.date) +
                       Line("TIME: " + parts.time) + Line("# OF SHOTS: " + parts.shots);
    for (std::size_t i = 0; i < parts.texts.size(); ++i)
        text += Line(kKeys[i] + parts.texts.at(i));
    return text;
}

inline std::string HeaderText(const std::string& name = "T0012",
                              const std::string& station = "Hilltop") {
    HeaderParts parts{name, "03/07/24", "14:05", "01", {}};
    parts.texts = {"Power & Light", station,    "Feeder 4", "Acme",
                   "CT-600",        "00012345", "a: b, c",  "J. Doe"};
    for (std::string& text : parts.texts)
        text = Padded(text);
    return HeaderText(parts);
}

// What tells files of a header and little else apart.
struct BriefRecord {
    std::string date = "03/07/24";
    std::string station = "S";
    std::string rest;  // behind the header
};

inline std::string RecordFileText(const std::string& name, const BriefRecord& record = {}) {
    return HeaderText(HeaderParts{name,
                                  record.date,
                                  "10:15",
                                  "03",
                                  {"C", record.station, "1", "M", "2", "3", "4", "5"}}) +
           record.rest;
}

struct RecordParts {
    std::string number = " 1";  // behind "REC NUMBER:"
    std::string optionalLines;
    PointTexts points = KneeCurve();
    std::string countText;  // behind "NUMBER OF DATA POINTS:"; empty: that of points
    std::string kneeVoltage = "152.3 VOLTS";
    std::string kneeCurrent = "0.0124 AMPS";
    std::string phase = "1.5 DEG";
    std::string excitationCurrent = "0.124 AMPS";
    std::string excitationVoltage = "200.1 VOLTS";
    std::string measuredRatio = "241.20";
    std::string polarity = "IN PHASE";
    std::string nameplate = "240 (1200:5)";
    std::string percentError = "0.50%";
    std::string kneeType = "IEEE 30 DEGREE TANGENT";
};

inline std::string RecordText(const RecordParts& parts = {}) {
    std::string text = Line("REC NUMBER:" + parts.number) + parts.optionalLines;
    for (const auto& [current, voltage] : parts.points)
        text += Line("CURRENT: " + current + "VOLTAGE: " + voltage);
    const std::string count =
        parts.countText.empty() ? " " + std::to_string(parts.points.size()) : parts.countText;
    return text + Line("NUMBER OF DATA POINTS:" + count) +
           Line("KNEE VOLTAGE: " + parts.kneeVoltage) + Line("KNEE CURRENT: " + parts.kneeCurrent) +
           Line("EXCITATION CUR: " + parts.excitationCurrent) +
           Line("EXCITATION VTG: " + parts.excitationVoltage) +
           Line("MEASURED RATIO: " + parts.measuredRatio) + Line("POLARITY: " + parts.polarity) +
           Line("PHASE ANGLE: " + parts.phase) + Line("NAMEPLATE RATIO: " + parts.nameplate) +
           Line("PERCENT ERROR: " + parts.percentError) +
           Line("KNEE POINT TYPE: " + parts.kneeType);
}

// optionalLines are whole lines behind the first one: a description, notes.
inline std::string RecordText(int number, const std::string& optionalLines = {}) {
    RecordParts parts;
    parts.number = " " + std::to_string(number);
    parts.optionalLines = optionalLines;
    return RecordText(parts);
}

// The header of a record T1, and tests of two points to go behind it.
inline std::string HeaderOfT1(const std::string& station, const std::string& circuit) {
    HeaderParts parts{"T1", "11/21/26", "10:15", "03", {}};
    parts.texts = {Padded("ACME"), station,        circuit,        Padded("Maker"),
                   Padded("M-5"),  Padded("4711"), Padded("fine"), Padded("J. Operator")};
    return HeaderText(parts);
}

inline std::string ShotText(int number, const std::string& optionalLines = {}) {
    RecordParts parts;
    parts.number = " " + std::to_string(number);
    parts.optionalLines = optionalLines;
    parts.points = {{"0.0200", "20.0"}, {"0.0124", "152.3"}};
    parts.kneeCurrent = "0.02 AMPS";
    parts.excitationCurrent = "0.012 AMPS";
    parts.excitationVoltage = "100 VOLTS";
    parts.measuredRatio = "240.1";
    parts.phase = "0.5 DEG";
    parts.percentError = "0.04%";
    parts.kneeType = "ASA 10%VTG -> 50%CUR";
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
