#include "curves/record_panel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <functional>
#include <memory>

#include "common/files.h"
#include "curves/beside_records.h"
#include "curves/curve_chart.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmSetDescr.h"
#include "retrieval/frmTestList.h"
#include "tests/app/window_checks.h"
#include "tests/curves/panel_records.h"
#include "tests/link/fake_serial_port.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr int kPatience = 5000;

// Records in a folder and a place where a panel is shown.
class PanelTest : public ::testing::Test {
  protected:
    PanelTest() {
        settings.dataPath = folder.Path("Shots_Data/");
        settings.excelPath = folder.Path("Shots_Excel/");
        QDir().mkpath(settings.dataPath);
        QDir().mkpath(settings.excelPath);
        Add("ONE", Curve(KneeCurve(), 1));
        Add("STRAIGHT", Curve(StraightCurve(), 1));
        Add("THREE",
            Curve(SmoothCurve(150), 1) + Curve(SmoothCurve(310), 2) + Curve(SmoothCurve(640), 3));
    }
    QString File(const std::string& name) const {
        return settings.dataPath + QString::fromStdString(name) + QStringLiteral(".txt");
    }
    void Add(const std::string& name, const std::string& tests) {
        ReplaceFile(File(name), HeaderText(name) + tests);
    }
    template <class Control>
    Control* In(const QWidget& parent, const char* name) const {
        return FindIn<Control>(parent, name);
    }
    static std::string TextOf(const QWidget& parent, const char* name) {
        const auto* label = FindIn<QLabel>(parent, name);
        return label->isHidden() ? std::string() : label->text().toStdString();
    }
    static std::vector<std::string> ColumnOf(const QWidget& parent, int column) {
        const auto* table = FindIn<QTableWidget>(parent, "tblTests");
        std::vector<std::string> cells;
        for (int row = 0; row < table->rowCount(); ++row)
            cells.push_back(table->item(row, column)->text().toStdString());
        return cells;
    }
    static std::string Doubts(const QWidget& parent) {
        return FindIn<QPlainTextEdit>(parent, "txtDoubts")->toPlainText().toStdString();
    }
    static bool Comes(const QWidget& parent, const char* title) {
        return QTest::qWaitFor([&] { return TextOf(parent, "lblRecord").starts_with(title); },
                               kPatience);
    }

    TemporaryFolder folder;
    Settings settings;
    DirectoryTables directory;
    FakePrompts prompts;
};

class Panel : public PanelTest {
  protected:
    Panel() {
        panel.resize(500, 680);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
    }
    void ShowFiles(const std::vector<std::string>& names) {
        std::vector<QString> files;
        for (const std::string& name : names)
            files.push_back(File(name));
        panel.ShowRecords(files);
        QTest::qWait(60);
    }
    CurveChart* TheChart() {
        return dynamic_cast<CurveChart*>(FindIn<QWidget>(panel, "chtCurves"));
    }
    void Press(const char* name) {
        QTest::mouseClick(FindIn<QPushButton>(panel, name), Qt::LeftButton);
    }
    RecordPanel panel{prompts};
};

TEST_F(Panel, IsEmptyWithoutARecord) {
    ShowFiles({});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "No record is selected.");
    EXPECT_THAT(TabOrderOf(panel), IsEmpty());
    EXPECT_FALSE(FindIn<QPushButton>(panel, "cmdSaveCsv")->isEnabled());
}

TEST_F(Panel, ShowsTheFactsOfARecord) {
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "ONE   03/07/24 14:05");
    EXPECT_THAT(TextOf(panel, "lblHeader"),
                AllOf(HasSubstr("Company:"), HasSubstr("Power\u00a0&amp;\u00a0Light"),
                      HasSubstr("Operator:"), HasSubstr("Doe")));
    EXPECT_THAT(ColumnOf(panel, 0),
                ElementsAre("29.9 V, 0.090 A", "26.8 V, 0.082 A", "24.1 V, 0.075 A (?)", "241.20",
                            "240 (1200:5)", "0.50%", "IN PHASE", "IN PHASE, 1.5\u00b0"));
    EXPECT_EQ(Doubts(panel),
              "ASA 10/50: 24.1 V, 0.075 A. The points are too few or too uneven for this rule: a "
              "smooth curve through them has its kneepoint at 34.5 V, 0.1169 A.");
    EXPECT_EQ(TheChart()->Across(), (LogSpan{-2, 1}));
    EXPECT_EQ(TheChart()->Up(), (LogSpan{1, 2}));
}

TEST_F(Panel, SaysInWordsWhyThereIsNoKneepoint) {
    ShowFiles({"STRAIGHT"});
    EXPECT_THAT(Doubts(panel), HasSubstr("IEEE 30: 0. The core did not saturate: no pair of points "
                                         "lies above the rule's limit. Raise the voltage "
                                         "further."));
}

