// SPDX-License-Identifier: GPL-3.0-or-later
// The test list over the instrument's memory, with the simulated instrument on its device.
#include <QTimer>

#include "tests/retrieval/record_download_rig.h"
#include "tests/retrieval/test_list_window.h"
#include "tests/support/instrument_link.h"

namespace davo::test {
namespace {

using instrument::MemoryRecord;

class MemoryList : public ::testing::Test, public TestListWindow, public InstrumentLink {
  protected:
    MemoryList() : InstrumentLink(prompts) {}
    void Start(const std::vector<MemoryRecord>& memory, bool paced = false) {
        PlugIn(QuickWithMemory(memory, paced));
        ASSERT_TRUE(link.OpenComPort(1));
        Show(ListMode::Instrument, link, instrument::DirectoryReply(memory));
    }
    std::vector<std::string> Files() const { return NamesIn(settings.dataPath); }
};

TEST_F(MemoryList, ShowsTheInstrumentsDirectory) {
    Start({MemoryRecordOf(7, 1), MemoryRecordOf(8, 2), MemoryRecordOf(123, 3)});
    EXPECT_EQ(Text("cmdSave"), "Save");
    EXPECT_TRUE(Enabled("cmdSave"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    EXPECT_THAT(Column(0), UnorderedElementsAre("TST_007", "TST_008", "TST_123"));
    EXPECT_TRUE(directory.recordsFromInstrument);
    EXPECT_EQ(Text("lblMessage"), "");
}

TEST_F(MemoryList, SaysHowManyRecordsAreDamaged) {
    const std::vector<MemoryRecord> memory{MemoryRecordOf(1, 1), MemoryRecordOf(2, 2)};
    std::string reply = instrument::DirectoryReply(memory);
    reply.replace(reply.find("STATION="), 8, "ST#TION=");
    Show(ListMode::Instrument, link, reply);
    EXPECT_EQ(Text("lblStatus"), "Total Records: 1");
    EXPECT_EQ(Text("lblMessage"), NotListedText(BuildEntries(reply)).toStdString());
    EXPECT_THAT(Text("lblMessage"), HasSubstr("1"));
}

TEST_F(MemoryList, DamagedRecordsAreStillSaidInAnotherFolder) {
    const std::vector<MemoryRecord> memory{MemoryRecordOf(1, 1), MemoryRecordOf(2, 2)};
    std::string reply = instrument::DirectoryReply(memory);
    reply.replace(reply.find("STATION="), 8, "ST#TION=");
    Show(ListMode::Instrument, link, reply);
    const std::string ofMemory = Text("lblMessage");
    ASSERT_FALSE(ofMemory.empty());
    QDir().mkpath(folder.Path("Other/Shots_Data"));
    ReplaceFile(folder.Path("Other/Shots_Data/cut.txt"), "cut");
    prompts.folders = {folder.Path("Other")};
    Click("cmdDir");
    EXPECT_EQ(Text("lblMessage"), ofMemory + " Not listed: cut.txt has fewer than twelve lines.");
}

TEST_F(MemoryList, NothingSelectedIsSaid) {
    Start({MemoryRecordOf(1, 1)});
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre("Please choose File(s) to Download."));
}

TEST_F(MemoryList, DownloadsWhatIsSelected) {
    Start({MemoryRecordOf(1, 1), MemoryRecordOf(2, 2), MemoryRecordOf(3, 3)});
    const std::vector<std::string> names = Column(0);
    ClickRow(0);
    ClickRow(2, Qt::ControlModifier);
    Click("cmdSave");
    std::vector<std::string> wanted{"DIRDNLD.DNL", names[0] + ".txt", names[2] + ".txt"};
    EXPECT_THAT(Files(), UnorderedElementsAreArray(wanted));
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_THAT(Text("lblMessage"), HasSubstr("2 of 2 records were saved."));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    EXPECT_THAT(Column(0), SizeIs(3)) << "the list still shows the memory";
}

TEST_F(MemoryList, CountsTheRecordsThatCameWhole) {
    Start({MemoryRecordOf(1, 1), MemoryRecordOf(2, 2)});
    constexpr int kBeforeRecord = 14 + 5;  // "Record Found" and "RDY"
    (*instrument)->SetFaults({{instrument::FaultKind::Double, kBeforeRecord + 600, 0}});
    ChooseAll();
    Click("cmdSave");
    EXPECT_EQ(Text("lblMessage"), "1 of 2 records were saved.");
    EXPECT_THAT(Shown(), ElementsAre(HasSubstr(": the values of these tests arrived damaged: 1.")));
}

TEST_F(MemoryList, ShowsWhatHappensAndCanBeLeft) {
    Start({MemoryRecordOf(1, 1), MemoryRecordOf(2, 100)}, true);
    ChooseAll();
    std::string status;
    std::string activity;
    int most = 0;
    bool sawBar = false;
    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, window.get(), [&] {
        auto* bar = Find<QProgressBar>("pbarProgress");
        if (!Text("lblMessage").empty()) activity = Text("lblMessage");
        if (Text("lblStatus") != "Total Records: 2") status = Text("lblStatus");
        sawBar = sawBar || bar->isVisible();
        most = std::max(most, bar->value());
        if (bar->maximum() > 0 && bar->value() > bar->maximum() / 20) {
            poll.stop();
            Click("cmdExit");
        }
    });
    poll.start();
    Click("cmdSave");
    EXPECT_TRUE(Until([&] { return unloaded == 1; }));
    EXPECT_TRUE(sawBar);
    EXPECT_GT(most, 0);
    EXPECT_THAT(status, HasSubstr("Downloading Record "));
    EXPECT_THAT(activity, HasSubstr("from DAVO, Please Wait..."));
    EXPECT_FALSE(Shown().empty()) << "what is missing is said";
    for (const std::string& name : Files()) {
        if (name == "DIRDNLD.DNL") continue;
        const std::string text = ReadWholeFile(settings.dataPath + QString::fromStdString(name));
        EXPECT_THAT(text, HasSubstr("KNEE POINT TYPE:")) << "no half record: " << name;
    }
}

TEST_F(MemoryList, GoesIntoTheFolderChosenMeanwhile) {
    Start({MemoryRecordOf(9, 1)});
    QDir().mkpath(folder.Path("Other/Shots_Data"));
    prompts.folders = {folder.Path("Other")};
    Click("cmdDir");
    EXPECT_EQ(Text("cmdSave"), "Save");
    EXPECT_EQ(Text("lblStatus"), "Total Records: 1");
    EXPECT_THAT(Column(0), ElementsAre("TST_009"));
    ClickRow(0);
    Click("cmdSave");
    EXPECT_TRUE(FileExists(folder.Path("Other/Shots_Data/TST_009.txt")));
}

TEST_F(MemoryList, AnExistingFileIsAskedForAndARenamedOneIsWritten) {
    Start({MemoryRecordOf(12, 1)});
    ReplaceFile(settings.dataPath + u"TST_012.txt"_s, "old");
    prompts.answers = {Answer::No};
    prompts.inputs = {u"CT12"_s};
    ClickRow(0);
    Click("cmdSave");
    EXPECT_THAT(Shown(),
                Contains("The file TST_012 already exists. Do you want to replace the existing "
                         "file? "));
    EXPECT_EQ(ReadWholeFile(settings.dataPath + u"TST_012.txt"_s), "old");
    EXPECT_TRUE(FileExists(settings.dataPath + u"CT12.txt"_s));
}

TEST_F(MemoryList, APulledCableIsSaidAndTheWindowStays) {
    Start({MemoryRecordOf(1, 100)}, true);
    ClickRow(0);
    QTimer::singleShot(1500, window.get(), [&] { instrument.reset(); });
    Click("cmdSave");
    EXPECT_FALSE(Shown().empty());
    EXPECT_TRUE(Enabled("cmdExit"));
    EXPECT_TRUE(List()->isEnabled());
    EXPECT_FALSE(FileExists(settings.dataPath + u"TST_001.txt"_s));
    EXPECT_EQ(unloaded, 0);
}

}  // namespace
}  // namespace davo::test
