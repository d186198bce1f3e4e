// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmMain.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLocale>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>

#include "app/home_panel.h"
#include "common/settings_store.h"
#include "records/record_file.h"
#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

TEST_F(MainWindow, LoadsSettingsHeaderAndPortAndSendsNothing) {
    ASSERT_TRUE(QDir().mkpath(folder.Path("data/Shots_Data")));
    const QString data = folder.Path("data/Shots_Data/");
    store.Write(u"DATAPATH"_s, u"PATH"_s, u"PATHVAL"_s, data);
    store.Write(u"DAVO"_s, u"COMPORT"_s, u"COMPORTVAL"_s, u" 3"_s);
    ReplaceFile(data + u"Davo.ini"_s, "MFR:ABB\r\n");
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
    shortDate.format = u"dd/MM/yyyy"_s;
    bool first = false;
    shortDate.onSet = [&] { first = port.properties.empty() && !FolderExists(DataFolder()); };
    Open();
    EXPECT_TRUE(first);
    EXPECT_THAT(shortDate.sets, ElementsAre(u"MM/dd/yyyy"_s));
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
    EXPECT_TRUE(FolderExists(places.applicationFolder + u"Shots_Data"_s));
    EXPECT_TRUE(FolderExists(places.applicationFolder + u"Shots_Excel"_s));
    EXPECT_EQ(state.settings.kneepointType, u"ASA 10/50 Marker"_s);
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
    Store("DAVO/COMPORT/COMPORTVAL", u"-99"_s);
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    EXPECT_THAT(port.properties, Contains("CommPort=-99"));
    EXPECT_EQ(state.settings.comPort, -99);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainWindow, ASettingThatCannotBeReadIsSaidOnceAndTheOthersAreRead) {
    AddRecord("T1.txt", "11/21/26");
    Store("DAVO/COMPORT/COMPORTVAL", u"abc"_s);
    Store("IMPEDANCE/IMP/IMPVAL", u"Y"_s);
    Store("SORTVALUES/SORT/SORTVAL", u"1 3"_s);
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
    EXPECT_EQ(notice->text(), u"Setting not usable"_s);
    notice->click();
    EXPECT_THAT(prompts.shown, ElementsAre(u"A stored setting or its folder cannot be used. The "
                                           "program uses the defaults.\r\n"
                                           "Run-time error '13': Type mismatch: abc"_s));
}

TEST_F(MainWindow, ALineOfTheSettingsFileThatCannotBeReadIsSaidByItsNumber) {
    const QString file = places.configurationFolder + u"davo.ini"_s;
    ReplaceFile(file,
                "[IMPEDANCE]\nIMP\\IMPVAL=Y\n; a remark\n\n[DAVO]\nno value\n"
                "COMPORT\\COMPORTVAL=3\nnor here\n");
    const auto kept = MakeSettingsStore(places);
    window = std::make_unique<frmMain>(
        state, ProgramServices{*kept, places, clock, prompts, link, devices, shortDate, [] {}});
    window->Form_Load();
    if (state.settings.comPort != 3) GTEST_SKIP() << "the settings are not in that file";
    EXPECT_TRUE(state.settings.showImpedance);
    EXPECT_THAT(prompts.shown, IsEmpty()) << "nobody is kept from working";
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_EQ(notice->text(), u"Setting not usable"_s);
    notice->click();
    EXPECT_THAT(prompts.shown, ElementsAre(u"Line 6 of "_s + file +
                                           u" cannot be read. The program uses the "
                                           "other lines."_s));
}

TEST_F(MainWindow, FoldersThatCannotBeMadeAreSaid) {
    ReplaceFile(places.applicationFolder + u"Shots_Data"_s, "a file");
    Open();
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"Setting not usable, Records not listed"_s);
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
    EXPECT_THAT(state.directory.dirEntries[0], StartsWith("T2!11/21/26 10:15"));
    const auto* list = Find<QTreeWidget>("lvNewest");
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(0)->text(0), u"T2"_s);
    EXPECT_EQ(list->topLevelItem(1)->text(3).trimmed(), u"SOUTH"_s);
}

