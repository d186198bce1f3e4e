// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/list_order.h"

#include <QDate>
#include <algorithm>
#include <cstddef>

#include "common/places.h"
#include "common/text.h"
#include "records/directory_entry.h"
#include "records/directory_file.h"
#include "records/sorting.h"

namespace davo {

namespace {

QDate DateKey(std::string_view entry) {
    constexpr std::size_t kWidth = 8;
    const std::size_t mark = entry.find('!');
    if (mark == std::string_view::npos) return kNoRecordDate;
    return ParseRecordDate(Middle(entry, mark + 1, kWidth)).value_or(kNoRecordDate);
}

std::string NameKey(std::string_view entry) {
    return LowerCase(EntryName(entry).value_or(std::string()));
}

template <class KeyOf>
void SortBy(std::vector<ListedRecord>& records, const KeyOf& keyOf, bool down) {
    const auto before = [down](const auto& a, const auto& b) { return down ? b < a : a < b; };
    std::ranges::stable_sort(records, before,
                             [&](const ListedRecord& r) { return keyOf(r.entry); });
}

QString WithoutSeparatorAtEnd(QString path, const QString& separator) {
    while (path.endsWith(separator))
        path.chop(separator.size());
    return path;
}

}  // namespace

std::int16_t ValidDisplay(std::int16_t sortDisplay) {
    const bool known = sortDisplay >= kDisplayDate && sortDisplay <= kDisplayStation;
    return known ? sortDisplay : kDisplayDate;
}

std::int16_t ValidOrder(std::int16_t sortOrder) {
    return sortOrder == 0 ? std::int16_t{0} : std::int16_t{kDescending};
}

std::string StationKey(std::string_view entry) {
    constexpr std::string_view kStation = "STATION=";
    const std::size_t key = entry.find(kStation);
    if (key == std::string_view::npos) return kNoStationKey;
    const std::size_t from = key + kStation.size();
    const std::size_t end = entry.find("CIRCUIT=", from);
    if (end == std::string_view::npos) return kNoStationKey;
    std::string station = LowerCase(TrimBlanks(entry.substr(from, end - from)));
    return station.empty() ? kNoStationKey : station;
}

std::vector<ListedRecord> DisplayAndSort(std::vector<ListedRecord> records,
                                         std::int16_t sortDisplay, std::int16_t sortOrder) {
    const bool down = ValidOrder(sortOrder) == kDescending;
    switch (ValidDisplay(sortDisplay)) {
        case kDisplayFilename:
            SortBy(records, NameKey, down);
            break;
        case kDisplayStation:
            SortBy(records, StationKey, down);
            break;
        default:
            SortBy(records, DateKey, down);
    }
    return records;
}

int KeepWholeEntries(std::vector<ListedRecord>& records) {
    return static_cast<int>(
        std::erase_if(records, [](const ListedRecord& r) { return !EntryName(r.entry); }));
}

JobFolders FoldersOf(const QString& chosen) {
    const QString separator = FolderText("\\");
    const QString path = WithoutSeparatorAtEnd(ShownPath(chosen), separator);
    const QString data = FolderText("\\Shots_Data");
    const QString reports = FolderText("\\Shots_Excel\\");
    if (path.endsWith(data)) return {path + separator, path.chopped(data.size()) + reports};
    return {path + data + separator, path + reports};
}

}  // namespace davo
