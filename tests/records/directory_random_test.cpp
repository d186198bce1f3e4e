// SPDX-License-Identifier: GPL-3.0-or-later
// The directory against a second way to write it: text is cut by 1-based positions, sorts move
// whole chains of exchanges at once, placing erases what it takes from a list.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <list>
#include <map>
#include <random>

#include "records/directory_entry.h"
#include "records/directory_file.h"
#include "records/sorting.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Lines = std::vector<std::string>;

unsigned Seed() {
    const char* given = std::getenv("DAVO_SEED");
    const unsigned seed =
        given != nullptr
            ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
            : static_cast<unsigned>(std::chrono::system_clock::now().time_since_epoch().count());
    std::cout << "DAVO_SEED=" << seed << "\n";
    return seed;
}

class Source {
  public:
    Source() : random_(Seed()) {}

    int Below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    bool OneIn(int chances) { return Below(chances) == 0; }

    // Text of the characters that could disturb an entry, and some that should not.
    std::string Text(int longest) {
        static const std::string kOdd = "!=,:\" /.\t";
        std::string text;
        for (int left = Below(longest + 1); left > 0; --left) {
            switch (Below(4)) {
                case 0:
                    text += kOdd[static_cast<std::size_t>(Below(static_cast<int>(kOdd.size())))];
                    break;
                case 1:
                    text += static_cast<char>(128 + Below(128));
                    break;
                default:
                    text += static_cast<char>('A' + Below(26));
            }
        }
        return text;
    }

    std::string Date() {
        const auto two = [](int number) {
            return std::string(1, static_cast<char>('0' + number / 10)) +
                   static_cast<char>('0' + number % 10);
        };
        if (OneIn(2)) return "0" + std::to_string(1 + Below(2)) + "/01/" + two(28 + Below(4));
        return two(1 + Below(12)) + "/" + two(1 + Below(28)) + "/" + two(Below(100));
    }

    Lines Record() {
        static const char* const kKeys[] = {"COMPANY: ", "STATION: ", "CIRCUIT: ",  "MFR: ",
                                            "MODEL: ",   "SN: ",      "COMMENTS: ", "OPERATOR: "};
        Lines lines = {"TEST NUMBER: " + Text(8), "DATE: " + Date(), "TIME: " + Text(6),
                       "# OF SHOTS: " + Text(3)};
        for (const char* key : kKeys) {
            std::string line = key + Text(30);
            if (OneIn(8)) line = key + Text(5) + Date();
            if (OneIn(10)) line = line.substr(0, static_cast<std::size_t>(Below(12)));
            if (OneIn(10)) line = Text(25);
            lines.push_back(line);
        }
        if (OneIn(12)) lines[1] = Text(12);
        if (OneIn(20)) lines[1] = "DATE: 02/31/21";
        for (int extra = Below(3); extra > 0; --extra)
            lines.push_back(Text(20));
        return lines;
    }

  private:
    std::mt19937 random_;
};

// 1-based position of part in text; 0 when it is not there.
std::size_t Position(const std::string& text, char part) {
    return text.find(part) + 1;
}

std::string From(const std::string& text, std::size_t position, std::size_t length) {
    std::string cut;
    for (std::size_t i = position; i < position + length && i <= text.size(); ++i) {
        cut += text[i - 1];
    }
    return cut;
}

std::string Last(const std::string& text, std::size_t length) {
    return text.size() <= length ? text : From(text, text.size() - length + 1, length);
}

std::string Trimmed(std::string text) {
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    while (!text.empty() && text.front() == ' ')
        text.erase(text.begin());
    return text;
}

std::string ExpectedEntry(const std::string& fileName, const Lines& lines) {
    const auto value = [&](std::size_t number, std::size_t after) {
        const std::string& line = lines.at(number - 1);
        return From(line, Position(line, ':') + after, 20);
    };
    std::string name;
    for (const char c : fileName) {
        if (c == '.') break;
        name += c;
    }
    return Trimmed(name) + "!" + Last(lines.at(1), 8) + " " + Last(lines.at(2), 5) +
           "TESTS=" + Last(lines.at(3), 2) + "COMPANY=" + value(5, 2) + "STATION=" + value(6, 2) +
           "CIRCUIT=" + value(7, 2) + "MFR=" + value(8, 2) + "MODEL=" + value(9, 2) +
           "SN=" + value(10, 2) + "OPERATOR=" + value(12, 1) + "COMMENTS=" + value(11, 1);
}

