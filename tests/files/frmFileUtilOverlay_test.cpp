// SPDX-License-Identifier: GPL-3.0-or-later
// File utilities and the overlay of two tests, by their real controls.
#include "files/frmFileUtilOverlay.h"

#include <QFrame>
#include <QHeaderView>
#include <QTimer>

#include "tests/files/file_window.h"
#include "tests/support/waiting_renderer.h"

namespace davo::test {
namespace {

class FileUtilWindow : public FileWindow<frmFileUtilOverlay> {
  protected:
    void Open(FileUtilMode mode, ReportRunner* reports = nullptr) {
        ListRecords();
        window = std::make_unique<frmFileUtilOverlay>(
            mode, FileUtilSurroundings{settings, directory, prompts, reports});
        window->OnCopy = [this](const std::vector<QString>& names) { copied = names; };
        ShowWindow();
    }
    void OpenThree() {
        for (const char* name : {"one", "two", "three"})
            AddRecord(QLatin1String(name), kRecord);
        Open(FileUtilMode::FileUtilities);
    }
    void Select(const char* name) { ClickRecord(name, Qt::ControlModifier); }

    const BriefRecord kRecord{.rest = "rest of it\r\n"};
    std::vector<QString> copied;
};

TEST_F(FileUtilWindow, HasItsCaptions) {
    OpenThree();
    EXPECT_EQ(window->windowTitle(), u"File Utilities"_s);
    EXPECT_EQ(Text("cmdOp0"), "&Rename");
    EXPECT_EQ(Text("cmdOp1"), "&Copy");
    EXPECT_EQ(Text("cmdOp2"), "&Delete");
    EXPECT_TRUE(Find<QFrame>("frmeOp")->isVisible());
    EXPECT_FALSE(Find<QGroupBox>("frmeOverlay")->isVisible());
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    EXPECT_EQ(List()->topLevelItemCount(), 3);
}

TEST_F(FileUtilWindow, SaysWhenNothingIsChosen) {
    OpenThree();
    for (const char* button : {"cmdOp0", "cmdOp1", "cmdOp2"})
        Click(button);
    EXPECT_THAT(Shown(),
                ElementsAre("Please choose File(s) to Rename.", "Please choose File(s) to Copy.",
                            "Please choose File(s) to Delete."));
    EXPECT_EQ(unloaded, 0);
}

TEST_F(FileUtilWindow, EscapeLeaves) {
    OpenThree();
    QTest::keyClick(List(), Qt::Key_Escape);
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(FileUtilWindow, F5ListsWhatIsThereNowAndKeepsTheSelection) {
    OpenThree();
    Select("two");
    AddRecord(u"four"_s);
    DeleteFile(DataFile(u"one"_s));
    QTest::keyClick(List(), Qt::Key_F5);
    EXPECT_THAT(Column(0), UnorderedElementsAre("two", "three", "four"));
    ASSERT_THAT(List()->selectedItems(), SizeIs(1));
    EXPECT_EQ(List()->selectedItems().front()->text(0), u"two"_s);
    EXPECT_EQ(directory.recordCount, 3);
    QDir(settings.dataPath).removeRecursively();
    QTest::keyClick(List(), Qt::Key_F5);
    EXPECT_THAT(Column(0), IsEmpty());
    EXPECT_THAT(Shown(), ElementsAre(StartsWith("The folder ")));
}

TEST_F(FileUtilWindow, AClickOnAHeadingSortsAndTheRowsStayTheirFiles) {
    OpenThree();
    QHeaderView* header = List()->header();
    const auto click = [&] {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionPosition(0) + 5, header->height() / 2));
    };
    click();
    EXPECT_THAT(Column(0), ElementsAre("one", "three", "two"));
    click();
    EXPECT_THAT(Column(0), ElementsAre("two", "three", "one"));
    ClickRow(0);
    prompts.answers = {Answer::Yes};
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Delete file: two\r\n"));
    EXPECT_FALSE(FileExists(DataFile(u"two"_s)));
}

TEST_F(FileUtilWindow, RenamesAndNamesTheRecordInIt) {
    OpenThree();
    Select("two");
    prompts.inputs = {u"fresh"_s};
    prompts.answers = {Answer::Yes};
    Click("cmdOp0");
    EXPECT_THAT(Shown(), ElementsAre("Rename File|Old Filename: 'two'\r\n\r\nNew Filename: ",
                                     "Rename file: 'two'\r\nTo: 'fresh' ? "));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_FALSE(FileExists(DataFile(u"two"_s)));
    EXPECT_EQ(ReadWholeFile(DataFile(u"fresh"_s)), RecordFileText("fresh", kRecord));
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(ReadLines(settings.dataPath + u"DIRDNLD.DNL"_s), Contains(StartsWith("fresh!")));
    EXPECT_EQ(directory.recordCount, 3);
}

TEST_F(FileUtilWindow, RefusesNamesAndAsksAgain) {
    OpenThree();
    Select("two");
    prompts.inputs = {u"one.txt"_s, u"one"_s, u"a/b"_s, u"a\\b"_s, u"nul"_s, QString()};
    Click("cmdOp0");
    const std::string refused =
        "has a character that a file name cannot have.\r\n"
        "These are not possible: \\ / : * ? \" < > | . !";
    const std::string asked = "Rename File|Old Filename: 'two'\r\n\r\nNew Filename: ";
    EXPECT_THAT(Shown(),
                ElementsAre(asked, "Filename cannot contain ''.''  Please Re-enter.", asked,
                            "The Filename: one already exists. Please choose another name.", asked,
                            "The name a/b " + refused, asked, "The name a\\b " + refused, asked,
                            "The name nul is that of a device and cannot be a file's.", asked));
    EXPECT_EQ(ReadWholeFile(DataFile(u"two"_s)), RecordFileText("two", kRecord));
}

TEST_F(FileUtilWindow, NoLeavesTheFileAndGoesOn) {
    OpenThree();
    ChooseAll();
    prompts.inputs = {u"x1"_s, std::nullopt, u"x3"_s};
    prompts.answers = {Answer::No, Answer::Yes};
    const std::string first = List()->topLevelItem(0)->text(0).toStdString() + ".txt";
    const std::string second = List()->topLevelItem(1)->text(0).toStdString() + ".txt";
    Click("cmdOp0");
    EXPECT_THAT(NamesIn(settings.dataPath),
                UnorderedElementsAre("DIRDNLD.DNL", first, second, "x3.txt"));
}

TEST_F(FileUtilWindow, AFileThatIsGoneIsSaidAndTheRestGoesOn) {
    OpenThree();
    ChooseAll();
    DeleteFile(DataFile(List()->topLevelItem(0)->text(0)));
    prompts.inputs = {u"x1"_s, u"x2"_s, u"x3"_s};
    prompts.answers = {Answer::Yes, Answer::Yes, Answer::Yes};
    Click("cmdOp0");
    EXPECT_THAT(Shown(), Contains(StartsWith("Run-time error '53': File not found")));
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", "x2.txt", "x3.txt"));
}

TEST_F(FileUtilWindow, DeletesUntilCancel) {
    OpenThree();
    ChooseAll();
    const std::vector<std::string> names = Column(0);
    prompts.answers = {Answer::Yes, Answer::Cancel};
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Delete file: " + names[0] + "\r\n",
                                     "Delete file: " + names[1] + "\r\n"));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No, Answer::No));
    EXPECT_THAT(NamesIn(settings.dataPath),
                UnorderedElementsAre("DIRDNLD.DNL", names[1] + ".txt", names[2] + ".txt"));
    EXPECT_TRUE(Unloaded());
    EXPECT_EQ(directory.recordCount, 2);
}

