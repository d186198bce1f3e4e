// SPDX-License-Identifier: GPL-3.0-or-later
// The test list over the data folder, by its real controls.
#include "retrieval/frmTestList.h"

#include <QApplication>
#include <QHeaderView>
#include <QTimer>
#include <algorithm>
#include <optional>

#include "tests/retrieval/test_list_window.h"
#include "tests/support/scripted_link.h"
#include "tests/support/small_disk.h"

namespace davo::test {
namespace {

class FolderList : public ::testing::Test, public TestListWindow, public ScriptedLink {
  protected:
    FolderList() : ScriptedLink(prompts) {}
    void Add(const char* name, const char* date, const char* station) {
        AddRecord(QLatin1String(name), {date, station, {}});
    }
    void ShowFolder() {
        ListRecords();
        Show(ListMode::Folder, link);
    }
    void ShowThree() {
        Add("beta", "02/01/24", "North");
        Add("Alpha", "01/01/24", "East");
        Add("gamma", "03/01/24", "");
        ShowFolder();
    }
};

TEST_F(FolderList, ShowsTheLoadedDirectoryNewestFirst) {
    ShowThree();
    EXPECT_EQ(window->windowTitle(), u"DAVO Memory Content"_s);
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha"));
    EXPECT_THAT(Column(1), ElementsAre("03/01/24", "02/01/24", "01/01/24"));
    EXPECT_THAT(Column(3), ElementsAre("", "North", "East"));
    const QTreeWidgetItem* header = List()->headerItem();
    std::vector<std::string> headings;
    for (int i = 0; i < header->columnCount(); ++i)
        headings.push_back(header->text(i).toStdString());
    EXPECT_THAT(headings,
                ElementsAre("Filename", "Date", "Tests", "Station", "Circuit", "MFR", "Model"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    EXPECT_EQ(Text("lblSelect"), "Select: 0 of 3");
    EXPECT_EQ(Text("cmdSave"), "View");
    EXPECT_EQ(Text("cmdRefresh"), "&Refresh");
    EXPECT_EQ(Text("cmdDir"), "&Change DIR");
    EXPECT_EQ(Text("cmdExit"), "&Exit");
    EXPECT_TRUE(Find<QRadioButton>("optDisplay1")->isChecked());
    EXPECT_TRUE(Find<QRadioButton>("optSort1")->isChecked());
    EXPECT_FALSE(directory.recordsFromInstrument);
}

TEST_F(FolderList, SettingsChooseTheOptions) {
    settings.sortDisplay = 2;
    settings.sortOrder = 0;
    ShowThree();
    EXPECT_TRUE(Find<QRadioButton>("optDisplay0")->isChecked());
    EXPECT_TRUE(Find<QRadioButton>("optSort0")->isChecked());
    EXPECT_THAT(Column(0), ElementsAre("Alpha", "beta", "gamma"));
}

TEST_F(FolderList, RefreshSortsAndKeepsTheChoice) {
    ShowThree();
    Choose("optDisplay2");
    Choose("optSort0");
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha")) << "only Refresh sorts";
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), ElementsAre("gamma", "Alpha", "beta"));
    EXPECT_EQ(settings.sortDisplay, 3);
    EXPECT_EQ(settings.sortOrder, 0);
    Choose("optDisplay0");
    Choose("optSort1");
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha"));
    EXPECT_EQ(settings.sortDisplay, 2);
    EXPECT_EQ(settings.sortOrder, 1);
    Choose("optDisplay1");
    Click("cmdRefresh");
    EXPECT_EQ(settings.sortDisplay, 1);
}

TEST_F(FolderList, CountsTheSelectionLive) {
    ShowThree();
    ClickRow(0);
    EXPECT_EQ(Text("lblSelect"), "Select: 1 of 3");
    ClickRow(2, Qt::ControlModifier);
    EXPECT_EQ(Text("lblSelect"), "Select: 2 of 3");
    ChooseAll();
    EXPECT_EQ(Text("lblSelect"), "Select: 3 of 3");
}

TEST_F(FolderList, NothingSelectedIsSaid) {
    ShowThree();
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre("Please choose a File to View."));
    EXPECT_TRUE(List()->hasFocus());
    EXPECT_THAT(reports.targets, IsEmpty());
}

class ViewedRecord : public FolderList {
  protected:
    ViewedRecord() { ReplaceFile(DataFile(u"T0012"_s), FileText(2)); }
};

TEST_F(ViewedRecord, IsPlottedUnderItsName) {
    ShowFolder();
    ClickRow(0);
    std::string said;
    QTimer::singleShot(0, window.get(), [&] { said = Text("lblMessage"); });
    Click("cmdSave");
    EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"T0012.xls"_s));
    EXPECT_EQ(reports.opened, reports.targets);
    EXPECT_TRUE(said.starts_with("Plotting Excel Graphs, Please Wait...")) << said;
    EXPECT_EQ(Text("lblMessage"), "");
    EXPECT_TRUE(Enabled("cmdSave"));
}