TEST_F(MainWindow, SaysWhichFilesAreNotListed) {
    AddRecord("T1.txt", "11/20/26");
    AddRecord("T2.txt", "11/21/26");
    ReplaceFile(DataFolder() + u"Notes.txt"_s, "three\r\nlines\r\nonly\r\n");
    Open();
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_EQ(notice->text(), u"1 file skipped"_s);
    notice->click();
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(prompts.shown.front().toStdString(),
                HasSubstr("Notes.txt has fewer than twelve lines"));
}

TEST_F(MainWindow, SaysHowManyRecordsOver250AreNotListed) {
    for (int i = 0; i < kMostListedRecords + 2; ++i)
        AddRecord(u"T%1.txt"_s.arg(i).toLatin1().constData(), "11/21/26");
    Open();
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"2 files not listed"_s);
    EXPECT_EQ(Find<QTreeWidget>("lvNewest")->topLevelItemCount(), static_cast<int>(kNewestRecords));
}

TEST_F(MainWindow, ADirectoryThatCannotBeWrittenIsANoticeAndTheRecordsAreListed) {
    AddRecord("T1.txt", "11/21/26");
    ASSERT_TRUE(QDir().mkpath(DataFolder() + QLatin1String(kDirectoryFileName)));
    Open();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"List not saved"_s);
    EXPECT_EQ(Find<QTreeWidget>("lvNewest")->topLevelItemCount(), 1);
    EXPECT_TRUE(Enabled("mnuFileUtil"));
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainWindow, AFolderThatIsGoneHasNoNewRecordsYet) {
    AddRecord("T1.txt", "11/21/26");
    Open();
    QDir(DataFolder()).removeRecursively();
    Choose("mnuFileUtil");
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"Records not listed"_s);
    EXPECT_THAT(Find<QLabel>("lblNoRecords")->text().toStdString(),
                EndsWith("cannot be read: Path not found."));
    EXPECT_TRUE(Enabled("mnuFile"));
}

TEST_F(MainWindow, AFolderThatGoesAndComesBackIsSeenOnTheStartPage) {
    AddRecord("T1.txt", "11/21/26");
    Open();
    const auto* list = Find<QTreeWidget>("lvNewest");
    ASSERT_EQ(list->topLevelItemCount(), 1);
    const QString elsewhere = folder.Path("pulled");
    ASSERT_TRUE(QDir().rename(DataFolder(), elsewhere));
    ASSERT_TRUE(Until([&] { return list->topLevelItemCount() == 0; }));
    EXPECT_THAT(Text("lblNoRecords"), EndsWith("cannot be read: Path not found."));
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"Records not listed"_s);
    EXPECT_FALSE(Enabled("mnuFileUtil"));
    ASSERT_TRUE(QDir().rename(elsewhere, DataFolder()));
    EXPECT_TRUE(Until([&] { return list->topLevelItemCount() == 1; }));
    EXPECT_TRUE(Enabled("mnuFileUtil"));
    EXPECT_TRUE(prompts.shown.empty());
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
    EXPECT_EQ(store.texts[u"DAVO/COMPORT/COMPORTVAL"_s], u" 1"_s);
    EXPECT_EQ(store.texts[u"SORTVALUES/SORT/SORTVAL"_s], u"-1 -1"_s);
    const std::string directory = ReadWholeFile(DataFolder() + QLatin1String(kDirectoryFileName));
    EXPECT_THAT(directory, StartsWith("REC==002\r\nT1!11/20/26 10:15TESTS=03"));
}

