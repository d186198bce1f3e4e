// SPDX-License-Identifier: GPL-3.0-or-later
// What the test window shows, from opening it to a complete shot.

#include "testing/frmCControl.h"

#include <QDialog>

#include "tests/support/pause.h"
#include "tests/testing/test_window.h"

namespace davo::test {
namespace {

TEST_F(TestWindow, ShowsEveryControlWithItsCaption) {
    Open();
    EXPECT_EQ(window->windowTitle(), u"Computer Control"_s);
    EXPECT_EQ(window->objectName(), u"frmCControl"_s);
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
    EXPECT_EQ(prompts.shown.front(), u"DAVO is not ready.  Please check equipment."_s);
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
    OpenAndStart();
    beeps = 0;
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    ASSERT_TRUE(Until([this] { return beeps == 2; }));
    test::Pause(1200);
    EXPECT_EQ(beeps, 2);
}

TEST_F(TestWindow, TheNextTestAsksForTheMode) {
    OpenAndRun();
    prompts.answers = {Answer::Yes};
    Click("cmdStart");
    EXPECT_EQ(prompts.shown.back(), u"Run Ratio test only?"_s);
    EXPECT_EQ(port.sent.back(), "t");
    EXPECT_EQ(Text("cmdStart"), "&Start Test");
}

TEST_F(TestWindow, DamageIsShownAndSaid) {
    OpenAndStart();
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

TEST_F(TestWindow, TheClockRuns) {
    Open();
    clock.Set(clock.Now().addSecs(60));
    EXPECT_TRUE(Until([this] { return Text("lblTime") == "11/21/2026 - 02:06:09 PM"; }));
}

TEST_F(TestWindow, TheHeaderWindowChangesTheSessionsHeader) {
    Open();
    Click("cmdHeader");
    auto* headerWindow = Find<QDialog>("frmHeader");
    QTest::keyClicks(Box("txtHeader1"), u"NORTH"_s);
    Click("cmdSave");
    EXPECT_EQ(header.Field(1), "NORTH               ");
    EXPECT_EQ(SessionJournal::Read(places.scratchFolder + QLatin1String(kJournalFileName))
                  .header.Field(1),
              "NORTH               ");
    headerWindow->close();
}

}  // namespace
}  // namespace davo::test
