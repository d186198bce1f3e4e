// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCheckBox>
#include <QRadioButton>
#include <QWheelEvent>
#include <set>

#include "tests/app/config_window.h"

namespace davo::test {
namespace {

using ::testing::_;
using ::testing::Pair;

TEST_F(ConfigureSystem, HasItsCaptions) {
    Open();
    EXPECT_EQ(window->windowTitle(), u"Configure System"_s);
    EXPECT_EQ(Find<QGroupBox>("Frame1")->title(), u"Select COM Port:"_s);
    EXPECT_EQ(Find<QGroupBox>("Frame2")->title(), u"Display Impedance?"_s);
    EXPECT_EQ(Text("optImpedance0"), "&No, do not display");
    EXPECT_EQ(Text("optImpedance1"), "&Yes, display");
    EXPECT_EQ(Text("cmdSave"), "&Save");
    EXPECT_EQ(Text("cmdExit"), "&Exit");
    auto* list = Find<QComboBox>("cboComPort");
    ASSERT_EQ(list->count(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(list->itemText(i), u"COM%1"_s.arg(i + 1));
}

TEST_F(ConfigureSystem, ShowsTheSettings) {
    settings.comPort = 3;
    settings.showImpedance = true;
    Open();
    EXPECT_EQ(Find<QComboBox>("cboComPort")->currentText(), u"COM3"_s);
    EXPECT_TRUE(Find<QRadioButton>("optImpedance1")->isChecked());
    settings.showImpedance = false;
    Open();
    EXPECT_TRUE(Find<QRadioButton>("optImpedance0")->isChecked());
}

TEST_F(ConfigureSystem, AnOptionIsChosenAnywhereInItsRow) {
    Open();
    for (const char* name : {"optImpedance1", "optImpedance0"}) {
        auto* option = Find<QRadioButton>(name);
        QTest::mouseClick(option, Qt::LeftButton, {},
                          QPoint(option->width() - 2, option->height() - 2));
        EXPECT_TRUE(option->isChecked()) << name;
    }
}

TEST_F(ConfigureSystem, APortThatIsNoneOfTheListBecomesCom1) {
    for (const int comPort : {-99, 0, 5, 17}) {
        settings.comPort = static_cast<std::int16_t>(comPort);
        Open();
        EXPECT_EQ(settings.comPort, 1) << comPort;
        EXPECT_EQ(Find<QComboBox>("cboComPort")->currentText(), u"COM1"_s) << comPort;
    }
    settings.comPort = 4;
    Open();
    EXPECT_EQ(settings.comPort, 4);
}

TEST_F(ConfigureSystem, SaveOpensThePortAndCloses) {
    Open();
    ChoosePort(2);
    Find<QRadioButton>("optImpedance1")->click();
    Click("cmdSave");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, 2);
    EXPECT_TRUE(settings.showImpedance);
    EXPECT_TRUE(state.portOpen);
    EXPECT_THAT(port.properties, Contains("CommPort=2"));
    EXPECT_TRUE(port.sent.empty());
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_TRUE(devices.assignments.empty()) << "no other device was chosen";
}

TEST_F(ConfigureSystem, TheModelIsThatOfThePortInUse) {
    settings.comPort = 1;
    state.instrumentModel = "DAVO-E R3.10";
    Open();
    Click("cmdSave");
    EXPECT_EQ(state.instrumentModel, "DAVO-E R3.10");
    Open();
    ChoosePort(2);
    Click("cmdSave");
    EXPECT_EQ(state.instrumentModel, "") << "it was not asked at this one";
    state.instrumentModel = "DAVO-E R3.10";
    Open();
    ChooseDevice(kUsb0);
    Click("cmdSave");
    EXPECT_EQ(state.instrumentModel, "");
}

TEST_F(ConfigureSystem, SaveTakesCom1WhenTheListShowsNoText) {
    settings.comPort = 3;
    Open();
    Find<QComboBox>("cboComPort")->setCurrentIndex(-1);
    Click("cmdSave");
    EXPECT_EQ(settings.comPort, 1);
    EXPECT_THAT(port.properties, Contains("CommPort=1"));
}

TEST_F(ConfigureSystem, ThePortIsUnchosenBeforeItIsTried) {
    struct Watch : FakePortDevices {
        void Assign(std::int16_t number, const QString& device) override {
            seen.push_back(settings->comPort);
            impedance.push_back(settings->showImpedance);
            FakePortDevices::Assign(number, device);
        }
        Settings* settings = nullptr;
        std::vector<std::int16_t> seen;
        std::vector<bool> impedance;
    } watch;
    watch.settings = &settings;
    watch.present = devices.present;
    window = std::make_unique<frmConfig>(settings, link, watch, prompts, nullptr);
    window->Form_Load();
    window->show();
    ChooseDevice(kUsb1);
    Find<QRadioButton>("optImpedance1")->click();
    Click("cmdSave");
    EXPECT_THAT(watch.seen, ElementsAre(kNoPortChosen));
    EXPECT_THAT(watch.impedance, ElementsAre(true));
    EXPECT_EQ(settings.comPort, 1);
}

TEST_F(ConfigureSystem, AFailedSaveStaysOpenAndSaysSoOnlyOnExit) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    ChoosePort(2);
    Find<QRadioButton>("optImpedance1")->click();
    Click("cmdSave");
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(settings.comPort, kNoPortChosen);
    EXPECT_TRUE(settings.showImpedance);
    EXPECT_FALSE(state.portOpen);
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_EQ(
        Text("lblAnswer"),
        "/dev/ttyUSB1 does not open: Invalid port number. Another program uses it, or you may "
        "not open it. To leave anyway, press Leave without a port.");
    Click("cmdExit");
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(prompts.shown, ElementsAre(u"Please choose a valid COM port."_s));
    port.failOpen.reset();
    Click("cmdSave");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, 2);
}

TEST_F(ConfigureSystem, EscapeIsExit) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Click("cmdSave");
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(prompts.shown, ElementsAre(u"Please choose a valid COM port."_s));
}

