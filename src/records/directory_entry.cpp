// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/directory_entry.h"

#include <algorithm>
#include <array>

#include "common/run_time_error.h"
#include "common/text.h"
#include "records/header_table.h"

namespace davo {

namespace {

constexpr std::size_t kValueWidth = 20;
constexpr std::size_t kDateWidth = 8;
constexpr int kFirstYearOf1900s = 30;

// The last width bytes of text, or all of it.
std::string_view Tail(std::string_view text, std::size_t width) {
    return text.substr(text.size() - std::min(width, text.size()));
}

// The value of a record line from offset bytes after its first ":". A line without ":" is cut as
// if the colon were before its first byte.
std::string_view LineValue(std::string_view line, std::size_t offset) {
    const std::size_t colon = line.find(':');
    const std::size_t afterColon = colon == std::string_view::npos ? 0 : colon + 1;
    return Middle(line, afterColon + offset - 1, kValueWidth);
}

std::optional<int> TwoDigits(std::string_view text) {
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    if (!digit(text[0]) || !digit(text[1])) return std::nullopt;
    return (text[0] - '0') * 10 + (text[1] - '0');
}

}  // namespace

std::optional<QDate> ParseRecordDate(std::string_view text) {
    if (text.size() != kDateWidth || text[2] != '/' || text[5] != '/') return std::nullopt;
    const auto month = TwoDigits(text.substr(0, 2));
    const auto day = TwoDigits(text.substr(3, 2));
    const auto year = TwoDigits(text.substr(6, 2));
    if (!month || !day || !year) return std::nullopt;
    const QDate date(*year < kFirstYearOf1900s ? 2000 + *year : 1900 + *year, *month, *day);
    if (!date.isValid()) return std::nullopt;
    return date;
}

std::string RecordDateText(QDate date) {
    return date.toString(QStringLiteral("MM/dd/yy")).toStdString();
}

RecordSummary SummariseRecord(std::string_view fileName, const std::vector<std::string>& lines) {
    if (lines.size() < kSummaryLines) throw RunTimeError(ErrorNumber::InputPastEnd);

    RecordSummary summary;
    summary.baseName = TrimBlanks(fileName.substr(0, fileName.find('.')));
    const std::string_view date = Tail(lines[1], kDateWidth);
    summary.date = ParseRecordDate(date);
    summary.station = TrimBlanks(LineValue(lines[5], 2));

    std::string& entry = summary.entry;
    entry = summary.baseName + "!";
    entry.append(date).append(" ").append(Tail(lines[2], 5));
    entry.append("TESTS=").append(Tail(lines[3], 2));
    constexpr std::array<const char*, 6> kKeys = {
        "COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN="};
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        entry.append(kKeys.at(i)).append(LineValue(lines[4 + i], 2));
    }
    entry.append("OPERATOR=").append(LineValue(lines[11], 1));
    entry.append("COMMENTS=").append(LineValue(lines[10], 1));
    return summary;
}

std::vector<std::size_t> OrderByDate(const std::vector<std::string>& entries,
                                     const std::vector<QDate>& sortedDates) {
    if (entries.size() == 1) return {0};

    std::vector<std::size_t> order(entries.size());
    std::vector<bool> used(entries.size());
    std::vector<std::size_t> gaps;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::string date = RecordDateText(sortedDates.at(i));
        std::size_t taken = 0;
        while (taken < entries.size() && (used[taken] || !Contains(entries[taken], date)))
            ++taken;
        if (taken == entries.size()) {
            gaps.push_back(i);
            continue;
        }
        order[i] = taken;
        used[taken] = true;
    }
    std::size_t left = 0;
    for (const std::size_t gap : gaps) {
        while (used[left])
            ++left;
        order[gap] = left++;
    }
    return order;
}

std::vector<std::string> PlaceByDate(const std::vector<std::string>& entries,
                                     const std::vector<QDate>& sortedDates) {
    std::vector<std::string> placed;
    for (const std::size_t i : OrderByDate(entries, sortedDates))
        placed.push_back(entries[i]);
    return placed;
}

std::optional<std::string> EntryName(std::string_view entry) {
    const std::size_t mark = entry.find('!');
    if (mark == std::string_view::npos) return std::nullopt;
    return std::string(entry.substr(0, mark));
}

std::vector<ListRow> RowsOfEntries(const std::vector<std::string>& entries, int count) {
    std::vector<ListRow> rows;
    for (const std::string& entry : entries) {
        if (static_cast<int>(rows.size()) >= count) break;
        const auto name = EntryName(entry);
        if (!name) break;
        ListRow row;
        row.filename = *name;
        row.date = Middle(entry, name->size() + 1, kDateWidth);
        constexpr std::string_view kTests = "TESTS=";
        const std::size_t tests = entry.find(kTests);
        if (tests != std::string::npos) row.tests = Middle(entry, tests + kTests.size(), 2);
        row.station = FieldBetweenKeys(entry, "STATION=", "CIRCUIT=");
        row.circuit = FieldBetweenKeys(entry, "CIRCUIT=", "MFR=");
        row.mfr = FieldBetweenKeys(entry, "MFR=", "MODEL=");
        row.model = FieldBetweenKeys(entry, "MODEL=", "SN=");
        row.serial = FieldBetweenKeys(entry, "SN=", "OPERATOR=");
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace davo