TEST_F(ViewedRecord, ADoubleClickOrEnterViewsIt) {
    ShowFolder();
    ClickRow(0);
    QTest::mouseDClick(List()->viewport(), Qt::LeftButton, {},
                       List()->visualItemRect(List()->topLevelItem(0)).center());
    EXPECT_THAT(reports.targets, SizeIs(1));
    QTest::keyClick(List(), Qt::Key_Return);
    EXPECT_THAT(reports.targets, SizeIs(2));
}

TEST_F(ViewedRecord, CanBeLeftByEscape) {
    reports.waits = true;
    ShowFolder();
    ClickRow(0);
    QTimer::singleShot(50, window.get(), [&] {
        EXPECT_EQ(Text("lblMessage"), "Plotting Excel Graphs, Please Wait...");
        EXPECT_FALSE(Enabled("cmdSave"));
        EXPECT_FALSE(List()->isEnabled());
        EXPECT_TRUE(Enabled("cmdExit"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    });
    Click("cmdSave");
    EXPECT_TRUE(Until([&] { return unloaded == 1; }));
    EXPECT_THAT(reports.targets, IsEmpty());
}

TEST_F(ViewedRecord, CanBeLeftByItsButtonAndItsFrame) {
    for (const bool byFrame : {false, true}) {
        reports.waits = true;
        unloaded = 0;
        ShowFolder();
        ClickRow(0);
        QTimer::singleShot(50, window.get(), [&] {
            byFrame ? static_cast<void>(window->close()) : Click("cmdExit");
            EXPECT_TRUE(window->isVisible()) << "not before the report has ended";
        });
        Click("cmdSave");
        EXPECT_TRUE(Until([&] { return unloaded == 1; }));
        EXPECT_FALSE(window->isVisible());
        EXPECT_THAT(reports.targets, IsEmpty());
    }
}

TEST_F(ViewedRecord, IsTheFirstOfSeveralSelected) {
    ReplaceFile(DataFile(u"T0013"_s), FileText(1));
    settings.sortDisplay = 2;
    settings.sortOrder = 1;
    ShowFolder();
    ASSERT_THAT(Column(0), ElementsAre("T0013", "T0012"));
    ChooseAll();
    std::string said;
    QTimer::singleShot(0, window.get(), [&] { said = Text("lblMessage"); });
    Click("cmdSave");
    EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"T0013.xls"_s));
    EXPECT_EQ(said, "Plotting Excel Graphs, Please Wait...\nOf 2 selected files T0013 is shown.");
    EXPECT_EQ(Text("lblMessage"), "Of 2 selected files T0013 is shown.");
    ClickRow(1);
    Click("cmdSave");
    EXPECT_EQ(Text("lblMessage"), "");
}

