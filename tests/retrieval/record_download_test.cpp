// SPDX-License-Identifier: GPL-3.0-or-later
// Downloads over a scripted line: the exchange, the questions, what is told and what is on disk.

#include <QTimer>

#include "tests/retrieval/record_download_rig.h"
#include "tests/support/scripted_link.h"

namespace davo::test {
namespace {

using instrument::MemoryRecord;
using instrument::RecordReply;

constexpr const char* kReplaceQuestion =
    "The file TST_012 already exists. Do you want to replace the existing file? ";
constexpr const char* kNameQuestion = "|Old name: TST_012\r\nEnter a new name: ";

class RecordDownloadTest : public ::testing::Test,
                           public DownloadSurroundings,
                           public ScriptedLink {
  protected:
    RecordDownloadTest() : ScriptedLink(prompts) {
        link.OpenComPort(1);
        port.Always("B", "RDY\r\n");
        Watch(download);
    }
    std::string Located(int number) const { return "L" + std::to_string(1000 + number).substr(1); }
    // The instrument has record and sends reply for it.
    void Replies(const MemoryRecord& record, const std::string& reply) {
        port.OnOutput(Located(record.number), "Record Found\r\n").OnOutput("R", reply);
    }
    void Replies(const MemoryRecord& record) { Replies(record, RecordReply(record)); }
    // As if nothing was downloaded before, with a file of the name of twelve.
    void SelectBesideOld(const std::vector<MemoryRecord>& memory) {
        directory = {};
        prompts.shown.clear();
        prompts.presets.clear();
        progress.clear();
        QFile::remove(settings.dataPath + u"TST_013.txt"_s);
        Put("TST_012.txt", "old");
        Select(memory);
    }
    // The listing has no more than the index-th selected record.
    void ExpectListed(std::size_t index) const {
        EXPECT_EQ(Listing(), "REC==001\r\n" + directory.dirEntries.at(index) + "\r\n");
    }

    RecordDownload download{link, prompts, directory, settings.dataPath, scratch};
    const MemoryRecord twelve = MemoryRecordOf(12, 2);
    const MemoryRecord thirteen = MemoryRecordOf(13, 3);
};

TEST_F(RecordDownloadTest, FetchesTheSelectedRecords) {
    Select({twelve, thirteen});
    Replies(twelve);
    Replies(thirteen);
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Complete);
    EXPECT_THAT(result.written, ElementsAre(u"TST_012.txt"_s, u"TST_013.txt"_s));
    EXPECT_THAT(result.missing, IsEmpty());
    EXPECT_THAT(port.sent, ElementsAre("L012", "B", "R", "L013", "B", "R"));
    EXPECT_EQ(File("TST_012.txt"), Whole(0, twelve, "TST_012"));
    EXPECT_EQ(File("TST_013.txt"), Whole(1, thirteen, "TST_013"));
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_012.txt", "TST_013.txt"));
    EXPECT_EQ(Listing(),
              "REC==002\r\n" + directory.dirEntries[0] + "\r\n" + directory.dirEntries[1] + "\r\n");
    EXPECT_THAT(directory.dirFileNames, ElementsAre(u"TST_012.txt"_s, u"TST_013.txt"_s));
    EXPECT_EQ(ReadWholeFile(scratch + u"TempTEST"_s), RecordReply(thirteen));
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_FALSE(download.Running());
}

TEST_F(RecordDownloadTest, TellsWhatItDoes) {
    Select({twelve, thirteen});
    Replies(twelve);
    Replies(thirteen);
    download.Run();
    EXPECT_THAT(status, ElementsAre("Downloading Record 1 of 2", "Downloading Record 2 of 2"));
    EXPECT_THAT(activity, ElementsAre("Prepare to download from DAVO, Please Wait...",
                                      "Downloading TST_012 from DAVO, Please Wait...",
                                      "Prepare to download from DAVO, Please Wait...",
                                      "Downloading TST_013 from DAVO, Please Wait..."));
    EXPECT_EQ(progressTotal, RecordReply(twelve).size() + RecordReply(thirteen).size());
    EXPECT_EQ(progress.front(), 0U);
    EXPECT_EQ(progress.back(), progressTotal);
    EXPECT_THAT(progress, Contains(RecordReply(twelve).size()));
}

TEST_F(RecordDownloadTest, OneTestHasASize) {
    const MemoryRecord one = MemoryRecordOf(14, 1);
    Select({one});
    Replies(one);
    download.Run();
    EXPECT_EQ(progressTotal, RecordReply(one).size());
}

TEST_F(RecordDownloadTest, CountsRecordsWhenASizeIsNotKnown) {
    // A hundred tests do not fit the two columns of the count.
    const MemoryRecord hundred = MemoryRecordOf(14, 100);
    Select({twelve, hundred});
    Replies(twelve);
    Replies(hundred);
    download.Run();
    EXPECT_EQ(progressTotal, 2U);
    EXPECT_THAT(progress, ElementsAre(0, 1, 2));
    EXPECT_THAT(File("TST_014.txt"), HasSubstr("REC NUMBER:  100\r\n"));
}

TEST_F(RecordDownloadTest, LetsTheOldFileGoOnlyForTheNewOne) {
    SelectBesideOld({twelve});
    prompts.answers = {Answer::Yes};
    prompts.onMessage = [&](const QString&) { EXPECT_EQ(File("TST_012.txt"), "old"); };
    Replies(twelve);
    EXPECT_EQ(download.Run().end, DownloadEnd::Complete);
    EXPECT_THAT(Shown(), ElementsAre(kReplaceQuestion, "The record TST_012 shall be overwritten!"));
    // The default button is none that destroys.
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_EQ(File("TST_012.txt"), Whole(0, twelve, "TST_012"));
}

TEST_F(RecordDownloadTest, WritesUnderANewName) {
    SelectBesideOld({twelve});
    prompts.answers = {Answer::No};
    prompts.inputs = {u"CT12"_s};
    Replies(twelve);
    const DownloadResult result = download.Run();
    EXPECT_THAT(result.written, ElementsAre(u"CT12.txt"_s));
    EXPECT_THAT(Shown(), ElementsAre(kReplaceQuestion, kNameQuestion));
    EXPECT_EQ(File("TST_012.txt"), "old");
    EXPECT_EQ(File("CT12.txt"), Whole(0, twelve, "CT12"));
    EXPECT_THAT(File("CT12.txt"), StartsWith("TEST NUMBER: CT12\r\n"));
    EXPECT_THAT(Listing(), StartsWith("REC==001\r\nCT12!"));
    EXPECT_THAT(port.sent, ElementsAre("L012", "B", "R"));
}

TEST_F(RecordDownloadTest, AsksAgainForANameThatExists) {
    SelectBesideOld({twelve});
    Put("CT12.txt", "other");
    prompts.answers = {Answer::No};
    prompts.inputs = {u"CT12"_s, u"CT13"_s};
    Replies(twelve);
    download.Run();
    EXPECT_THAT(Shown(),
                ElementsAre(kReplaceQuestion, kNameQuestion,
                            "The name CT12 already exists. Please rename.", kNameQuestion));
    EXPECT_EQ(File("CT12.txt"), "other");
    EXPECT_EQ(File("CT13.txt"), Whole(0, twelve, "CT13"));
}

TEST_F(RecordDownloadTest, AsksAgainForANameThatCannotBe) {
    SelectBesideOld({twelve});
    prompts.answers = {Answer::No};
    const QString greek = u"\u03A9-TEST"_s;
    const QString accented = u"Pr\u00FCfung"_s;
    for (const char* name :
         {"../CT", "a\\b", "C:x", "a*", "a?", "a\"b", "<a", "a>", "a|b", "a.txt", "a!b", "a\tb"}) {
        prompts.inputs.push_back(QString::fromLatin1(name));
    }
    prompts.inputs.push_back(greek);
    prompts.inputs.push_back(QString(101, QLatin1Char('x')));
    prompts.inputs.push_back(u" "_s + accented);
    Replies(twelve);
    const DownloadResult result = download.Run();
    EXPECT_THAT(result.written, ElementsAre(accented + u".txt"_s));
    const auto shown = Shown();
    ASSERT_EQ(shown.size(), 1U + 2 * 14 + 1);
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_THAT(
            shown[2 + 2 * i],
            AllOf(StartsWith("The name "),
                  HasSubstr("has a character that a file name cannot have.\r\nThese are not "
                            "possible: \\ / : * ? \" < > | . !")));
    EXPECT_EQ(shown[26], "The name " + greek.toStdString() +
                             " has a character that a record file cannot hold.");
    EXPECT_EQ(shown[28], "The name is too long. At most 100 characters are possible.");
    EXPECT_THAT(File((accented + u".txt"_s).toUtf8().constData()), "(none)");
    EXPECT_THAT(ReadWholeFile(settings.dataPath + accented + u".txt"_s),
                StartsWith("TEST NUMBER: Pr\xFC"
                           "fung\r\n"));
}

TEST_F(RecordDownloadTest, SkipsARecordWithoutANewName) {
    for (const std::optional<QString>& answer :
         {std::optional<QString>(), std::optional(QString()), std::optional(u"  "_s)}) {
        SelectBesideOld({twelve, thirteen});
        prompts.answers = {Answer::No};
        prompts.inputs = {answer};
        Replies(thirteen);
        const DownloadResult result = download.Run();
        EXPECT_EQ(result.end, DownloadEnd::Complete);
        EXPECT_THAT(result.written, ElementsAre(u"TST_013.txt"_s));
        EXPECT_THAT(result.missing, IsEmpty());
        EXPECT_EQ(File("TST_012.txt"), "old");
        ExpectListed(1);
        EXPECT_EQ(progress.back(), progressTotal);
        EXPECT_THAT(Shown(), ElementsAre(kReplaceQuestion, kNameQuestion));
    }
}

TEST_F(RecordDownloadTest, EndsAtOnceWhenItIsCancelled) {
    SelectBesideOld({thirteen, twelve, MemoryRecordOf(14, 1)});
    prompts.answers = {Answer::Cancel};
    Replies(thirteen);
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Cancelled);
    EXPECT_THAT(result.missing, ElementsAre("TST_012", "TST_014"));
    EXPECT_THAT(port.sent, ElementsAre("L013", "B", "R"));
    EXPECT_EQ(File("TST_012.txt"), "old");
    ExpectListed(0);
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_012.txt", "TST_013.txt"));
    EXPECT_THAT(Shown(), ElementsAre(kReplaceQuestion));
    // What is listed can be loaded.
    DirectoryTables loaded;
    LoadDirectoryFile(settings.dataPath, loaded);
    EXPECT_EQ(loaded.recordCount, 1);
}