TEST_F(MainWindow, CannotBeMadeSoSmallThatAButtonOfTheTestWindowIsHidden) {
    Open();
    Choose("mnuBoth");
    ASSERT_NE(TestWindow(), nullptr);
    window->resize(10, 10);
    test::Pause(20);
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
    Click("cmdBoth");
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_FALSE(home->isVisible());
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    test::Pause(50);
    Click("cmdExit");
    ASSERT_TRUE(Until([home] { return home->isVisible(); }));
}

TEST_F(MainWindow, ShowsTheStateOfThePortAndFollowsIt) {
    devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R", "FTDI", "A5")};
    Open();
    EXPECT_EQ(Find<QLabel>("lblPort")->text(), u"COM1 ready"_s);
    port.Unplug();
    ASSERT_TRUE(Until([this] { return Find<QLabel>("lblPort")->text() == u"COM1 not open"_s; }));
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
    OpenTestWindow("mnuBoth");
    Click("cmdExit");
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
        EXPECT_THAT(prompts.shown, ElementsAre(u"This option is not available on your DAVO."_s));
        EXPECT_EQ(TestWindow(), nullptr);
        EXPECT_TRUE(Find<QAction>("mnuFile")->isEnabled());
    }
}

TEST_F(MainWindow, AnotherModelCannotBeRead) {
    Open("OTHER-E");
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Cannot read option, please try again."_s));
}

TEST_F(MainWindow, ASilentInstrumentIsSaidToBeNotAvailableFirst) {
    port.always.clear();
    Open();
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown, ElementsAre(QLatin1String(kNotAvailableMessage),
                                           u"Cannot read option, please try again."_s));
}

TEST_F(MainWindow, WithoutAPortTheModelCannotBeRead) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Choose("mnuBoth");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Cannot read option, please try again."_s));
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
        Click("cmdStopWait");
    });
    Choose("mnuBoth");
    EXPECT_FALSE(shownAtOnce);
    EXPECT_TRUE(shownLater);
    EXPECT_FALSE(stop->isVisible());
    EXPECT_FALSE(link.CurrentWait().has_value());
    EXPECT_THAT(prompts.shown, ElementsAre(u"Cannot read option, please try again."_s));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(MainWindow, F5ReadsThePreviewAgain) {
    const auto write = [this](const char* ratio) {
        RecordParts parts;
        parts.measuredRatio = ratio;
        ASSERT_TRUE(QDir().mkpath(DataFolder()));
        ReplaceFile(DataFolder() + u"T1.txt"_s, HeaderText("T1", "NORTH") + RecordText(parts));
    };
    const auto previewHas = [this](const QString& ratio) {
        return Find<QLabel>("lblPreview")->text().contains(ratio);
    };
    write("241.2");
    Open();
    window->resize(1100, 900);
    ASSERT_TRUE(Until([&] { return previewHas(u"241.2"_s); }));
    write("242.4");
    QTest::keyClick(Find<QTreeWidget>("lvNewest"), Qt::Key_F5);
    EXPECT_TRUE(Until([&] { return previewHas(u"242.4"_s); }));
}

TEST_F(MainWindow, WhileAnotherPortIsTriedTheStartPageSaysThatItsOwnIsOpenedWhenNeeded) {
    devices.present = {UsbAdapter("/dev/ttyUSB0", "One", "", ""),
                       UsbAdapter("/dev/ttyUSB1", "Other", "", "")};
    Open();
    const auto shown = [this] {
        return FindIn<QLabel>(*Find<QWidget>("homePanel"), "lblPort")->text().toStdString();
    };
    EXPECT_EQ(shown(), "COM1 ready");
    Choose("mnuConfig");
    Find<QComboBox>("cboComPort")->setCurrentIndex(1);
    std::string during;
    port.OnOutputDo("B", [&] {
        during = shown();
        port.Deliver("RDY\r\n");
    });
    Click("cmdTest");
    EXPECT_EQ(during, "COM1 opened when needed");
    EXPECT_EQ(shown(), "COM1 ready");
}

}  // namespace
}  // namespace davo::test
