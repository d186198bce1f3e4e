// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/beside_records.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSplitter>
#include <QTabBar>
#include <algorithm>

#include "files/frmFileUtilOverlay.h"
#include "files/frmSetDescr.h"
#include "retrieval/frmTestList.h"
#include "tests/curves/panel_test.h"
#include "tests/support/fake_serial_port.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

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
    void Load() { ListFolder(settings.dataPath, directory); }
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
        Show(new frmSetDescr(directory, settings.dataPath, settings.kneepointType, prompts), size);
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
    // Beside the letters of the window itself.
    void ExpectMnemonicsOfCompare() {
        auto* tabs = window->findChild<QTabBar*>(u"tabPanel"_s);
        if (tabs == nullptr) return;
        tabs->setCurrentIndex(1);
        ExpectMnemonicsAreUnique();
        EXPECT_THAT(MnemonicsOf(*window),
                    IsSupersetOf({"Alt+I", "Alt+U", "Alt+V", "Alt+O", "Alt+N"}));
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        tabs->setCurrentIndex(0);
    }
    // The Tab key goes through the panel as the eye does, behind the window's other controls.
    void ExpectPanelInOrder(bool alone) const {
        std::vector<std::string> wanted = {"cmdMore", "plotCurves", "tblTests", "txtDoubts"};
        if (window->findChild<QWidget*>(u"tabPanel"_s) != nullptr)
            wanted.insert(wanted.begin() + 1, "tabPanel");
        if (alone) wanted.emplace_back("cmdBack");
        wanted.insert(wanted.end(), {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"});
        std::vector<std::string> order = TabOrderOf(*window);
        std::erase_if(order, [&](const std::string& name) {
            return FindIn<QWidget>(*window, "RecordPanel")
                       ->findChild<QWidget*>(QString::fromStdString(name)) == nullptr;
        });
        std::erase_if(wanted, [&](const std::string& name) {
            return !FindIn<QWidget>(*window, name.c_str())->isVisible();
        });
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
        ExpectMnemonicsOfCompare();
        ExpectPanelInOrder(false);
        EXPECT_EQ(list->horizontalScrollBar()->maximum(), 0);
        EXPECT_TRUE(Until([this] {
            return FindIn<QWidget>(*window, "plotCurves")->height() >=
                   0.55 * FindIn<QWidget>(*window, "RecordPanel")->height();
        }));
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
    EXPECT_EQ(window->findChild<QWidget*>(u"RecordPanel"_s), nullptr);
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
    QTest::keyClicks(company, u"Northern"_s);
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
        test::Pause(20);
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        ExpectMnemonicsAreUnique();
        ExpectMnemonicsOfCompare();
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

// A chart beside a list needs that; a narrower window has the button.
TEST_F(PanelInWindow, IsBesideTheListFrom1100Pixels) {
    ShowFileUtilities({1100, 690});
    EXPECT_TRUE(HasPanel());
    EXPECT_FALSE(FindIn<QPushButton>(*window, "cmdRecord")->isVisible());
    window->resize(1099, 690);
    QApplication::processEvents();
    EXPECT_FALSE(HasPanel());
    EXPECT_TRUE(FindIn<QPushButton>(*window, "cmdRecord")->isVisible());
}

TEST_F(PanelInWindow, FollowsTheTestThatIsChosenInTheHeaderEditor) {
    ShowHeaders(kWide);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->topLevelItem(2)).center());
    ASSERT_TRUE(Comes(*window, "THREE"));
    auto* tests = FindIn<QListWidget>(*window, "lstTest");
    const auto* table = FindIn<QTableWidget>(*window, "tblTests");
    for (const int test : {2, 0, 1}) {
        ClickItem(*tests, tests->item(test));
        EXPECT_EQ(table->currentColumn(), test);
        EXPECT_THAT(Doubts(*window), StartsWith("Test " + std::to_string(test + 1) + "\n"));
    }
    // Also once its record is saved and read again.
    auto* company = FindIn<QLineEdit>(*window, "txtHeader0");
    company->setFocus();
    QTest::keyClick(company, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(company, u"Northern"_s);
    QTest::mouseClick(FindIn<QPushButton>(*window, "cmdSave"), Qt::LeftButton);
    EXPECT_TRUE(Until(
        [this] { return TextOf(*window, "lblHeader").find("Northern") != std::string::npos; }));
    EXPECT_EQ(table->currentColumn(), 1);
}

TEST_F(PanelInWindow, ShowsGraphOneOverGraphTwo) {
    ShowFileUtilities(kWide, FileUtilMode::Overlay);
    auto* tests = FindIn<QListWidget>(*window, "lstTest");
    const auto choose = [&](int record, int test, const char* graph) {
        ClickItem(*list, list->topLevelItem(record));
        EXPECT_TRUE(Until([&] { return tests->count() > test; }));
        ClickItem(*tests, tests->item(test));
        ClickIn(*window, graph);
    };
    const auto names = [this] {
        const auto* table = FindIn<QTableWidget>(*window, "tblTests");
        std::vector<std::string> columns;
        for (int i = 0; i < table->columnCount(); ++i)
            columns.push_back(table->horizontalHeaderItem(i)->text().toStdString());
        return columns;
    };
    choose(2, 1, "cmdOp0");
    EXPECT_TRUE(Comes(*window, "Graph #1"));
    EXPECT_THAT(names(), ElementsAre("Graph #1: Test 2"));
    // The next record is looked at before its test is taken.
    ClickItem(*list, list->topLevelItem(0));
    EXPECT_TRUE(Comes(*window, "ONE"));
    choose(0, 0, "cmdOp1");
    EXPECT_TRUE(Comes(*window, "Graph #1 over Graph #2"));
    EXPECT_THAT(names(), ElementsAre("Graph #1: THREE Test 2", "Graph #2: ONE Test 1"));
    // The same test twice.
    choose(2, 1, "cmdOp1");
    EXPECT_TRUE(Until([&] { return names().back() == "Graph #2: THREE Test 2"; }));
    EXPECT_EQ(names().front(), "Graph #1: THREE Test 2");
    EXPECT_TRUE(Until([this] { return CutTextsOf(*window).empty(); }));
}

// The columns behind the number of tests may be wide: the panel shows them, too.
TEST_F(PanelInWindow, StaysBesideAListOfLongTexts) {
    std::string header = HeaderText("LONG");
    for (const char* key : {"STATION: ", "CIRCUIT: ", "MFR: ", "MODEL: "}) {
        const std::size_t from = header.find(key) + std::string(key).size();
        header.replace(from, header.find('\r', from) - from, "WWWWWWWWWWWWWWWWWWWW");
    }
    ReplaceFile(File("LONG"), header + Curve(KneeCurve(), 1));
    for (const QSize size : {kWide, QSize(1100, 525)}) {
        ShowFileUtilities(size);
        ASSERT_TRUE(HasPanel());
        EXPECT_GT(list->horizontalScrollBar()->maximum(), 0);
        EXPECT_GE(list->viewport()->width(),
                  list->header()->sectionPosition(3));  // filename, date, tests
        EXPECT_GE(FindIn<QWidget>(*window, "chtCurves")->width(), 300);
        EXPECT_GE(FindIn<QWidget>(*window, "chtCurves")->height(), 250);
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Space);
        EXPECT_TRUE(Comes(*window, "LONG"));
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    }
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
