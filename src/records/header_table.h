// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "records/record_keys.h"

namespace davo {

inline constexpr int kHeaderFirstField = 4;  // headerFields(4) to (11): COMPANY to OPERATOR
inline constexpr std::size_t kHeaderFieldWidth = 20;
inline constexpr int kHeaderDate = 1;  // "MM/DD/YY" of a session's first shot
inline constexpr int kHeaderTime = 2;  // "HH:MM" of it

// The process-wide table of strings; slots other than the ones above are not used.
struct HeaderTable {
    std::array<std::string, 100> headerFields;

    // The eight fields, company to operator.
    auto Fields() {
        return std::span(headerFields).subspan<kHeaderFirstField, kHeaderFieldCount>();
    }
    auto Fields() const {
        return std::span(headerFields).subspan<kHeaderFirstField, kHeaderFieldCount>();
    }
    // One of them, from 0.
    std::string& Field(int i) { return Fields()[static_cast<std::size_t>(i)]; }
    const std::string& Field(int i) const { return Fields()[static_cast<std::size_t>(i)]; }
};

// Fills the eight fields from "Davo.ini" in dataPath (each 20 blanks when the file is missing):
// the first key found anywhere in a line, in the order of kHeaderKeys, decides the field, and
// what is behind that key is its value. A line without a key is passed over, a later line for
// the same key wins. Every field is filled to 20; a longer one is kept as it is. Throws the errors
// of ReadLines.
void LoadHeaderFile(HeaderTable& table, const QString& dataPath);

// What is told of a header, named as it is told, whose control characters are shown as "?".
QString CleanedHeaderText(const QString& name);

// The field (0 company to 7 operator) that LoadHeaderFile takes a line of "Davo.ini" for; nothing
// when the line has no key.
std::optional<int> FieldOfHeaderLine(std::string_view line);

// What is told of a field whose text holds the key of another line, with its line end.
QString ReadBackText(const std::string& text, const std::string& key, const std::string& readBack);

// Writes the eight lines of "Davo.ini" in dataPath, atomically. Throws the errors of ReplaceFile.
void SaveHeaderFile(const HeaderTable& table, const QString& dataPath);

// The width rule of the header window: the stored form of a box's text, trimmed and filled to 20;
// an empty one stays empty. When the trimmed text is longer than 20, text itself is cut to its
// first 20 characters, so that the user sees the cut, and the stored form is that text trimmed,
// without filling.
std::string TakeHeaderField(std::string& text);

// The text between two keys of a line, filled with blanks to 20, never cut. Without the start key
// it is 20 blanks, without the end key it runs to the end of the line.
std::string FieldBetweenKeys(const std::string& line, const std::string& startKey,
                             const std::string& endKey);

}  // namespace davo
