#include "testing/frmCControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QToolTip>
#include <set>
#include <thread>

#include "common/page_input.h"
#include "records/record_file.h"
#include "testing/fit_label.h"
#include "tests/testing/sequence_bench.h"

namespace davo::test {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kPatience = 3000;  // ms until a condition must have come true

// A port on which a wait takes its time.
class RealTimePort : public FakeSerialPort {
  public:
    bool WaitForText(Time until) override {
        if (takesTime && waiting.empty()) std::this_thread::sleep_until(until);
        return FakeSerialPort::WaitForText(until);
    }
    bool takesTime = false;
};

// The test window in a main window's area, on a scripted instrument; its real buttons and keys are
// pressed.
class TestWindow : public ::testing::Test {
  protected:
    TestWindow() {
        settings.dataPath = folder.Path("Shots_Data/");
        ReplaceFile(folder.Path("seed"), "");
        EXPECT_TRUE(QDir().mkpath(settings.dataPath));
        port.Always("B", "RDY\r\n");
        modes.testBothMode = true;
        link.OpenComPort(1);
        port.properties.clear();
        main.setCentralWidget(area);
        main.menuBar()->addMenu(QStringLiteral("Menu"));
        main.resize(1366, 740);
    }

    void Open() {
        window = new frmCControl({link, prompts, clock, places, modes, session, header,
                                  [this] { ++beeps; }, [this] { return link.OpenComPort(1); }},
                                 settings);
        window->OnUnload = [this] { ++unloads; };
        window->Form_Load();
        QMdiSubWindow* frame = area->addSubWindow(window);
        frame->setAttribute(Qt::WA_DeleteOnClose);
        main.show();
        frame->showMaximized();
        main.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
        // Reset when loaded: "B" is answered and cmdStart has the focus.
        ASSERT_TRUE(Until([this] { return QApplication::focusWidget() == Button("cmdStart"); }));
    }
    static bool Until(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }
    template <class Control>
    Control* Find(const char* name) {
        auto* control = main.findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::logic_error(std::string("no control ") + name);
        return control;
    }
    QPushButton* Button(const char* name) { return Find<QPushButton>(name); }
    QLineEdit* Box(const char* name) { return Find<QLineEdit>(name); }
    QLabel* Label(const char* name) { return Find<QLabel>(name); }
    std::string Text(const char* name) {
        return Find<QWidget>(name)->property("text").toString().toStdString();
    }
    void Click(const char* name) { QTest::mouseClick(Button(name), Qt::LeftButton); }
    void Key(Qt::Key key) {
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target != nullptr ? target : &main, key);
    }
    void Type(const char* name, const char* text) {
        Box(name)->setFocus();
        Box(name)->selectAll();
        QTest::keyClicks(Box(name), QLatin1String(text));
    }
    // What the instrument says arrives.
    void Say(const std::string& line) {
        port.Deliver(line + "\r\n");
        QTest::qWait(20);
    }
    void StartFullShot() {
        Click("cmdStart");
        Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
        Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
        Click("cmdContinue");
        Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    }
    void EndShot(const std::string& digits = Digits()) {
        Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        Say("RATIO=241.2");
        Say("POLARITY=+");
        Say(RecordOf(digits));
    }
    void RunFullShot() {
        StartFullShot();
        EndShot();
    }
    bool Closed() {
        return Until([this] { return window.isNull(); });
    }
    QString Data(const char* name) const { return settings.dataPath + QLatin1String(name); }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    RealTimePort port;
    LinkState linkState;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{port, linkState, prompts, pointer};
    FakeClock clock{QDateTime(QDate(2026, 11, 21), QTime(14, 5, 9))};
    TestModes modes;
    SessionState session;
    HeaderTable header;
    Settings settings;
    int beeps = 0;
    int unloads = 0;
    QMainWindow main;
    QMdiArea* area = new QMdiArea;
    QPointer<frmCControl> window;
};