TEST_F(RecordDownloadTest, EndsWhereARecordIsNotFound) {
    Select({thirteen, twelve, MemoryRecordOf(14, 1)});
    Replies(thirteen);
    port.OnOutput("L012", "Record Not Found\r\n");
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::NotFound);
    EXPECT_THAT(port.sent, ElementsAre("L013", "B", "R", "L012"));
    EXPECT_EQ(File("TST_013.txt"), Whole(0, thirteen, "TST_013"));
    EXPECT_EQ(File("TST_012.txt"), Header(1, "TST_012"));
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_012.txt", "TST_013.txt"));
    ExpectListed(0);
    EXPECT_THAT(Shown(), ElementsAre("Record Not Found: the DAVO does not have the record TST_012."
                                     "\r\nNot downloaded: TST_012, TST_014"));
}

TEST_F(RecordDownloadTest, HasAHeaderOnlyForAnEmptyReplyAndSaysSo) {
    Select({twelve, thirteen});
    Replies(twelve, "\r\nDONE\r\n");
    Replies(thirteen);
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Complete);
    EXPECT_THAT(result.written, ElementsAre(u"TST_013.txt"_s)) << "whole ones count";
    EXPECT_EQ(File("TST_012.txt"), Header(0, "TST_012"));
    EXPECT_EQ(File("TST_013.txt"), Whole(1, thirteen, "TST_013"));
    EXPECT_THAT(Listing(), StartsWith("REC==002\r\n"));
    EXPECT_THAT(Shown(), ElementsAre("TST_012: no tests were received."));
}

