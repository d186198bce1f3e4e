// SPDX-License-Identifier: GPL-3.0-or-later
// File utilities and the overlay of two tests, by their real controls.
#include "files/frmFileUtilOverlay.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTimer>
#include <QTreeWidget>

#include "tests/app/window_checks.h"
#include "tests/files/file_window.h"
#include "tests/reports/record_text.h"
#include "tests/reports/waiting_renderer.h"

namespace davo::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class FileUtilWindow : public FileWindow<frmFileUtilOverlay> {
  protected:
    void Open(FileUtilMode mode, ReportRunner* reports = nullptr) {
        RebuildDirectory(settings.dataPath, directory);
        LoadDirectoryFile(settings.dataPath, directory);
        window = std::make_unique<frmFileUtilOverlay>(
            mode, FileUtilSurroundings{settings, directory, prompts, reports});
        window->OnCopy = [this](const std::vector<QString>& names) { copied = names; };
        ShowWindow();
    }
    void OpenThree() {
        for (const char* name : {"one", "two", "three"})
            AddRecord(QLatin1String(name), "rest of it\r\n");
        Open(FileUtilMode::FileUtilities);
    }
    QTreeWidget* List() { return Find<QTreeWidget>("lvTest"); }
    int RowOf(const char* name) {
        for (int row = 0; row < List()->topLevelItemCount(); ++row) {
            if (List()->topLevelItem(row)->text(0) == QLatin1String(name)) return row;
        }
        throw std::logic_error(name);
    }
    void Select(const char* name, Qt::KeyboardModifiers keys = Qt::ControlModifier) {
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, keys,
                          List()->visualItemRect(List()->topLevelItem(RowOf(name))).center());
    }
    std::string Caption(const char* name) { return Find<QPushButton>(name)->text().toStdString(); }

    std::vector<QString> copied;
};

TEST_F(FileUtilWindow, HasItsCaptions) {
    OpenThree();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("File Utilities"));
    EXPECT_EQ(Caption("cmdOp0"), "&Rename");
    EXPECT_EQ(Caption("cmdOp1"), "&Copy");
    EXPECT_EQ(Caption("cmdOp2"), "&Delete");
    EXPECT_TRUE(Find<QGroupBox>("frmeOp")->isVisible());
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

TEST_F(FileUtilWindow, RenamesAndNamesTheRecordInIt) {
    OpenThree();
    Select("two");
    prompts.inputs = {QStringLiteral("fresh")};
    prompts.answers = {Answer::Yes};
    Click("cmdOp0");
    EXPECT_THAT(Shown(), ElementsAre("Rename File|Old Filename: 'two'\r\n\r\nNew Filename: ",
                                     "Rename file: 'two'\r\nTo: 'fresh' ? "));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_FALSE(FileExists(DataFile(QStringLiteral("two"))));
    EXPECT_EQ(ReadWholeFile(DataFile(QStringLiteral("fresh"))),
              RecordFileText("fresh", "rest of it\r\n"));
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(ReadLines(settings.dataPath + QStringLiteral("DIRDNLD.DNL")),
                Contains(::testing::StartsWith("fresh!")));
    EXPECT_EQ(directory.recordCount, 3);
}

TEST_F(FileUtilWindow, RefusesNamesAndAsksAgain) {
    OpenThree();
    Select("two");
    prompts.inputs = {QStringLiteral("one.txt"), QStringLiteral("one"), QStringLiteral("a/b"),
                      QStringLiteral("a\\b"),    QStringLiteral("nul"), QString()};
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
    EXPECT_EQ(ReadWholeFile(DataFile(QStringLiteral("two"))),
              RecordFileText("two", "rest of it\r\n"));
}

TEST_F(FileUtilWindow, NoLeavesTheFileAndGoesOn) {
    OpenThree();
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
    prompts.inputs = {QStringLiteral("x1"), std::nullopt, QStringLiteral("x3")};
    prompts.answers = {Answer::No, Answer::Yes};
    const std::string first = List()->topLevelItem(0)->text(0).toStdString() + ".txt";
    const std::string second = List()->topLevelItem(1)->text(0).toStdString() + ".txt";
    Click("cmdOp0");
    EXPECT_THAT(NamesIn(settings.dataPath),
                ::testing::UnorderedElementsAre("DIRDNLD.DNL", first, second, "x3.txt"));
}

TEST_F(FileUtilWindow, AFileThatIsGoneIsSaidAndTheRestGoesOn) {
    OpenThree();
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
    DeleteFile(DataFile(List()->topLevelItem(0)->text(0)));
    prompts.inputs = {QStringLiteral("x1"), QStringLiteral("x2"), QStringLiteral("x3")};
    prompts.answers = {Answer::Yes, Answer::Yes, Answer::Yes};
    Click("cmdOp0");
    EXPECT_THAT(Shown(), Contains(::testing::StartsWith("Run-time error '53': File not found")));
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("DIRDNLD.DNL", "x2.txt", "x3.txt"));
}