TEST_F(TestWindow, ShowsEveryControlWithItsCaption) {
    Open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Computer Control"));
    EXPECT_EQ(window->objectName(), QStringLiteral("frmCControl"));
    const std::pair<const char*, const char*> frames[] = {
        {"Frame3", "DATA"},
        {"Frame4", "Operator Inputs (Nameplate Currents)"},
        {"Frame5", ""},
        {"frmeMessage", "MESSAGE"},
        {"Frame1", "Hit the ESC key to Abort Test && Exit"}};
    for (const auto& [name, title] : frames) {
        EXPECT_EQ(Find<QGroupBox>(name)->title(), QLatin1String(title)) << name;
    }
    const std::pair<const char*, const char*> texts[] = {{"lblTest", ""},
                                                         {"lblTime", "11/21/2026 - 02:05:09 PM"},
                                                         {"Label1", "Current:"},
                                                         {"Label2", "Voltage:"},
                                                         {"Label3", "Ratio:"},
                                                         {"Label4", "Polarity:"},
                                                         {"Label5", "H Current:"},
                                                         {"Label6", "X Current:"},
                                                         {"lblCRatio", "Calculated Ratio:"},
                                                         {"lblPE", "Percent Error:"},
                                                         {"lblCRCount", "(0)"},
                                                         {"lblRatioCount", "Ratio - 0"},
                                                         {"lblSatCount", "Sat. - 0"},
                                                         {"lblMessage", ""},
                                                         {"lblConfirm", "Click <&OK> to Continue"},
                                                         {"cmdStart", "&Start Test"},
                                                         {"cmdContinue", "&Continue Test"},
                                                         {"cmdCancel", "C&ancel Test"},
                                                         {"cmdExit", "&Exit"},
                                                         {"cmdHeader", "&Header Info"}};
    for (const auto& [name, text] : texts) {
        EXPECT_EQ(Text(name), text) << name;
    }
    for (const char* name : {"txtCur", "txtVolt", "txtRatio", "txtPolarity", "txtPE", "txtHVolt",
                             "txtXVolt", "txtCRatio"}) {
        EXPECT_EQ(Text(name), "") << name;
    }
    EXPECT_FALSE(Label("lblConfirm")->isVisible());
    EXPECT_FALSE(Label("lblDamage")->isVisible());
    EXPECT_FALSE(Label("lblTest")->isVisible());
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(TestWindow, ResultBoxesAreReadOnly) {
    Open();
    for (const char* name :
         {"txtCur", "txtVolt", "txtRatio", "txtPolarity", "txtPE", "txtCRatio"}) {
        EXPECT_TRUE(Box(name)->isReadOnly()) << name;
    }
    EXPECT_FALSE(Box("txtHVolt")->isReadOnly());
    EXPECT_FALSE(Box("txtXVolt")->isReadOnly());
}

TEST_F(TestWindow, RatioOnlyModeSaysSoAtOnce) {
    modes = {false, true, true};
    Open();
    EXPECT_TRUE(Label("lblTest")->isVisible());
    EXPECT_EQ(Text("lblTest"), "RATIO TEST");
}

TEST_F(TestWindow, IsReadyAfterTheHandshake) {
    Open();
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_FALSE(Button("cmdCancel")->isEnabled());
    EXPECT_FALSE(Button("cmdContinue")->isEnabled());
    EXPECT_TRUE(Button("cmdStart")->isEnabled());
    EXPECT_TRUE(Button("cmdHeader")->isEnabled());
    EXPECT_TRUE(Button("cmdExit")->isEnabled());
}

TEST_F(TestWindow, SaysWhenTheInstrumentIsNotReady) {
    port.always.clear();
    Open();
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_EQ(prompts.shown.front(), QStringLiteral("DAVO is not ready.  Please check equipment."));
}

TEST_F(TestWindow, AFullShotFromTheFirstPromptToTheCompleteTest) {
    Open();
    Click("cmdStart");
    EXPECT_EQ(port.sent.back(), "T");
    EXPECT_FALSE(Button("cmdExit")->isEnabled());
    EXPECT_FALSE(Button("cmdHeader")->isEnabled());
    EXPECT_TRUE(Button("cmdCancel")->isEnabled());
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_EQ(Text("lblMessage"), "TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_FALSE(Button("cmdStart")->isEnabled());
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_EQ(Text("lblMessage"), "SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_EQ(Text("cmdContinue"), "&OK");
    EXPECT_TRUE(Label("lblConfirm")->isVisible());
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    Key(Qt::Key_Return);
    EXPECT_EQ(port.sent.back(), "\r");
    EXPECT_EQ(Text("lblCRCount"), "(1)");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_EQ(Text("lblMessage"), "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_EQ(Text("lblTest"), "SATURATION TEST");
    EXPECT_TRUE(Label("lblTest")->isVisible());
    EXPECT_FALSE(Label("lblConfirm")->isVisible());
    Say("I=0.012345 V=152.4");
    EXPECT_EQ(Text("txtCur"), "0.0123");
    EXPECT_EQ(Text("txtVolt"), "152.4");
    EXPECT_TRUE(Button("cmdContinue")->isEnabled());
    Key(Qt::Key_Enter);
    Say("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...");
    EXPECT_EQ(Text("lblMessage"), "S-L-O-W-L-Y LOWER THE CURRENT NOW...");
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    EXPECT_EQ(Text("lblMessage"), "SET VOLTAGE FROM 5V TO 100V MAX");
    EXPECT_EQ(Text("lblTest"), "RATIO TEST");
    Say("RATIO=241.2");
    Say("POLARITY=-");
    EXPECT_EQ(Text("txtRatio"), "241.2");
    EXPECT_EQ(Text("txtPolarity"), "OUT OF PHASE");
    Say(RecordOf(Digits()));
    EXPECT_EQ(Text("lblTest"), "TEST COMPLETE.");
    EXPECT_EQ(Text("lblMessage"), "");
    EXPECT_EQ(Text("cmdStart"), "&Next Test");
    EXPECT_EQ(Text("cmdContinue"), "&Repeat Test");
    EXPECT_EQ(Text("lblSatCount"), "Sat. - 1");
    EXPECT_EQ(Text("lblRatioCount"), "Ratio - 1");
    EXPECT_EQ(Text("lblCRCount"), "(2)");
    EXPECT_TRUE(Button("cmdExit")->isEnabled());
    EXPECT_TRUE(Button("cmdHeader")->isEnabled());
    EXPECT_FALSE(Button("cmdCancel")->isEnabled());
    EXPECT_FALSE(Label("lblDamage")->isVisible());
}

TEST_F(TestWindow, TheRatioPromptBeepsTwice) {
    Open();
    StartFullShot();
    beeps = 0;
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    ASSERT_TRUE(Until([this] { return beeps == 2; }));
    QTest::qWait(1200);
    EXPECT_EQ(beeps, 2);
}

TEST_F(TestWindow, TheNextTestAsksForTheMode) {
    Open();
    RunFullShot();
    prompts.answers = {Answer::Yes};
    Click("cmdStart");
    EXPECT_EQ(prompts.shown.back(), QStringLiteral("Run Ratio test only?"));
    EXPECT_EQ(port.sent.back(), "t");
    EXPECT_EQ(Text("cmdStart"), "&Start Test");
}

TEST_F(TestWindow, DamageIsShownAndSaid) {
    Open();
    StartFullShot();
    EndShot(Digits().substr(6));
    EXPECT_TRUE(Label("lblDamage")->isVisible());
    EXPECT_THAT(Text("lblDamage"), HasSubstr("290 of 296 digits"));
    ASSERT_EQ(prompts.shown.size(), 1U);
    Click("cmdContinue");  // "&Repeat Test"
    EXPECT_FALSE(Label("lblDamage")->isVisible());
    EXPECT_EQ(Text("lblSatCount"), "Sat. - 0");
}

TEST_F(TestWindow, NameplateInputsGiveRatioAndError) {
    Open();
    Type("txtHVolt", "1200");
    Type("txtXVolt", "5");
    Button("cmdStart")->setFocus();
    EXPECT_EQ(Text("txtCRatio"), "240");
    EXPECT_TRUE(Label("lblCRatio")->isEnabled());
    Box("txtHVolt")->setFocus();
    RunFullShot();
    EXPECT_EQ(Text("txtPE"), "0.50");
}

TEST_F(TestWindow, AShortcutTakesTheTypedTextOverFirst) {
    Open();
    Type("txtHVolt", "1000");
    Type("txtXVolt", "3");
    QTest::keyClick(main.windowHandle(), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return port.sent.back() == "T"; }));
    EXPECT_EQ(Text("txtCRatio"), "333.333");
}

TEST_F(TestWindow, AStepThatTakesTheFocusCountsAsLeavingTheBox) {
    Open();
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    Type("txtHVolt", "1200");
    Type("txtXVolt", "5");
    EXPECT_EQ(Text("txtCRatio"), "");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    EXPECT_EQ(Text("txtCRatio"), "240");
}

TEST_F(TestWindow, CharactersOutsideThePageAreRefusedInWords) {
    Open();
    Box("txtHVolt")->setFocus();
    QTest::sendKeyEvent(QTest::Click, Box("txtHVolt"), Qt::Key_unknown, QStringLiteral("\u03A9"),
                        {});
    EXPECT_EQ(Text("txtHVolt"), "");
    EXPECT_EQ(QToolTip::text(), NotInPageMessage());
    QTest::sendKeyEvent(QTest::Click, Box("txtHVolt"), Qt::Key_unknown, QStringLiteral("\u00B5"),
                        {});
    EXPECT_EQ(Box("txtHVolt")->text(), QStringLiteral("\u00B5"));
}

TEST_F(TestWindow, TheTabKeyFollowsTheEye) {
    Open();
    RunFullShot();
    Box("txtHVolt")->setFocus();
    std::vector<std::string> order;
    for (int i = 0; i < 7; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        Key(Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("txtHVolt", "txtXVolt", "cmdStart", "cmdContinue", "cmdHeader",
                                   "cmdExit", "txtHVolt"))
        << "cmdCancel is disabled after a shot";
}

TEST_F(TestWindow, ADisabledButtonDoesNotHandTheFocusOn) {
    Open();
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_TRUE(window->hasFocus());
    const auto sent = port.sent.size();
    Key(Qt::Key_Return);
    Key(Qt::Key_Space);
    EXPECT_EQ(port.sent.size(), sent) << "a key too many must not cancel the test";
}

TEST_F(TestWindow, AKeyTooManyDoesNotDropTheShot) {
    Open();
    StartFullShot();
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    Say(RecordOf(Digits()));
    EXPECT_EQ(Text("cmdContinue"), "&Repeat Test");
    EXPECT_TRUE(Button("cmdStart")->hasFocus());
}

TEST_F(TestWindow, AKeyHeldDownPressesOnce) {
    Open();
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
    QApplication::sendEvent(Button("cmdContinue"), &repeated);
    EXPECT_EQ(port.sent.back(), "T");
    Key(Qt::Key_Return);
    EXPECT_EQ(port.sent.back(), "\r");
}

TEST_F(TestWindow, CancelSendsTenTimesAndLeavesTheWayOut) {
    Open();
    StartFullShot();
    port.sent.clear();
    Click("cmdCancel");
    EXPECT_THAT(port.sent, ElementsAre("S\x1b", "S\x1b", "S\x1b", "S\x1b", "S\x1b", "S\x1b",
                                       "S\x1b", "S\x1b", "S\x1b", "S\x1b"));
    EXPECT_TRUE(Button("cmdExit")->isEnabled());
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(TestWindow, ExitSavesTheRecordFileAndClosesThePort) {
    Open();
    RunFullShot();
    prompts.answers = {Answer::Yes};
    prompts.files = {Data("T1.txt")};
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 1U);
    EXPECT_FALSE(linkState.portOpen);
    EXPECT_FALSE(session.testWindowOpen);
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(prompts.shown.size(), 2U) << "nobody is asked for a report that there is not";
}

TEST_F(TestWindow, ExitOffersTheReportWhenThereIsOne) {
    Open();
    QString viewed;
    window->OnViewResults = [&viewed](const QString& file) { viewed = file; };
    RunFullShot();
    prompts.answers = {Answer::Yes, Answer::Yes};
    prompts.files = {Data("T1.txt")};
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_EQ(viewed, Data("T1.txt"));
}

TEST_F(TestWindow, ExitAfterRepeatStays) {
    Open();
    RunFullShot();
    Click("cmdContinue");
    Click("cmdExit");
    QTest::qWait(50);
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(prompts.shown.empty());
    clock.Set(clock.Now().addSecs(60));
    QTest::qWait(100);
    EXPECT_EQ(Text("lblTime"), "11/21/2026 - 02:05:09 PM") << "its timers are stopped";
}

TEST_F(TestWindow, TheClockRuns) {
    Open();
    clock.Set(clock.Now().addSecs(60));
    EXPECT_TRUE(Until([this] { return Text("lblTime") == "11/21/2026 - 02:06:09 PM"; }));
}

TEST_F(TestWindow, ClosingByTheFrameIsTheExitButton) {
    Open();
    RunFullShot();
    prompts.answers = {Answer::No, Answer::Yes};
    area->closeActiveSubWindow();
    EXPECT_TRUE(Closed());
    EXPECT_EQ(prompts.shown.size(), 2U);
}

TEST_F(TestWindow, ClosingByTheFrameWhileATestRunsIsRefusedInWords) {
    Open();
    StartFullShot();
    area->closeActiveSubWindow();
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_EQ(prompts.shown.front(),
              QStringLiteral("A test is running. Cancel it before you leave, or hit the ESC key."));
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(TestWindow, ExitEndsTheWaitForTheHandshake) {
    port.always.clear();
    port.takesTime = true;
    prompts.onMessage = [](const QString& text) { FAIL() << text.toStdString(); };
    window = new frmCControl({link, prompts, clock, places, modes, session, header, [] {}, {}},
                             settings);
    window->Form_Load();
    area->addSubWindow(window)->setAttribute(Qt::WA_DeleteOnClose);
    main.show();
    window->show();
    bool waited = false;
    QTimer::singleShot(300, window, [this, &waited] {
        waited = link.CurrentWait().has_value();
        Click("cmdExit");
    });
    EXPECT_TRUE(Closed());
    EXPECT_TRUE(waited);
    EXPECT_FALSE(linkState.portOpen);
}

TEST_F(TestWindow, TheEscapeKeyAbortsWithoutASaveQuestion) {
    Open();
    RunFullShot();
    Button("cmdHeader")->setFocus();
    port.sent.clear();
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_THAT(port.sent, ElementsAre("\x1b"));
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_FALSE(linkState.portOpen);
    const auto sessions = SetAsideUnsavedSessions(places.scratchFolder);
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions.front().shots, 1);
}

TEST_F(TestWindow, TheEscapeKeyWorksFromEveryControlAndWithoutAFocus) {
    for (const char* name : {"txtHVolt", "txtXVolt", "txtCur", "cmdStart", "cmdExit", ""}) {
        link.OpenComPort(1);
        Open();
        port.sent.clear();
        if (*name == '\0') {
            QApplication::focusWidget()->clearFocus();
            QTest::keyClick(main.windowHandle(), Qt::Key_Escape);
        } else {
            Find<QWidget>(name)->setFocus();
            Key(Qt::Key_Escape);
        }
        EXPECT_TRUE(Closed()) << name;
        EXPECT_THAT(port.sent, ElementsAre("\x1b")) << name;
    }
}

TEST_F(TestWindow, TheEscapeKeyWorksWhileATestRuns) {
    Open();
    StartFullShot();
    port.sent.clear();
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_THAT(port.sent, ElementsAre("\x1b"));
}

TEST_F(TestWindow, ALostPortLeavesTheWayOutAndTheShots) {
    Open();
    RunFullShot();
    prompts.answers = {Answer::No};
    StartFullShot();
    port.Unplug();
    ASSERT_TRUE(Until([this] { return !linkState.portOpen; }));
    EXPECT_TRUE(Until([this] { return Button("cmdExit")->isEnabled(); }));
    EXPECT_TRUE(Button("cmdStart")->isEnabled());
    EXPECT_EQ(prompts.shown.back(), Link::LostMessage());
}

TEST_F(TestWindow, AnEarlierSessionIsOfferedBeforeANewOneBegins) {
    Open();
    RunFullShot();
    Key(Qt::Key_Escape);
    ASSERT_TRUE(Closed());
    link.OpenComPort(1);
    prompts.answers = {Answer::Yes};
    prompts.files = {Data("Old.txt")};
    Open();
    EXPECT_EQ(prompts.shown.front(),
              QStringLiteral("An earlier session of 11/21/26 14:05 with 1 shot was never saved. Do "
                             "you want to save it as a test record file now?"));
    EXPECT_EQ(ReadTestRecordFile(Data("Old.txt")).records.size(), 1U);
}

TEST_F(TestWindow, IsNotOpenedWhenTheCaptureFileCannotBeMade) {
    places.scratchFolder = folder.Path("seed") + QLatin1Char('/');
    window = new frmCControl({link, prompts, clock, places, modes, session, header, [] {}, {}},
                             settings, &main);
    EXPECT_THROW(window->Form_Load(), RunTimeError);
}

TEST_F(TestWindow, WhatAHandlerThrowsIsShownOnce) {
    Open();
    RunFullShot();
    ASSERT_TRUE(QDir(places.scratchFolder).removeRecursively());
    Click("cmdContinue");  // "&Repeat Test" rewrites the journal
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("Run-time error '"));
}

TEST_F(TestWindow, TheHeaderWindowChangesTheSessionsHeader) {
    Open();
    Click("cmdHeader");
    auto* headerWindow = Find<QDialog>("frmHeader");
    QTest::keyClicks(Box("txtHeader1"), QStringLiteral("NORTH"));
    Click("cmdSave");
    EXPECT_EQ(header.Field(1), "NORTH               ");
    EXPECT_EQ(SessionJournal::Read(places.scratchFolder + QLatin1String(kJournalFileName))
                  .header.Field(1),
              "NORTH               ");
    headerWindow->close();
}

// What shortcuts the visible, enabled controls have.
std::multiset<QChar> ShortcutsOf(const QWidget& window) {
    std::multiset<QChar> letters;
    for (const QPushButton* button : window.findChildren<QPushButton*>()) {
        if (!button->isVisible() || button->text().isEmpty()) continue;
        const QKeySequence shortcut = QKeySequence::mnemonic(button->text());
        EXPECT_FALSE(shortcut.isEmpty()) << button->text().toStdString();
        letters.insert(QChar(shortcut[0].key()));
    }
    return letters;
}

TEST_F(TestWindow, ShortcutsAreUniqueInEveryState) {
    Open();
    const auto check = [this](const char* state) {
        const auto letters = ShortcutsOf(*window);
        EXPECT_EQ(letters.size(), 5U) << state;
        EXPECT_EQ(std::set<QChar>(letters.begin(), letters.end()).size(), 5U) << state;
    };
    check("open");
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    check("zero");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    check("range");
    Click("cmdContinue");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    check("saturation");
    EndShot();
    check("complete");
    Click("cmdContinue");
    EXPECT_EQ(Text("cmdContinue"), "&Continue");
    check("dropped");
}

TEST_F(TestWindow, TheConfirmTextIsNoShortcut) {
    Open();
    EXPECT_EQ(Label("lblConfirm")->buddy(), nullptr);
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    // Were there two, the button would only get the focus.
    QTest::keyClick(main.windowHandle(), Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return port.sent.back() == "\r"; }));
}

