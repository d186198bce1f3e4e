// SPDX-License-Identifier: GPL-3.0-or-later
// The ways out of the test window, and what is left behind.

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "records/unsaved_sessions.h"
#include "tests/support/pause.h"
#include "tests/support/read_record.h"
#include "tests/testing/test_window.h"

namespace davo::test {
namespace {

bool IsOpenHere(const QString& path) {
#ifdef Q_OS_WIN
    const QString other = path + u".moved"_s;
    return !QDir().rename(path, other) || !QDir().rename(other, path);
#else
    const auto handles = QDir(u"/proc/self/fd"_s).entryInfoList(QDir::Files | QDir::System);
    return std::any_of(handles.begin(), handles.end(),
                       [&](const QFileInfo& handle) { return handle.symLinkTarget() == path; });
#endif
}

TEST_F(TestWindow, CancelSendsTenTimesAndLeavesTheWayOut) {
    OpenAndStart();
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
    OpenAndRun();
    prompts.answers = {Answer::Yes};
    prompts.files = {Data("T1.txt")};
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 1U);
    EXPECT_FALSE(state.portOpen);
    EXPECT_FALSE(session.testWindowOpen);
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(prompts.shown.size(), 2U) << "nobody is asked for a report that there is not";
}

// Some systems can neither rename nor delete a file that is open.
TEST_F(TestWindow, TheCaptureFileIsNotOpenAnyMoreWhenTheWindowHasClosed) {
    OpenAndRun();
    prompts.answers = {Answer::No};
    StartFullShot();  // the shot before is written
    const QString capture = places.scratchFolder + QLatin1String(kCaptureFileName);
    EXPECT_TRUE(IsOpenHere(capture));
    bool open = true;
    window->OnUnload = [&] { open = IsOpenHere(capture); };
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_FALSE(open);
}

// The test window whose reports are made by the test, until the operator leaves them.
class ViewingTestWindow : public TestWindow {
  protected:
    // Saves a session as T1.txt and asks for its report; act runs while it is made.
    void View(const std::function<void()>& act) {
        Open();
        window->Reports.make = [this, act](const QString& file,
                                           const std::function<void(const QString&)>& show) {
            viewed.push_back(file);
            tell = show;
            QTimer::singleShot(0, window, act);
            if (!fails.isEmpty())
                throw RunTimeError(ErrorNumber::FileNotFound, fails.toStdString());
            EXPECT_TRUE(Until([this] { return done; })) << "the report was not left";
        };
        window->Reports.leave = [this] {
            ++left;
            done = true;
        };
        RunFullShot();
        port.sent.clear();
        prompts.answers = {Answer::Yes, Answer::Yes};
        prompts.files = {Data("T1.txt")};
        Click("cmdExit");
    }

    std::vector<QString> viewed;
    std::function<void(const QString&)> tell;
    QString fails;
    bool done = false;
    int left = 0;
};

TEST_F(ViewingTestWindow, TheReportIsMadeWithTheWindowSayingSoAndThenItCloses) {
    QString caption;
    std::string before;
    std::string during;
    std::vector<std::string> enabled;
    View([&] {
        caption = window->windowTitle();
        before = Text("lblMessage");
        tell(u"Plotting graph 1 of 1"_s);
        during = Text("lblMessage");
        for (const char* name : {"cmdStart", "cmdContinue", "cmdCancel", "cmdHeader", "cmdExit"}) {
            if (Button(name)->isEnabled()) enabled.emplace_back(name);
        }
        done = true;
    });
    EXPECT_TRUE(Closed());
    EXPECT_THAT(viewed, ElementsAre(Data("T1.txt")));
    EXPECT_EQ(prompts.shown.back(), u"Do you want to view test results? "_s);
    EXPECT_EQ(caption, u"Plotting Excel Graphs, Please Wait..."_s);
    EXPECT_EQ(before, "Plotting Excel Graphs, Please Wait...");
    EXPECT_EQ(during, "Plotting graph 1 of 1");
    EXPECT_THAT(enabled, ElementsAre("cmdExit"));
    EXPECT_EQ(left, 0);
    EXPECT_EQ(unloads, 1);
}

TEST_F(ViewingTestWindow, NoReportIsMadeWhereTheAnswerIsNo) {
    Open();
    window->Reports.make = [this](const QString& file, const std::function<void(const QString&)>&) {
        viewed.push_back(file);
    };
    RunFullShot();
    prompts.answers = {Answer::Yes, Answer::No};
    prompts.files = {Data("T1.txt")};
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_TRUE(viewed.empty());
}

TEST_F(ViewingTestWindow, AReportThatFailsIsSaidAndTheWindowCloses) {
    fails = u"DAVO_Header.xls"_s;
    View([] {});
    EXPECT_TRUE(Closed());
    EXPECT_EQ(prompts.shown.back(), u"Run-time error '53': File not found: DAVO_Header.xls"_s);
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 1U);
}

TEST_F(ViewingTestWindow, ExitLeavesTheReport) {
    View([this] { Click("cmdExit"); });
    EXPECT_TRUE(Closed());
    EXPECT_EQ(left, 1);
    EXPECT_EQ(prompts.shown.size(), 3U) << "nothing is asked again";
}

