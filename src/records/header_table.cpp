// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/header_table.h"

#include <string_view>

#include "common/files.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr const char* kHeaderFileName = "Davo.ini";

QString HeaderFilePath(const QString& dataPath) {
    return dataPath + QLatin1String(kHeaderFileName);
}

// The order of the keys decides: a comment that holds "SN:" is taken as the serial number.
void TakeHeaderLine(HeaderTable& table, std::string_view line) {
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        const std::string key = std::string(kHeaderKeys.at(static_cast<std::size_t>(i))) + ":";
        const std::size_t at = line.find(key);
        if (at == std::string_view::npos) continue;
        table.Field(i) = std::string(line.substr(at + key.size()));
        return;
    }
}

}  // namespace

void LoadHeaderFile(HeaderTable& table, const QString& dataPath) {
    const QString path = HeaderFilePath(dataPath);
    if (FileExists(path)) {
        for (const std::string& line : ReadLines(path))
            TakeHeaderLine(table, line);
    } else {
        for (int i = 0; i < kHeaderFieldCount; ++i)
            table.Field(i).clear();
    }
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        table.Field(i) = PadRight(table.Field(i), kHeaderFieldWidth);
    }
}

void SaveHeaderFile(const HeaderTable& table, const QString& dataPath) {
    std::vector<std::string> lines;
    lines.reserve(kHeaderFieldCount);
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        lines.push_back(std::string(kHeaderKeys.at(static_cast<std::size_t>(i))) + ":" +
                        table.Field(i));
    }
    ReplaceFile(HeaderFilePath(dataPath), JoinLines(lines));
}

std::string TakeHeaderField(std::string& text) {
    std::size_t length = TrimBlanks(text).size();
    if (length == 0) return {};
    if (length > kHeaderFieldWidth) {
        text.resize(kHeaderFieldWidth);
        length = kHeaderFieldWidth;
    }
    return TrimBlanks(text) + std::string(kHeaderFieldWidth - length, ' ');
}

std::string FieldBetweenKeys(const std::string& line, const std::string& startKey,
                             const std::string& endKey) {
    std::string_view value;
    const std::size_t start = line.find(startKey);
    if (start != std::string::npos) {
        const std::size_t from = start + startKey.size();
        const std::size_t end = line.find(endKey, from);
        value = Middle(line, from, end == std::string::npos ? end : end - from);
    }
    return PadRight(value, kHeaderFieldWidth);
}

}  // namespace davo