// Every prompt, at the sizes of the letters that users choose.
class LetterSize : public TestWindow, public ::testing::WithParamInterface<double> {
  protected:
    LetterSize() : usual(QApplication::font()) {
        QFont larger = usual;
        larger.setPointSizeF(usual.pointSizeF() * GetParam());
        QApplication::setFont(larger);
    }
    ~LetterSize() override { QApplication::setFont(usual); }

    void CheckNothingIsCut(const char* state) {
        for (const QPushButton* button : window->findChildren<QPushButton*>()) {
            EXPECT_GE(button->width(), button->sizeHint().width())
                << state << ": " << button->text().toStdString();
            EXPECT_GE(button->height(), button->sizeHint().height())
                << state << ": " << button->text().toStdString();
        }
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (!label->isVisible() || label->text().isEmpty()) continue;
            if (dynamic_cast<const FitLabel*>(label) != nullptr) continue;
            EXPECT_GE(label->width(), label->sizeHint().width())
                << state << ": " << label->text().toStdString();
            EXPECT_GE(label->height(), label->sizeHint().height())
                << state << ": " << label->text().toStdString();
        }
        for (const QLineEdit* box : window->findChildren<QLineEdit*>()) {
            EXPECT_GE(box->width(), box->fontMetrics().horizontalAdvance(box->text()) + 8)
                << state << ": " << box->objectName().toStdString();
            EXPECT_GE(box->height(), box->sizeHint().height()) << state;
        }
        const auto* prompt = dynamic_cast<FitLabel*>(Label("lblMessage"));
        ASSERT_NE(prompt, nullptr);
        EXPECT_GE(prompt->FittedPixelSize(), prompt->LeastPixelSize()) << state;
        EXPECT_GT(prompt->FittedPixelSize(), Button("cmdStart")->fontInfo().pixelSize()) << state;
    }
    QFont usual;
};

