// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmConfig.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QWheelEvent>
#include <set>

#include "tests/support/controls.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/scripted_link.h"

namespace davo::test {
namespace {

using ::testing::Pair;

const QString kUsb0 = u"/dev/ttyUSB0"_s;
const QString kUsb1 = u"/dev/ttyUSB1"_s;
const QString kBuiltIn = u"/dev/ttyS0"_s;

class ConfigureSystem : public ::testing::Test, public ScriptedLine, public Controls {
  protected:
    ConfigureSystem() {
        devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R USB UART", "FTDI", "A50285BI"),
                           UsbAdapter("/dev/ttyUSB1", "USB-Serial Controller D", "Prolific", ""),
                           BuiltInPort("/dev/ttyS0")};
    }

    QWidget& Window() override { return *window; }
    void Open() {
        window = std::make_unique<frmConfig>(settings, link, devices, prompts, nullptr);
        window->Form_Load();
        ASSERT_TRUE(ShowActive(*window));
    }
    void ChoosePort(int number) { Find<QComboBox>("cboComPort")->setCurrentIndex(number - 1); }
    // The devices that the list offers, without the automatic choice.
    std::vector<QString> Offered() {
        std::vector<QString> offered;
        auto* list = Find<QComboBox>("cboDevice");
        for (int i = 1; i < list->count(); ++i)
            offered.push_back(list->itemData(i).toString());
        return offered;
    }
    void ChooseDevice(const QString& device) {
        auto* list = Find<QComboBox>("cboDevice");
        ASSERT_GE(list->findData(device), 0) << device.toStdString();
        list->setCurrentIndex(list->findData(device));
    }
    // A row of the open list: its text, and beside it what that stands for.
    static QString RowText(QComboBox* list, int row) {
        return u"%1   %2"_s.arg(list->itemText(row),
                                list->itemData(row, Qt::ToolTipRole).toString());
    }

    Settings settings;
    FakePortDevices devices;
    std::unique_ptr<frmConfig> window;
};

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
    EXPECT_EQ(Text("lblPortState"), "Now: No COM port chosen");
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
    auto* list = Find<QComboBox>("cboComPort");
    EXPECT_EQ(RowText(list, 0),
              u"COM1   FT232R USB UART, FTDI, serial number "
              "A50285BI, /dev/ttyUSB0"_s);
    EXPECT_EQ(RowText(list, 1), u"COM2   USB-Serial Controller D, Prolific, /dev/ttyUSB1"_s);
    EXPECT_EQ(RowText(list, 2), u"COM3   not plugged in"_s);
    EXPECT_EQ(Text("lblDevice"),
              "Plugged in: FT232R USB UART, FTDI, serial "
              "number A50285BI, /dev/ttyUSB0");
    ChoosePort(3);
    EXPECT_EQ(Text("lblDevice"), "/dev/ttyUSB7 is not among the ports plugged in.");
    EXPECT_EQ(Find<QComboBox>("cboDevice")->currentData().toString(), u"/dev/ttyUSB7"_s);
    ChoosePort(4);
    EXPECT_EQ(Text("lblDevice"), "No device is plugged in for it.");
}

TEST_F(ConfigureSystem, AnOpenListHasRoomForWhatItsRowsStandFor) {
    Open();
    for (const char* name : {"cboComPort", "cboDevice"}) {
        auto* list = Find<QComboBox>(name);
        list->showPopup();
        const QFontMetrics letters = list->view()->fontMetrics();
        EXPECT_GE(list->view()->width(), letters.horizontalAdvance(RowText(list, 1))) << name;
        EXPECT_GE(list->view()->sizeHintForColumn(0), letters.horizontalAdvance(RowText(list, 1)))
            << "the row itself asks for it";
        list->hidePopup();
    }
}

TEST_F(ConfigureSystem, TheListsAreNewWheneverTheyOpen) {
    devices.present.clear();
    Open();
    auto* ports = Find<QComboBox>("cboComPort");
    EXPECT_EQ(RowText(ports, 0), u"COM1   not plugged in"_s);
    EXPECT_THAT(Offered(), IsEmpty());
    devices.present = {UsbAdapter("/dev/ttyACM0", "Adapter", "Maker", "7")};
    ports->showPopup();
    EXPECT_EQ(RowText(ports, 0),
              u"COM1   Adapter, Maker, serial number 7, "
              "/dev/ttyACM0"_s);
    ports->hidePopup();
    auto* list = Find<QComboBox>("cboDevice");
    list->showPopup();
    EXPECT_THAT(Offered(), ElementsAre(u"/dev/ttyACM0"_s));
    EXPECT_EQ(RowText(list, 1), u"/dev/ttyACM0   Adapter, Maker, serial number 7"_s);
    EXPECT_EQ(Text("lblDevice"), "Plugged in: Adapter, Maker, serial number 7, /dev/ttyACM0");
    list->hidePopup();
}

