// SPDX-License-Identifier: GPL-3.0-or-later
// The test list over the data folder, by its real controls.
#include "retrieval/frmTestList.h"

#include <unistd.h>

#include <QLineEdit>
#include <QTimer>
#include <algorithm>

#include "tests/app/window_checks.h"
#include "tests/link/fake_serial_port.h"
#include "tests/reports/record_text.h"
#include "tests/retrieval/test_list_window.h"

namespace davo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string RecordOf(const char* date, const char* station) {
    return std::string("TEST NUMBER: T\r\nDATE: ") + date +
           "\r\nTIME: 10:15\r\n# OF SHOTS: 03\r\nCOMPANY: C\r\nSTATION: " + station +
           "\r\nCIRCUIT: 1\r\nMFR: M\r\nMODEL: 2\r\nSN: 3\r\nCOMMENTS: 4\r\nOPERATOR: 5\r\n";
}

class FolderList : public ::testing::Test, public TestListWindow {
  protected:
    void AddRecord(const char* name, const char* date, const char* station) {
        ReplaceFile(settings.dataPath + QLatin1String(name), RecordOf(date, station));
    }
    void ShowFolder() {
        RebuildDirectory(settings.dataPath, directory);
        LoadDirectoryFile(settings.dataPath, directory);
        Show(ListMode::Folder, link);
    }
    void ShowThree() {
        AddRecord("beta.txt", "02/01/24", "North");
        AddRecord("Alpha.txt", "01/01/24", "East");
        AddRecord("gamma.txt", "03/01/24", "");
        ShowFolder();
    }

    FakeSerialPort port;
    LinkState state;
    BusyPointer pointer;
    Link link{port, state, prompts, pointer};
};

TEST_F(FolderList, ShowsTheLoadedDirectoryNewestFirst) {
    ShowThree();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("DAVO Memory Content"));
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
    EXPECT_EQ(Find<QPushButton>("cmdSave")->text(), QStringLiteral("View"));
    EXPECT_EQ(Find<QPushButton>("cmdRefresh")->text(), QStringLiteral("&Refresh"));
    EXPECT_EQ(Find<QPushButton>("cmdDir")->text(), QStringLiteral("&Change DIR"));
    EXPECT_EQ(Find<QPushButton>("cmdExit")->text(), QStringLiteral("&Exit"));
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
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Text("lblSelect"), "Select: 3 of 3");
}

TEST_F(FolderList, NothingSelectedIsSaid) {
    ShowThree();
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre("Please choose a File to View."));
    EXPECT_TRUE(List()->hasFocus());
    EXPECT_THAT(targets, IsEmpty());
}

class ViewedRecord : public FolderList {
  protected:
    ViewedRecord() { ReplaceFile(settings.dataPath + QStringLiteral("T0012.txt"), FileText(2)); }
};

TEST_F(ViewedRecord, IsPlottedUnderItsName) {
    ShowFolder();
    ClickRow(0);
    std::string said;
    QTimer::singleShot(0, window.get(), [&] { said = Text("lblMessage"); });
    Click("cmdSave");
    EXPECT_THAT(targets, ElementsAre(settings.excelPath + QStringLiteral("T0012.xls")));
    EXPECT_EQ(opened, targets);
    EXPECT_TRUE(said.starts_with("Plotting Excel Graphs, Please Wait...")) << said;
    EXPECT_EQ(Text("lblMessage"), "");
    EXPECT_TRUE(Find<QPushButton>("cmdSave")->isEnabled());
}

TEST_F(ViewedRecord, ADoubleClickOrEnterViewsIt) {
    ShowFolder();
    ClickRow(0);
    QTest::mouseDClick(List()->viewport(), Qt::LeftButton, {}, RowPlace(0));
    EXPECT_THAT(targets, SizeIs(1));
    QTest::keyClick(List(), Qt::Key_Return);
    EXPECT_THAT(targets, SizeIs(2));
}

TEST_F(ViewedRecord, CanBeLeftByEscape) {
    rendererWaits = true;
    ShowFolder();
    ClickRow(0);
    QTimer::singleShot(50, window.get(), [&] {
        EXPECT_EQ(Text("lblMessage"), "Plotting Excel Graphs, Please Wait...");
        EXPECT_FALSE(Find<QPushButton>("cmdSave")->isEnabled());
        EXPECT_FALSE(List()->isEnabled());
        EXPECT_TRUE(Find<QPushButton>("cmdExit")->isEnabled());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    });
    Click("cmdSave");
    EXPECT_TRUE(Until([&] { return unloaded == 1; }));
    EXPECT_THAT(targets, IsEmpty());
}

TEST_F(ViewedRecord, CanBeLeftByItsButtonAndItsFrame) {
    for (const bool byFrame : {false, true}) {
        rendererWaits = true;
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
        EXPECT_THAT(targets, IsEmpty());
    }
}

