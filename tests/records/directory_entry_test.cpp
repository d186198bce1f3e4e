// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/directory_entry.h"

#include "common/run_time_error.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

std::vector<std::string> RecordLines() {
    return {"TEST NUMBER: T15",
            "DATE: 03/09/21",
            "TIME: 14:05",
            "# OF SHOTS: 03",
            "COMPANY: ACME POWER          ",
            "STATION: NORTH               ",
            "CIRCUIT: C12                 ",
            "MFR: ABB                 ",
            "MODEL: M-1                 ",
            "SN: 12345               ",
            "COMMENTS: after repair        ",
            "OPERATOR: J. DOE              "};
}

TEST(SummariseRecord, WritesTheEntryOfAFullRecord) {
    const RecordSummary summary = SummariseRecord("T15.txt", RecordLines());
    EXPECT_EQ(summary.entry,
              "T15!03/09/21 14:05TESTS=03"
              "COMPANY=ACME POWER          "
              "STATION=NORTH               "
              "CIRCUIT=C12                 "
              "MFR=ABB                 "
              "MODEL=M-1                 "
              "SN=12345               "
              "OPERATOR= J. DOE             "
              "COMMENTS= after repair       ");
    EXPECT_EQ(summary.baseName, "T15");
    EXPECT_EQ(summary.station, "NORTH");
    EXPECT_EQ(summary.date, QDate(2021, 3, 9));
}

TEST(SummariseRecord, CutsValuesAtTwentyAndAfterTheFirstColonOnly) {
    auto lines = RecordLines();
    lines[4] = "COMPANY: A:B=C!D,E\"F-0123456789";
    lines[10] = "COMMENTS: 123456789012345678901234";
    lines[11] = "OPERATOR: 123456789012345678901234";
    const std::string entry = SummariseRecord("T.txt", lines).entry;
    EXPECT_THAT(entry, HasSubstr("COMPANY=A:B=C!D,E\"F-01234567STATION="));
    EXPECT_THAT(entry, EndsWith("OPERATOR= 1234567890123456789COMMENTS= "
                                "1234567890123456789"));
}

TEST(SummariseRecord, ShortLinesGiveShortValues) {
    std::vector<std::string> lines(12);
    EXPECT_EQ(SummariseRecord("T.txt", lines).entry,
              "T! TESTS=COMPANY=STATION=CIRCUIT=MFR=MODEL=SN=OPERATOR=COMMENTS=");
    lines = {"a",         "D:1",    "b:2",   "3", "COMPANY:",  "STATION: ",
             "CIRCUIT:x", "MFR: y", "MODEL", "",  "COMMENTS:", "OPERATOR:z"};
    EXPECT_EQ(SummariseRecord("T.txt", lines).entry,
              "T!D:1 b:2TESTS=3COMPANY=STATION=CIRCUIT=MFR=yMODEL=ODELSN=OPERATOR=zCOMMENTS=");
}

TEST(SummariseRecord, ALineWithoutColonIsCutAsIfItStoodInFront) {
    auto lines = RecordLines();
    lines[5] = "NO COLON HERE";
    lines[11] = "NONE EITHER";
    const RecordSummary summary = SummariseRecord("T.txt", lines);
    EXPECT_THAT(summary.entry, HasSubstr("STATION=O COLON HERECIRCUIT="));
    EXPECT_THAT(summary.entry, HasSubstr("OPERATOR=NONE EITHERCOMMENTS="));
    EXPECT_EQ(summary.station, "O COLON HERE");
}

TEST(SummariseRecord, TheNameEndsAtItsFirstPointAndIsTrimmed) {
    EXPECT_EQ(SummariseRecord("NOTES.TXT.BAK", RecordLines()).baseName, "NOTES");
    EXPECT_EQ(SummariseRecord("  A B .txt", RecordLines()).baseName, "A B");
    EXPECT_EQ(SummariseRecord(".txt", RecordLines()).entry.substr(0, 9), "!03/09/21");
}

TEST(SummariseRecord, FewerThanTwelveLinesCannotBeSummedUp) {
    auto lines = RecordLines();
    lines.pop_back();
    EXPECT_EQ(test::NumberThrownBy([&] { SummariseRecord("T.txt", lines); }),
              ErrorNumber::InputPastEnd);
}

TEST(ParseRecordDate, TwoDigitYearsTurnAtThirty) {
    EXPECT_EQ(ParseRecordDate("01/31/00"), QDate(2000, 1, 31));
    EXPECT_EQ(ParseRecordDate("02/29/20"), QDate(2020, 2, 29));
    EXPECT_EQ(ParseRecordDate("12/01/29"), QDate(2029, 12, 1));
    EXPECT_EQ(ParseRecordDate("12/01/30"), QDate(1930, 12, 1));
    EXPECT_EQ(ParseRecordDate("12/31/99"), QDate(1999, 12, 31));
}

TEST(ParseRecordDate, OtherTextsAreNoDate) {
    for (const char* text : {"", "DATE: ", "13/01/20", "00/01/20", "02/30/20", "02/29/21",
                             "31/12/20", "01-02-20", " 1/02/20", "1/02/200", "01/02/2O",
                             "01/02/2:", "01/02/2/", "01/02/+1", "01/02/20 ", "ab/cd/ef"}) {
        EXPECT_FALSE(ParseRecordDate(text)) << text;
    }
}