TEST_F(FileUtilWindow, NoSkipsOneFile) {
    OpenThree();
    ChooseAll();
    const std::string kept = List()->topLevelItem(1)->text(0).toStdString() + ".txt";
    prompts.answers = {Answer::Yes, Answer::No, Answer::Yes};
    Click("cmdOp2");
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", kept));
}

TEST_F(FileUtilWindow, HandsTheSelectionToTheCopyWindow) {
    OpenThree();
    Select("one");
    Select("three");
    Click("cmdOp1");
    EXPECT_THAT(copied, UnorderedElementsAre(u"one.txt"_s, u"three.txt"_s));
    EXPECT_TRUE(Unloaded());
}

// --- Rows of one name ---

// What other programs and hands name so that the list, which ends a name at its first full stop
// or "!", shows it twice. The rows have the dates that are given.
class RowsOfOneName : public FileUtilWindow {
  protected:
    void Put(const char* file, const char* date) {
        ReplaceFile(settings.dataPath + QLatin1String(file),
                    RecordFileText(file, {.date = date, .rest = RecordText(1)}));
    }
    std::string Bytes(const char* file) {
        return ReadWholeFile(settings.dataPath + QLatin1String(file));
    }
    void PutTwo() {
        Put("two.txt", "03/07/24");
        Put("two.dots.txt", "04/07/24");
        before = Bytes("two.txt");
    }
    void OpenTwo() {
        PutTwo();
        Open(FileUtilMode::FileUtilities);
        ASSERT_THAT(Column(0), ElementsAre("two", "two"));
        ASSERT_THAT(Column(1), ElementsAre("04/07/24", "03/07/24"));
        ClickRow(0);
    }

