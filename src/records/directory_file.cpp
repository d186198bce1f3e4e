// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/directory_file.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <optional>
#include <utility>

#include "common/files.h"
#include "common/numbers.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/header_table.h"
#include "records/record_name.h"
#include "records/sorting.h"

namespace davo {

namespace {

// Keeps a file of endless lines from being read whole.
constexpr qint64 kHeaderBytesLimit = 65536;

QString DirectoryFilePath(const QString& dataPath) {
    return dataPath + QLatin1String(kDirectoryFileName);
}

std::vector<QString> RecordFileNames(const QString& dataPath) {
    std::vector<QString> names = NamesInFolder(dataPath);
    std::erase_if(names, [](const QString& name) { return !IsRecordFileName(name); });
    std::sort(names.begin(), names.end());
    return names;
}

// name without what would break the line that it is shown in.
QString OneLine(QString name) {
    for (QChar& c : name) {
        if (c.category() == QChar::Other_Control) c = QLatin1Char('?');
    }
    return name;
}

// The first twelve lines of a file, fewer when it has no more; nothing when it cannot be read.
std::optional<std::vector<std::string>> ReadSummaryLines(const QString& path) {
    // Opening a named pipe would wait for its writer.
    if (!QFileInfo(path).isFile()) return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < kSummaryLines && std::ssize(bytes) < kHeaderBytesLimit; ++i)
        bytes += file.readLine(kHeaderBytesLimit).toStdString();
    if (file.error() != QFileDevice::NoError) return std::nullopt;
    return SplitLines(bytes);
}

// Other programs may have put it into a text; nothing is spoilt by it.
constexpr std::string_view kTab = "\t";

QString Words(const RunTimeError& error) {
    return QString::fromStdString(ErrorText(error.Number()));
}

struct ListedFile {
    QString name;
    RecordSummary summary;
};

struct FolderSummary {
    std::vector<ListedFile> records;  // in enumeration order, at most 250
    RebuildResult result;
};

// Takes what the record file name gives to the list; why it is not listed, if it is not. A summary
// without a date is for a folder's single record only.
std::optional<SkipReason> Summarise(const QString& dataPath, const QString& name,
                                    RecordSummary& summary, bool& isCleaned) {
    std::optional<std::string> pageName = ToPage(name);
    if (!pageName || ReplaceControls(*pageName) > 0) return SkipReason::NameOutsidePage;
    std::optional<std::vector<std::string>> lines = ReadSummaryLines(dataPath + name);
    if (!lines) return SkipReason::Unreadable;
    if (lines->size() < kSummaryLines) return SkipReason::TooFewLines;
    for (std::string& line : *lines)
        isCleaned = ReplaceControls(line, kTab) > 0 || isCleaned;
    summary = SummariseRecord(*pageName, *lines);
    return summary.date ? std::nullopt : std::optional(SkipReason::NoDate);
}

FolderSummary SummariseFolder(const QString& dataPath, const std::vector<QString>& names) {
    FolderSummary folder;
    std::vector<ListedFile> undated;
    for (const QString& name : names) {
        if (static_cast<int>(folder.records.size()) == kMostListedRecords) {
            ++folder.result.notListed;
            continue;
        }
        ListedFile file{name, {}};
        bool isCleaned = false;
        const std::optional<SkipReason> reason = Summarise(dataPath, name, file.summary, isCleaned);
        // Each file of a share or a stick that has gone may take its time to fail.
        if (reason == SkipReason::Unreadable && !FolderExists(dataPath))
            throw RunTimeError(ErrorNumber::PathNotFound);
        if (isCleaned) folder.result.cleaned.push_back(RecordNameOf(name));
        if (!reason) {
            folder.records.push_back(std::move(file));
            continue;
        }
        if (*reason == SkipReason::NoDate) undated.push_back(std::move(file));
        folder.result.skipped.push_back({OneLine(name), *reason});
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

// Why "DIRDNLD.DNL" does not say what is listed; empty when it does.
QString SaveEntries(const QString& dataPath, const std::vector<std::string>& entries) {
    const QString path = DirectoryFilePath(dataPath);
    const std::string bytes = DirectoryFileText(entries);
    try {
        const bool isThere = FileExists(path);
        // Most rebuilds find the folder as it was; waiting for the disk would be their longest
        // part.
        const bool saysSo = isThere && !entries.empty() && ReadWholeFile(path) == bytes;
        if (!entries.empty() && !saysSo) ReplaceFile(path, bytes);
        if (entries.empty() && isThere) DeleteFile(path);
    } catch (const RunTimeError& error) {
        return Words(error);
    }
    return {};
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

QString UnreadText(const RebuildResult& result, const QString& dataPath) {
    if (result.unread.isEmpty()) return {};
    return QStringLiteral("The folder %1 cannot be read: %2.")
        .arg(ShownPath(dataPath), result.unread);
}

QString CleanedText(const RebuildResult& result) {
    if (result.cleaned.empty()) return {};
    return CleanedHeaderText(result.cleaned.size() == 1
                                 ? result.cleaned.front()
                                 : QStringLiteral("%1 files").arg(result.cleaned.size()));
}

QString NotSavedText(const RebuildResult& result) {
    if (result.notSaved.isEmpty()) return {};
    return QStringLiteral("%1 cannot be written (%2). The records are listed anyway.")
        .arg(QLatin1String(kDirectoryFileName), result.notSaved);
}

RebuildResult RebuildDirectory(const QString& dataPath, DirectoryTables& tables) {
    FolderSummary folder;
    try {
        folder = SummariseFolder(dataPath, RecordFileNames(dataPath));
    } catch (const RunTimeError& error) {
        tables.listing = {};
        tables.listing.unread = Words(error);
        return tables.listing;
    }
    std::vector<std::string> found;
    std::vector<std::string> baseNames;
    std::vector<std::string> stations;
    std::vector<QDate> dates;
    for (const ListedFile& file : folder.records) {
        found.push_back(file.summary.entry);
        baseNames.push_back(file.summary.baseName);
        stations.push_back(file.summary.station);
        dates.push_back(file.summary.date.value_or(kNoRecordDate));
    }
    SortDates(dates, static_cast<int>(dates.size()) - 1, kDescending);
    std::vector<std::string> entries;
    tables.dirFileNames.clear();
    for (const std::size_t i : OrderByDate(found, dates)) {
        entries.push_back(found[i]);
        tables.dirFileNames.push_back(folder.records[i].name);
    }
    folder.result.notSaved = SaveEntries(dataPath, entries);

    tables.dirDates = std::move(dates);
    tables.dirBaseNames = std::move(baseNames);
    tables.dirStations = std::move(stations);
    if (!entries.empty()) {
        tables.dirEntries = entries;
        tables.dirEntriesNew = std::move(entries);
    }
    tables.listing = folder.result;
    return folder.result;
}

const RebuildResult& ListFolder(const QString& dataPath, DirectoryTables& tables) {
    RebuildDirectory(dataPath, tables);
    tables.recordCount = tables.listing.count;
    if (tables.listing.unread.isEmpty() && tables.listing.notSaved.isEmpty()) {
        try {
            LoadDirectoryFile(dataPath, tables);
        } catch (const RunTimeError& error) {
            tables.listing.notSaved = Words(error);
        }
    }
    return tables.listing;
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
    std::vector<std::string> entries(lines.begin() + 1, lines.begin() + 1 + count);
    if (entries != tables.dirEntries) tables.dirFileNames.clear();
    tables.dirEntries = std::move(entries);
}

QString RecordFileOf(const DirectoryTables& tables, std::size_t entry) {
    if (entry < tables.dirFileNames.size()) return tables.dirFileNames[entry];
    const std::string& text = tables.dirEntries.at(entry);
    return FromPage(EntryName(text).value_or(text)) + QLatin1String(".txt");
}

std::vector<ListRow> RowsForList(const DirectoryTables& tables, int count) {
    return RowsOfEntries(tables.recordsFromInstrument ? tables.dirEntriesNew : tables.dirEntries,
                         count);
}

}  // namespace davo
