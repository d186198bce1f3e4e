// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/memory_directory.h"

#include "instrument/memory.h"
#include "records/directory_entry.h"
#include "records/directory_file.h"
#include "retrieval/record_reply.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

std::string Filled(const std::string& text) {
    return text + std::string(20 - text.size(), ' ');
}

// A record as the instrument sends it, with a line end behind every value.
std::string RecordText(const std::string& number, const std::string& when = "03/14/24 09:26",
                       const std::string& company = "ACME",
                       const std::string& comments = "AFTER REPAIR") {
    return "#" + number + "\r\n" + when + "\r\nTESTS=03\r\nCOMPANY=" + Filled(company) +
           "\r\nSTATION=" + Filled("NORTH") + "\r\nCIRCUIT=" + Filled("LINE 1") +
           "\r\nMFR=" + Filled("TORUS") + "\r\nMODEL=" + Filled("CT-1") +
           "\r\nSN=" + Filled("SN77") + "\r\nOPERATOR=" + Filled("J. DOE") +
           "\r\nCOMMENTS=" + Filled(comments) + "\r\n";
}

std::vector<std::string> Names(const MemoryDirectory& directory) {
    std::vector<std::string> names;
    for (const std::string& entry : directory.entries)
        names.push_back(EntryName(entry).value_or("(none)"));
    return names;
}

TEST(CutRecords, RunsFromTheMarkToOneCharacterBehindTheComment) {
    const std::string first = RecordText("001");
    const std::string second = RecordText("002");
    const auto cut = CutRecords(first + second + "\r\nDONE");
    // The line feed of the line end behind the comment is not part of it.
    EXPECT_THAT(cut.records, ElementsAre(first.substr(0, first.size() - 1),
                                         second.substr(0, second.size() - 1)));
    EXPECT_EQ(cut.damaged, 0);
    EXPECT_EQ(cut.beyond, 0);
}

TEST(CutRecords, TakesTheWordDoneInACommentForNoEnd) {
    const auto cut = CutRecords(RecordText("001", "03/14/24 09:26", "ACME", "ALL DONE") +
                                RecordText("002") + "DONE");
    EXPECT_THAT(cut.records, SizeIs(2));
    EXPECT_EQ(cut.damaged, 0);
}

TEST(CutRecords, PassesOverWhatStandsBetweenRecords) {
    const auto cut = CutRecords("DIRECTORY\r\n" + RecordText("001") + "\r\n-----\r\n" +
                                RecordText("002") + "TOTAL 2\r\nDONE");
    EXPECT_THAT(cut.records, SizeIs(2));
    EXPECT_EQ(cut.damaged, 0);
}

TEST(CutRecords, NeedsNothingBetweenTheComment_sCharacterAndTheNextRecord) {
    std::string text = RecordText("001");
    text.erase(text.size() - 2);
    text = text + "." + text + "\r\nDONE";
    EXPECT_THAT(CutRecords(text).records, SizeIs(2));
}

TEST(CutRecords, StopsAtTheMostThatAreListed) {
    std::string reply;
    for (int i = 1; i <= 140; ++i)
        reply += RecordText(std::to_string(1000 + i).substr(1));
    const auto cut = CutRecords(reply + "DONE");
    EXPECT_THAT(cut.records, SizeIs(135));
    EXPECT_EQ(cut.beyond, 5);
    EXPECT_EQ(cut.damaged, 0);
}

TEST(CutRecords, TakesAMarkInsideAValueAsPartOfIt) {
    const std::string record = RecordText("001", "03/14/24 09:26", "BAY #3", "SEE #002");
    const auto cut = CutRecords(record + RecordText("002") + "DONE");
    EXPECT_THAT(cut.records, SizeIs(2));
    EXPECT_EQ(cut.damaged, 0);
}

TEST(CutRecords, TakesAKeyInsideAnEarlierValueAsPartOfIt) {
    const std::string record = RecordText("001", "03/14/24 09:26", "COMMENTS=SN=STATION");
    const auto directory = BuildEntries(record + "DONE");
    ASSERT_THAT(directory.entries, SizeIs(1));
    EXPECT_THAT(directory.entries[0], HasSubstr("COMMENTS=AFTER REPAIR        "));
    EXPECT_THAT(directory.entries[0], HasSubstr("SN=SN77                "));
}

TEST(CutRecords, TellsRecordsThatAreNotWhole) {
    const std::string whole = RecordText("001") + RecordText("003");
    const auto damagedIn = [&](const std::string& bad) {
        const auto cut = CutRecords(RecordText("001") + bad + RecordText("003") + "DONE");
        EXPECT_THAT(cut.records, SizeIs(2)) << bad;
        return cut.damaged;
    };
    const auto without = [](const std::string& part) {
        std::string record = RecordText("002");
        return record.erase(record.find(part), part.size());
    };
    for (const char* key : {"TESTS=", "COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN=",
                            "OPERATOR=", "COMMENTS=", "#", "002", "03/14"}) {
        EXPECT_EQ(damagedIn(without(key)), 1) << key;
    }
    EXPECT_EQ(damagedIn(RecordText("0\x80"
                                   "2")),
              1);                                                   // noise in the number
    EXPECT_EQ(damagedIn(RecordText("002", "03/1x4/24 09:26")), 1);  // in the date
    EXPECT_EQ(damagedIn(RecordText("002").substr(0, 60)), 1);       // cut off in a value
    EXPECT_EQ(damagedIn(RecordText("002").substr(0, 10)), 1);       // in the date
    EXPECT_EQ(damagedIn(without("COMPANY=") + without("MODEL=")), 2);
    EXPECT_EQ(damagedIn(without("#002") + without("#002")), 2);
    EXPECT_EQ(damagedIn(""), 0);
}

