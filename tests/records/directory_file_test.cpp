// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/records/directory_folder.h"

#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST_F(DirectoryFile, AnEmptyFolderHasNoRecordsAndNoDirectoryFile) {
    Write("DIRDNLD.DNL", "REC==001\r\nOLD!\r\n");
    tables.dirBaseNames = {"OLD"};
    tables.dirEntries = {"OLD!"};
    tables.recordCount = 1;
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 0);
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_EQ(result.notListed, 0);
    EXPECT_TRUE(Names().isEmpty());
    EXPECT_THAT(tables.dirBaseNames, IsEmpty());
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
    EXPECT_THAT(RowsForList(tables, tables.recordCount), IsEmpty());
}

TEST_F(DirectoryFile, AMissingFolderIsNoEmptyOne) {
    Write("a.txt", RecordText("03/09/21"));
    ListFolder(dataPath, tables);
    const RebuildResult result = ListFolder(dataPath + "none/"_L1, tables);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(result.unread, u"Path not found"_s);
    EXPECT_EQ(UnreadText(result, u"X"_s), u"The folder X cannot be read: Path not found."_s);
    EXPECT_EQ(tables.recordCount, 0);
    EXPECT_FALSE(QDir(dataPath + "none"_L1).exists());
    EXPECT_EQ(ListFolder(dataPath, tables).unread, QString());
    EXPECT_EQ(tables.recordCount, 1);
}

// The entry has the name up to its first full stop, so two files may have the same.
TEST_F(DirectoryFile, EveryEntryHasItsOwnFile) {
    Write("a.txt", RecordText("03/09/21"));
    Write("a.b.txt", RecordText("03/10/21"));
    Write("b.txt", RecordText("03/11/21"));
    ListFolder(dataPath, tables);
    EXPECT_THAT(tables.dirFileNames, ElementsAre(u"b.txt"_s, u"a.b.txt"_s, u"a.txt"_s));
    EXPECT_EQ(RecordFileOf(tables, 1), u"a.b.txt"_s);
    // Nothing is known of the files of other entries.
    Write("DIRDNLD.DNL", "REC==001\r\nT1!\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_THAT(tables.dirFileNames, IsEmpty());
    EXPECT_EQ(RecordFileOf(tables, 0), u"T1.txt"_s);
}

TEST_F(DirectoryFile, ControlCharactersBecomeQuestionMarks) {
    Write("a.txt", RecordText("03/09/21", "x\x01y\tz"));
    Write("b.txt", RecordText("03/09/21"));
    const RebuildResult result = Rebuild();
    EXPECT_THAT(result.cleaned, ElementsAre(u"a"_s));
    EXPECT_THAT(tables.dirEntries.front(), EndsWith("COMMENTS= x?y\tz"));
    EXPECT_THAT(Listing(), HasSubstr("COMMENTS= x?y\tz\r\n"));
    EXPECT_EQ(CleanedText(result), u"The header of a has control characters, shown as \"?\"."_s);
    EXPECT_EQ(CleanedText({}), QString());
}

TEST_F(DirectoryFile, ListsTheNewestFirst) {
    Write("A.txt", RecordText("03/09/21"));
    Write("B.txt", RecordText("12/31/99"));
    Write("C.txt", RecordText("11/21/26"));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 3);
    const std::string a = EntryText("A", "03/09/21");
    const std::string b = EntryText("B", "12/31/99");
    const std::string c = EntryText("C", "11/21/26");
    EXPECT_EQ(Listing(), "REC==003\r\n" + c + "\r\n" + a + "\r\n" + b + "\r\n");
    EXPECT_THAT(tables.dirEntries, ElementsAre(c, a, b));
    EXPECT_THAT(tables.dirEntriesNew, ElementsAre(c, a, b));
    EXPECT_THAT(tables.dirFileNames, ElementsAre(u"C.txt"_s, u"A.txt"_s, u"B.txt"_s));
    EXPECT_THAT(tables.dirDates,
                ElementsAre(QDate(2026, 11, 21), QDate(2021, 3, 9), QDate(1999, 12, 31)));
    EXPECT_THAT(tables.dirBaseNames, ElementsAre("A", "B", "C"));
    EXPECT_THAT(tables.dirStations, ElementsAre("NORTH", "NORTH", "NORTH"));
    EXPECT_EQ(tables.recordCount, 0);
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 3);
    EXPECT_THAT(tables.dirEntries, ElementsAre(c, a, b));
}