TEST_P(LetterSize, NothingIsCut) {
    Open();
    CheckNothingIsCut("open");
    Type("txtHVolt", "1200");
    Type("txtXVolt", "5");
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    CheckNothingIsCut("zero");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    CheckNothingIsCut("range");
    Click("cmdContinue");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    Say("I=0.012345 V=1000.4");
    CheckNothingIsCut("saturation");
    Say("MESSAGE=VOLTAGE TOO HIGH!");
    EXPECT_EQ(Text("lblMessage"), "VOLTAGE TOO HIGH! TURN VOLTAGE DOWN!");
    CheckNothingIsCut("over-voltage");
    Say("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...");
    CheckNothingIsCut("slow");
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("RATIO=241.2");
    Say("POLARITY= ");
    EXPECT_EQ(Text("txtPolarity"), "UNDETERMINED");
    CheckNothingIsCut("ratio");
    Say(RecordOf(Digits()));
    CheckNothingIsCut("complete");
}

INSTANTIATE_TEST_SUITE_P(Scales, LetterSize, ::testing::Values(1.0, 1.25, 1.5));

TEST_F(TestWindow, ThePromptGrowsWithTheWindowAndIsTwelveMillimetresHigh) {
    Open();
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    const auto* prompt = dynamic_cast<FitLabel*>(Label("lblMessage"));
    ASSERT_NE(prompt, nullptr);
    const int before = prompt->FittedPixelSize();
    main.resize(1900, 1000);
    EXPECT_TRUE(Until([&] { return prompt->FittedPixelSize() > before; }));
    QFont font = prompt->font();
    font.setPixelSize(prompt->LeastPixelSize());
    const double inches = QFontMetricsF(font).capHeight() / main.screen()->physicalDotsPerInchY();
    EXPECT_NEAR(inches * 25.4, 12.0, 0.5);
}

}  // namespace

}  // namespace davo::test