TEST_F(ConfigureSystem, ClosedThroughItsFrameAfterAFailedSaveItLeavesNoPortChosen) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Click("cmdSave");
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, kNoPortChosen);
    EXPECT_TRUE(prompts.shown.empty());
    Open();
    EXPECT_EQ(Find<QComboBox>("cboComPort")->currentText(), u"COM1"_s);
}

TEST_F(ConfigureSystem, ThereIsAWayOutWithNoAdapterPluggedIn) {
    devices.present.clear();
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    EXPECT_FALSE(Find<QPushButton>("cmdLeave")->isVisible());
    Click("cmdSave");
    EXPECT_EQ(
        Text("lblAnswer"),
        "No adapter is plugged in. Plug in the DAVO's adapter: it is listed at once. To leave "
        "anyway, press Leave without a port.");
    QTest::keyClick(window.get(), Qt::Key_W, Qt::AltModifier);
    ASSERT_TRUE(Until([this] { return !window->isVisible(); }));
    EXPECT_EQ(settings.comPort, kNoPortChosen) << "as through its frame";
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(ConfigureSystem, ExitSavesNothing) {
    link.OpenComPort(1);
    port.properties.clear();
    Open();
    ChoosePort(4);
    ChooseDevice(kUsb1);
    Find<QRadioButton>("optImpedance1")->click();
    Click("cmdExit");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, 1);
    EXPECT_FALSE(settings.showImpedance);
    EXPECT_TRUE(port.properties.empty());
    EXPECT_TRUE(devices.assignments.empty());
    EXPECT_TRUE(state.portOpen);
}

TEST_F(ConfigureSystem, SaysWhatEachNumberStandsFor) {
    devices.assigned[3] = u"/dev/ttyUSB7"_s;
    Open();
    EXPECT_EQ(Text("lblDevice"), "is /dev/ttyUSB0");
    ChoosePort(3);
    EXPECT_EQ(Text("lblDevice"), "is not plugged in");
    EXPECT_EQ(Chosen(), u"/dev/ttyUSB7"_s);
    ChoosePort(4);
    EXPECT_EQ(Text("lblDevice"), "has no adapter yet");
    EXPECT_EQ(Chosen(), u"nothing"_s);
}