TEST_F(DirectoryFile, ASingleRecordIsListedWhateverItsDate) {
    for (const char* date : {"03/09/21", "99/99/99", ""}) {
        Write("A.txt", RecordText(date));
        const RebuildResult result = Rebuild();
        EXPECT_EQ(result.count, 1) << date;
        EXPECT_THAT(result.skipped, IsEmpty()) << date;
        const std::string shown = *date == '\0' ? "DATE: " : date;
        EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("A", shown) + "\r\n");
    }
    EXPECT_THAT(tables.dirDates, ElementsAre(kNoRecordDate));
}

TEST_F(DirectoryFile, RecordsOfOneDayStandTogetherInTheOrderOfTheirNames) {
    Write("b.txt", RecordText("03/09/21"));
    Write("C.txt", RecordText("12/31/99"));
    Write("a.txt", RecordText("03/09/21"));
    Write("A1.txt", RecordText("03/09/21"));
    Rebuild();
    EXPECT_THAT(tables.dirFileNames, ElementsAre(u"A1.txt"_s, u"a.txt"_s, u"b.txt"_s, u"C.txt"_s));
}

TEST_F(DirectoryFile, EveryNameThatHoldsTheExtensionAnywhereIsARecord) {
    Write("NOTES.TXT.BAK", RecordText("03/09/21"));
    Write("x.Txt", RecordText("03/09/21"));
    Write("notes.text", RecordText("03/09/21"));
    Write("txt", RecordText("03/09/21"));
    EXPECT_EQ(Rebuild().count, 2);
    EXPECT_EQ(Listing(), "REC==002\r\n" + EntryText("NOTES", "03/09/21") + "\r\n" +
                             EntryText("x", "03/09/21") + "\r\n");
    EXPECT_THAT(tables.dirFileNames, ElementsAre(u"NOTES.TXT.BAK"_s, u"x.Txt"_s));
}

TEST_F(DirectoryFile, OnlyDamagedRecordsLeaveNoDirectoryFile) {
    Write("DIRDNLD.DNL", "REC==001\r\nOLD!\r\n");
    Write("a.txt", RecordText("no date"));
    Write("b.txt", RecordText("no date"));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(result.skipped.size(), 2U);
    EXPECT_EQ(Listing(), "missing");
}

TEST(SkipReasonText, SaysEachReason) {
    EXPECT_EQ(SkipReasonText(SkipReason::Unreadable), u"cannot be read"_s);
    EXPECT_EQ(SkipReasonText(SkipReason::TooFewLines), u"has fewer than twelve lines"_s);
    EXPECT_EQ(SkipReasonText(SkipReason::NoDate), u"has no date of the form MM/DD/YY"_s);
    EXPECT_EQ(SkipReasonText(SkipReason::NameOutsidePage),
              u"has a name with characters that a record list cannot hold"_s);
}