TEST_F(Panel, ATestThatIsChosenBringsItsDoubts) {
    ShowFiles({"THREE"});
    EXPECT_THAT(Doubts(panel), StartsWith("Test 1\n"));
    auto* table = FindIn<QTableWidget>(panel, "tblTests");
    table->setFocus();
    QTest::keyClick(table, Qt::Key_Right);
    EXPECT_THAT(Doubts(panel), StartsWith("Test 2\n"));
}

TEST_F(Panel, ShowsTenRecordsAtMost) {
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i) {
        names.push_back("R" + std::to_string(i));
        Add(names.back(), Curve(SmoothCurve(100 + 50 * i), 1));
    }
    ShowFiles(names);
    EXPECT_EQ(TextOf(panel, "lblRecord"), "12 records; the first 10 are shown");
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 10);
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->horizontalHeaderItem(9)->text(),
              QStringLiteral("R9 Test 1"));
    ShowFiles({"R0", "R1"});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "2 records");
}

TEST_F(Panel, SaysWhatCannotBeRead) {
    ReplaceFile(File("BROKEN"), "TEST NUMBER: BROKEN\r\nREC");
    ShowFiles({"BROKEN"});
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("BROKEN cannot be shown: "));
    EXPECT_TRUE(FindIn<QTableWidget>(panel, "tblTests")->isHidden());
    // The others are shown all the same.
    ShowFiles({"GONE", "ONE"});
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("GONE cannot be shown: "));
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 1);
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "");
    Add("EMPTY", "");
    ShowFiles({"EMPTY"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "There is no test in it.");
}

TEST_F(Panel, ReadsAFileAgainWhenItHasChanged) {
    ShowFiles({"ONE"});
    Add("ONE", Curve(KneeCurve(), 1) + Curve(StraightCurve(), 2));
    ShowFiles({"ONE"});
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 2);
}

TEST_F(Panel, ShowsTheLastOfManySelectionsOnly) {
    ShowFiles({"ONE"});
    const int before = TheChart()->Paints();
    for (int i = 0; i < 250; ++i)
        panel.ShowRecords({File(i % 2 == 0 ? "ONE" : "THREE")});
    QTest::qWait(100);
    EXPECT_EQ(TextOf(panel, "lblRecord"), "THREE   03/07/24 14:05");
    EXPECT_LE(TheChart()->Paints(), before + 4);
}

TEST_F(Panel, SavesPictureAndPageAndTable) {
    ShowFiles({"ONE", "THREE"});
    prompts.files = {folder.Path("curves"), folder.Path("curves.PDF"), folder.Path("curves.csv")};
    Press("cmdSavePng");
    Press("cmdSavePdf");
    Press("cmdSaveCsv");
    EXPECT_EQ(prompts.shown.at(0), QDir::cleanPath(settings.dataPath) + QStringLiteral("|*.png"));
    EXPECT_TRUE(prompts.shown.at(1).endsWith(QStringLiteral("|*.pdf")));
    EXPECT_TRUE(prompts.shown.at(2).endsWith(QStringLiteral("|*.csv")));
    EXPECT_EQ(QImage(folder.Path("curves.png")).size(), QSize(1600, 1100));
    EXPECT_THAT(ReadWholeFile(folder.Path("curves.PDF")), StartsWith("%PDF-"));
    const std::string csv = ReadWholeFile(folder.Path("curves.csv"));
    // Names of columns, seven points, three times sixteen.
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1 + 7 + 48);
}

TEST_F(Panel, AsksBeforeItReplacesAFile) {
    ShowFiles({"ONE"});
    const QString path = folder.Path("mine.csv");
    ReplaceFile(path, "mine");
    prompts.files = {path, path, QString()};
    prompts.answers = {Answer::No, Answer::Yes};
    Press("cmdSaveCsv");
    EXPECT_EQ(prompts.shown.back(), QStringLiteral("The file 'mine.csv' exists already. Do you "
                                                   "want to replace it?"));
    EXPECT_EQ(prompts.presets.back(), Answer::No);
    EXPECT_EQ(ReadWholeFile(path), "mine");
    Press("cmdSaveCsv");
    EXPECT_NE(ReadWholeFile(path), "mine");
    Press("cmdSaveCsv");  // cancelled
    EXPECT_TRUE(prompts.files.empty());
}