TEST_F(ConfigureSystem, ListsWhatIsPluggedInAndMarksTheOneInUse) {
    settings.comPort = 2;
    link.OpenComPort(2);
    Open();
    EXPECT_THAT(Rows(), ElementsAre("FT232R USB UART|FTDI|A50285BI|/dev/ttyUSB0|COM1",
                                    "USB-Serial Controller D|Prolific||/dev/ttyUSB1|COM2, in use"));
    EXPECT_TRUE(Ports()->topLevelItem(1)->font(0).bold());
    EXPECT_FALSE(Ports()->topLevelItem(0)->font(0).bold());
    EXPECT_EQ(Chosen(), kUsb1);
    link.CloseComPort();
    Open();
    EXPECT_THAT(Rows()[1], EndsWith("|COM2, chosen"));
    EXPECT_GE(Ports()->visualItemRect(Ports()->topLevelItem(0)).height(), 32);
}

TEST_F(ConfigureSystem, WithNothingPluggedInItSaysWhatToDoAndShowsAnAdapterAsSoonAsItIsThere) {
    devices.present.clear();
    Open();
    EXPECT_THAT(Rows(), ElementsAre("Nothing yet. Plug in the DAVO's adapter.||||"));
    EXPECT_EQ(Text("lblDevice"), "has no adapter yet");
    ClickItem(*Ports(), Ports()->topLevelItem(0));
    EXPECT_EQ(Chosen(), u"nothing"_s);
    devices.present = {UsbAdapter("/dev/ttyACM0", "Adapter", "Maker", "7")};
    ASSERT_TRUE(Until([this] { return Rows()[0] == "Adapter|Maker|7|/dev/ttyACM0|COM1, chosen"; }));
    EXPECT_EQ(Text("lblDevice"), "is /dev/ttyACM0");
}

TEST_F(ConfigureSystem, AnUnpluggedChoiceStaysChosen) {
    Open();
    ChooseDevice(kUsb1);
    devices.present.pop_back();
    devices.present.pop_back();
    ASSERT_TRUE(
        Until([this] { return Rows()[1] == "not among the ports plugged in|||/dev/ttyUSB1|"; }));
    EXPECT_EQ(Chosen(), kUsb1);
    EXPECT_EQ(Text("lblDevice"), "is not plugged in");
}

TEST_F(ConfigureSystem, SaveGivesTheDeviceToTheNumberBeforeItOpens) {
    Open();
    ChoosePort(3);
    ChooseDevice(kUsb1);
    Click("cmdSave");
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(3, kUsb1)));
    EXPECT_EQ(settings.comPort, 3);
    Open();
    EXPECT_EQ(Chosen(), kUsb1);
    EXPECT_THAT(Rows(), ElementsAre(_, EndsWith("|COM2, COM3, in use"),
                                    "Automatic: USB adapter no. 3||||"));
    ClickItem(*Ports(), Ports()->topLevelItem(2));
    window->ShowPort();
    EXPECT_EQ(Chosen(), QString()) << "the list is made anew and keeps what is chosen";
    Click("cmdSave");
    EXPECT_EQ(devices.Assigned(3), QString()) << "automatic again";
}

TEST_F(ConfigureSystem, ADeviceThatDoesNotOpenIsTakenBack) {
    devices.assigned[1] = kUsb1;
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    ChooseDevice(kUsb0);
    Click("cmdSave");
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(1, kUsb0), Pair(1, kUsb1)));
    EXPECT_EQ(settings.comPort, kNoPortChosen);
    EXPECT_EQ(Chosen(), kUsb0) << "to try again";
}