TEST(RecordDateText, GoesBackToTheTextItCameFrom) {
    for (const char* text : {"01/02/00", "12/31/29", "01/01/30", "10/09/99"}) {
        EXPECT_EQ(RecordDateText(ParseRecordDate(text).value()), text);
    }
}

const QDate kOld(2020, 1, 2);
const QDate kNew(2021, 3, 4);

TEST(PlaceByDate, PutsEntriesWhereTheirDatesAre) {
    EXPECT_THAT(PlaceByDate({"A!01/02/20", "B!03/04/21"}, {kNew, kOld}),
                ElementsAre("B!03/04/21", "A!01/02/20"));
    EXPECT_THAT(PlaceByDate({}, {}), IsEmpty());
}

TEST(PlaceByDate, EntriesOfOneDayKeepTheirOrderSideBySide) {
    EXPECT_THAT(PlaceByDate({"C!03/04/21", "A!01/02/20", "B!03/04/21"}, {kNew, kNew, kOld}),
                ElementsAre("C!03/04/21", "B!03/04/21", "A!01/02/20"));
}

TEST(PlaceByDate, ASingleEntryIsTakenWhateverItsDate) {
    EXPECT_THAT(PlaceByDate({"A!no date"}, {kOld}), ElementsAre("A!no date"));
}

TEST(PlaceByDate, AnEntryWhoseCommentsHoldTheDateIsTakenToo) {
    EXPECT_THAT(PlaceByDate({"A!01/02/20COMMENTS=as 03/04/21", "B!03/04/21", "C!03/04/21"},
                            {kNew, kNew, kOld}),
                ElementsAre("A!01/02/20COMMENTS=as 03/04/21", "B!03/04/21", "C!03/04/21"));
}

TEST(PlaceByDate, EntriesLeftOverFillThePlacesThatFoundNone) {
    const QDate between(2020, 6, 7);
    const std::string a = "A!01/02/20COMMENTS=as 03/04/21";
    EXPECT_THAT(PlaceByDate({a, "B!03/04/21", "C!06/07/20"}, {kNew, between, kOld}),
                ElementsAre(a, "C!06/07/20", "B!03/04/21"));
}

TEST(PlaceByDate, AnEntryWithoutADateFillsTheLastPlace) {
    EXPECT_THAT(PlaceByDate({"A!no date", "B!03/04/21"}, {kNew, QDate(1900, 1, 1)}),
                ElementsAre("B!03/04/21", "A!no date"));
}

TEST(EntryName, EndsAtTheFirstMark) {
    EXPECT_EQ(EntryName("A!B!03/04/21"), "A");
    EXPECT_EQ(EntryName("!03/04/21"), "");
    EXPECT_EQ(EntryName("A 03/04/21"), std::nullopt);
}

TEST(RowsOfEntries, CutsTheColumnsByKey) {
    const std::string entry = SummariseRecord("T15.txt", RecordLines()).entry;
    const auto rows = RowsOfEntries({entry}, 1);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].filename, "T15");
    EXPECT_EQ(rows[0].date, "03/09/21");
    EXPECT_EQ(rows[0].tests, "03");
    EXPECT_EQ(rows[0].station, "NORTH               ");
    EXPECT_EQ(rows[0].circuit, "C12                 ");
    EXPECT_EQ(rows[0].mfr, "ABB                 ");
    EXPECT_EQ(rows[0].model, "M-1                 ");
    EXPECT_EQ(rows[0].serial, "12345               ");
}

TEST(RowsOfEntries, ShortValuesAreFilledToTwenty) {
    const auto rows = RowsOfEntries(
        {"T!03/09/21 14:05TESTS=03COMPANY=STATION=CIRCUIT=xMFR=MODEL=ySN=OPERATOR=COMMENTS="}, 1);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].station, std::string(20, ' '));
    EXPECT_EQ(rows[0].circuit, "x" + std::string(19, ' '));
    EXPECT_EQ(rows[0].mfr, std::string(20, ' '));
    EXPECT_EQ(rows[0].model, "y" + std::string(19, ' '));
}

TEST(RowsOfEntries, AnEntryWithoutMarkEndsTheList) {
    const auto rows = RowsOfEntries({"A!03/09/21", "damaged", "C!03/09/21"}, 3);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].filename, "A");
}

TEST(RowsOfEntries, DamagedEntriesGiveWhatTheyHold) {
    const auto rows = RowsOfEntries({"A!", "B!1TESTS=", "C!03/09/21 14:05TESTS=7"}, 3);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].date, "");
    EXPECT_EQ(rows[0].tests, "");
    EXPECT_EQ(rows[1].date, "1TESTS=");
    EXPECT_EQ(rows[2].tests, "7");
}

TEST(RowsOfEntries, NoMoreThanAskedAndNoMoreThanThereAre) {
    EXPECT_THAT(RowsOfEntries({"A!", "B!", "C!"}, 2).size(), 2U);
    EXPECT_THAT(RowsOfEntries({"A!"}, 250).size(), 1U);
    EXPECT_THAT(RowsOfEntries({"A!"}, 0), IsEmpty());
    EXPECT_THAT(RowsOfEntries({"A!"}, -1), IsEmpty());
}

}  // namespace
}  // namespace davo