TEST_F(FileUtilWindow, DeletesUntilCancel) {
    OpenThree();
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
    std::vector<std::string> names;
    for (int row = 0; row < 3; ++row)
        names.push_back(List()->topLevelItem(row)->text(0).toStdString());
    prompts.answers = {Answer::Yes, Answer::Cancel};
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Delete file: " + names[0] + "\r\n",
                                     "Delete file: " + names[1] + "\r\n"));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No, Answer::No));
    EXPECT_THAT(
        NamesIn(settings.dataPath),
        ::testing::UnorderedElementsAre("DIRDNLD.DNL", names[1] + ".txt", names[2] + ".txt"));
    EXPECT_TRUE(Unloaded());
    EXPECT_EQ(directory.recordCount, 2);
}

TEST_F(FileUtilWindow, NoSkipsOneFile) {
    OpenThree();
    QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
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
    EXPECT_THAT(copied,
                ::testing::UnorderedElementsAre(QStringLiteral("one"), QStringLiteral("three")));
    EXPECT_TRUE(Unloaded());
}

// --- Overlay ---

class OverlayWindow : public FileUtilWindow {
  protected:
    OverlayWindow() {
        ReplaceFile(DataFile(QStringLiteral("A")), FileText(3));
        ReplaceFile(DataFile(QStringLiteral("B")), FileText(1));
        Open(FileUtilMode::Overlay, &reports);
    }
    void ChooseTestRow(int row) {
        auto* list = Find<QListWidget>("lstTest");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->item(row)).center());
    }
    std::string Box(const char* name) { return Find<QLineEdit>(name)->text().toStdString(); }
    void ChooseBoth() {
        Select("A", {});
        ChooseTestRow(2);
        Click("cmdOp0");
        Select("B", {});
        Click("cmdOp1");
    }

    std::vector<QString> targets;
    bool rendererWaits = false;
    ReportRunner reports{
        prompts, settings,
        [this] {
            return ChosenRenderer{std::make_unique<WaitingRenderer>(targets, rendererWaits), false};
        },
        [](const QString&) { return true; }};
};

TEST_F(OverlayWindow, HasItsCaptions) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Overlaying 2 Tests"));
    EXPECT_EQ(Caption("cmdOp0"), "Graph #&1");
    EXPECT_EQ(Caption("cmdOp1"), "Graph #&2");
    EXPECT_EQ(Caption("cmdOp2"), "&Plot-It");
    EXPECT_TRUE(Find<QGroupBox>("frmeOverlay")->isVisible());
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
}

TEST_F(OverlayWindow, ListsTheTestsOfTheFileAndTakesThem) {
    Select("A", {});
    auto* list = Find<QListWidget>("lstTest");
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(1)->text(), QStringLiteral("TEST NUMBER:2"));
    ChooseTestRow(1);
    Click("cmdOp0");
    EXPECT_EQ(Box("txtTest1"), "A - TEST NUMBER:2");
    ChooseTestRow(0);
    Click("cmdOp1");
    EXPECT_EQ(Box("txtTest2"), "A - TEST NUMBER:1");
    Select("B", {});
    EXPECT_EQ(list->count(), 1);
}

TEST_F(OverlayWindow, SaysWhichGraphIsMissing) {
    Click("cmdOp2");
    EXPECT_THAT(Shown(), ElementsAre("Please choose a Test for Graph #1"));
    EXPECT_TRUE(Find<QLineEdit>("txtTest1")->hasFocus());
    Select("A", {});
    Click("cmdOp0");
    Click("cmdOp2");
    EXPECT_EQ(Shown().back(), "Please choose a Test for Graph #2");
    EXPECT_TRUE(Find<QLineEdit>("txtTest2")->hasFocus());
    EXPECT_THAT(targets, IsEmpty());
}

TEST_F(OverlayWindow, PlotsBothAndReplacesTheEarlierReport) {
    ReplaceFile(settings.excelPath + QStringLiteral("2Graphs.xls"), "old");
    ChooseBoth();
    std::string caption;
    QTimer::singleShot(0, window.get(), [&] { caption = window->windowTitle().toStdString(); });
    Click("cmdOp2");
    EXPECT_EQ(caption, "Plotting 2 Excel Graphs , Please Wait...");
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Overlaying 2 Tests"));
    EXPECT_THAT(targets, ElementsAre(settings.excelPath + QStringLiteral("2Graphs.xls")));
    EXPECT_FALSE(FileExists(settings.excelPath + QStringLiteral("2Graphs.xls")))
        << "the earlier one goes first";
    EXPECT_TRUE(FileExists(settings.dataPath + QStringLiteral("2Graphs.GRP")));
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(OverlayWindow, CanBeLeftWhilePlotting) {
    rendererWaits = true;
    ChooseBoth();
    QTimer::singleShot(50, window.get(), [&] { QTest::keyClick(window.get(), Qt::Key_Escape); });
    Click("cmdOp2");
    EXPECT_EQ(unloaded, 0);
    QTimer::singleShot(50, window.get(), [&] { Click("cmdExit"); });
    Click("cmdOp2");
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(targets, IsEmpty());
}

TEST_F(OverlayWindow, AFileThatIsGoneIsSaid) {
    ChooseBoth();
    DeleteFile(DataFile(QStringLiteral("B")));
    Click("cmdOp2");
    ASSERT_THAT(Shown(), SizeIs(1));
    EXPECT_THAT(Shown().front(), ::testing::StartsWith("Run-time error '53': File not found"));
    EXPECT_TRUE(Find<QPushButton>("cmdOp2")->isEnabled());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Overlaying 2 Tests"));
}

}  // namespace
}  // namespace davo::test