    std::string before;
    // The first of two rows that are listed as row goes: the file that is asked about.
    void DeleteTheFirst(const std::string& row, const std::string& asked, const std::string& left) {
        ASSERT_THAT(Column(0), ElementsAre(row, row));
        ClickRow(0);
        prompts.answers = {Answer::Yes};
        Click("cmdOp2");
        EXPECT_THAT(Shown(), ElementsAre("Delete file: " + asked + "\r\n"));
        EXPECT_THAT(NamesIn(settings.dataPath),
                    ::testing::UnorderedElementsAre("DIRDNLD.DNL", left));
    }
};

TEST_F(RowsOfOneName, DeleteTakesTheOnePointedAt) {
    OpenTwo();
    prompts.answers = {Answer::Yes};
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Delete file: two.dots\r\n"));
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", "two.txt"));
    EXPECT_EQ(Bytes("two.txt"), before);
}

TEST_F(RowsOfOneName, RenameTakesTheOnePointedAt) {
    OpenTwo();
    const std::string dots = Bytes("two.dots.txt");
    prompts.inputs = {u"fresh"_s};
    prompts.answers = {Answer::Yes};
    Click("cmdOp0");
    EXPECT_THAT(Shown(), ElementsAre("Rename File|Old Filename: 'two.dots'\r\n\r\nNew Filename: ",
                                     "Rename file: 'two.dots'\r\nTo: 'fresh' ? "));
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", "fresh.txt", "two.txt"));
    EXPECT_EQ(Bytes("two.txt"), before);
    EXPECT_THAT(Bytes("fresh.txt"), EndsWith(dots.substr(dots.find("DATE: "))));
}

TEST_F(RowsOfOneName, CopyTakesTheOnePointedAt) {
    OpenTwo();
    Click("cmdOp1");
    EXPECT_THAT(copied, ElementsAre(u"two.dots.txt"_s));
}

TEST_F(RowsOfOneName, AreToldApartWhenTheirEntriesAreTheSame) {
    for (const char* file : {"two.dots.txt", "two.txt"})
        Put(file, "03/07/24");
    Open(FileUtilMode::FileUtilities);
    ASSERT_THAT(Column(0), ElementsAre("two", "two"));
    ChooseAll();
    prompts.answers = {Answer::No, Answer::Yes};
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Delete file: two.dots\r\n", "Delete file: two\r\n"));
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", "two.dots.txt"));
}

TEST_F(RowsOfOneName, AMarkInANameIsNoOtherFile) {
    Put("A.txt", "03/07/24");
    Put("A!B.txt", "03/08/24");
    Open(FileUtilMode::FileUtilities);
    ASSERT_EQ(Column(1).front(), "B!03/08/");
    DeleteTheFirst("A", "A!B", "A.txt");
}

TEST_F(RowsOfOneName, AnotherEndingIsTheOneOfTheFile) {
    Put("NOTES.txt", "03/07/24");
    Put("NOTES.TXT.BAK", "03/08/24");
    Open(FileUtilMode::FileUtilities);
    DeleteTheFirst("NOTES", "NOTES.TXT.BAK", "NOTES.txt");
}

TEST_F(RowsOfOneName, TheOverlayHasTheTestPointedAt) {
    PutTwo();
    WaitingReports reports{prompts, settings};
    Open(FileUtilMode::Overlay, &reports.runner);
    ClickRow(0);
    Click("cmdOp0");
    ClickRow(1);
    Click("cmdOp1");
    EXPECT_EQ(Text("txtTest1"), "two.dots - TEST NUMBER:1");
    EXPECT_EQ(Text("txtTest2"), "two - TEST NUMBER:1");
    Click("cmdOp2");
    const std::string group = Bytes("2Graphs.GRP");
    EXPECT_THAT(group, StartsWith("TEST NUMBER: two.dots.txt\r\nDATE: 04/07/24\r\n"));
    EXPECT_THAT(group, HasSubstr("TEST NUMBER: two.txt\r\nDATE: 03/07/24\r\n"));
}