TEST_F(Panel, SaysWhenNothingWasSaved) {
    ShowFiles({"ONE"});
    for (const char* button : {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"}) {
        prompts.files = {folder.Path("none/curves")};
        Press(button);
        EXPECT_THAT(prompts.shown.back().toStdString(), StartsWith("The file was not saved. "));
    }
}

// --- In the windows -----------------------------------------------------------------------------

class PanelInWindow : public PanelTest {
  protected:
    template <class Window>
    void Show(Window* shown, QSize size) {
        window.reset(shown);
        shown->Form_Load();
        shown->resize(size);
        shown->show();
        shown->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(shown));
        list = FindIn<QTreeWidget>(*shown, "lvTest");
        list->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([this] { return list->hasFocus(); }, kPatience));
    }
    void Load() {
        RebuildDirectory(settings.dataPath, directory);
        LoadDirectoryFile(settings.dataPath, directory);
    }
    void ShowTestList(QSize size, ListMode mode = ListMode::Folder) {
        Load();
        Show(new frmTestList(mode, {settings, directory, prompts, link, folder.Path(), {}}), size);
    }
    void ShowFileUtilities(QSize size, FileUtilMode mode = FileUtilMode::FileUtilities) {
        Load();
        Show(new frmFileUtilOverlay(mode, {settings, directory, prompts, nullptr}), size);
    }
    void ShowHeaders(QSize size) {
        Load();
        Show(new frmSetDescr(directory, settings.dataPath, prompts), size);
    }
    bool HasPanel() const { return FindIn<QWidget>(*window, "RecordPanel")->isVisible(); }
    void ExpectMnemonicsAreUnique() const {
        std::vector<std::string> mnemonics = MnemonicsOf(*window);
        mnemonics.emplace_back("Alt+F");  // the main window's menu
        std::sort(mnemonics.begin(), mnemonics.end());
        EXPECT_EQ(std::adjacent_find(mnemonics.begin(), mnemonics.end()), mnemonics.end())
            << ::testing::PrintToString(mnemonics);
        for (const char* command : {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"}) {
            EXPECT_FALSE(
                QKeySequence::mnemonic(FindIn<QPushButton>(*window, command)->text()).isEmpty())
                << command;
        }
    }
    // The Tab key goes through the panel as the eye does, behind the window's other controls.
    void ExpectPanelInOrder(bool alone) const {
        std::vector<std::string> wanted = {"plotCurves", "tblTests", "txtDoubts"};
        if (alone) wanted.emplace_back("cmdBack");
        wanted.insert(wanted.end(), {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"});
        std::vector<std::string> order = TabOrderOf(*window);
        std::erase_if(order, [&](const std::string& name) {
            return FindIn<QWidget>(*window, "RecordPanel")
                       ->findChild<QWidget*>(QString::fromStdString(name)) == nullptr;
        });
        if (!FindIn<QWidget>(*window, "txtDoubts")->isVisible()) std::erase(wanted, "txtDoubts");
        EXPECT_EQ(order, wanted);
        const std::vector<std::string> all = TabOrderOf(*window);
        EXPECT_EQ(std::vector<std::string>(all.end() - static_cast<std::ptrdiff_t>(order.size()),
                                           all.end()),
                  order);
    }
    QRect PlaceOf(const QWidget* control) const {
        return {control->mapTo(window.get(), QPoint()), control->size()};
    }
    // What every window keeps beside the panel.
    void ChooseByKeys() {
        ASSERT_TRUE(HasPanel());
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Down);
        const std::string name = list->currentItem()->text(0).toStdString();
        EXPECT_TRUE(Comes(*window, name.c_str()));
        EXPECT_TRUE(list->hasFocus());
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        ExpectMnemonicsAreUnique();
        ExpectPanelInOrder(false);
        EXPECT_EQ(list->horizontalScrollBar()->maximum(), 0);
    }

    static constexpr QSize kWide{1366, 690};
    static constexpr QSize kLaptop{888, 450};  // of 1366 x 768 pixels at 150 %
    FakeSerialPort port;
    LinkState state;
    BusyPointer pointer;
    Link link{port, state, prompts, pointer};
    std::unique_ptr<QWidget> window;
    QTreeWidget* list = nullptr;
};

TEST_F(PanelInWindow, FollowsTheTestList) {
    ShowTestList(kWide);
    ChooseByKeys();
    // The panel comes last in the order of the Tab key.
    const std::vector<std::string> order = TabOrderOf(*window);
    EXPECT_GT(std::find(order.begin(), order.end(), "plotCurves"),
              std::find(order.begin(), order.end(), "cmdSave"));
    QTest::keyClick(list, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(Comes(*window, "3 records"));
}

TEST_F(PanelInWindow, IsNotBesideTheInstrument_sMemory) {
    ShowTestList(kWide, ListMode::Instrument);
    EXPECT_EQ(window->findChild<QWidget*>(QStringLiteral("RecordPanel")), nullptr);
}

TEST_F(PanelInWindow, FollowsTheFileUtilities) {
    ShowFileUtilities(kWide);
    ChooseByKeys();
    QTest::keyClick(list, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(Comes(*window, "3 records"));
}

TEST_F(PanelInWindow, FollowsTheOverlay) {
    ShowFileUtilities(kWide, FileUtilMode::Overlay);
    ChooseByKeys();
}

TEST_F(PanelInWindow, FollowsTheHeadersAndWhatIsSaved) {
    ShowHeaders(kWide);
    ChooseByKeys();
    auto* company = FindIn<QLineEdit>(*window, "txtHeader0");
    company->setFocus();
    company->selectAll();
    QTest::keyClicks(company, QStringLiteral("Northern"));
    QTest::mouseClick(FindIn<QPushButton>(*window, "cmdSave"), Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return TextOf(*window, "lblHeader").find("Northern") != std::string::npos; },
        kPatience));
}

// Where there is no room for both, a button shows it in the place of the list, another one the
// list.
TEST_F(PanelInWindow, IsShownInPlaceOfTheListInASmallWindow) {
    const std::vector<std::function<void()>> windows = {
        [this] { ShowTestList(kLaptop); }, [this] { ShowFileUtilities(kLaptop); },
        [this] { ShowFileUtilities(kLaptop, FileUtilMode::Overlay); },
        [this] { ShowHeaders(kLaptop); }};
    for (const auto& open : windows) {
        open();
        SCOPED_TRACE(window->objectName().toStdString());
        const QSize size = window->size();
        EXPECT_FALSE(HasPanel());
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Space);
        auto* button = FindIn<QPushButton>(*window, "cmdRecord");
        ASSERT_TRUE(button->isVisible());
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        ExpectMnemonicsAreUnique();
        QTest::keyClick(window.get(), Qt::Key_H, Qt::AltModifier);
        ASSERT_TRUE(QTest::qWaitFor([this] { return HasPanel(); }, kPatience));
        EXPECT_FALSE(list->isVisible());
        EXPECT_TRUE(Comes(*window, "ONE   03/07/24 14:05"));
        QTest::qWait(20);
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        ExpectMnemonicsAreUnique();
        ExpectPanelInOrder(true);
        // The curve and the results, beside each other and large enough to be read.
        const auto* chart = FindIn<QWidget>(*window, "chtCurves");
        const auto* table = FindIn<QTableWidget>(*window, "tblTests");
        EXPECT_GE(chart->height(), 250);
        EXPECT_EQ(table->verticalScrollBar()->maximum(), 0);
        EXPECT_GE(PlaceOf(table).left(), PlaceOf(chart).right());
        EXPECT_EQ(window->size(), size);
        // Back by Escape, and by its button.
        QTest::keyClick(window->focusWidget(), Qt::Key_Escape);
        EXPECT_FALSE(HasPanel());
        EXPECT_TRUE(list->hasFocus());
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseClick(FindIn<QPushButton>(*window, "cmdBack"), Qt::LeftButton);
        EXPECT_TRUE(list->isVisible());
        // Both in a larger window.
        QTest::mouseClick(button, Qt::LeftButton);
        window->resize(kWide);
        QApplication::processEvents();
        EXPECT_TRUE(HasPanel());
        EXPECT_TRUE(list->isVisible());
        EXPECT_FALSE(button->isVisible());
        EXPECT_FALSE(FindIn<QPushButton>(*window, "cmdBack")->isVisible());
    }
}