// A date as a number that grows with it; 0 for a text that is none.
int DayNumber(const std::string& text) {
    int month = 0;
    int day = 0;
    int year = 0;
    char rest = 0;
    if (text.size() != 8 || text.find_first_not_of("0123456789/") != std::string::npos) return 0;
    if (std::sscanf(text.c_str(), "%2d/%2d/%2d%c", &month, &day, &year, &rest) != 3) return 0;
    if (Last(text, 3)[0] != '/' || text[2] != '/') return 0;
    year += year <= 29 ? 2000 : 1900;
    const std::map<int, int> lengths = {{1, 31},  {2, year % 4 == 0 ? 29 : 28},
                                        {3, 31},  {4, 30},
                                        {5, 31},  {6, 30},
                                        {7, 31},  {8, 31},
                                        {9, 30},  {10, 31},
                                        {11, 30}, {12, 31}};
    const auto length = lengths.find(month);
    if (length == lengths.end() || day < 1 || day > length->second) return 0;
    return (year * 100 + month) * 100 + day;
}

std::string DateOfDayNumber(int number) {
    char text[32];
    std::snprintf(text, sizeof text, "%02d/%02d/%02d", number / 100 % 100, number % 100,
                  number / 10000 % 100);
    return text;
}

// What one pass of the exchange sort does: every element that beats all before it moves one such
// element further, the best one to the front.
Lines ExpectedTextOrder(Lines texts, bool descending) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::vector<std::size_t> winners = {i};
        for (std::size_t j = i + 1; j < texts.size(); ++j) {
            const int order = LowerCase(texts[j]).compare(LowerCase(texts[winners.back()]));
            if (descending ? order > 0 : order < 0) winners.push_back(j);
        }
        const std::string best = texts[winners.back()];
        for (std::size_t k = winners.size() - 1; k > 0; --k) {
            texts[winners[k]] = texts[winners[k - 1]];
        }
        texts[i] = best;
    }
    return texts;
}

Lines ExpectedPlaces(const Lines& entries, std::vector<int> days) {
    if (entries.size() < 2) return entries;
    std::sort(days.rbegin(), days.rend());
    std::list<std::string> free(entries.begin(), entries.end());
    std::vector<std::list<std::string>> places(days.size());
    for (std::size_t i = 0; i < days.size(); ++i) {
        const std::string wanted = DateOfDayNumber(days[i]);
        for (auto entry = free.begin(); entry != free.end(); ++entry) {
            if (std::search(entry->begin(), entry->end(), wanted.begin(), wanted.end()) ==
                entry->end()) {
                continue;
            }
            places[i].splice(places[i].end(), free, entry);
            break;
        }
    }
    Lines placed;
    for (auto& place : places) {
        if (place.empty()) place.splice(place.end(), free, free.begin());
        placed.push_back(place.front());
    }
    return placed;
}

TEST(DirectoryRandom, EntriesPlacesAndSortsAgreeWithASecondWay) {
    Source source;
    int records = 0;
    int gapsSeen = 0;
    while (records < 12000) {
        const int size = source.OneIn(4) ? 1 + source.Below(250) : 1 + source.Below(12);
        Lines entries;
        Lines stations;
        std::vector<QDate> dates;
        std::vector<int> days;
        for (int i = 0; i < size; ++i, ++records) {
            const Lines lines = source.Record();
            const std::string name = source.Text(8) + ".txt" + source.Text(3);
            const RecordSummary summary = SummariseRecord(name, lines);
            ASSERT_EQ(summary.entry, ExpectedEntry(name, lines));
            const int day = DayNumber(Last(lines[1], 8));
            ASSERT_EQ(summary.date.has_value(), day != 0) << lines[1];
            stations.push_back(summary.station);
            if (day == 0) continue;
            entries.push_back(summary.entry);
            dates.push_back(*summary.date);
            days.push_back(day);
        }
        SortDates(dates, static_cast<int>(dates.size()) - 1, kDescending);
        std::vector<int> newestFirst = days;
        std::sort(newestFirst.rbegin(), newestFirst.rend());
        for (std::size_t i = 0; i < dates.size(); ++i) {
            ASSERT_EQ(dates[i].toString(u"yyyyMMdd"_s).toInt(), newestFirst[i]);
        }
        const Lines placed = PlaceByDate(entries, dates);
        ASSERT_EQ(placed, ExpectedPlaces(entries, days));
        for (std::size_t i = 0; i < placed.size(); ++i) {
            if (placed[i].find(DateOfDayNumber(newestFirst[i])) == std::string::npos) ++gapsSeen;
        }
        std::reverse(newestFirst.begin(), newestFirst.end());
        SortDates(dates, static_cast<int>(dates.size()) - 1, 0);
        for (std::size_t i = 0; i < dates.size(); ++i) {
            ASSERT_EQ(dates[i].toString(u"yyyyMMdd"_s).toInt(), newestFirst[i]);
        }
        for (const int direction : {0, 1}) {
            Lines sorted = stations;
            SortTexts(sorted, static_cast<int>(sorted.size()) - 1, direction);
            ASSERT_EQ(sorted, ExpectedTextOrder(stations, direction == 1));
        }
    }
    std::cout << records << " records, " << gapsSeen << " places filled by entries left over\n";
    EXPECT_GT(gapsSeen, 0);
}