TEST_F(RecordDownloadTest, TellsOfTestsThatAreMissingOrDamaged) {
    Select({twelve, thirteen});
    const std::string reply = RecordReply(thirteen);
    std::string noisy = RecordReply(twelve);
    noisy[34 * 15] = '?';
    Replies(twelve, noisy);
    Replies(thirteen, reply.substr(0, 34 * 31) + "\r\nDONE\r\n");
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Complete);
    EXPECT_THAT(result.written, IsEmpty()) << "whole ones count";
    EXPECT_THAT(Shown(), ElementsAre("TST_012: the values of these tests arrived damaged: 1.\r\n"
                                     "TST_013: only 2 of 3 tests were received. a part of the "
                                     "record is missing: all values may be wrong."));
    EXPECT_THAT(File("TST_013.txt"),
                AllOf(HasSubstr("REC NUMBER:  2\r\n"), Not(HasSubstr("REC NUMBER:  3\r\n"))));
}

// An entry tells no number of tests when it has none, and two stars when they are a hundred.
TEST(NotWholeText, IsByTheNumberOfTheEntryElseByThatOfTheRecord) {
    const auto text = [](const char* entry, int tests, int converted, bool missing = false) {
        return NotWholeText(entry, {{}, tests, converted, {}, missing}).toStdString();
    };
    EXPECT_EQ(text("TST_012!TESTS=03", 3, 3), "");
    EXPECT_EQ(text("TST_012!TESTS=**", 100, 100), "");
    EXPECT_EQ(text("TST_012!TESTS=99", 100, 100), "the list says 99 tests, the record itself 100.");
    EXPECT_EQ(text("TST_012!TESTS=01", 2, 1), "the list says 01 tests, the record itself 2.");
    EXPECT_EQ(text("TST_012!TESTS=03", 3, 2), "only 2 of 3 tests were received.");
    for (const char* entry : {"TST_012!TESTS=**", "TST_012!"}) {
        EXPECT_EQ(text(entry, 3, 2), "only 2 of 3 tests were received.") << entry;
        EXPECT_THAT(text(entry, 5, 5), EndsWith(" tests, the record itself 5.")) << entry;
    }
    EXPECT_EQ(text("TST_012!TESTS=01", 1, 0, true), "no tests were received.");
    EXPECT_EQ(text("TST_012!TESTS=01", 1, 1, true),
              "a part of the record is missing: all values may be wrong.");
}

