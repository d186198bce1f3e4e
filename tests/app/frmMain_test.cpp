// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmMain.h"

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>

#include "app/home_panel.h"
#include "records/record_file.h"
#include "tests/app/main_window.h"

namespace davo::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

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

TEST_F(MainWindow, ForcesTheDateFormatFirstOfAll) {
    shortDate.format = QStringLiteral("dd/MM/yyyy");
    bool first = false;
    shortDate.onSet = [&] { first = port.properties.empty() && !FolderExists(DataFolder()); };
    Open();
    EXPECT_TRUE(first);
    EXPECT_THAT(shortDate.sets, ElementsAre(QStringLiteral("MM/dd/yyyy")));
}

TEST_F(MainWindow, ClearsModesAndModelAtLoad) {
    state.modes = {true, true, true};
    state.linkState.instrumentModel = "DAVO-E";
    state.settings.showImpedance = true;
    Open();
    EXPECT_FALSE(state.modes.testBothMode);
    EXPECT_FALSE(state.modes.testRatioOnlyMode);
    EXPECT_FALSE(state.modes.modelIsExtended);
    EXPECT_EQ(state.linkState.instrumentModel, "");
    EXPECT_FALSE(state.settings.showImpedance);
}

TEST_F(MainWindow, AFirstRunMakesItsFoldersAndTakesTheDefaults) {
    Open();
    EXPECT_TRUE(FolderExists(places.applicationFolder + QStringLiteral("Shots_Data")));
    EXPECT_TRUE(FolderExists(places.applicationFolder + QStringLiteral("Shots_Excel")));
    EXPECT_EQ(state.settings.kneepointType, QStringLiteral("ASA 10/50 Marker"));
    EXPECT_TRUE(Checked("mnuKneepointASA10"));
    EXPECT_FALSE(Checked("mnuKneepoint30"));
    EXPECT_FALSE(Checked("mnuKneepoint45"));
    EXPECT_THAT(port.properties, Contains("CommPort=1"));
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_FALSE(Find<QPushButton>("cmdNotice")->isVisible());
}

TEST_F(MainWindow, ChecksTheItemOfTheStoredKneepointType) {
    const char* const items[] = {"mnuKneepointASA10", "mnuKneepoint30", "mnuKneepoint45"};
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"", "mnuKneepointASA10", "ASA 10/50 Marker"},
        {"ASA 10/50 Marker", "mnuKneepointASA10", "ASA 10/50 Marker"},
        {"ASA 10% V -->50% I Degree Mode", "mnuKneepointASA10", "ASA 10/50 Marker"},
        {"IEEE 30 Degree Mode", "mnuKneepoint30", "IEEE 30 Degree Marker"},
        {"IEEE 30 Degree Marker", "mnuKneepoint30", "IEEE 30 Degree Marker"},
        {"IEEE 45 Degree Mode", "mnuKneepoint45", "IEEE 45 Degree Marker"},
        {"IEEE 45 Degree Marker", "mnuKneepoint45", "IEEE 45 Degree Marker"},
        {"ieee 45 degree marker", "", "ieee 45 degree marker"},
        {"anything", "", "anything"}};
    for (const auto& [stored, checked, type] : cases) {
        Store("DAVO/KPTYPE/KPTYPEVAL", QLatin1String(stored));
        Make();
        window->Form_Load();
        EXPECT_EQ(state.settings.kneepointType, QLatin1String(type));
        for (const char* item : items)
            EXPECT_EQ(Checked(item), std::string(item) == checked) << stored << ' ' << item;
    }
}

