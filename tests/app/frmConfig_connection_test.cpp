// SPDX-License-Identifier: GPL-3.0-or-later
// The button of "Configure System" that tries the connection.
#include <QTimer>
#include <algorithm>

#include "tests/app/config_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

using ::testing::Pair;

class TestConnection : public ConfigureSystem {
  protected:
    TestConnection() { link.OpenComPort(1); }
    void Answer(const char* model) {
        port.Always("B", "RDY\r\n").Always("W", std::string(model) + "\r\n");
    }
};

TEST_F(TestConnection, SendsNothingBeforeItIsPressedAndShowsTheModel) {
    Answer("DAVO-E R3.10");
    Open();
    test::Pause(1200);
    EXPECT_THAT(port.sent, IsEmpty());
    port.properties.clear();
    Click("cmdTest");
    EXPECT_THAT(port.sent, ElementsAre("B", "W"));
    EXPECT_EQ(Text("lblAnswer"), "DAVO-E R3.10 answers.");
    EXPECT_THAT(port.properties, IsEmpty()) << "the port in use stays open";
    EXPECT_EQ(Text("cmdTest"), "&Test connection");
    EXPECT_TRUE(Enabled("cmdSave"));
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(TestConnection, TheModelThatAnsweredIsThatOfTheSavedPort) {
    Answer("DAVO-E R3.10");
    Open();
    Click("cmdTest");
    EXPECT_EQ(state.instrumentModel, "") << "the port may still be another one";
    Click("cmdSave");
    EXPECT_EQ(state.instrumentModel, "DAVO-E R3.10");
}

TEST_F(TestConnection, TheModelThatAnsweredIsNotThatOfAnotherDevice) {
    Answer("DAVO-E R3.10");
    Open();
    Click("cmdTest");
    ChooseDevice(kUsb1);
    Click("cmdSave");
    EXPECT_EQ(state.instrumentModel, "");
}

TEST_F(TestConnection, SaysThatNothingAnswers) {
    Open();
    Click("cmdTest");
    EXPECT_THAT(prompts.Texts(), IsEmpty()) << "the window itself has the answer";
    EXPECT_THAT(Text("lblAnswer"), StartsWith("No answer. Is the DAVO on, under computer control"));
}

TEST_F(TestConnection, OfAPortThatWasClosedLeavesItClosed) {
    Answer("DAVO-E R3.10");
    link.CloseComPort();
    Open();
    Click("cmdTest");
    EXPECT_EQ(Text("lblAnswer"), "DAVO-E R3.10 answers.");
    EXPECT_FALSE(state.portOpen);
    EXPECT_FALSE(state.openFailed);
    state.openFailed = true;
    Click("cmdTest");
    EXPECT_FALSE(state.portOpen);
    EXPECT_TRUE(state.openFailed) << "that the port in use did not open is still so";
}

TEST_F(TestConnection, SaysWhatAnswersAndIsNoDavo) {
    Answer("login:");
    Open();
    Click("cmdTest");
    EXPECT_EQ(Text("lblAnswer"), "What answers is no DAVO: login:");
}

TEST_F(TestConnection, OfAnotherAdapterGivesThePortInUseBack) {
    Answer("DAVO R2.00");
    Open();
    ChooseDevice(kUsb1);
    port.properties.clear();
    port.OnOutputDo("B", [this] {
        EXPECT_EQ(devices.Assigned(1), QString())
            << "nothing of it stays when the program is killed";
        port.Deliver("RDY\r\n");
    });
    Click("cmdTest");
    EXPECT_EQ(Text("lblAnswer"), "DAVO R2.00 answers.");
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(1, kUsb1), Pair(1, QString())));
    EXPECT_EQ(std::count(port.properties.begin(), port.properties.end(), "PortOpen=True"), 2);
    EXPECT_TRUE(state.portOpen);
    EXPECT_EQ(settings.comPort, 1);
    EXPECT_EQ(Chosen(), kUsb1) << "to be saved";
    Click("cmdExit");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(TestConnection, OfTheAutomaticChoiceKeepsItChosen) {
    Answer("DAVO-E R3.10");
    devices.assigned[1] = kUsb1;
    Open();
    link.OnPortChanged = [this] { window->ShowPort(); };
    ClickItem(*Ports(), Ports()->topLevelItem(2));
    Click("cmdTest");
    link.OnPortChanged = nullptr;
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(1, QString()), Pair(1, kUsb1)));
    EXPECT_EQ(Chosen(), QString()) << "to be saved";
}

TEST_F(TestConnection, OfAPortThatDoesNotOpenSaysWhy) {
    Open();
    ChooseDevice(kUsb1);
    port.failOpen = ErrorNumber::PortAlreadyOpen;
    Click("cmdTest");
    EXPECT_EQ(Text("lblAnswer"),
              "/dev/ttyUSB1 does not open: Port already open. Another program uses it, or you may "
              "not open it.");
    EXPECT_THAT(port.sent, IsEmpty());
    EXPECT_EQ(settings.comPort, 1);
}

TEST_F(TestConnection, AfterAFailedSaveLeavesNoPortOpen) {
    Answer("DAVO-E R3.10");
    Open();
    port.failOpen = ErrorNumber::PortAlreadyOpen;
    Click("cmdSave");
    port.failOpen.reset();
    Click("cmdTest");
    EXPECT_EQ(Text("lblAnswer"), "DAVO-E R3.10 answers.");
    EXPECT_FALSE(state.portOpen);
    EXPECT_EQ(settings.comPort, kNoPortChosen);
}

TEST_F(TestConnection, CanBeStoppedByItsButtonByExitAndByEscape) {
    port.Always("B", "RDY\r\n");
    for (const char* way : {"cmdTest", "cmdExit", "Escape"}) {
        Open();
        port.sent.clear();
        QTimer::singleShot(100, window.get(), [&] {
            EXPECT_THAT(port.sent, ElementsAre("B", "W"));
            EXPECT_EQ(Text("cmdTest"), "Sto&p waiting");
            EXPECT_FALSE(Enabled("cmdSave"));
            EXPECT_TRUE(MnemonicsAreUnique(*window));
            if (way == std::string("Escape")) {
                QTest::keyClick(window.get(), Qt::Key_Escape);
            } else {
                Click(way);
            }
        });
        Click("cmdTest");
        EXPECT_EQ(Text("lblAnswer"), "The test was stopped. Nothing has answered.") << way;
        EXPECT_TRUE(window->isVisible()) << way;
        EXPECT_TRUE(Enabled("cmdSave"));
    }
}

TEST_F(TestConnection, ClosingTheFrameStopsItAndCloses) {
    port.Always("B", "RDY\r\n");
    Open();
    QTimer::singleShot(100, window.get(), [&] { window->close(); });
    Click("cmdTest");
    EXPECT_FALSE(link.CurrentWait());
    EXPECT_FALSE(window->isVisible());
}

TEST_F(TestConnection, LeavesALineAloneThatIsInUse) {
    Open();
    QTimer::singleShot(0, window.get(), [&] {
        Click("cmdTest");
        EXPECT_EQ(Text("lblAnswer"), "The line is in use. Try again when it is free.");
        EXPECT_THAT(port.sent, ElementsAre("d"));
        EXPECT_TRUE(link.CurrentWait());
        link.EndWait();
    });
    link.SendCommand("d", "DONE");
}

}  // namespace
}  // namespace davo::test
