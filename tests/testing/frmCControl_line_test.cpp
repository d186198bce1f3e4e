// SPDX-License-Identifier: GPL-3.0-or-later
// The test window while the line falls silent, is lost, or floods; and what it says at its limits.

#include <QPalette>
#include <chrono>

#include "tests/support/pause.h"
#include "tests/testing/test_window.h"
#include "ui/fit_label.h"

namespace davo::test {
namespace {

using namespace std::chrono_literals;

class TestWindowLine : public TestWindow {
  protected:
    bool Shows(const char* notice) {
        return Label("lblNotice")->isVisible() && Text("lblNotice") == notice;
    }
};

TEST_F(TestWindowLine, ReadingsThatHaveAgedAreGreyAndSaid) {
    OpenAndStart();
    Say("I=0.0123 V=491.2");
    EXPECT_FALSE(Label("lblNotice")->isVisible());
    clock.Advance(2s);
    EXPECT_TRUE(Until([this] { return Shows("NO READING FOR 2 s"); })) << "without a new text";
    EXPECT_FALSE(Enabled("txtCur"));
    EXPECT_FALSE(Enabled("txtVolt"));
    EXPECT_TRUE(Label("lblMessage")->isVisible());
    EXPECT_TRUE(Button("cmdContinue")->hasFocus()) << "the confirmation is still possible";
    clock.Advance(9s);
    EXPECT_TRUE(Until([this] { return Shows("NO READING FOR 11 s"); }));
    Say("I=0.0123 V=491.3");
    EXPECT_FALSE(Label("lblNotice")->isVisible());
    EXPECT_TRUE(Enabled("txtCur"));
}

TEST_F(TestWindowLine, AShotGoesOnBehindTheBoxThatATestIsRunning) {
    OpenAndStart();
    Say("I=0.0123 V=491.2");
    port.sent.clear();
    prompts.onMessage = [this](const QString& text) {
        if (!text.startsWith(u"A test is running."_s)) return;
        clock.Advance(2s);
        EXPECT_TRUE(Until([this] { return Shows("NO READING FOR 2 s"); }));
        EXPECT_FALSE(Enabled("txtVolt"));
        Say("I=0.0123 V=491.3");
        EXPECT_EQ(Text("txtVolt"), "491.3");
        EXPECT_FALSE(Label("lblNotice")->isVisible());
        EXPECT_FALSE(window->Exit()) << "not a second box";
        EXPECT_EQ(prompts.shown.size(), 1U);
        EndShot("damaged");
        EXPECT_EQ(Text("lblTest"), "TEST COMPLETE.");
        EXPECT_EQ(prompts.shown.size(), 1U) << "nothing over the open box";
    };
    EXPECT_FALSE(window->Exit());
    EXPECT_TRUE(port.sent.empty());
    ASSERT_EQ(prompts.shown.size(), 2U);
    EXPECT_THAT(prompts.Texts()[1], StartsWith("The record of this shot is damaged"));
}

TEST_F(TestWindowLine, ALossStaysOnTheWindowUntilThePortIsBack) {
    Open();
    pluggedIn = false;
    StartFullShot();
    Say("I=0.0123 V=491.2");
    Unplug();
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
    EXPECT_THAT(Link::LostMessage().toStdString(),
                EndsWith("All complete shots and records are kept, but not what was running."));
    EXPECT_TRUE(Shows("CONNECTION LOST"));
    EXPECT_FALSE(Label("lblMessage")->isVisible());
    EXPECT_EQ(Text("txtVolt"), "");
    test::Pause(1100);
    EXPECT_TRUE(Shows("CONNECTION LOST"));
    pluggedIn = true;
    port.sent.clear();
    EXPECT_TRUE(Until([this] { return !Label("lblNotice")->isVisible(); }));
    EXPECT_TRUE(state.portOpen);
    EXPECT_TRUE(port.sent.empty());
}

TEST_F(TestWindowLine, TheEscapeKeyWorksInAFlood) {
    OpenAndStart();
    constexpr int kFlood = 200;  // MB; without a way out the test would end after it
    std::string megabyte;
    while (megabyte.size() < (1 << 20))
        megabyte += "I=0.0123 V=491.2\r\n";
    int delivered = 0;
    port.onInput = [&] {
        if (++delivered < kFlood) port.waiting += megabyte;
    };
    port.Deliver(megabyte);
    QTimer::singleShot(0, window, [this] { Key(Qt::Key_Escape); });
    EXPECT_TRUE(Closed());
    EXPECT_LT(delivered, 10);
}

TEST_F(TestWindowLine, ABacklogIsExaminedToItsEndWithoutNewText) {
    OpenAndStart();
    std::string backlog;
    while (backlog.size() < (1 << 20))
        backlog += "I=0.0123 V=491.2\r\n";
    port.Deliver(backlog + "I=0.0200 V=500.0\r\n");
    EXPECT_TRUE(Until([this] { return Text("txtVolt") == "500.0"; }));
}

TEST_F(TestWindowLine, AfterTheRefusedShotTheWaysOutAreSaid) {
    OpenAndRun();
    session.shotCount = kShotRefusal;
    prompts.answers = {Answer::No};
    RunFullShot();
    EXPECT_TRUE(Shows("NO MORE SHOTS.\nPRESS EXIT TO SAVE."));
    EXPECT_FALSE(Label("lblConfirm")->isVisible());
    session.shotCount = 1;
    prompts.answers = {Answer::Yes};
    prompts.files = {Data("T1.txt")};
    Click("cmdExit");
    EXPECT_TRUE(Closed());
    EXPECT_TRUE(FileExists(Data("T1.txt")));
}

TEST_F(TestWindowLine, ADeletedFolderIsSaidThoughTheClockIsStopped) {
    OpenAndRun();
    Click("cmdContinue");  // "&Repeat Test"
    Click("cmdExit");
    ASSERT_TRUE(QDir(places.scratchFolder).removeRecursively());
    EXPECT_TRUE(Until([this] { return Label("lblDamage")->isVisible(); }));
    EXPECT_THAT(Text("lblDamage"), StartsWith("The folder of the running session was deleted: "));
    EXPECT_TRUE(FileExists(places.scratchFolder + QLatin1String(kCaptureFileName)));
}

TEST_F(TestWindowLine, ADeletedFolderLeavesTheRunningPromptReadable) {
    OpenAndStart();
    Say("I=0.0123 V=491.2");
    ASSERT_TRUE(QDir(places.scratchFolder).removeRecursively());
    ASSERT_TRUE(Until([this] { return Label("lblDamage")->isVisible(); }));
    clock.Advance(3s);
    ASSERT_TRUE(Until([this] { return Label("lblNotice")->isVisible(); }));
    test::Pause(20);
    for (const char* name : {"lblMessage", "lblNotice"}) {
        const auto* label = dynamic_cast<FitLabel*>(Label(name));
        ASSERT_NE(label, nullptr);
        EXPECT_GE(label->FittedPixelSize(), label->LeastPixelSize()) << name;
    }
}

}  // namespace
}  // namespace davo::test
