// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/directory_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <optional>

#include "common/field_reader.h"
#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/sorting.h"

namespace davo {

namespace {

// The twelve header lines are some 400 bytes, so one block holds them in all but odd files. The
// limit keeps a file of endless lines from being read whole.
constexpr qint64 kBlockBytes = 1024;
constexpr std::size_t kHeaderBytesLimit = 65536;

QString DirectoryFilePath(const QString& dataPath) {
    return dataPath + QLatin1String(kDirectoryFileName);
}

std::vector<QString> RecordFileNames(const QString& dataPath) {
    if (!FolderExists(dataPath)) return {};
    const QDir folder(dataPath);
    if (!folder.isReadable()) {
        throw RunTimeError(ErrorNumber::PermissionDenied, dataPath.toStdString());
    }
    std::vector<QString> names;
    const auto filter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QString& name : folder.entryList(filter, QDir::NoSort)) {
        if (name.toLower().contains(QLatin1String(".txt"))) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The first twelve lines of a file, fewer when it has no more; nothing when it cannot be read.
std::optional<std::vector<std::string>> ReadSummaryLines(const QString& path) {
    // Opening a named pipe would wait for its writer.
    if (!QFileInfo(path).isFile()) return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return std::nullopt;
    std::string bytes;
    std::size_t lines = 0;
    std::size_t end = 0;  // of the last whole line
    while (lines < kSummaryLines && bytes.size() < kHeaderBytesLimit) {
        char block[kBlockBytes];
        const qint64 got = file.read(block, kBlockBytes);
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        bytes.append(block, static_cast<std::size_t>(got));
        for (; lines < kSummaryLines; ++lines) {
            const std::size_t lineEnd = bytes.find('\n', end);
            if (lineEnd == std::string::npos) break;
            end = lineEnd + 1;
        }
    }
    return SplitLines(lines == kSummaryLines ? Middle(bytes, 0, end) : bytes);
}

struct FolderSummary {
    std::vector<RecordSummary> records;  // in enumeration order, at most 250
    RebuildResult result;
};

FolderSummary SummariseFolder(const QString& dataPath) {
    FolderSummary folder;
    std::vector<RecordSummary> undated;
    for (const QString& name : RecordFileNames(dataPath)) {
        if (static_cast<int>(folder.records.size()) == kMostListedRecords) {
            ++folder.result.notListed;
            continue;
        }
        const auto skip = [&](SkipReason reason) {
            folder.result.skipped.push_back({name, reason});
        };
        const auto pageName = ToPage(name);
        if (!pageName) {
            skip(SkipReason::NameOutsidePage);
            continue;
        }
        const auto lines = ReadSummaryLines(dataPath + name);
        if (!lines) {
            skip(SkipReason::Unreadable);
            continue;
        }
        if (lines->size() < kSummaryLines) {
            skip(SkipReason::TooFewLines);
            continue;
        }
        RecordSummary summary = SummariseRecord(*pageName, *lines);
        if (summary.date) {
            folder.records.push_back(std::move(summary));
        } else {
            skip(SkipReason::NoDate);
            undated.push_back(std::move(summary));
        }
    }
    if (folder.records.empty() && undated.size() == 1) {
        // A single record needs no order: it is listed whatever its date.
        folder.records = std::move(undated);
        std::erase_if(folder.result.skipped,
                      [](const SkippedFile& file) { return file.reason == SkipReason::NoDate; });
    }
    folder.result.count = static_cast<std::int16_t>(folder.records.size());
    return folder;
}

void WriteDirectoryFile(const QString& path, const std::vector<std::string>& entries) {
    const std::string bytes = DirectoryFileText(entries);
    // Most rebuilds find the folder as it was; waiting for the disk would be their longest part.
    if (FileExists(path) && ReadWholeFile(path) == bytes) return;
    ReplaceFile(path, bytes);
}

}  // namespace

std::string DirectoryFileText(const std::vector<std::string>& entries) {
    const auto count = static_cast<double>(entries.size());
    return JoinLines({"REC==" + Picture(count, "000")}) + JoinLines(entries);
}

QString SkipReasonText(SkipReason reason) {
    switch (reason) {
        case SkipReason::Unreadable:
            return QStringLiteral("cannot be read");
        case SkipReason::TooFewLines:
            return QStringLiteral("has fewer than twelve lines");
        case SkipReason::NoDate:
            return QStringLiteral("has no date of the form MM/DD/YY");
        case SkipReason::NameOutsidePage:
            return QStringLiteral("has a name with characters that a record list cannot hold");
    }
    return {};
}

RebuildResult RebuildDirectory(const QString& dataPath, DirectoryTables& tables) {
    const FolderSummary folder = SummariseFolder(dataPath);
    std::vector<std::string> entries;
    std::vector<std::string> baseNames;
    std::vector<std::string> stations;
    std::vector<QDate> dates;
    for (const RecordSummary& record : folder.records) {
        entries.push_back(record.entry);
        baseNames.push_back(record.baseName);
        stations.push_back(record.station);
        dates.push_back(record.date.value_or(kNoRecordDate));
    }
    SortDates(dates, static_cast<int>(dates.size()) - 1, kDescending);
    entries = PlaceByDate(entries, dates);

    const QString path = DirectoryFilePath(dataPath);
    if (!entries.empty()) {
        WriteDirectoryFile(path, entries);
    } else if (FileExists(path)) {
        DeleteFile(path);
    }

    tables.dirFileNames.clear();
    for (const std::string& entry : entries) {
        const std::string name = EntryName(entry).value_or(std::string());
        tables.dirFileNames.push_back(FromPage(name) + QLatin1String(".txt"));
    }
    tables.dirDates = std::move(dates);
    tables.dirBaseNames = std::move(baseNames);
    tables.dirStations = std::move(stations);
    if (!entries.empty()) {
        tables.dirEntries = entries;
        tables.dirEntriesNew = std::move(entries);
    }
    return folder.result;
}

void LoadDirectoryFile(const QString& dataPath, DirectoryTables& tables) {
    const QString path = DirectoryFilePath(dataPath);
    if (!FileExists(path)) {
        tables.recordCount = 0;
        return;
    }
    std::vector<std::string> lines = ReadLines(path);
    if (lines.empty()) throw RunTimeError(ErrorNumber::InputPastEnd, path.toStdString());
    const std::string field = lines[0].empty() ? std::string() : FieldReader(lines[0]).Next();
    const std::string_view digits = Middle(field, field.size() < 3 ? 0 : field.size() - 3);
    const auto number = WholeNumericValue(digits);
    if (!number) throw RunTimeError(ErrorNumber::TypeMismatch, path.toStdString());
    if (*number < 0 || *number > kMostListedRecords) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange, path.toStdString());
    }
    const std::int16_t count = ToInteger16(*number);
    if (static_cast<int>(lines.size()) - 1 < count) {
        throw RunTimeError(ErrorNumber::InputPastEnd, path.toStdString());
    }
    tables.recordCount = count;
    tables.dirEntries.assign(lines.begin() + 1, lines.begin() + 1 + count);
}

std::vector<ListRow> RowsForList(const DirectoryTables& tables, int count) {
    return RowsOfEntries(tables.recordsFromInstrument ? tables.dirEntriesNew : tables.dirEntries,
                         count);
}

}  // namespace davo