TEST_F(ViewingTestWindow, TheKeyThatAnsweredTheQuestionDoesNotLeaveTheReport) {
    View([this] {
        EXPECT_FALSE(Button("cmdExit")->hasFocus());
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
            Key(key);
        EXPECT_EQ(left, 0);
        done = true;
    });
    EXPECT_TRUE(Closed());
}

TEST_F(ViewingTestWindow, TheEscapeKeyLeavesTheReport) {
    View([this] { Key(Qt::Key_Escape); });
    EXPECT_TRUE(Closed());
    EXPECT_EQ(left, 1);
    EXPECT_THAT(port.sent, ElementsAre("\x1b"));
}

TEST_F(ViewingTestWindow, ClosingByTheFrameLeavesTheReport) {
    View([this] { area->closeActiveSubWindow(); });
    EXPECT_TRUE(Closed());
    EXPECT_EQ(left, 1);
    EXPECT_EQ(unloads, 1);
}

TEST_F(TestWindow, ExitAfterRepeatStays) {
    OpenAndRun();
    Click("cmdContinue");
    Click("cmdExit");
    test::Pause(50);
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(prompts.shown.empty());
    clock.Set(clock.Now().addSecs(60));
    test::Pause(100);
    EXPECT_EQ(Text("lblTime"), "11/21/2026 - 02:05:09 PM") << "its timers are stopped";
}

TEST_F(TestWindow, ClosingByTheFrameIsTheExitButton) {
    OpenAndRun();
    prompts.answers = {Answer::No, Answer::Yes};
    area->closeActiveSubWindow();
    EXPECT_TRUE(Closed());
    EXPECT_EQ(prompts.shown.size(), 2U);
}

TEST_F(TestWindow, ClosingByTheFrameWhileATestRunsIsRefusedInWords) {
    OpenAndStart();
    area->closeActiveSubWindow();
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_EQ(prompts.shown.front(),
              u"A test is running. Cancel it before you leave, or hit the ESC key."_s);
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
    EXPECT_FALSE(state.portOpen);
}

TEST_F(TestWindow, TheEscapeKeyAbortsWithoutASaveQuestion) {
    OpenAndRun();
    Button("cmdHeader")->setFocus();
    port.sent.clear();
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_THAT(port.sent, ElementsAre("\x1b"));
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_FALSE(state.portOpen);
    const auto sessions = SetAsideUnsavedSessions(places.scratchFolder);
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions.front().shots, 1);
}

TEST_F(TestWindow, TheEscapeKeyKeepsASessionWhoseFolderWasJustDeleted) {
    OpenAndRun();
    DeleteFolder();
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_TRUE(prompts.shown.empty());
    const auto sessions = SetAsideUnsavedSessions(places.scratchFolder);
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions.front().shots, 1);
}

TEST_F(TestWindow, TheEscapeKeyAsksBeforeItLosesWhatIsOnlyInMemory) {
    OpenAndRun();
    prompts.answers = {Answer::No, Answer::No};
    StartFullShot();
    LoseFolder();
    port.sent.clear();
    Key(Qt::Key_Escape);
    EXPECT_EQ(port.sent.front(), "\x1b") << "the shot is aborted in any case";
    ASSERT_FALSE(window.isNull());
    EXPECT_THAT(prompts.Texts().back(), StartsWith("The shots of this session are only in memory"));
    EXPECT_EQ(prompts.presets.back(), Answer::No);
    EXPECT_TRUE(Button("cmdExit")->isEnabled());
    EXPECT_FALSE(Button("cmdContinue")->isEnabled());
    prompts.answers = {Answer::Yes};
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
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
    OpenAndStart();
    port.sent.clear();
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Closed());
    EXPECT_THAT(port.sent, ElementsAre("\x1b"));
}

TEST_F(TestWindow, ALostPortLeavesTheWayOutAndTheShots) {
    OpenAndRun();
    prompts.answers = {Answer::No};
    StartFullShot();
    Unplug();
    EXPECT_TRUE(Until([this] { return Button("cmdExit")->isEnabled(); }));
    EXPECT_TRUE(Button("cmdStart")->isEnabled());
    EXPECT_EQ(prompts.shown.back(), Link::LostMessage());
}

TEST_F(TestWindow, AnEarlierSessionIsSetAsideWithoutAQuestionBeforeANewOneBegins) {
    OpenAndRun();
    Key(Qt::Key_Escape);
    ASSERT_TRUE(Closed());
    link.OpenComPort(1);
    prompts.shown.clear();
    Open();
    EXPECT_TRUE(prompts.shown.empty());
    const QStringList kept = QDir(places.scratchFolder).entryList({u"TESTFILE-*.txt"_s});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_THAT(ReadWholeFile(places.scratchFolder + kept.front()), HasSubstr("DONE"));
}

TEST_F(TestWindow, IsNotOpenedWhenTheCaptureFileCannotBeMade) {
    places.scratchFolder = folder.Path("seed") + QLatin1Char('/');
    window = new frmCControl({link, prompts, clock, places, modes, session, header, [] {}, {}},
                             settings, &main);
    EXPECT_THROW(window->Form_Load(), RunTimeError);
}

TEST_F(TestWindow, WhatAHandlerThrowsIsShownOnce) {
    OpenAndRun();
    ASSERT_TRUE(QDir(places.scratchFolder).removeRecursively());
    Click("cmdContinue");  // "&Repeat Test" rewrites the journal
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("Run-time error '"));
}

}  // namespace
}  // namespace davo::test