// Also when the panel beside the list has its record, and buttons of its own.
TEST_F(ViewedRecord, IsViewedByAltV) {
    ShowFolder();
    ClickRow(0);
    ASSERT_TRUE(Until([this] { return Enabled("cmdSaveCsv"); }));
    ASSERT_TRUE(Find<QWidget>("cmdSaveCsv")->isVisible());
    QTest::keyClick(window.get(), Qt::Key_V, Qt::AltModifier);
    EXPECT_TRUE(Until([&] { return !reports.targets.empty(); }));
    EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"T0012.xls"_s));
}

TEST_F(ViewedRecord, ThatIsGoneMeanwhileIsSaid) {
    ShowFolder();
    ClickRow(0);
    DeleteFile(DataFile(u"T0012"_s));
    Click("cmdSave");
    ASSERT_THAT(Shown(), SizeIs(1));
    EXPECT_EQ(Shown().front().substr(0, 35), "Run-time error '53': File not found");
    EXPECT_TRUE(Enabled("cmdSave"));
}

TEST_F(ViewedRecord, IsTheOnePointedAtOfTwoRowsOfOneName) {
    const auto put = [this](const char* file, const char* date) {
        ReplaceFile(settings.dataPath + QLatin1String(file),
                    HeaderText(HeaderParts{file, date, "10:15", "01", {}}) + RecordText(1));
    };
    put("T0012.dots.txt", "03/07/25");
    put("T0012.txt", "03/07/24");
    for (const char* order : {"optSort0", "optSort1"}) {
        ShowFolder();
        Choose("optDisplay0");
        Choose(order);
        Click("cmdRefresh");
        ASSERT_THAT(Column(0), ElementsAre("T0012", "T0012"));
        const int dots = Column(1).front() == "03/07/25" ? 0 : 1;
        reports.targets.clear();
        ClickRow(dots);
        Click("cmdSave");
        EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"T0012.dots.xls"_s));
        ClickRow(1 - dots);
        Click("cmdSave");
        EXPECT_EQ(reports.targets.back(), settings.excelPath + u"T0012.xls"_s);
    }
}

// --- Another folder ---