TEST_F(DirectoryFile, LineEndsMayBeBareAndTheTwelfthMayBeMissing) {
    Write("a.txt", RecordText("03/09/21", "short", "\n"));
    std::string text = RecordText("03/09/21", "", "\n");
    text.resize(text.find("\nREC NUMBER"));
    Write("b.txt", text);
    EXPECT_EQ(Rebuild().count, 2);
    EXPECT_EQ(Listing(), "REC==002\r\n" + EntryText("a", "03/09/21", "short") + "\r\n" +
                             EntryText("b", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, LongHeaderLinesAreReadToTheirEnd) {
    std::string text = RecordText("03/09/21");
    text.insert(text.find("\r\nDATE"), std::string(20000, 'x'));
    Write("a.txt", text);
    EXPECT_EQ(Rebuild().count, 1);
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, EightBitNamesAndTextsStayBytes) {
    Write("M\u00FCller \u20AC.txt", RecordText("03/09/21", "\xE9\x80\xFF\x81"));
    Rebuild();
    EXPECT_EQ(Listing(), "REC==001\r\n" +
                             EntryText("M\xFCller \x80", "03/09/21", "\xE9\x80\xFF\x81") + "\r\n");
    EXPECT_THAT(tables.dirFileNames, ElementsAre(QString::fromUtf8("M\u00FCller \u20AC.txt")));
}

TEST_F(DirectoryFile, AMarkInANameEndsItInTheList) {
    Write("A!B.txt", RecordText("03/09/21"));
    Rebuild();
    EXPECT_THAT(tables.dirFileNames, ElementsAre(u"A!B.txt"_s));
    EXPECT_EQ(RowsForList(tables, 1).at(0).date, "B!03/09/");
}

TEST_F(DirectoryFile, NoMoreThan250AreListedAndTheRestIsCounted) {
    for (int i = 0; i < 254; ++i) {
        const std::string text = i == 7 ? "damaged" : RecordText("03/09/21");
        Write(u"T%1.txt"_s.arg(i, 3, 10, QLatin1Char('0')), text);
    }
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 250);
    EXPECT_EQ(result.notListed, 3);
    EXPECT_THAT(result.skipped, ElementsAre(SkippedFile{u"T007.txt"_s, SkipReason::TooFewLines}));
    EXPECT_EQ(Listing().substr(0, 10), "REC==250\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 250);
    EXPECT_EQ(tables.dirFileNames.front(), u"T000.txt"_s);
    EXPECT_EQ(tables.dirFileNames.back(), u"T250.txt"_s);
    EXPECT_EQ(RowsForList(tables, tables.recordCount).size(), 250U);
}

TEST_F(DirectoryFile, RowsComeFromTheTableThatIsShown) {
    tables.dirEntries = {"FOLDER!"};
    tables.dirEntriesNew = {"MEMORY!"};
    EXPECT_EQ(RowsForList(tables, 1).at(0).filename, "FOLDER");
    tables.recordsFromInstrument = true;
    EXPECT_EQ(RowsForList(tables, 1).at(0).filename, "MEMORY");
}

TEST_F(DirectoryFile, LoadReadsAsManyLinesAsTheFirstSays) {
    Write("DIRDNLD.DNL", "REC==003\r\nA!\r\nB!\r\nC!\r\nD!\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 3);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!", "C!"));
}

TEST_F(DirectoryFile, LoadReadsTheFirstLineAsOneField) {
    Write("DIRDNLD.DNL", " \"REC==002\",004\nA!,\"x\"\nB!\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 2);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!,\"x\"", "B!"));
    Write("DIRDNLD.DNL", "1\nA!\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 1);
    Write("DIRDNLD.DNL", "REC==000\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
}

TEST_F(DirectoryFile, LoadWithoutTheFileClearsTheCountOnly) {
    tables.recordCount = 2;
    tables.dirEntries = {"A!", "B!"};
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!"));
}

TEST_F(DirectoryFile, ADamagedFileIsAnErrorAndChangesNothing) {
    struct Damage {
        const char* bytes;
        ErrorNumber number;
    };
    for (const Damage& damage : {Damage{"", ErrorNumber::InputPastEnd},
                                 Damage{"REC==002\r\nA!\r\n", ErrorNumber::InputPastEnd},
                                 Damage{"\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{"REC==\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{",001\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{"REC==251\r\n", ErrorNumber::SubscriptOutOfRange},
                                 Damage{"REC==1E9\r\n", ErrorNumber::SubscriptOutOfRange},
                                 Damage{"REC==-01\r\n", ErrorNumber::SubscriptOutOfRange}}) {
        Write("DIRDNLD.DNL", damage.bytes);
        tables.recordCount = 2;
        tables.dirEntries = {"A!", "B!"};
        EXPECT_EQ(NumberThrownBy([&] { LoadDirectoryFile(dataPath, tables); }), damage.number)
            << damage.bytes;
        EXPECT_EQ(tables.recordCount, 2);
        EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!"));
    }
}

}  // namespace
}  // namespace davo::test