TEST(CutRecords, KeepsTheWholeRecordsOfAReplyThatIsCutOff) {
    const std::string reply = RecordText("001") + RecordText("002") + RecordText("003");
    const std::size_t third = RecordText("001").size() * 2;
    for (std::size_t length = third + 1; length < reply.size() - 2; ++length) {
        const auto cut = CutRecords(reply.substr(0, length));
        ASSERT_THAT(cut.records, SizeIs(2)) << length;
        ASSERT_EQ(cut.damaged, 1) << length;
    }
    EXPECT_THAT(CutRecords(reply.substr(0, third)).records, SizeIs(2));
    EXPECT_THAT(CutRecords(reply).records, SizeIs(3));
}

TEST(CutRecords, FindsNothingInAnEmptyReply) {
    for (const char* reply : {"", "\r\nDONE", "DONE", "\r\n"}) {
        const auto cut = CutRecords(reply);
        EXPECT_THAT(cut.records, IsEmpty());
        EXPECT_EQ(cut.damaged, 0) << reply;
    }
}

TEST(BuildEntries, MakesTheEntryOfARecord) {
    const auto directory = BuildEntries(RecordText("007") + "\r\nDONE");
    EXPECT_THAT(directory.entries,
                ElementsAre("TST_007!03/14/24 09:26TESTS=03"
                            "COMPANY=ACME                STATION=NORTH               "
                            "CIRCUIT=LINE 1              MFR=TORUS               "
                            "MODEL=CT-1                SN=SN77                "
                            "OPERATOR=J. DOE              COMMENTS=AFTER REPAIR        "));
    EXPECT_THAT(directory.dates, ElementsAre(QDate(2024, 3, 14)));
}

TEST(BuildEntries, GivesTheListItsColumns) {
    DirectoryTables tables;
    tables.dirEntriesNew = BuildEntries(RecordText("012") + "\r\nDONE").entries;
    tables.recordsFromInstrument = true;
    const auto rows = RowsForList(tables, 1);
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0], (ListRow{"TST_012", "03/14/24", "03", Filled("NORTH"), Filled("LINE 1"),
                                Filled("TORUS"), Filled("CT-1"), Filled("SN77")}));
}

TEST(BuildEntries, PutsTheNewestFirstAndKeepsTheReplyOrderOfADay) {
    const auto directory = BuildEntries(
        RecordText("001", "03/14/24 09:26") + RecordText("002", "12/31/99 09:26") +
        RecordText("003", "03/14/24 08:00") + RecordText("004", "01/02/25 23:59") + "\r\nDONE");
    EXPECT_THAT(Names(directory), ElementsAre("TST_004", "TST_001", "TST_003", "TST_002"));
    EXPECT_THAT(directory.dates, ElementsAre(QDate(2025, 1, 2), QDate(2024, 3, 14),
                                             QDate(2024, 3, 14), QDate(1999, 12, 31)));
}

TEST(BuildEntries, ListsARecordWhoseDateIsNone) {
    const auto directory =
        BuildEntries(RecordText("001", "00/00/00 00:00") + RecordText("002") + "\r\nDONE");
    EXPECT_THAT(Names(directory), ElementsAre("TST_002", "TST_001"));
    EXPECT_THAT(directory.dates, ElementsAre(QDate(2024, 3, 14), kNoRecordDate));
    EXPECT_EQ(directory.damaged, 0);
}

TEST(BuildEntries, SaysWhatIsNotListed) {
    std::string reply;
    for (int i = 1; i <= 138; ++i)
        reply += RecordText(std::to_string(1000 + i).substr(1));
    const auto many = BuildEntries(reply + "DONE");
    EXPECT_EQ(NotListedText(many).toStdString(),
              "The list holds 135 test records. The DAVO has 3 more.");
    const auto cut = BuildEntries(RecordText("001") + "#002\r\nDONE");
    EXPECT_EQ(NotListedText(cut).toStdString(),
              "1 of the test records arrived damaged and cannot be listed.\r\n"
              "Please download the list again.");
    EXPECT_EQ(NotListedText(BuildEntries(RecordText("001") + "DONE")), QString());
    EXPECT_EQ(NotListedText(MemoryDirectory{{}, {}, 0, 1, 0}),
              u"The list holds 135 test records. The DAVO has 1 more."_s);
}

