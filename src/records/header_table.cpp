// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/header_table.h"

#include <algorithm>

#include "common/files.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr const char* kHeaderFileName = "Davo.ini";

QString HeaderFilePath(const QString& dataPath) {
    return dataPath + QLatin1String(kHeaderFileName);
}

std::string KeyOf(int field) {
    return std::string(kHeaderKeys.at(static_cast<std::size_t>(field))) + ":";
}

}  // namespace

// The order of the keys decides: a comment that holds "SN:" is taken as the serial number.
std::optional<int> FieldOfHeaderLine(std::string_view line) {
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        if (Contains(line, KeyOf(i))) return i;
    }
    return std::nullopt;
}

QString CleanedHeaderText(const QString& name) {
    return QStringLiteral("The header of %1 has control characters, shown as \"?\".").arg(name);
}

QString ReadBackText(const std::string& text, const std::string& key, const std::string& readBack) {
    return QStringLiteral("The text \"%1\" of %2 would be read back as %3.\r\n")
        .arg(FromPage(TrimBlanks(text)), FromPage(key), FromPage(readBack));
}

void LoadHeaderFile(HeaderTable& table, const QString& dataPath) {
    const QString path = HeaderFilePath(dataPath);
    if (FileExists(path)) {
        for (const std::string& line : ReadLines(path)) {
            const std::optional<int> field = FieldOfHeaderLine(line);
            if (!field) continue;
            const std::string key = KeyOf(*field);
            table.Field(*field) = line.substr(line.find(key) + key.size());
        }
    } else {
        std::ranges::fill(table.Fields(), std::string());
    }
    for (std::string& field : table.Fields())
        field = PadRight(field, kHeaderFieldWidth);
}

void SaveHeaderFile(const HeaderTable& table, const QString& dataPath) {
    std::vector<std::string> lines;
    lines.reserve(kHeaderFieldCount);
    for (int i = 0; i < kHeaderFieldCount; ++i)
        lines.push_back(KeyOf(i) + table.Field(i));
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