TEST_F(FolderList, AChosenDataFolderIsUsedAsItIs) {
    ShowThree();
    QDir().mkpath(folder.Path("Other/Shots_Data"));
    ReplaceFile(folder.Path("Other/Shots_Data/one.txt"),
                RecordFileText("one", {"04/01/24", "South", {}}));
    prompts.folders = {folder.Path("Other/Shots_Data")};
    Click("cmdDir");
    EXPECT_EQ(Shown().front(), "&Select a directory:|C:\\");
    EXPECT_EQ(settings.dataPath, folder.Path("Other/Shots_Data/"));
    EXPECT_EQ(settings.excelPath, folder.Path("Other/Shots_Excel/"));
    EXPECT_TRUE(FolderExists(settings.excelPath)) << "made without asking";
    EXPECT_THAT(excelFolders, ElementsAre(settings.excelPath));
    EXPECT_EQ(Find<QLineEdit>("txtFolder")->text(), settings.dataPath);
    EXPECT_THAT(Column(0), ElementsAre("one"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 1");
    EXPECT_THAT(directory.dirFileNames, ElementsAre(u"one.txt"_s));
}

TEST_F(FolderList, AMissingDataFolderIsAskedFor) {
    ShowThree();
    const Settings before = settings;
    QDir().mkpath(folder.Path("Fresh"));
    prompts.folders = {folder.Path("Fresh")};
    prompts.answers = {Answer::No};
    Click("cmdDir");
    EXPECT_EQ(Shown().back(), folder.Path("Fresh/Shots_Data/").toStdString() +
                                  "\r\n does not exist. Create (Y/N)?");
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_EQ(settings.dataPath, before.dataPath);
    EXPECT_EQ(settings.excelPath, before.excelPath);
    EXPECT_FALSE(FolderExists(folder.Path("Fresh/Shots_Data")));
    EXPECT_THAT(Column(0), SizeIs(3));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");

    prompts.folders = {folder.Path("Fresh")};
    prompts.answers = {Answer::Yes};
    Click("cmdDir");
    EXPECT_EQ(settings.dataPath, folder.Path("Fresh/Shots_Data/"));
    EXPECT_TRUE(FolderExists(settings.dataPath));
    EXPECT_TRUE(FolderExists(settings.excelPath));
    EXPECT_THAT(Column(0), IsEmpty());
    EXPECT_EQ(Text("lblStatus"), "Total Records: 0");
}

TEST_F(FolderList, AnAbandonedChoiceChangesNothing) {
    ShowThree();
    prompts.folders = {QString()};
    Click("cmdDir");
    EXPECT_THAT(Column(0), SizeIs(3));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
}

TEST_F(FolderList, AFolderThatCannotBeMadeIsSaid) {
    ShowThree();
    const QString before = settings.dataPath;
    ReplaceFile(folder.Path("file"), "no folder");
    prompts.folders = {folder.Path("file")};
    prompts.answers = {Answer::Yes};
    Click("cmdDir");
    EXPECT_EQ(settings.dataPath, before);
    EXPECT_EQ(Shown().back().substr(0, 16), "Run-time error '");
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    EXPECT_THAT(Column(0), SizeIs(3));
}

TEST_F(FolderList, AnUnreadableFolderIsSaid) {
    if (!SmallDisk::Can()) GTEST_SKIP() << "only root can have other rights for a while";
    ShowThree();
    const QString closed = folder.Path("Closed/Shots_Data/");
    QDir().mkpath(closed);
    QDir().mkpath(folder.Path("Closed/Shots_Excel"));
    QFile::setPermissions(folder.Path(), QFile::Permissions(0x7755));
    QFile::setPermissions(closed, {});
    prompts.folders = {folder.Path("Closed")};
    {
        const NobodysRights rights;
        Click("cmdDir");
    }
    EXPECT_EQ(Shown().back(),
              "The folder " + closed.toStdString() + " cannot be read: Permission denied.");
    EXPECT_EQ(settings.dataPath, folder.Path("Jobs/Shots_Data/"));
    EXPECT_THAT(Column(0), SizeIs(3));
    EXPECT_EQ(Text("lblMessage"), "");
    EXPECT_EQ(directory.recordCount, 3);
}

// Whoever runs the test.
TEST_F(FolderList, AFolderThatIsGoneIsNoEmptyOne) {
    ShowThree();
    QDir(settings.dataPath).removeRecursively();
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), IsEmpty());
    EXPECT_EQ(Text("lblMessage"), "The folder " + settings.dataPath.toStdString() +
                                      " cannot be read: Path not found. "
                                      "Refresh reads it again, Change DIR chooses another one.");
    EXPECT_THAT(Shown(), IsEmpty());
    QDir().mkpath(settings.dataPath);
    Click("cmdRefresh");
    EXPECT_EQ(Text("lblMessage"), "There are no test records in this folder.");
}

TEST_F(FolderList, AFolderOfDamagedRecordsIsNoEmptyOne) {
    ReplaceFile(settings.dataPath + u"cut.txt"_s, "TEST NUMBER: T\r\n");
    ShowFolder();
    EXPECT_EQ(Text("lblMessage"), "Not listed: cut.txt has fewer than twelve lines.");
}

