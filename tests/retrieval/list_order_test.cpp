// SPDX-License-Identifier: GPL-3.0-or-later
// The order of a record list, and the folders that belong to a chosen one.
#include "retrieval/list_order.h"

#include <algorithm>
#include <cctype>
#include <random>
#include <tuple>

#include "common/places.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

std::string EntryOf(const std::string& name, const std::string& date, const std::string& station) {
    return name + "!" + date + " 10:15TESTS=03COMPANY=STATION=" + station +
           "CIRCUIT=1MFR=MODEL=" + "SN=OPERATOR=COMMENTS=";
}

const std::string kOld = EntryOf("b1", "12/31/99", "North");
const std::string kMiddle = EntryOf("A2", "01/01/00", "");
const std::string kNew = EntryOf("c3", "02/01/24", "east");
const std::string kNoStation = EntryOf("d4", "02/02/24", "   ");

// The entries in the order of a list, each with a file of its own that goes with it.
std::vector<std::string> Sorted(const std::vector<std::string>& entries, std::int16_t display,
                                std::int16_t order) {
    std::vector<ListedRecord> records;
    for (const std::string& entry : entries)
        records.push_back({entry, QString::number(records.size())});
    std::vector<std::string> sorted;
    for (const ListedRecord& record : DisplayAndSort(records, display, order)) {
        EXPECT_EQ(entries.at(record.file.toUInt()), record.entry);
        sorted.push_back(record.entry);
    }
    return sorted;
}

TEST(ListOrderOfSettings, TakesWhatIsValidAndElseNewestFirst) {
    using Values = std::vector<std::int16_t>;
    for (const std::int16_t display : Values{1, 2, 3})
        EXPECT_EQ(ValidDisplay(display), display);
    for (const std::int16_t display : Values{-1, 0, 4, 32767})
        EXPECT_EQ(ValidDisplay(display), kDisplayDate);
    EXPECT_EQ(ValidOrder(0), 0);
    for (const std::int16_t order : Values{1, -1, 2, -32768})
        EXPECT_EQ(ValidOrder(order), 1);
}

TEST(DisplayAndSort, SortsByDateAcrossTheCentury) {
    const std::vector<std::string> entries{kMiddle, kNew, kOld};
    EXPECT_THAT(Sorted(entries, kDisplayDate, 0), ElementsAre(kOld, kMiddle, kNew));
    EXPECT_THAT(Sorted(entries, kDisplayDate, 1), ElementsAre(kNew, kMiddle, kOld));
}

TEST(DisplayAndSort, SortsNamesWhateverTheirCase) {
    const std::vector<std::string> entries{kNew, kMiddle, kOld};
    EXPECT_THAT(Sorted(entries, kDisplayFilename, 0), ElementsAre(kMiddle, kOld, kNew));
    EXPECT_THAT(Sorted(entries, kDisplayFilename, 1), ElementsAre(kNew, kOld, kMiddle));
}

TEST(DisplayAndSort, RecordsWithoutAStationStandTogether) {
    const std::vector<std::string> entries{kMiddle, kOld, kNoStation, kNew};
    EXPECT_THAT(Sorted(entries, kDisplayStation, 0), ElementsAre(kMiddle, kNoStation, kNew, kOld));
    EXPECT_THAT(Sorted(entries, kDisplayStation, 1), ElementsAre(kOld, kNew, kMiddle, kNoStation));
}

TEST(DisplayAndSort, LosesNoEntryWithoutADateOrName) {
    const std::vector<std::string> entries{"no mark", EntryOf("x", "99/99/99", "s"), kNew, ""};
    for (const auto display : {kDisplayDate, kDisplayFilename, kDisplayStation}) {
        EXPECT_THAT(Sorted(entries, display, 1), UnorderedElementsAreArray(entries));
    }
    EXPECT_TRUE(Sorted({}, kDisplayDate, 1).empty());
}

