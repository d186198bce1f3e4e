#pragma once

#include <QString>
#include <array>
#include <string>

namespace davo {

inline constexpr int kHeaderFirstField = 4;   // headerFields(4) to (11): COMPANY to OPERATOR
inline constexpr int kHeaderFieldCount = 8;
inline constexpr std::size_t kHeaderFieldWidth = 20;
inline constexpr int kHeaderDate = 1;  // "MM/DD/YY" of a session's first shot
inline constexpr int kHeaderTime = 2;  // "HH:MM" of it

// "COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR".
extern const std::array<const char*, kHeaderFieldCount> kHeaderKeys;

// The process-wide table of strings; slots other than the ones above are not used.
struct HeaderTable {
    std::array<std::string, 100> headerFields;

    // Field i (0 company to 7 operator).
    std::string& Field(int i) { return headerFields.at(static_cast<std::size_t>(kHeaderFirstField + i)); }
    const std::string& Field(int i) const {
        return headerFields.at(static_cast<std::size_t>(kHeaderFirstField + i));
    }
};

// Fills the eight fields from "Davo.ini" in dataPath (each 20 blanks when the file is missing):
// the first key found anywhere in a line, in the order of kHeaderKeys, decides the field; every
// field is filled to 20, a longer one is kept as it is.
void LoadHeaderFile(HeaderTable& table, const QString& dataPath);

// Writes the eight lines of "Davo.ini" in dataPath, atomically. Throws the errors of ReplaceFile.
void SaveHeaderFile(const HeaderTable& table, const QString& dataPath);

// The width rule of the header window: the stored form of a box's text (trimmed, cut to 20,
// filled to 20; an empty one stays empty). text is changed to its first 20 characters when its
// trimmed form is longer than 20, so that the user sees the cut.
std::string TakeHeaderField(std::string& text);

// The text between two keys of a line, filled with blanks to 20, never cut.
std::string FieldBetweenKeys(const std::string& line, const std::string& startKey,
                             const std::string& endKey);

}  // namespace davo