// A folder bars the place of the directory file, whoever runs the test.
TEST_F(FolderList, AFolderWhoseDirectoryCannotBeWrittenIsListedAllTheSame) {
    ShowThree();
    QDir().mkpath(folder.Path("Barred/Shots_Data/DIRDNLD.DNL/inside"));
    ReplaceFile(folder.Path("Barred/Shots_Data/one.txt"),
                RecordFileText("one", {"04/01/24", "South", {}}));
    prompts.folders = {folder.Path("Barred")};
    Click("cmdDir");
    EXPECT_THAT(Shown(), SizeIs(1)) << "a notice, no message";
    EXPECT_EQ(Text("lblMessage"),
              "DIRDNLD.DNL cannot be written (Permission denied). The records are listed "
              "anyway.");
    EXPECT_EQ(settings.dataPath, folder.Path("Barred/Shots_Data/"));
    EXPECT_THAT(Column(0), ElementsAre("one"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 1");
}

class ListOnADisk : public FolderList {
  protected:
    void SetUp() override {
        if (!SmallDisk::Can()) GTEST_SKIP() << "a small disk can be mounted by root only";
        QDir().mkpath(folder.Path("stick"));
        disk.emplace(folder.Path("stick"));
        QDir().mkpath(folder.Path("stick/Shots_Data"));
        ReplaceFile(folder.Path("stick/Shots_Data/T0012.txt"), FileText(1));
        prompts.folders = {folder.Path("stick")};
    }
    void ExpectListed() {
        EXPECT_EQ(settings.dataPath, folder.Path("stick/Shots_Data/"));
        EXPECT_THAT(Column(0), ElementsAre("T0012"));
        ClickRow(0);
        EXPECT_TRUE(Until([this] { return Text("lblRecord").starts_with("T0012   03/07/24"); }));
    }

    std::optional<SmallDisk> disk;
};

TEST_F(ListOnADisk, ThatIsWriteProtectedIsReadAllTheSame) {
    disk->Protect();
    ShowThree();
    Click("cmdDir");
    ExpectListed();
    EXPECT_EQ(Text("lblMessage"),
              "DIRDNLD.DNL cannot be written (Permission denied). The records are listed "
              "anyway.");
    EXPECT_THAT(Shown(), ElementsAre(StartsWith("&Select a directory:"),
                                     StartsWith("Run-time error '70': Permission denied")))
        << "the second one is of the folder for reports";
}

TEST_F(ListOnADisk, ThatIsFullIsReadAllTheSame) {
    QDir().mkpath(folder.Path("stick/Shots_Excel"));
    disk->Fill();
    ShowThree();
    Click("cmdDir");
    ExpectListed();
    EXPECT_EQ(Text("lblMessage"),
              "DIRDNLD.DNL cannot be written (Disk full). The records are listed anyway.");
    EXPECT_THAT(Shown(), SizeIs(1));
}

TEST_F(FolderList, AMissingTemplateDoesNotKeepAFolderFromBeingUsed) {
    ShowThree();
    window->OnExcelFolderMade = [](const QString&) {
        throw RunTimeError(ErrorNumber::FileNotFound);
    };
    QDir().mkpath(folder.Path("Other/Shots_Data"));
    prompts.folders = {folder.Path("Other")};
    Click("cmdDir");
    EXPECT_THAT(Shown().back(), HasSubstr("File not found"));
    EXPECT_EQ(settings.dataPath, folder.Path("Other/Shots_Data/"));
    EXPECT_EQ(Text("lblMessage"), "There are no test records in this folder.");
}

TEST_F(FolderList, RefreshFindsWhatHasChangedAndSaysWhatIsDamaged) {
    ShowThree();
    Add("delta", "04/01/24", "West");
    ReplaceFile(settings.dataPath + u"cut.txt"_s, "TEST NUMBER: T\r\n");
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), ElementsAre("delta", "gamma", "beta", "Alpha"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 4");
    EXPECT_EQ(Text("lblMessage"), "Not listed: cut.txt has fewer than twelve lines.");
    ReplaceFile(settings.dataPath + u"torn.txt"_s, "");
    Click("cmdRefresh");
    EXPECT_EQ(Text("lblMessage"),
              "Not listed: cut.txt has fewer than twelve lines, and 1 more damaged file.");
}

TEST_F(FolderList, F5Refreshes) {
    ShowThree();
    Add("delta", "04/01/24", "West");
    QTest::keyClick(List(), Qt::Key_F5);
    EXPECT_THAT(Column(0), ElementsAre("delta", "gamma", "beta", "Alpha"));
    DeleteFile(DataFile(u"delta"_s));
    QTest::keyClick(Find<QWidget>("cmdSave"), Qt::Key_F5);
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha"));
}

class FilteredList : public FolderList {
  protected:
    void SetUp() override {
        Add("beta", "02/01/24", "North");
        Add("Alpha", "01/01/24", "East");
        AddRecord(u"gamma"_s, {"03/01/24", "Northend", {}});
        std::string bytes = ReadWholeFile(DataFile(u"gamma"_s));
        const std::string line = "SN: ";
        bytes.insert(bytes.find(line) + line.size(), "XQ-7");
        ReplaceFile(DataFile(u"gamma"_s), bytes);
        ShowFolder();
    }
    // Keys go to what has the focus, as those of a keyboard do.
    static void Press(Qt::Key key, Qt::KeyboardModifiers keys = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, keys);
    }
    void Search(const char* text) {
        Press(Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(QApplication::focusWidget(), QLatin1String(text));
    }
};

TEST_F(FilteredList, ShowsWhatHasTheWordsInAColumnOrAsSerialNumber) {
    EXPECT_FALSE(Find<QLabel>("lblFiltered")->isVisible());
    Search("north");
    EXPECT_TRUE(Box("txtFilter")->hasFocus());
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta"));
    EXPECT_EQ(Text("lblFiltered"), "2 of 3 records");
    EXPECT_TRUE(Find<QLabel>("lblFiltered")->isVisible());
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    Search("BET 02/01");
    EXPECT_THAT(Column(0), ElementsAre("beta"));
    Search("xq-7");
    EXPECT_THAT(Column(0), ElementsAre("gamma"));
    Search("north east");
    EXPECT_THAT(Column(0), IsEmpty()) << "each word must be there";
    EXPECT_EQ(Text("lblFiltered"), "0 of 3 records");
    Search("beta02");
    EXPECT_THAT(Column(0), IsEmpty()) << "no word goes on in the next column";
}

TEST_F(FilteredList, IsEnteredByEnterAndLeftByEscape) {
    Search("north");
    Press(Qt::Key_Return);
    EXPECT_TRUE(List()->hasFocus());
    EXPECT_EQ(Text("lblSelect"), "Select: 1 of 2");
    Press(Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha"));
    EXPECT_EQ(Text("lblSelect"), "Select: 1 of 3") << "what was selected stays so";
    EXPECT_TRUE(List()->hasFocus());
    Search("east");
    Press(Qt::Key_Escape);
    EXPECT_EQ(Text("txtFilter"), "");
    EXPECT_TRUE(List()->hasFocus());
    EXPECT_TRUE(window->isVisible());
    Search("");
    Press(Qt::Key_Escape);
    EXPECT_TRUE(List()->hasFocus()) << "of an empty box, too";
    EXPECT_TRUE(window->isVisible());
    Press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible()) << "with nothing to clear it is the window's";
}

TEST_F(FilteredList, SelectsNothingThatIsOutOfSight) {
    ChooseAll();
    EXPECT_EQ(Text("lblSelect"), "Select: 3 of 3");
    Search("north");
    EXPECT_EQ(Text("lblSelect"), "Select: 2 of 2");
    Search("east");
    EXPECT_EQ(Text("lblSelect"), "Select: 0 of 1");
    Press(Qt::Key_Tab);
    ChooseAll();
    EXPECT_EQ(Text("lblSelect"), "Select: 1 of 1");
    Press(Qt::Key_Escape);
    EXPECT_EQ(Text("lblSelect"), "Select: 1 of 3");
}

TEST_F(FilteredList, StaysOverARefresh) {
    Search("north");
    Add("delta", "04/01/24", "North");
    Choose("optSort0");
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), ElementsAre("beta", "gamma", "delta"));
    EXPECT_EQ(Text("lblFiltered"), "3 of 4 records");
}