TEST_F(RecordDownloadTest, TellsOfACountThatIsNotThatOfTheEntry) {
    const auto told = [this](const char* count) {
        directory = {};
        prompts.shown.clear();
        progress.clear();
        QFile::remove(settings.dataPath + u"TST_013.txt"_s);
        Select({thirteen});
        Replies(thirteen, count + RecordReply(thirteen).substr(2));
        EXPECT_THAT(download.Run().written, IsEmpty()) << count;
        return Shown().empty() ? std::string() : Shown().front();
    };
    EXPECT_EQ(told("00"), "TST_013: no tests were received.");
    EXPECT_EQ(told("01"),
              "TST_013: only 1 of 3 tests were received. the values of these tests arrived "
              "damaged: 1.");
    EXPECT_EQ(told("02"),
              "TST_013: only 2 of 3 tests were received. the values of these tests arrived "
              "damaged: 1, 2.");
    EXPECT_EQ(told("07"),
              "TST_013: the list says 03 tests, the record itself 7. a part of the record is "
              "missing: all values may be wrong.");
    EXPECT_EQ(told("0g"), "TST_013: no tests were received.");
}

TEST_F(RecordDownloadTest, ARecordThatIsNotWholeReplacesAFileAfterASecondQuestionOnly) {
    const std::string reply = "\r\nDONE\r\n";
    const char* const question =
        "This record did not arrive complete.\r\nTST_012: no tests were received.\r\n"
        "Do you want to replace the existing file anyway?";
    for (const Answer answer : {Answer::No, Answer::Yes}) {
        SelectBesideOld({twelve});
        prompts.answers = {Answer::Yes, answer};
        Replies(twelve, reply);
        const DownloadResult result = download.Run();
        const bool kept = answer == Answer::No;
        EXPECT_EQ(result.end, DownloadEnd::Complete);
        EXPECT_THAT(result.written, IsEmpty());
        EXPECT_EQ(File("TST_012.txt"), kept ? "old" : Header(0, "TST_012"));
        EXPECT_THAT(Listing(), StartsWith(kept ? "REC==000\r\n" : "REC==001\r\n"));
        EXPECT_THAT(
            Shown(),
            ElementsAre(kReplaceQuestion, "The record TST_012 shall be overwritten!", question,
                        kept ? "TST_012: no tests were received. The existing file was kept."
                             : "TST_012: no tests were received."));
        EXPECT_THAT(prompts.presets, ElementsAre(Answer::No, Answer::No));
    }
}