TEST_F(MainWindow, APortThatWasLeftUnchosenIsTriedInSilence) {
    Store("DAVO/COMPORT/COMPORTVAL", QStringLiteral("-99"));
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    EXPECT_THAT(port.properties, Contains("CommPort=-99"));
    EXPECT_EQ(state.settings.comPort, -99);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainWindow, ASettingThatCannotBeReadIsSaidOnceAndTheOthersAreRead) {
    AddRecord("T1.txt", "11/21/26");
    Store("DAVO/COMPORT/COMPORTVAL", QStringLiteral("abc"));
    Store("IMPEDANCE/IMP/IMPVAL", QStringLiteral("Y"));
    Store("SORTVALUES/SORT/SORTVAL", QStringLiteral("1 3"));
    Open();
    EXPECT_TRUE(prompts.shown.empty()) << "nobody is kept from working";
    EXPECT_EQ(state.settings.comPort, 1);
    EXPECT_TRUE(state.settings.showImpedance);
    EXPECT_EQ(state.settings.sortOrder, 1);
    EXPECT_EQ(state.settings.sortDisplay, 3);
    EXPECT_EQ(state.settings.dataPath, DataFolder());
    EXPECT_TRUE(Enabled("mnuFileUtil"));
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->text(), QStringLiteral("Setting not usable"));
    notice->click();
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("A stored setting or its folder cannot be used. The "
                                           "program goes on with what is usual.\r\n"
                                           "Run-time error '13': Type mismatch: abc")));
}

TEST_F(MainWindow, FoldersThatCannotBeMadeAreSaid) {
    ReplaceFile(places.applicationFolder + QStringLiteral("Shots_Data"), "a file");
    Open();
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), QStringLiteral("Setting not usable"));
    EXPECT_EQ(state.settings.dataPath, DataFolder());
}

TEST_F(MainWindow, WithoutRecordsTheItemsThatNeedThemStayDisabled) {
    ASSERT_TRUE(QDir().mkpath(DataFolder()));
    ReplaceFile(DataFolder() + QLatin1String(kDirectoryFileName), "REC==003\r\na\r\nb\r\nc\r\n");
    Open();
    EXPECT_FALSE(FileExists(DataFolder() + QLatin1String(kDirectoryFileName)));
    for (const char* item : {"mnuFileUtil", "mnuOverlay", "mnuSetDescr"})
        EXPECT_FALSE(Enabled(item)) << item;
    EXPECT_TRUE(Enabled("mnuRecall"));
    EXPECT_FALSE(state.directory.recordsFromInstrument);
    EXPECT_EQ(state.directory.recordCount, 0);
}

TEST_F(MainWindow, WithRecordsTheDirectoryIsReadAndItsItemsAreEnabled) {
    AddRecord("T1.txt", "11/20/26", "SOUTH");
    AddRecord("T2.txt", "11/21/26");
    Open();
    for (const char* item : {"mnuRecall", "mnuFileUtil", "mnuOverlay", "mnuSetDescr"})
        EXPECT_TRUE(Enabled(item)) << item;
    EXPECT_TRUE(state.directory.recordsFromInstrument);
    EXPECT_EQ(state.directory.recordCount, 0) << "the count is reset";
    ASSERT_EQ(state.directory.dirEntries.size(), 2U);
    EXPECT_THAT(state.directory.dirEntries[0], ::testing::StartsWith("T2!11/21/26 10:15"));
    const auto* list = Find<QTreeWidget>("lvNewest");
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(0)->text(0), QStringLiteral("T2"));
    EXPECT_EQ(list->topLevelItem(1)->text(3).trimmed(), QStringLiteral("SOUTH"));
}

TEST_F(MainWindow, SaysWhichFilesAreNotListed) {
    AddRecord("T1.txt", "11/20/26");
    AddRecord("T2.txt", "11/21/26");
    ReplaceFile(DataFolder() + QStringLiteral("Notes.txt"), "three\r\nlines\r\nonly\r\n");
    Open();
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_EQ(notice->text(), QStringLiteral("1 file skipped"));
    notice->click();
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(),
                HasSubstr("Notes.txt has fewer than twelve lines"));
}

TEST_F(MainWindow, SaysHowManyRecordsOver250AreNotListed) {
    for (int i = 0; i < kMostListedRecords + 2; ++i)
        AddRecord(QStringLiteral("T%1.txt").arg(i).toLatin1().constData(), "11/21/26");
    Open();
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), QStringLiteral("2 files not listed"));
    EXPECT_EQ(Find<QTreeWidget>("lvNewest")->topLevelItemCount(), static_cast<int>(kNewestRecords));
}