TEST_F(FilteredList, ViewsTheRecordThatIsShown) {
    Search("east");
    Press(Qt::Key_Return);
    EXPECT_TRUE(List()->hasFocus());
    Press(Qt::Key_Return);
    EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"Alpha.xls"_s));
}

// The options choose the order.
TEST_F(FolderList, HeadingsDoNotSort) {
    ShowThree();
    QHeaderView* header = List()->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionPosition(0) + 5, header->height() / 2));
    EXPECT_THAT(Column(0), ElementsAre("gamma", "beta", "Alpha"));
}

TEST_F(FolderList, ControlCharactersAreToldAndShownAsQuestionMarks) {
    Add("beta", "02/01/24", "No\x01rth\x1b");
    ShowFolder();
    EXPECT_THAT(Column(3), ElementsAre("No?rth?"));
    EXPECT_EQ(Text("lblMessage"), "The header of beta has control characters, shown as \"?\".");
    EXPECT_THAT(ReadWholeFile(settings.dataPath + u"DIRDNLD.DNL"_s), HasSubstr("STATION=No?rth?"));
    Add("gamma", "02/01/24", "\x7f");
    Click("cmdRefresh");
    EXPECT_EQ(Text("lblMessage"), "The header of 2 files has control characters, shown as \"?\".");
}