TEST_F(RecordDownloadTest, ARecordThatIsNotFoundReplacesAFileAfterASecondQuestionOnly) {
    for (const Answer answer : {Answer::No, Answer::Yes}) {
        SelectBesideOld({twelve});
        prompts.answers = {Answer::Yes, answer};
        port.OnOutput("L012", "Record Not Found\r\n");
        EXPECT_EQ(download.Run().end, DownloadEnd::NotFound);
        EXPECT_EQ(File("TST_012.txt"), answer == Answer::No ? "old" : Header(0, "TST_012"));
        EXPECT_EQ(Shown().at(2),
                  "This record did not arrive complete.\r\n"
                  "Record Not Found: the DAVO does not have the record TST_012.\r\n"
                  "Do you want to replace the existing file anyway?");
    }
}

TEST_F(RecordDownloadTest, NamesTheFirstOfManyThatAreNotWhole) {
    for (const int count : {12, 14}) {
        directory = {};
        prompts.shown.clear();
        progress.clear();
        std::vector<MemoryRecord> memory;
        for (int i = 0; i < count; ++i) {
            memory.push_back(MemoryRecordOf(100 * (count - 11) + i + 1, 1));
            Replies(memory.back(), "\r\nDONE\r\n");
        }
        Select(memory);
        download.Run();
        const auto end = count == 12 ? EndsWith("\r\nTST_112: no tests were received.")
                                     : EndsWith(
                                           "\r\nTST_312: no tests were received.\r\n"
                                           "Not complete either: TST_313, TST_314");
        EXPECT_THAT(Shown(), ElementsAre(end));
    }
}

TEST_F(RecordDownloadTest, KeepsTheOldFileWhenTheLineIsLostInARecord) {
    SelectBesideOld({thirteen, twelve, MemoryRecordOf(14, 1)});
    prompts.answers = {Answer::Yes};
    Replies(thirteen);
    port.OnOutput("L012", "Record Found\r\n").OnOutputDo("R", [&] {
        port.Deliver(RecordReply(twelve).substr(0, 500));
        port.Unplug(FakeSerialPort::Delay(5));
    });
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Lost);
    EXPECT_THAT(result.missing, ElementsAre("TST_012", "TST_014"));
    EXPECT_EQ(File("TST_012.txt"), "old");
    EXPECT_EQ(File("TST_013.txt"), Whole(0, thirteen, "TST_013"));
    ExpectListed(0);
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_012.txt", "TST_013.txt"));
    EXPECT_THAT(Shown(), ElementsAre(kReplaceQuestion, "The record TST_012 shall be overwritten!",
                                     Link::LostMessage().toStdString(),
                                     "The DAVO cannot be reached.\r\n"
                                     "Not downloaded: TST_012, TST_014"));
}

TEST_F(RecordDownloadTest, WritesNothingOverAClosedPort) {
    SelectBesideOld({twelve});
    link.CloseComPort();
    EXPECT_EQ(download.Run().end, DownloadEnd::Lost);
    EXPECT_EQ(File("TST_012.txt"), "old");
    EXPECT_EQ(Listing(), "REC==000\r\n");
    EXPECT_THAT(Shown(), ElementsAre("The DAVO cannot be reached.\r\nNot downloaded: TST_012"));
}

TEST_F(RecordDownloadTest, WritesNothingWhileAnotherExchangeHasTheLine) {
    Select({twelve});
    port.OnOutput("W", "model\r\n", FakeSerialPort::Delay(50));
    DownloadResult result;
    QTimer::singleShot(0, [&] { result = download.Run(); });
    link.SendCommand("W", "\r\n");
    EXPECT_EQ(result.end, DownloadEnd::Lost);
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL"));
}

TEST_F(RecordDownloadTest, CanBeLeftInEachExchange) {
    for (const char* at : {"L012", "B", "R"}) {
        SelectBesideOld({thirteen, twelve});
        prompts.answers = {Answer::Yes};
        port.steps.clear();
        port.always.clear();
        port.OnOutput("L013", "Record Found\r\n").OnOutput("B", "RDY\r\n");
        port.OnOutput("R", RecordReply(thirteen));
        const auto leave = [&] { QTimer::singleShot(1, [&] { download.Leave(); }); };
        for (const char* command : {"L012", "B", "R"}) {
            if (std::string(command) == at) {
                port.OnOutputDo(command, leave);
                break;
            }
            port.OnOutput(command, *command == 'L' ? "Record Found\r\n" : "RDY\r\n");
        }
        const DownloadResult result = download.Run();
        EXPECT_EQ(result.end, DownloadEnd::Left) << at;
        EXPECT_THAT(result.missing, ElementsAre("TST_012"));
        EXPECT_EQ(File("TST_012.txt"), "old");
        EXPECT_EQ(File("TST_013.txt"), Whole(0, thirteen, "TST_013"));
        ExpectListed(0);
        EXPECT_EQ(Shown().back(), "The download was ended.\r\nNot downloaded: TST_012");
        EXPECT_FALSE(download.Running());
    }
}

