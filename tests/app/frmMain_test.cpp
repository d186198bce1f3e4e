#include "app/frmMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <memory>

#include "app/cursor_pointer.h"
#include "common/files.h"
#include "records/record_file.h"
#include "tests/link/fake_serial_port.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/memory_settings_store.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kPatience = 3000;  // ms until a condition must have come true

// The main window on a scripted instrument and a store in memory.
class MainWindow : public ::testing::Test {
  protected:
    MainWindow() { port.Always("B", "RDY\r\n"); }
    ~MainWindow() override { window.reset(); }

    void Open(const char* model = "DAVO-E R3.10") {
        port.Always("W", std::string(model) + "\r\n");
        window = std::make_unique<frmMain>(
            state, ProgramServices{store, places, clock, prompts, link, [] {}});
        window->Form_Load();
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    template <class Item>
    Item* Find(const char* name) {
        auto* item = window->findChild<Item*>(QLatin1String(name));
        if (item == nullptr) throw std::logic_error(std::string("no item ") + name);
        return item;
    }
    void Choose(const char* name) { Find<QAction>(name)->trigger(); }
    QWidget* TestWindow() { return window->findChild<QWidget*>(QStringLiteral("frmCControl")); }
    bool Until(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    MemorySettingsStore store;
    FakeSerialPort port;
    FakePrompts prompts;
    FakeClock clock{QDateTime(QDate(2026, 11, 21), QTime(14, 5, 9))};
    CursorPointer pointer;
    ProgramState state;
    Link link{port, state.linkState, prompts, pointer};
    std::unique_ptr<frmMain> window;
};

TEST_F(MainWindow, HasItsCaptionAndMenus) {
    Open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("DAVO PC-Interface V.3.15"));
    const std::pair<const char*, const char*> captions[] = {
        {"mnuFile", "&File"},
        {"mnuCControl", "R&un Test"},
        {"mnuBoth", "S&aturation && Ratio Tests"},
        {"mnuRatio", "Ratio Test &Only"},
        {"mnuExit", "&Exit"}};
    for (const auto& [name, caption] : captions) {
        EXPECT_EQ(Find<QAction>(name)->text(), QLatin1String(caption));
    }
    EXPECT_TRUE(Find<QAction>("mnuLine7")->isSeparator());
}

TEST_F(MainWindow, LoadsSettingsHeaderAndPortAndSendsNothing) {
    ASSERT_TRUE(QDir().mkpath(folder.Path("data/Shots_Data")));
    const QString data = folder.Path("data/Shots_Data/");
    store.Write(QStringLiteral("DATAPATH"), QStringLiteral("PATH"), QStringLiteral("PATHVAL"),
                data);
    store.Write(QStringLiteral("DAVO"), QStringLiteral("COMPORT"), QStringLiteral("COMPORTVAL"),
                QStringLiteral(" 3"));
    ReplaceFile(data + QStringLiteral("Davo.ini"), "MFR:ABB\r\n");
    Open();
    EXPECT_EQ(state.settings.dataPath, data);
    EXPECT_EQ(state.header.Field(3), "ABB                 ");
    EXPECT_EQ(state.header.Field(0), "                    ");
    EXPECT_THAT(port.properties, Contains("CommPort=3"));
    EXPECT_TRUE(state.linkState.portOpen);
    EXPECT_TRUE(port.sent.empty());
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainWindow, APortThatDoesNotOpenIsNotReportedAtStart) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    EXPECT_FALSE(state.linkState.portOpen);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainWindow, SettingsThatCannotBeReadAreSaidAndReplacedByTheUsualOnes) {
    store.Write(QStringLiteral("DAVO"), QStringLiteral("COMPORT"), QStringLiteral("COMPORTVAL"),
                QStringLiteral("many"));
    Open();
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("Type mismatch"));
    EXPECT_EQ(state.settings.dataPath, places.applicationFolder + QStringLiteral("Shots_Data/"));
    EXPECT_EQ(state.settings.excelPath, places.applicationFolder + QStringLiteral("Shots_Excel/"));
}

TEST_F(MainWindow, BothOpensTheTestWindowAndDisablesTheMenu) {
    Open();
    Choose("mnuBoth");
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_THAT(port.sent, ElementsAre("B", "W"));
    EXPECT_TRUE(state.modes.testBothMode);
    EXPECT_FALSE(state.modes.testRatioOnlyMode);
    EXPECT_TRUE(state.modes.modelIsExtended);
    EXPECT_TRUE(state.session.testWindowOpen);
    EXPECT_EQ(state.linkState.instrumentModel, "DAVO-E R3.10");
    EXPECT_FALSE(Find<QAction>("mnuFile")->isEnabled());
    EXPECT_TRUE(TestWindow()->isVisible());
}

TEST_F(MainWindow, RatioSetsItsMode) {
    Open();
    Choose("mnuRatio");
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_FALSE(state.modes.testBothMode);
    EXPECT_TRUE(state.modes.testRatioOnlyMode);
}

TEST_F(MainWindow, ClosingTheTestWindowEnablesTheMenuAndClosesThePort) {
    Open();
    Choose("mnuBoth");
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));  // ready
    QTest::qWait(50);
    QTest::mouseClick(Find<QPushButton>("cmdExit"), Qt::LeftButton);
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_TRUE(Find<QAction>("mnuFile")->isEnabled());
    EXPECT_FALSE(state.linkState.portOpen);
    Choose("mnuBoth");
    EXPECT_NE(TestWindow(), nullptr) << "the port is opened again";
}