TEST_F(MainWindow, ADirectoryThatCannotBeWrittenIsSaidAndTheProgramStarts) {
    AddRecord("T1.txt", "11/21/26");
    ASSERT_TRUE(QDir().mkpath(DataFolder() + QLatin1String(kDirectoryFileName)));
    Open();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), QStringLiteral("Records not listed"));
    EXPECT_FALSE(Enabled("mnuFileUtil"));
}

// The user's locale writes numbers and dates in another way.
TEST_F(MainWindow, WhatIsWrittenDoesNotDependOnTheLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    AddRecord("T1.txt", "11/20/26");
    AddRecord("T2.txt", "12/31/25");
    state.settings.sortOrder = -1;
    Open();
    window->close();
    QLocale::setDefault(before);
    EXPECT_EQ(store.texts[QStringLiteral("DAVO/COMPORT/COMPORTVAL")], QStringLiteral(" 1"));
    EXPECT_EQ(store.texts[QStringLiteral("SORTVALUES/SORT/SORTVAL")], QStringLiteral("-1 -1"));
    const std::string directory = ReadWholeFile(DataFolder() + QLatin1String(kDirectoryFileName));
    EXPECT_THAT(directory, ::testing::StartsWith("REC==002\r\nT1!11/20/26 10:15TESTS=03"));
}

TEST_F(MainWindow, CannotBeMadeSoSmallThatAButtonOfTheTestWindowIsHidden) {
    Open();
    Choose("mnuBoth");
    ASSERT_NE(TestWindow(), nullptr);
    window->resize(10, 10);
    QTest::qWait(20);
    for (const char* name : {"cmdStart", "cmdContinue", "cmdCancel", "cmdHeader", "cmdExit"}) {
        auto* button = Find<QPushButton>(name);
        const QRect place(button->mapTo(window.get(), QPoint(0, 0)), button->size());
        EXPECT_TRUE(window->rect().contains(place)) << name;
        EXPECT_EQ(window->childAt(place.center()), button) << name;
    }
}

TEST_F(MainWindow, TheKeyboardBeginsAtTheFirstButton) {
    Open();
    EXPECT_TRUE(Find<QPushButton>("cmdBoth")->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_NE(TestWindow(), nullptr);
}

TEST_F(MainWindow, TheHomePanelStandsWhileNoOtherWindowIsOpen) {
    Open();
    const auto* home = Find<HomePanel>("homePanel");
    EXPECT_TRUE(home->isVisible());
    QTest::mouseClick(Find<QPushButton>("cmdBoth"), Qt::LeftButton);
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_FALSE(home->isVisible());
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    QTest::qWait(50);
    QTest::mouseClick(Find<QPushButton>("cmdExit"), Qt::LeftButton);
    ASSERT_TRUE(Until([home] { return home->isVisible(); }));
}

TEST_F(MainWindow, ShowsTheStateOfThePortAndFollowsIt) {
    devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R", "FTDI", "A5")};
    Open();
    EXPECT_EQ(Find<QLabel>("lblPort")->text(), QStringLiteral("COM1 open"));
    port.Unplug();
    ASSERT_TRUE(Until(
        [this] { return Find<QLabel>("lblPort")->text() == QStringLiteral("COM1 not open"); }));
    EXPECT_THAT(prompts.shown, ElementsAre(Link::LostMessage()));
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

TEST_F(MainWindow, ALongWaitIsShownAndCanBeEnded) {
    Open();
    port.always.clear();
    port.Always("B", "RDY\r\n");  // and no answer to "W"
    const auto* stop = Find<QPushButton>("cmdStopWait");
    bool shownAtOnce = true;
    bool shownLater = false;
    QTimer::singleShot(200, window.get(), [&] { shownAtOnce = stop->isVisible(); });
    QTimer::singleShot(2500, window.get(), [&] {
        shownLater = stop->isVisible();
        QTest::mouseClick(Find<QPushButton>("cmdStopWait"), Qt::LeftButton);
    });
    Choose("mnuBoth");
    EXPECT_FALSE(shownAtOnce);
    EXPECT_TRUE(shownLater);
    EXPECT_FALSE(stop->isVisible());
    EXPECT_FALSE(link.CurrentWait().has_value());
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("Cannot read option, please try again.")));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

}  // namespace

}  // namespace davo::test