TEST_F(RecordDownloadTest, EndsWithTheWaitThatIsEndedElsewhere) {
    Select({twelve});
    port.OnOutputDo("L012", [&] { QTimer::singleShot(1, [&] { link.EndWait(); }); });
    EXPECT_EQ(download.Run().end, DownloadEnd::Left);
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL"));
}

TEST_F(RecordDownloadTest, EndsWithTheAnswerWhenItIsLeftInAQuestion) {
    SelectBesideOld({twelve});
    prompts.answers = {Answer::Yes};
    prompts.onMessage = [&](const QString&) { download.Leave(); };
    EXPECT_EQ(download.Run().end, DownloadEnd::Left);
    EXPECT_THAT(port.sent, IsEmpty());
    EXPECT_EQ(File("TST_012.txt"), "old");
}

TEST_F(RecordDownloadTest, LeaveWithoutARunDoesNothing) {
    download.Leave();
    Select({twelve});
    Replies(twelve);
    EXPECT_EQ(download.Run().end, DownloadEnd::Complete);
}

TEST_F(RecordDownloadTest, ForgetsTheRestOfAnEarlierReply) {
    Select({twelve});
    port.waiting = "FFFF\r\n";
    port.Deliver("FFFF\r\nDONE\r\n", FakeSerialPort::Delay(10));
    Replies(twelve);
    download.Run();
    EXPECT_EQ(File("TST_012.txt"), Whole(0, twelve, "TST_012"));
}

TEST_F(RecordDownloadTest, SaysWhichFileCannotBeWritten) {
    Select({twelve, thirteen});
    QDir().mkpath(settings.dataPath + u"TST_013.txt"_s);  // a folder of that name
    Replies(twelve);
    Replies(thirteen);
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Failed);
    EXPECT_THAT(result.missing, ElementsAre("TST_013"));
    EXPECT_EQ(File("TST_012.txt"), Whole(0, twelve, "TST_012"));
    ASSERT_EQ(Shown().size(), 1U);
    EXPECT_THAT(Shown()[0], AllOf(HasSubstr("Permission denied"), HasSubstr("TST_013.txt"),
                                  HasSubstr("\r\nNot downloaded: TST_013")));
    ExpectListed(0);
}

TEST_F(RecordDownloadTest, NamesTheFirstOfManyThatAreMissing) {
    link.CloseComPort();
    const auto told = [this](int count) {
        directory = {};
        std::vector<MemoryRecord> memory;
        for (int i = 1; i <= count; ++i)
            memory.push_back(MemoryRecordOf(100 + i, 1));
        Select(memory);
        EXPECT_EQ(download.Run().missing.size(), memory.size());
        return Shown().back();
    };
    EXPECT_THAT(told(20), EndsWith("TST_119, TST_120"));
    EXPECT_THAT(told(21), EndsWith("TST_119, TST_120 and 1 more"));
    EXPECT_THAT(told(30), EndsWith("TST_119, TST_120 and 10 more"));
}

TEST_F(RecordDownloadTest, DownloadsNothingOfAnEmptySelection) {
    for (const std::int16_t count : {std::int16_t{0}, std::int16_t{-1}}) {
        directory = {};
        Select({twelve});
        directory.recordCount = count;
        EXPECT_EQ(download.Run().end, DownloadEnd::Complete);
        EXPECT_THAT(port.sent, IsEmpty());
        EXPECT_EQ(Listing(), "REC==000\r\n");
    }
}

TEST_F(RecordDownloadTest, GoesOnWithoutAnAnswerToTheReadyCommand) {
    Select({twelve});
    port.always.clear();
    port.OnOutput("L012", "Record Found\r\n");
    port.OnOutputDo("B", [] {});
    port.OnOutput("R", RecordReply(twelve));
    EXPECT_EQ(download.Run().end, DownloadEnd::Complete);
    EXPECT_EQ(File("TST_012.txt"), Whole(0, twelve, "TST_012"));
}

}  // namespace
}  // namespace davo::test
