// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSettings>
#include <QTimer>
#include <atomic>
#include <future>

#include "tests/app/main_window.h"
#include "tests/support/read_record.h"

namespace davo::test {
namespace {

class ClosingMainWindow : public MainWindow {};

TEST_F(ClosingMainWindow, EndsWhileTheDataFolderGivesNoAnswer) {
    struct DeadShare {
        std::promise<void> comesBack;
        std::shared_future<void> back = comesBack.get_future().share();
        std::atomic<bool> asked = false;
    };
    const auto share = std::make_shared<DeadShare>();
    ProgramServices services{store, places, clock, prompts, link, devices, shortDate, [] {}};
    services.folderExists = [share](const QString&) {
        share->asked = true;
        share->back.wait_for(std::chrono::seconds(10));
        return true;
    };
    window = std::make_unique<frmMain>(state, services, ChildForms{});
    window->Form_Load();
    ASSERT_TRUE(Until([&] { return share->asked.load(); }));
    QElapsedTimer time;
    time.start();
    window->close();
    window.reset();
    EXPECT_LT(time.elapsed(), 2000);
    share->comesBack.set_value();
}

TEST_F(ClosingMainWindow, ExitAsksAndSendsX) {
    Open();
    prompts.answers = {Answer::No};
    Choose("mnuExit");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Do You Want to Exit?"_s));
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
    EXPECT_THAT(store.written, ElementsAre(u"DAVO/KPTYPE/KPTYPEVAL"_s, u"DAVO/COMPORT/COMPORTVAL"_s,
                                           u"IMPEDANCE/IMP/IMPVAL"_s, u"SORTVALUES/SORT/SORTVAL"_s,
                                           u"DATAPATH/PATH/PATHVAL"_s));
    EXPECT_EQ(store.texts[u"IMPEDANCE/IMP/IMPVAL"_s], u"Y"_s);
    EXPECT_EQ(store.texts[u"DAVO/COMPORT/COMPORTVAL"_s], u" 1"_s);
}

TEST_F(ClosingMainWindow, ClosingItSavesTheSessionFirst) {
    Open();
    CompleteAShot();
    prompts.answers = {Answer::Yes};
    prompts.files = {state.settings.dataPath + u"T1.txt"_s};
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadTestRecordFile(state.settings.dataPath + u"T1.txt"_s).headers.at(0).shots, "01");
}

TEST_F(ClosingMainWindow, IsNotClosedWhileATestRuns) {
    Open();
    OpenTestWindow("mnuRatio");
    Click("cmdStart");
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(
        prompts.shown,
        ElementsAre(u"A test is running. Cancel it before you leave, or hit the ESC key."_s));
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
    shortDate.format = u"dd/MM/yyyy"_s;
    Open();
    std::size_t writtenBefore = 0;
    shortDate.onSet = [&] { writtenBefore = store.written.size(); };
    window->close();
    EXPECT_EQ(writtenBefore, 5U);
    EXPECT_EQ(shortDate.format, u"dd/MM/yyyy"_s);
}

TEST_F(ClosingMainWindow, AMonthFirstFormatIsLeftAlone) {
    shortDate.format = u"MM/dd/yy"_s;
    Open();
    window->close();
    EXPECT_THAT(shortDate.sets, IsEmpty());
}

TEST_F(ClosingMainWindow, APortThatWasLeftUnchosenIsWrittenSo) {
    Open();
    state.settings.comPort = kNoPortChosen;
    window->close();
    EXPECT_EQ(store.texts[u"DAVO/COMPORT/COMPORTVAL"_s], u"-99"_s);
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
    shortDate.format = u"dd/MM/yyyy"_s;
    Open();
    CompleteAShot();
    window->SessionEnds();
    EXPECT_THAT(store.written, SizeIs(5));
    EXPECT_EQ(shortDate.format, u"dd/MM/yyyy"_s);
    EXPECT_THAT(prompts.shown, IsEmpty());
    // The session may go on after all.
    EXPECT_NE(TestWindow(), nullptr);
    state.settings.showImpedance = true;
    window->Leave();
    EXPECT_THAT(store.written, SizeIs(10));
    EXPECT_EQ(store.texts[u"IMPEDANCE/IMP/IMPVAL"_s], u"Y"_s);
}

TEST_F(ClosingMainWindow, LeavingClosesItWithAnUnsavedSessionWithoutAQuestion) {
    Open();
    CompleteAShot();
    window->Leave();
    EXPECT_TRUE(window->close());
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_THAT(store.written, SizeIs(5)) << "once";
    window.reset();
    EXPECT_TRUE(FileExists(places.scratchFolder + u"TESTFILE.jnl"_s))
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
    shortDate.format = u"dd/MM/yyyy"_s;
    FailingStore failing;
    window = std::make_unique<frmMain>(
        state, ProgramServices{failing, places, clock, prompts, link, devices, shortDate, [] {}});
    window->Form_Load();
    window->show();
    window->SessionEnds();
    EXPECT_THAT(prompts.shown, IsEmpty());
    window->close();
    EXPECT_THAT(prompts.shown,
                ElementsAre(u"Run-time error '75': Path/File access error: store"_s));
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(shortDate.format, u"dd/MM/yyyy"_s);
}

}  // namespace
}  // namespace davo::test
