// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/group_file.h"

#include "common/files.h"
#include "common/numbers.h"
#include "common/text.h"
#include "records/directory_entry.h"
#include "records/record_keys.h"

namespace davo {

namespace {

constexpr std::size_t kNumberAt = kRecordKey.size() + 1;

QLatin1String EntryStart() {
    return QLatin1String(kTestNumberKey.data());
}

bool IsRecord(const std::string& line, double number) {
    return Contains(line, std::string(kRecordKey) + ' ') &&
           NumericValue(Middle(line, kNumberAt)) == number;
}

}  // namespace

std::vector<std::string> TestEntries(std::string_view recordFile) {
    std::vector<std::string> entries;
    FieldReader fields(recordFile);
    while (!fields.AtEnd()) {
        const std::string line = fields.Next();
        if (!Contains(line, kRecordKey)) continue;
        entries.push_back(std::string(kTestNumberKey).append(Middle(line, kNumberAt)));
    }
    return entries;
}

QString OverlayTestText(const QString& record, const QString& testEntry) {
    return record + QLatin1String(" - ") + testEntry;
}

std::optional<OverlayTest> OverlayTestOf(const QString& file, const QString& testEntry) {
    if (!testEntry.startsWith(EntryStart())) return std::nullopt;
    const auto number = ToPage(testEntry.mid(EntryStart().size()));
    if (!number) return std::nullopt;
    return OverlayTest{file, NumericValue(*number)};
}

std::string GroupPart(std::string_view recordFile, double number) {
    FieldReader fields(recordFile);
    std::string part;
    const auto put = [&part](const std::string& line) { part.append(line).append(kLineEnd); };
    for (std::size_t i = 0; i < kSummaryLines; ++i)
        put(fields.Next());
    bool isFound = false;
    while (!fields.AtEnd()) {
        const std::string line = fields.Next();
        if (isFound && Contains(line, std::string(kRecordKey) + ' ')) break;
        isFound = isFound || IsRecord(line, number);
        if (isFound) put(line);
    }
    return part;
}

void WriteGroupFile(const QString& dataPath, const OverlayTest& first, const OverlayTest& second) {
    std::string group;
    for (const OverlayTest& test : {first, second}) {
        group += GroupPart(ReadWholeFile(dataPath + test.file), test.number);
    }
    ReplaceFile(dataPath + QLatin1String(kGroupFileName), group);
}

}  // namespace davo