TEST_F(PanelInWindow, TheHeaderStandsBelowTheDoubtsInALowPanel) {
    ShowFileUtilities({1000, 525});
    ASSERT_TRUE(HasPanel());
    QTest::keyClick(list, Qt::Key_Home);
    QTest::keyClick(list, Qt::Key_Space);
    ASSERT_TRUE(Comes(*window, "ONE   03/07/24 14:05"));
    EXPECT_EQ(TextOf(*window, "lblHeader"), "");
    EXPECT_THAT(Doubts(*window), HasSubstr("Station: Hilltop"));
    window->resize(kWide);
    QApplication::processEvents();
    EXPECT_THAT(TextOf(*window, "lblHeader"), HasSubstr("Hilltop"));
    EXPECT_THAT(Doubts(*window), Not(HasSubstr("Hilltop")));
}

TEST_F(PanelInWindow, CanBeShutByItsEdge) {
    ShowFileUtilities(kWide);
    auto* splitter = dynamic_cast<QSplitter*>(FindIn<QWidget>(*window, "splRecords"));
    ASSERT_NE(splitter, nullptr);
    QWidget* handle = splitter->handle(1);
    QTest::mousePress(handle, Qt::LeftButton, {}, handle->rect().center());
    QTest::mouseMove(handle, QPoint(splitter->width(), 100));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(splitter->width(), 100));
    EXPECT_EQ(splitter->sizes().at(1), 0);
    EXPECT_TRUE(list->isVisible());
}

}  // namespace

}  // namespace davo::test
