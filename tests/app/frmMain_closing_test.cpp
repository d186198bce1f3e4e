// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QTimer>

#include "records/record_file.h"
#include "tests/app/main_window.h"

namespace davo::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ClosingMainWindow : public MainWindow {
  protected:
    // A test window whose shot is complete and not saved.
    void CompleteAShot() {
        Choose("mnuRatio");
        ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
        QTest::qWait(50);
        QTest::mouseClick(Find<QPushButton>("cmdStart"), Qt::LeftButton);
        port.Deliver("DATA" + std::string(296, '0') + "\r\nDONE\r\n");
        ASSERT_TRUE(Until([this] { return Find<QPushButton>("cmdExit")->isEnabled(); }));
    }
};

TEST_F(ClosingMainWindow, ExitAsksAndSendsX) {
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

TEST_F(ClosingMainWindow, UnloadWritesTheSettingsInTheirOrder) {
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

TEST_F(ClosingMainWindow, ClosingItSavesTheSessionFirst) {
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

TEST_F(ClosingMainWindow, IsNotClosedWhileATestRuns) {
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

TEST_F(ClosingMainWindow, ClosingItEndsAWaitAndThenCloses) {
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

TEST_F(ClosingMainWindow, UnloadWritesTheSettingsAndThenPutsTheDateFormatBack) {
    shortDate.format = QStringLiteral("dd/MM/yyyy");
    Open();
    std::size_t writtenBefore = 0;
    shortDate.onSet = [&] { writtenBefore = store.written.size(); };
    window->close();
    EXPECT_EQ(writtenBefore, 5U);
    EXPECT_EQ(shortDate.format, QStringLiteral("dd/MM/yyyy"));
}

TEST_F(ClosingMainWindow, AMonthFirstFormatIsLeftAlone) {
    shortDate.format = QStringLiteral("MM/dd/yy");
    Open();
    window->close();
    EXPECT_THAT(shortDate.sets, IsEmpty());
}

TEST_F(ClosingMainWindow, APortThatWasLeftUnchosenIsWrittenSo) {
    Open();
    state.settings.comPort = kNoPortChosen;
    window->close();
    EXPECT_EQ(store.texts[QStringLiteral("DAVO/COMPORT/COMPORTVAL")], QStringLiteral("-99"));
}

TEST_F(ClosingMainWindow, ExitWithoutAPortSendsNothing) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    prompts.answers = {Answer::Yes};
    Choose("mnuExit");
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(port.sent, IsEmpty());
    EXPECT_THAT(store.written, SizeIs(5));
}

TEST_F(ClosingMainWindow, ByItsFrameItUnloadsWithoutAQuestion) {
    Open();
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_THAT(port.sent, IsEmpty()) << "only Exit frees the instrument";
    EXPECT_THAT(store.written, SizeIs(5));
}

TEST_F(ClosingMainWindow, AWindowThatNeverLoadedWritesNothing) {
    Make();
    window->Leave();
    window->SessionEnds();
    EXPECT_THAT(store.written, IsEmpty());
    EXPECT_THAT(shortDate.sets, IsEmpty());
}

TEST_F(ClosingMainWindow, TheEndOfTheSessionUnloadsAndAsksNothing) {
    shortDate.format = QStringLiteral("dd/MM/yyyy");
    Open();
    CompleteAShot();
    window->SessionEnds();
    EXPECT_THAT(store.written, SizeIs(5));
    EXPECT_EQ(shortDate.format, QStringLiteral("dd/MM/yyyy"));
    EXPECT_THAT(prompts.shown, IsEmpty());
    // The session may go on after all.
    EXPECT_NE(TestWindow(), nullptr);
    state.settings.showImpedance = true;
    window->Leave();
    EXPECT_THAT(store.written, SizeIs(10));
    EXPECT_EQ(store.texts[QStringLiteral("IMPEDANCE/IMP/IMPVAL")], QStringLiteral("Y"));
}

TEST_F(ClosingMainWindow, LeavingClosesItWithAnUnsavedSessionWithoutAQuestion) {
    Open();
    CompleteAShot();
    window->Leave();
    EXPECT_TRUE(window->close());
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_THAT(store.written, SizeIs(5)) << "once";
    window.reset();
    EXPECT_TRUE(FileExists(places.scratchFolder + QStringLiteral("TESTFILE.jnl")))
        << "the next test window offers the session";
}

TEST_F(ClosingMainWindow, LeavingEndsAWaitInSilence) {
    Open();
    port.always.clear();
    port.Always("B", "RDY\r\n");
    QTimer::singleShot(100, window.get(), [this] { window->Leave(); });
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(store.written, SizeIs(5));
}

class FailingStore : public SettingsStore {
  public:
    QString Read(const QString&, const QString&, const QString&) const override { return {}; }
    void Write(const QString&, const QString&, const QString&, const QString&) override {
        throw RunTimeError(ErrorNumber::PathFileAccess, "store");
    }
};

TEST_F(ClosingMainWindow, SettingsThatCannotBeWrittenAreSaidAndItClosesAllTheSame) {
    shortDate.format = QStringLiteral("dd/MM/yyyy");
    FailingStore failing;
    window = std::make_unique<frmMain>(
        state, ProgramServices{failing, places, clock, prompts, link, devices, shortDate, [] {}});
    window->Form_Load();
    window->show();
    window->SessionEnds();
    EXPECT_THAT(prompts.shown, IsEmpty());
    window->close();
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("Run-time error '75': Path/File access error: store")));
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(shortDate.format, QStringLiteral("dd/MM/yyyy"));
}

}  // namespace

}  // namespace davo::test