TEST_F(ConfigureSystem, AnUnpluggedChoiceStaysChosen) {
    Open();
    ChooseDevice(kUsb1);
    devices.present.pop_back();
    devices.present.pop_back();
    auto* list = Find<QComboBox>("cboDevice");
    list->showPopup();
    EXPECT_EQ(list->currentData().toString(), kUsb1);
    EXPECT_EQ(RowText(list, list->currentIndex()),
              u"/dev/ttyUSB1   not among the ports plugged in"_s);
    list->hidePopup();
}

TEST_F(ConfigureSystem, SaveGivesTheDeviceToTheNumberBeforeItOpens) {
    Open();
    ChoosePort(3);
    ChooseDevice(kUsb1);
    Click("cmdSave");
    EXPECT_THAT(devices.assignments, ElementsAre(Pair(3, kUsb1)));
    EXPECT_EQ(settings.comPort, 3);
    Open();
    EXPECT_EQ(Find<QComboBox>("cboDevice")->currentData().toString(), kUsb1);
    Find<QComboBox>("cboDevice")->setCurrentIndex(0);
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
    EXPECT_EQ(Find<QComboBox>("cboDevice")->currentData().toString(), kUsb0) << "to try again";
}

TEST_F(ConfigureSystem, ABuiltInPortIsOfferedOnRequestOnlyAndWarnedOf) {
    Open();
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1));
    Click("chkBuiltIn");
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1, kBuiltIn));
    EXPECT_EQ(Find<QComboBox>("cboDevice")->currentIndex(), 0) << "offered, not chosen";
    EXPECT_EQ(Text("lblBuiltIn"), "");
    ChooseDevice(kBuiltIn);
    EXPECT_EQ(Text("lblBuiltIn"),
              "This port is built into the computer and may be its console. Save it "
              "only when the DAVO is wired to it.");
    EXPECT_EQ(Text("lblDevice"), "Built in: /dev/ttyS0");
    Click("cmdSave");
    EXPECT_EQ(devices.Assigned(1), kBuiltIn);
    Open();
    EXPECT_THAT(Offered(), ElementsAre(kUsb0, kUsb1, kBuiltIn)) << "it is the present choice";
    EXPECT_EQ(Find<QComboBox>("cboDevice")->currentData().toString(), kBuiltIn);
}

TEST_F(ConfigureSystem, TheWheelChoosesNothing) {
    Open();
    for (const char* name : {"cboComPort", "cboDevice"}) {
        auto* list = Find<QComboBox>(name);
        const int before = list->currentIndex();
        QWheelEvent down(QPointF(5, 5), list->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                         Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(list, &down);
        EXPECT_EQ(list->currentIndex(), before) << name;
    }
}

TEST_F(ConfigureSystem, WithComNamesThereIsNothingToAssign) {
    devices.needsAssignment = false;
    devices.present = {UsbAdapter("COM2", "USB Serial Port", "FTDI", "")};
    Open();
    EXPECT_FALSE(Find<QComboBox>("cboDevice")->isVisible());
    EXPECT_FALSE(Find<QCheckBox>("chkBuiltIn")->isVisible());
    EXPECT_EQ(Text("lblDevice"), "COM1 is not among the ports plugged in.");
    ChoosePort(2);
    EXPECT_EQ(Text("lblDevice"), "Plugged in: USB Serial Port, FTDI, COM2");
    Click("cmdSave");
    EXPECT_EQ(settings.comPort, 2);
    EXPECT_TRUE(devices.assignments.empty());
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
    ChooseDevice(kUsb1);
    Click("cmdSave");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.comPort, 2);
    EXPECT_THAT(port.properties, Contains("CommPort=2"));
    EXPECT_THAT(prompts.shown,
                ElementsAre(u"COM2 stands for the chosen device until the program ends: the "
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
    EXPECT_EQ(mnemonics.size(), 6U);
    EXPECT_EQ(std::set(mnemonics.begin(), mnemonics.end()).size(), mnemonics.size());
    EXPECT_EQ(window->focusWidget()->objectName(), u"cboComPort"_s);
    EXPECT_THAT(TabOrderOf(*window),
                ElementsAre("cboComPort", "cboDevice", "chkBuiltIn", "optImpedance0",
                            "optImpedance1", "cmdSave", "cmdExit"));
    QTest::keyClick(window.get(), Qt::Key_Y, Qt::AltModifier);
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return Find<QRadioButton>("optImpedance1")->isChecked(); }, 1000));
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

}  // namespace
}  // namespace davo::test