TEST_F(MainWindow, AModelWithoutTheOptionIsToldSo) {
    Open("DAVO R2.00");
    for (const char* item : {"mnuBoth", "mnuRatio"}) {
        prompts.shown.clear();
        Choose(item);
        EXPECT_THAT(prompts.shown,
                    ElementsAre(QStringLiteral("This option is not available on your DAVO.")));
        EXPECT_EQ(TestWindow(), nullptr);
        EXPECT_TRUE(Find<QAction>("mnuFile")->isEnabled());
    }
}

TEST_F(MainWindow, AnotherModelCannotBeRead) {
    Open("OTHER-E");
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("Cannot read option, please try again.")));
}

TEST_F(MainWindow, ASilentInstrumentIsSaidToBeNotAvailableFirst) {
    port.always.clear();
    Open();
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown,
                ElementsAre(QLatin1String(kNotAvailableMessage),
                            QStringLiteral("Cannot read option, please try again.")));
}

TEST_F(MainWindow, WithoutAPortTheModelCannotBeRead) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("Cannot read option, please try again.")));
    port.failOpen.reset();
    Choose("mnuBoth");
    EXPECT_NE(TestWindow(), nullptr) << "it is tried again";
}

TEST_F(MainWindow, ATestWindowThatCannotOpenLeavesTheMenuEnabled) {
    Open();
    ASSERT_TRUE(QDir(places.scratchFolder).removeRecursively());
    Choose("mnuBoth");
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("Run-time error '"));
    EXPECT_EQ(TestWindow(), nullptr);
    EXPECT_TRUE(Find<QAction>("mnuFile")->isEnabled());
}

TEST_F(MainWindow, ExitAsksAndSendsX) {
    Open();
    prompts.answers = {Answer::No};
    Choose("mnuExit");
    EXPECT_THAT(prompts.shown, ElementsAre(QStringLiteral("Do You Want to Exit?")));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(port.sent.empty());
    prompts.answers = {Answer::Yes};
    Choose("mnuExit");
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(port.sent, ElementsAre("X"));
    EXPECT_FALSE(state.linkState.portOpen);
}

TEST_F(MainWindow, UnloadWritesTheSettingsInTheirOrder) {
    Open();
    state.settings.showImpedance = true;
    window->close();
    EXPECT_THAT(store.written, ElementsAre(QStringLiteral("DAVO/KPTYPE/KPTYPEVAL"),
                                           QStringLiteral("DAVO/COMPORT/COMPORTVAL"),
                                           QStringLiteral("IMPEDANCE/IMP/IMPVAL"),
                                           QStringLiteral("SORTVALUES/SORT/SORTVAL"),
                                           QStringLiteral("DATAPATH/PATH/PATHVAL")));
    EXPECT_EQ(store.texts[QStringLiteral("IMPEDANCE/IMP/IMPVAL")], QStringLiteral("Y"));
    EXPECT_EQ(store.texts[QStringLiteral("DAVO/COMPORT/COMPORTVAL")], QStringLiteral(" 1"));
}

TEST_F(MainWindow, ClosingItSavesTheSessionFirst) {
    Open();
    Choose("mnuRatio");
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    QTest::qWait(50);
    QTest::mouseClick(Find<QPushButton>("cmdStart"), Qt::LeftButton);
    port.Deliver("DATA" + std::string(296, '0') + "\r\nDONE\r\n");
    ASSERT_TRUE(Until([this] { return Find<QPushButton>("cmdExit")->isEnabled(); }));
    prompts.answers = {Answer::Yes};
    prompts.files = {state.settings.dataPath + QStringLiteral("T1.txt")};
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadTestRecordFile(state.settings.dataPath + QStringLiteral("T1.txt")).shots, "01");
}

TEST_F(MainWindow, IsNotClosedWhileATestRuns) {
    Open();
    Choose("mnuRatio");
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    QTest::qWait(50);
    QTest::mouseClick(Find<QPushButton>("cmdStart"), Qt::LeftButton);
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral(
                    "A test is running. Cancel it before you leave, or hit the ESC key.")));
    EXPECT_TRUE(store.written.empty());
}

TEST_F(MainWindow, ALongWaitIsShownAndCanBeEnded) {
    Open();
    port.always.clear();
    port.Always("B", "RDY\r\n");  // and no answer to "W"
    const QWidget* bar = window->statusBar();
    bool shownAtOnce = true;
    QTimer::singleShot(200, window.get(), [&] { shownAtOnce = bar->isVisible(); });
    QTimer::singleShot(1500, window.get(), [this] {
        QTest::mouseClick(Find<QPushButton>("cmdStopWait"), Qt::LeftButton);
    });
    Choose("mnuBoth");
    EXPECT_FALSE(shownAtOnce);
    EXPECT_FALSE(bar->isVisible());
    EXPECT_FALSE(link.CurrentWait().has_value());
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("Cannot read option, please try again.")));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(MainWindow, ClosingItEndsAWaitAndThenCloses) {
    Open();
    port.always.clear();
    port.Always("B", "RDY\r\n");
    bool hourglass = false;
    QTimer::singleShot(200, window.get(), [&] {
        hourglass = QApplication::overrideCursor() != nullptr;
        Choose("mnuRatio");  // refused: one exchange at a time
        window->close();
    });
    Choose("mnuBoth");
    EXPECT_TRUE(hourglass);
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_THAT(port.sent, ElementsAre("B", "W"));
    EXPECT_TRUE(state.modes.testBothMode) << "the second choice did nothing";
}

}  // namespace

}  // namespace davo::test