// --- Overlay ---

class OverlayWindow : public FileUtilWindow {
  protected:
    OverlayWindow() {
        ReplaceFile(DataFile(u"A"_s), FileText(3));
        ReplaceFile(DataFile(u"B"_s), FileText(1));
        Open(FileUtilMode::Overlay, &reports.runner);
    }
    void ChooseBoth() {
        ClickRecord("A");
        ClickTest(2);
        Click("cmdOp0");
        ClickRecord("B");
        Click("cmdOp1");
    }

    WaitingReports reports{prompts, settings};
};

TEST_F(OverlayWindow, HasItsCaptions) {
    EXPECT_EQ(window->windowTitle(), u"Overlaying 2 Tests"_s);
    EXPECT_EQ(Text("cmdOp0"), "Graph #&1");
    EXPECT_EQ(Text("cmdOp1"), "Graph #&2");
    EXPECT_EQ(Text("cmdOp2"), "&Plot-It");
    EXPECT_TRUE(Find<QGroupBox>("frmeOverlay")->isVisible());
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
}

TEST_F(OverlayWindow, ListsTheTestsOfTheFileAndTakesThem) {
    ClickRecord("A");
    auto* list = Find<QListWidget>("lstTest");
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(1)->text(), u"TEST NUMBER:2"_s);
    ClickTest(1);
    Click("cmdOp0");
    EXPECT_EQ(Text("txtTest1"), "A - TEST NUMBER:2");
    ClickTest(0);
    Click("cmdOp1");
    EXPECT_EQ(Text("txtTest2"), "A - TEST NUMBER:1");
    ClickRecord("B");
    EXPECT_EQ(list->count(), 1);
}

TEST_F(OverlayWindow, SaysWhichGraphIsMissing) {
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Please choose a Test for Graph #1"));
    EXPECT_TRUE(Find<QLineEdit>("txtTest1")->hasFocus());
    ClickRecord("A");
    Click("cmdOp0");
    Click("cmdOp2");
    EXPECT_EQ(Shown().back(), "Please choose a Test for Graph #2");
    EXPECT_TRUE(Find<QLineEdit>("txtTest2")->hasFocus());
    EXPECT_THAT(reports.targets, IsEmpty());
}

TEST_F(OverlayWindow, PlotsBothAndReplacesTheEarlierReport) {
    ReplaceFile(settings.excelPath + u"2Graphs.xls"_s, "old");
    ChooseBoth();
    std::string caption;
    QTimer::singleShot(0, window.get(), [&] { caption = window->windowTitle().toStdString(); });
    Click("cmdOp2");
    EXPECT_EQ(caption, "Plotting 2 Excel Graphs , Please Wait...");
    EXPECT_EQ(window->windowTitle(), u"Overlaying 2 Tests"_s);
    EXPECT_THAT(reports.targets, ElementsAre(settings.excelPath + u"2Graphs.xls"_s));
    EXPECT_FALSE(FileExists(settings.excelPath + u"2Graphs.xls"_s)) << "the earlier one goes first";
    EXPECT_TRUE(FileExists(settings.dataPath + u"2Graphs.GRP"_s));
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(OverlayWindow, CanBeLeftWhilePlotting) {
    reports.waits = true;
    ChooseBoth();
    QTimer::singleShot(50, window.get(), [&] { QTest::keyClick(window.get(), Qt::Key_Escape); });
    Click("cmdOp2");
    EXPECT_EQ(unloaded, 0);
    QTimer::singleShot(50, window.get(), [&] { Click("cmdExit"); });
    Click("cmdOp2");
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(reports.targets, IsEmpty());
}

TEST_F(OverlayWindow, AFileThatIsGoneIsSaid) {
    ChooseBoth();
    DeleteFile(DataFile(u"B"_s));
    Click("cmdOp2");
    ASSERT_THAT(Shown(), SizeIs(1));
    EXPECT_THAT(Shown().front(), StartsWith("Run-time error '53': File not found"));
    EXPECT_TRUE(Enabled("cmdOp2"));
    EXPECT_EQ(window->windowTitle(), u"Overlaying 2 Tests"_s);
}

}  // namespace
}  // namespace davo::test
