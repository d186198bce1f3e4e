// SPDX-License-Identifier: GPL-3.0-or-later

#include "common/run_time_error.h"
#include "records/sorting.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

TEST(SortDates, DescendsForOneAndAscendsForAnythingElse) {
    const QDate a(1999, 12, 31);
    const QDate b(2000, 1, 1);
    const QDate c(2026, 11, 21);
    std::vector<QDate> dates = {b, c, a, b};
    SortDates(dates, 3, 1);
    EXPECT_THAT(dates, ElementsAre(c, b, b, a));
    for (const int direction : {0, 2, -1}) {
        dates = {b, c, a, b};
        SortDates(dates, 3, direction);
        EXPECT_THAT(dates, ElementsAre(a, b, b, c)) << direction;
    }
}

TEST(SortDates, LeavesTheSlotsAfterTheLastIndex) {
    const QDate a(1999, 12, 31);
    const QDate b(2000, 1, 1);
    const QDate c(2026, 11, 21);
    std::vector<QDate> dates = {a, b, c};
    SortDates(dates, 1, 1);
    EXPECT_THAT(dates, ElementsAre(b, a, c));
}

TEST(SortTexts, CaseNeverDecides) {
    std::vector<std::string> texts = {"b", "C", "a", "D"};
    SortTexts(texts, 3, 0);
    EXPECT_THAT(texts, ElementsAre("a", "b", "C", "D"));
    SortTexts(texts, 3, 1);
    EXPECT_THAT(texts, ElementsAre("D", "C", "b", "a"));
}

TEST(SortTexts, TiesAreNotSwapped) {
    std::vector<std::string> texts = {"x", "X", "x"};
    SortTexts(texts, 2, 0);
    EXPECT_THAT(texts, ElementsAre("x", "X", "x"));
    SortTexts(texts, 2, 1);
    EXPECT_THAT(texts, ElementsAre("x", "X", "x"));
}

// What a stable sort would not give: the first "b" is exchanged to the end by the "a".
TEST(SortTexts, TiesStandWhereTheExchangesLeaveThem) {
    std::vector<std::string> texts = {"b", "B", "a"};
    SortTexts(texts, 2, 0);
    EXPECT_THAT(texts, ElementsAre("a", "B", "b"));
}

TEST(SortTexts, AccentedLettersHaveNoCaseEither) {
    std::vector<std::string> texts = {"\xE9z", "\xC9y", "e"};
    SortTexts(texts, 2, 0);
    EXPECT_THAT(texts, ElementsAre("e", "\xC9y", "\xE9z"));
    EXPECT_EQ(LowerCase("A\xC0\xD6\xD7\xD8\xDE\xDF\x8A\x8C\x8E\x9F[@`"),
              "a\xE0\xF6\xD7\xF8\xFE\xDF\x9A\x9C\x9E\xFF[@`");
}

TEST(Sorts, AnIndexWithoutASlotIsOutOfRange) {
    std::vector<std::string> texts = {"a"};
    std::vector<QDate> dates;
    SortTexts(texts, -1, 0);
    SortDates(dates, -1, 0);
    for (const int lastIndex : {1, -2}) {
        EXPECT_EQ(test::NumberThrownBy([&] { SortTexts(texts, lastIndex, 0); }),
                  ErrorNumber::SubscriptOutOfRange);
    }
    EXPECT_THROW(SortDates(dates, 0, 1), RunTimeError);
}

}  // namespace
}  // namespace davo