// The same order by a sort that keeps equal entries in their order.
TEST(DisplayAndSortAtRandom, IsAStableSortByTheKey) {
    const std::uint64_t seed = test::RandomSeed(7);
    std::mt19937_64 random(seed);
    const auto upTo = [&](int most) { return std::uniform_int_distribution(0, most)(random); };
    for (int run = 0; run < 2000; ++run) {
        struct Record {
            std::string entry;
            std::tuple<int, int, int> date;
            std::string name;
            std::string station;
        };
        std::vector<Record> records;
        for (int i = upTo(20); i > 0; --i) {
            const int year = 20 + upTo(2);
            const int month = 1 + upTo(2);
            const int day = 10 + upTo(3);
            Record record;
            record.date = {year, month, day};
            record.name = "r" + std::to_string(upTo(15));
            const char* stations[] = {"", "Alpha", "ALPHA", "beta", "Gamma 1", "gamma 2"};
            record.station = stations[upTo(5)];
            record.entry = EntryOf(record.name,
                                   "0" + std::to_string(month) + "/" + std::to_string(day) + "/" +
                                       std::to_string(year),
                                   record.station);
            std::transform(record.station.begin(), record.station.end(), record.station.begin(),
                           [](unsigned char c) { return std::tolower(c); });
            records.push_back(record);
        }
        std::vector<std::string> entries;
        for (const Record& record : records)
            entries.push_back(record.entry);
        for (const auto display : {kDisplayDate, kDisplayFilename, kDisplayStation}) {
            for (const std::int16_t order : {std::int16_t{0}, std::int16_t{1}}) {
                std::vector<Record> wanted = records;
                std::stable_sort(wanted.begin(), wanted.end(), [&](const auto& a, const auto& b) {
                    const auto& [low, high] = order == 0 ? std::tie(a, b) : std::tie(b, a);
                    if (display == kDisplayDate) return low.date < high.date;
                    if (display == kDisplayFilename) return low.name < high.name;
                    return low.station < high.station;
                });
                std::vector<std::string> texts;
                for (const Record& record : wanted)
                    texts.push_back(record.entry);
                ASSERT_EQ(Sorted(entries, display, order), texts) << "seed " << seed;
            }
        }
    }
}

TEST(StationKey, IsLowerCaseTrimmedOrTheEmptyKey) {
    EXPECT_EQ(StationKey(kOld), "north");
    EXPECT_EQ(StationKey(kMiddle), "++**%%$$");
    EXPECT_EQ(StationKey(kNoStation), "++**%%$$");
    EXPECT_EQ(StationKey("a!STATION=x"), "++**%%$$");
    EXPECT_EQ(StationKey(""), "++**%%$$");
}

TEST(KeepWholeEntries, CountsThoseWithoutAName) {
    std::vector<ListedRecord> records = {
        {kOld, u"a"_s}, {"", u"b"_s}, {"torn", {}}, {kNew, u"d"_s}};
    EXPECT_EQ(KeepWholeEntries(records), 2);
    EXPECT_THAT(records, ElementsAre(ListedRecord{kOld, u"a"_s}, ListedRecord{kNew, u"d"_s}));
}

QString P(const char* rule) {
    return FolderText(rule);
}

TEST(FoldersOfChoice, AChosenDataFolderIsUsedAsItIs) {
    const JobFolders folders = FoldersOf(P(R"(\X\Jobs\Shots_Data)"));
    EXPECT_EQ(folders.dataPath, P(R"(\X\Jobs\Shots_Data\)"));
    EXPECT_EQ(folders.excelPath, P(R"(\X\Jobs\Shots_Excel\)"));
    EXPECT_EQ(FoldersOf(P(R"(\X\Jobs\Shots_Data\)")).dataPath, folders.dataPath);
}

TEST(FoldersOfChoice, AnyOtherFolderHoldsBoth) {
    for (const char* chosen : {R"(\X\Jobs)", R"(\X\Jobs\)"}) {
        const JobFolders folders = FoldersOf(P(chosen));
        EXPECT_EQ(folders.dataPath, P(R"(\X\Jobs\Shots_Data\)"));
        EXPECT_EQ(folders.excelPath, P(R"(\X\Jobs\Shots_Excel\)"));
    }
    EXPECT_EQ(FoldersOf(P(R"(\X\MyShots_Data)")).dataPath, P(R"(\X\MyShots_Data\Shots_Data\)"));
    EXPECT_EQ(FoldersOf(P(R"(\)")).dataPath, P(R"(\Shots_Data\)"));
}

}  // namespace
}  // namespace davo