// Names that differ in case only make the order of ties visible.
TEST(DirectoryRandom, TextsWithManyTiesAgreeWithASecondWay) {
    Source source;
    for (int round = 0; round < 3000; ++round) {
        Lines texts;
        for (int i = source.Below(30); i > 0; --i) {
            std::string text;
            for (int k = source.Below(3); k > 0; --k)
                text += "aAbB\xE9\xC9"[source.Below(6)];
            texts.push_back(text);
        }
        for (const int direction : {0, 1, 7}) {
            Lines sorted = texts;
            SortTexts(sorted, static_cast<int>(sorted.size()) - 1, direction);
            ASSERT_EQ(sorted, ExpectedTextOrder(texts, direction == 1));
        }
    }
}

TEST(DirectoryRandom, FoldersAgreeWithASecondWay) {
    Source source;
    for (int round = 0; round < 40; ++round) {
        const QTemporaryDir folder;
        const QString dataPath = folder.path() + QLatin1Char('/');
        std::map<std::string, Lines> files;
        for (int i = source.Below(40); i > 0; --i) {
            std::string name;
            for (int k = 1 + source.Below(4); k > 0; --k)
                name += "aAbB!= 1"[source.Below(8)];
            name += source.OneIn(3) ? ".TXT" : ".txt";
            if (source.OneIn(6)) name += ".bak";
            Lines lines = source.Record();
            if (source.OneIn(10)) lines.resize(static_cast<std::size_t>(source.Below(12)));
            files[name] = lines;
        }
        for (auto next = files.begin(); next != files.end();) {
            QFile file(dataPath + QString::fromStdString(next->first));
            // Another case of letters is the same file on some systems.
            if (file.exists()) {
                next = files.erase(next);
                continue;
            }
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            const char* lineEnd = source.OneIn(2) ? "\r\n" : "\n";
            for (const std::string& line : next->second)
                file.write((line + lineEnd).c_str());
            ++next;
        }

        Lines entries;
        std::vector<int> days;
        Lines undated;
        for (const auto& [name, lines] : files) {
            if (lines.size() < 12) continue;
            const int day = DayNumber(Last(lines[1], 8));
            (day == 0 ? undated : entries).push_back(ExpectedEntry(name, lines));
            if (day != 0) days.push_back(day);
        }
        if (entries.empty() && undated.size() == 1) entries = undated;
        const Lines placed = ExpectedPlaces(entries, days);
        char count[16];
        std::snprintf(count, sizeof count, "REC==%03zu\r\n", placed.size());
        std::string expected = count;
        for (const std::string& entry : placed)
            expected += entry + "\r\n";
        if (placed.empty()) expected.clear();

        DirectoryTables tables;
        const RebuildResult result = RebuildDirectory(dataPath, tables);
        ASSERT_EQ(result.count, static_cast<int>(placed.size()));
        ASSERT_EQ(result.skipped.size() + placed.size(), files.size());
        QFile listing(dataPath + "DIRDNLD.DNL"_L1);
        const bool there = listing.open(QIODevice::ReadOnly);
        ASSERT_EQ(there, !placed.empty());
        ASSERT_EQ(there ? listing.readAll().toStdString() : std::string(), expected);
        LoadDirectoryFile(dataPath, tables);
        ASSERT_EQ(tables.recordCount, result.count);
        ASSERT_EQ(tables.dirEntries, placed);
    }
}

}  // namespace
}  // namespace davo