TEST_F(ConfigureSystem, ABuiltInPortIsOfferedOnRequestOnlyAndWarnedOf) {
    Open();
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1));
    Click("chkBuiltIn");
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1, kBuiltIn));
    EXPECT_EQ(Chosen(), kUsb0) << "offered, not chosen";
    EXPECT_FALSE(Find<QLabel>("lblBuiltIn")->isVisible());
    ChooseDevice(kBuiltIn);
    EXPECT_EQ(Text("lblBuiltIn"),
              "This port is built into the computer and may be its console. Save it "
              "only when the DAVO is wired to it.");
    EXPECT_TRUE(Find<QLabel>("lblBuiltIn")->isVisible());
    EXPECT_EQ(Rows()[2], "built into the computer|||/dev/ttyS0|");
    Click("cmdSave");
    EXPECT_EQ(devices.Assigned(1), kBuiltIn);
    Open();
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1, kBuiltIn, QString()))
        << "it is the present choice";
    EXPECT_EQ(Chosen(), kBuiltIn);
}

TEST_F(ConfigureSystem, TheWheelChoosesNoNumber) {
    Open();
    auto* list = Find<QComboBox>("cboComPort");
    const int before = list->currentIndex();
    QWheelEvent down(QPointF(5, 5), list->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                     Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(list, &down);
    EXPECT_EQ(list->currentIndex(), before);
}

TEST_F(ConfigureSystem, WithComNamesARowOfSuchANameIsThatNumber) {
    devices.needsAssignment = false;
    devices.present = {BuiltInPort("COM2"), UsbAdapter("COM3", "USB Serial Port", "FTDI", "7")};
    Open();
    EXPECT_FALSE(Find<QCheckBox>("chkBuiltIn")->isVisible());
    EXPECT_THAT(Rows(),
                ElementsAre("USB Serial Port|FTDI|7|COM3|", "built into the computer|||COM2|",
                            "not among the ports plugged in|||COM1|chosen"));
    EXPECT_EQ(Text("lblDevice"), "is not plugged in");
    ChooseDevice(u"COM3"_s);
    EXPECT_EQ(Find<QComboBox>("cboComPort")->currentText(), u"COM3"_s);
    EXPECT_EQ(Text("lblDevice"), "");
    ChoosePort(2);
    EXPECT_EQ(Chosen(), u"COM2"_s);
    EXPECT_FALSE(Find<QLabel>("lblBuiltIn")->isVisible()) << "it has the name that was asked for";
    Click("cmdSave");
    EXPECT_EQ(settings.comPort, 2);
    EXPECT_TRUE(devices.assignments.empty());
}

TEST_F(ConfigureSystem, WithComNamesANumberStandsForAnAdapterWithAHigherOneUntilItIsTakenBack) {
    devices.needsAssignment = false;
    devices.present = {BuiltInPort("COM1"), UsbAdapter("COM11", "Other", "Maker", "")};
    Open();
    EXPECT_EQ(Chosen(), u"COM1"_s);
    ChooseDevice(u"COM11"_s);
    EXPECT_EQ(Find<QComboBox>("cboComPort")->currentText(), u"COM1"_s);
    EXPECT_EQ(Text("lblDevice"), "is COM11");
    Click("cmdSave");
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(1, u"COM11"_s)));
    Open();
    EXPECT_THAT(Rows(), ElementsAre("Other|Maker||COM11|COM1, in use",
                                    "built into the computer|||COM1|", "Automatic: COM1||||"));
    ClickItem(*Ports(), Ports()->topLevelItem(2));
    EXPECT_EQ(Text("lblDevice"), "");
    Click("cmdSave");
    EXPECT_EQ(devices.Assigned(1), QString());
    Open();
    EXPECT_THAT(Rows(),
                ElementsAre("Other|Maker||COM11|", "built into the computer|||COM1|in use"));
}

TEST_F(ConfigureSystem, AnErrorOfTheStoreIsShownAndThePortStaysUnchosen) {
    struct Full : FakePortDevices {
        void Assign(std::int16_t, const QString&) override {
            throw RunTimeError(ErrorNumber::PathFileAccess);
        }
    } full;
    full.present = devices.present;
    window = std::make_unique<frmConfig>(settings, link, full, prompts, nullptr);
    window->Form_Load();
    window->show();
    ChooseDevice(kUsb1);
    Click("cmdSave");
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_TRUE(prompts.shown[0].contains(u"Path/File access error"_s));
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(settings.comPort, kNoPortChosen);
    EXPECT_TRUE(port.properties.empty());
}