TEST_F(ViewedRecord, IsTheFirstOfSeveralSelected) {
    ReplaceFile(settings.dataPath + QStringLiteral("T0013.txt"), FileText(1));
    settings.sortDisplay = 2;
    settings.sortOrder = 1;
    ShowFolder();
    ASSERT_THAT(Column(0), ElementsAre("T0013", "T0012"));
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(window.get(), Qt::Key_V, Qt::AltModifier);
    EXPECT_TRUE(Until([&] { return !targets.empty(); }));
    EXPECT_THAT(targets, ElementsAre(settings.excelPath + QStringLiteral("T0013.xls")));
}

TEST_F(ViewedRecord, ThatIsGoneMeanwhileIsSaid) {
    ShowFolder();
    ClickRow(0);
    DeleteFile(settings.dataPath + QStringLiteral("T0012.txt"));
    Click("cmdSave");
    ASSERT_THAT(Shown(), SizeIs(1));
    EXPECT_EQ(Shown().front().substr(0, 35), "Run-time error '53': File not found");
    EXPECT_TRUE(Find<QPushButton>("cmdSave")->isEnabled());
}

// --- Another folder ---

TEST_F(FolderList, AChosenDataFolderIsUsedAsItIs) {
    ShowThree();
    QDir().mkpath(folder.Path("Other/Shots_Data"));
    ReplaceFile(folder.Path("Other/Shots_Data/one.txt"), RecordOf("04/01/24", "South"));
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
    EXPECT_THAT(directory.dirFileNames, ElementsAre(QStringLiteral("one.txt")));
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
    if (geteuid() == 0) GTEST_SKIP() << "root may read every folder";
    ShowThree();
    QDir().mkpath(folder.Path("Closed/Shots_Data"));
    QFile::setPermissions(folder.Path("Closed/Shots_Data"), {});
    prompts.folders = {folder.Path("Closed")};
    Click("cmdDir");
    EXPECT_THAT(Shown().back(), HasSubstr("Permission denied"));
    EXPECT_EQ(settings.dataPath, folder.Path("Jobs/Shots_Data/"));
    EXPECT_THAT(Column(0), SizeIs(3));
}

TEST_F(FolderList, AFolderWhoseDirectoryCannotBeWrittenIsSaid) {
    ShowThree();
    // A folder bars the place of the directory file, whoever runs the test.
    QDir().mkpath(folder.Path("Barred/Shots_Data/DIRDNLD.DNL/inside"));
    ReplaceFile(folder.Path("Barred/Shots_Data/one.txt"), RecordOf("04/01/24", "South"));
    prompts.folders = {folder.Path("Barred")};
    Click("cmdDir");
    EXPECT_EQ(Shown().back().substr(0, 16), "Run-time error '");
    EXPECT_EQ(settings.dataPath, folder.Path("Jobs/Shots_Data/"));
    EXPECT_EQ(settings.excelPath, folder.Path("Jobs/Shots_Excel/"));
    EXPECT_EQ(Find<QLineEdit>("txtFolder")->text(), settings.dataPath);
    EXPECT_EQ(Text("lblStatus"), "Total Records: 3");
    EXPECT_THAT(Column(0), SizeIs(3));
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
    AddRecord("delta.txt", "04/01/24", "West");
    ReplaceFile(settings.dataPath + QStringLiteral("cut.txt"), "TEST NUMBER: T\r\n");
    Click("cmdRefresh");
    EXPECT_THAT(Column(0), ElementsAre("delta", "gamma", "beta", "Alpha"));
    EXPECT_EQ(Text("lblStatus"), "Total Records: 4");
    EXPECT_EQ(Text("lblMessage"), "Not listed: cut.txt has fewer than twelve lines.");
    ReplaceFile(settings.dataPath + QStringLiteral("torn.txt"), "");
    Click("cmdRefresh");
    EXPECT_EQ(Text("lblMessage"),
              "Not listed: cut.txt has fewer than twelve lines, and 1 more damaged file.");
}

TEST_F(FolderList, ADamagedDirectoryShowsWhatIsWhole) {
    AddRecord("beta.txt", "02/01/24", "North");
    RebuildDirectory(settings.dataPath, directory);
    LoadDirectoryFile(settings.dataPath, directory);
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
        AddRecord(("R" + std::to_string(1000 + i) + ".txt").c_str(), "02/01/24", "North");
    }
    ShowFolder();
    EXPECT_EQ(Text("lblStatus"), "Total Records: 250");
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
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
    std::vector<std::string> mnemonics = MnemonicsOf(*window);
    std::sort(mnemonics.begin(), mnemonics.end());
    EXPECT_EQ(std::adjacent_find(mnemonics.begin(), mnemonics.end()), mnemonics.end());
}

TEST_F(FolderList, TabFollowsTheEye) {
    ShowThree();
    List()->setFocus();
    ASSERT_TRUE(Until([&] { return List()->hasFocus(); }));
    std::vector<std::string> order;
    for (int i = 0; i < 6; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
    }
    EXPECT_THAT(order, ElementsAre("cmdExit", "cmdSave", "optDisplay1", "optSort1", "cmdRefresh",
                                   "cmdDir"));
}

}  // namespace
}  // namespace davo::test
