// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "common/places.h"
#include "common/run_time_error.h"

namespace davo {

inline constexpr const char* kKneeAsa = "ASA 10/50 Marker";
inline constexpr const char* kKneeIeee30 = "IEEE 30 Degree Marker";
inline constexpr const char* kKneeIeee45 = "IEEE 45 Degree Marker";

inline constexpr std::int16_t kNoPortChosen = -99;

// The settings that survive from one run to the next.
struct Settings {
    QString kneepointType = QString::fromLatin1(kKneeAsa);  // any unknown text is kept as it is
    std::int16_t comPort = 1;                               // 1 = COM1; kNoPortChosen = none
    bool showImpedance = false;
    std::int16_t sortOrder = -1;    // 0 ascending, 1 descending
    std::int16_t sortDisplay = -1;  // 1 Date, 2 Filename, 3 Station
    QString dataPath;               // ends with "\Shots_Data\"
    QString excelPath;              // ends with "\Shots_Excel\"
    QString curveLimit = {};        // of a comparison, in percent, as typed; empty: no verdict
    QString ratioLimit = {};
};

// The per-user store of application settings, addressed by application name, section and value
// name; all values are texts.
class SettingsStore {
  public:
    virtual ~SettingsStore() = default;
    // The stored text; empty when there is none.
    virtual QString Read(const QString& application, const QString& section,
                         const QString& value) const = 0;
    // What cannot be written is thrown; it may be read back until the program ends.
    virtual void Write(const QString& application, const QString& section, const QString& value,
                       const QString& text) = 0;
    // The first line that could not be read ("Line 3 of FILE"); empty where each was, and where
    // the store has no lines.
    virtual QString UnreadableLine() const { return {}; }
};

struct SettingsRead {
    Settings settings;
    std::vector<RunTimeError> errors;  // in the order of reading
};

// Reads the five values in their order, and the limits of comparisons. A first run (no data path
// stored) takes the folders from the application folder and creates the two that are missing; a
// stored path creates nothing. A port's number that is no number (error 13) or does not fit 16 bits
// (error 6) leaves the default, and a folder that cannot be created is kept as the path; the other
// values are read all the same. A stored path that is a file, or does not end with "\Shots_Data\",
// is used and said (error 75); one without a separator at its end gets one.
SettingsRead ReadSettings(const SettingsStore& store, const Places& places);

// Writes the five values in the order of the key table, then the limits that have changed. One that
// cannot be written keeps none of the others from it; the first error is thrown at the end.
void WriteSettings(SettingsStore& store, const Settings& settings);

// excelPath that belongs to dataPath: the part before the first "\Shots_Data\" and
// "\Shots_Excel\". A path without it has no such part; the report folder then is in it.
QString ExcelPathOf(const QString& dataPath);

}  // namespace davo