TEST_F(FolderList, ANameWithALineFeedIsSkippedWithANotice) {
    Add("beta", "02/01/24", "North");
    Add("two\nlines", "02/01/24", "North");
    ShowFolder();
    EXPECT_THAT(Column(0), ElementsAre("beta"));
    EXPECT_EQ(Text("lblMessage"),
              "Not listed: two?lines.txt has a name with characters that a record list cannot "
              "hold.");
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(FolderList, ADamagedDirectoryShowsWhatIsWhole) {
    Add("beta", "02/01/24", "North");
    ListRecords();
    directory.dirEntries.insert(directory.dirEntries.begin(), {"@@@@", ""});
    directory.recordCount = 3;
    Show(ListMode::Folder, link);
    EXPECT_THAT(Column(0), ElementsAre("beta"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 1");
    EXPECT_EQ(Text("lblMessage"), "Not listed: 2 damaged lines of the directory.");
    EXPECT_EQ(directory.recordCount, 1);
}

TEST_F(FolderList, TwoHundredAndFiftyRecordsAreShown) {
    for (int i = 0; i < 251; ++i) {
        Add(("R" + std::to_string(1000 + i)).c_str(), "02/01/24", "North");
    }
    ShowFolder();
    EXPECT_EQ(Text("lblStatus"), "Total Records: 250");
    ChooseAll();
    EXPECT_EQ(Text("lblSelect"), "Select: 250 of 250");
    Click("cmdRefresh");
    EXPECT_EQ(Text("lblMessage"), "Not listed: 1 file beyond the 250 that a list can hold.");
    EXPECT_EQ(Text("lblSelect"), "Select: 0 of 250");
}

TEST_F(FolderList, ExitAndTheFrameUnloadOnce) {
    ShowThree();
    Click("cmdExit");
    EXPECT_EQ(unloaded, 1);
    EXPECT_FALSE(window->isVisible());
    window->close();
    EXPECT_EQ(unloaded, 1);
}

TEST_F(FolderList, FitsAndHasUniqueMnemonics) {
    ShowThree();
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    EXPECT_TRUE(MnemonicsAreUnique(*window));
}

TEST_F(FolderList, TabFollowsTheEye) {
    ShowThree();
    List()->setFocus();
    ASSERT_TRUE(Until([&] { return List()->hasFocus(); }));
    std::vector<std::string> order;
    for (int i = 0; i < 8; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
    }
    EXPECT_THAT(order, ElementsAre("cmdSave", "cmdExit", "optDisplay1", "optSort1", "cmdRefresh",
                                   "cmdDir", "txtFilter", "lvTest"));
}

}  // namespace
}  // namespace davo::test