TEST(BuildEntries, ControlCharactersAreToldAndReplaced) {
    std::string odd = RecordText("002");
    const std::size_t at = odd.find("STATION=") + 8;
    odd[at] = '\x01';
    odd[at + 19] = '\x7f';
    const auto directory = BuildEntries(RecordText("001") + odd + "\r\nDONE");
    EXPECT_EQ(directory.cleaned, 1);
    EXPECT_EQ(directory.damaged, 0);
    ASSERT_THAT(directory.entries, SizeIs(2));
    const std::string& entry = directory.entries[1];
    const std::size_t value = entry.find("STATION=") + 8;
    EXPECT_EQ(entry[value], '?');
    EXPECT_EQ(entry[value + 19], '?');
    EXPECT_EQ(NotListedText(directory),
              u"1 of the test records have control characters in the header, shown as \"?\"."_s);
    // What is saved of it has none, either.
    EXPECT_THAT(RecordHeaderLines(entry, "T"), HasSubstr("STATION: ?"));
    std::string single = RecordText("003");
    single[single.find("SN77")] = '\x01';
    EXPECT_EQ(BuildEntries(single + "\r\nDONE").cleaned, 1);
}

TEST(BuildEntries, ListsTheWholeMemoryOfTheInstrument) {
    const auto memory = instrument::MakeMemory(135, 3);
    const auto directory = BuildEntries(instrument::DirectoryReply(memory));
    EXPECT_THAT(directory.entries, SizeIs(135));
    EXPECT_EQ(directory.damaged, 0);
    EXPECT_TRUE(std::is_sorted(directory.dates.rbegin(), directory.dates.rend()));
}

class ReadMemoryDirectoryTest : public ::testing::Test, public ScriptedLine {
  protected:
    ReadMemoryDirectoryTest() { link.OpenComPort(1); }
    std::vector<std::string> Shown() const { return prompts.Texts(); }
};

TEST_F(ReadMemoryDirectoryTest, AsksForReadinessAndTheDirectory) {
    const std::string reply = RecordText("001") + "\r\nDONE";
    port.OnOutput("B", "RDY\r\n").OnOutput("d", reply);
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), reply);
    EXPECT_THAT(port.sent, ElementsAre("B", "d"));
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(ReadMemoryDirectoryTest, ForgetsWhatWaitsAndWhatIsStillOnItsWay) {
    port.waiting = "OLD TEXT\r\nDONE";
    port.Deliver("MORE\r\nDONE", FakeSerialPort::Delay(5));
    const std::string reply = RecordText("001") + "\r\nDONE";
    port.OnOutput("B", "RDY\r\n").OnOutput("d", reply);
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), reply);
}

TEST_F(ReadMemoryDirectoryTest, SaysThatTheInstrumentIsNotAvailable) {
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), std::nullopt);
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_THAT(Shown(), ElementsAre("DAVO is not available\r\nor\r\nnot under computer control."));
}

TEST_F(ReadMemoryDirectoryTest, SaysThatThereAreNoRecords) {
    port.OnOutput("B", "RDY\r\n").OnOutput("d", "\r\nDONE");
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), std::nullopt);
    EXPECT_THAT(Shown(), ElementsAre("There are no test records."));
}

TEST_F(ReadMemoryDirectoryTest, TakesTenCharactersForADirectory) {
    port.OnOutput("B", "RDY\r\n").OnOutput("d", "1234\r\nDONE");
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), "1234\r\nDONE");
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(ReadMemoryDirectoryTest, TakesNineCharactersForNone) {
    port.OnOutput("B", "RDY\r\n").OnOutput("d", "123\r\nDONE");
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), std::nullopt);
    EXPECT_THAT(Shown(), ElementsAre("There are no test records."));
}

TEST_F(ReadMemoryDirectoryTest, ReadsOnWhenTheEndingWordStandsInAComment) {
    const std::string first = RecordText("001", "03/14/24 09:26", "ACME", "ALL DONE");
    const std::string rest = RecordText("002") + "\r\nDONE";
    port.OnOutput("B", "RDY\r\n").OnOutputDo("d", [&] {
        port.Deliver(first);
        port.Deliver(rest, FakeSerialPort::Delay(40));
    });
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), first + rest);
}

TEST_F(ReadMemoryDirectoryTest, SaysNothingOfItsOwnWhenTheLineIsLost) {
    port.OnOutput("B", "RDY\r\n").OnOutputDo("d", [&] { port.Unplug(); });
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), std::nullopt);
    EXPECT_THAT(Shown(), ElementsAre(Link::LostMessage().toStdString()));
}

TEST_F(ReadMemoryDirectoryTest, SaysNothingWhenTheOperatorEndsTheWait) {
    port.OnOutput("B", "RDY\r\n").OnOutputDo("d", [&] {
        QTimer::singleShot(0, [&] { link.EndWait(); });
    });
    EXPECT_EQ(ReadMemoryDirectory(link, prompts), std::nullopt);
    EXPECT_THAT(Shown(), IsEmpty());
}

}  // namespace
}  // namespace davo::test