// As the store of a write-protected disk does it: what it cannot write holds until the program
// ends.
class ProtectedDevices : public FakePortDevices {
  public:
    void Assign(std::int16_t number, const QString& device) override {
        FakePortDevices::Assign(number, device);
        throw RunTimeError(ErrorNumber::PathFileAccess, "davo.ini");
    }
};

TEST_F(ConfigureSystem, ADeviceThatIsNotStoredIsUsedAtTheFirstSaveAndItIsSaid) {
    ProtectedDevices kept;
    kept.present = devices.present;
    window = std::make_unique<frmConfig>(settings, link, kept, prompts, nullptr);
    window->Form_Load();
    window->show();
    ChoosePort(2);
    ChooseDevice(kUsb0);
    Click("cmdSave");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, 2);
    EXPECT_THAT(port.properties, Contains("CommPort=2"));
    EXPECT_THAT(prompts.shown,
                ElementsAre(u"COM2 is the chosen device until the program ends: the "
                            "setting cannot be stored.\r\n"
                            "Run-time error '75': Path/File access error: davo.ini"_s));
}

TEST_F(ConfigureSystem, ADeviceThatIsNotStoredAndDoesNotOpenIsTakenBackAllTheSame) {
    ProtectedDevices kept;
    kept.present = devices.present;
    port.failOpen = ErrorNumber::InvalidPortNumber;
    window = std::make_unique<frmConfig>(settings, link, kept, prompts, nullptr);
    window->Form_Load();
    window->show();
    ChooseDevice(kUsb1);
    Click("cmdSave");
    EXPECT_TRUE(window->isVisible());
    EXPECT_THAT(kept.assignments, ElementsAre(Pair(1, kUsb1), Pair(1, QString())));
    EXPECT_EQ(settings.comPort, kNoPortChosen);
    for (const QString& text : prompts.shown)
        EXPECT_FALSE(text.contains(u"'75'"_s)) << "nothing is kept that could be lost";
}

TEST_F(ConfigureSystem, IsWorkedByTheKeyboard) {
    Open();
    const auto mnemonics = MnemonicsOf(*window);
    EXPECT_EQ(mnemonics.size(), 6U) << "of the list's, the two options' and the three buttons'";
    EXPECT_EQ(std::set(mnemonics.begin(), mnemonics.end()).size(), mnemonics.size());
    EXPECT_EQ(window->focusWidget()->objectName(), u"lstPorts"_s);
    EXPECT_THAT(TabOrderOf(*window),
                ElementsAre("lstPorts", "cmdTest", "cboComPort", "chkBuiltIn", "optImpedance0",
                            "optImpedance1", "cmdSave", "cmdExit"));
    QTest::keyClick(Ports(), Qt::Key_Down);
    EXPECT_EQ(Chosen(), kUsb1);
    QTest::keyClick(window.get(), Qt::Key_Y, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return Find<QRadioButton>("optImpedance1")->isChecked(); },
                                test::kPatience));
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(settings.showImpedance);
}

TEST_F(ConfigureSystem, NoTextIsCutAndItFitsTheScreen) {
    devices.assigned[1] = kBuiltIn;
    Open();
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    ChooseDevice(kUsb0);
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    EXPECT_TRUE(FitsItsScreen(*window));
}

TEST_F(ConfigureSystem, NoTextIsCutWithLargeLettersOnASmallScreen) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSize(14);
    QApplication::setFont(large);
    devices.assigned[1] = kBuiltIn;
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Click("cmdSave");
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    EXPECT_LE(window->width(), 1024);
    EXPECT_LE(window->height(), 560) << "of 600, with its frame";
    QApplication::setFont(before);
}

}  // namespace
}  // namespace davo::test
