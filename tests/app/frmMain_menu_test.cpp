// SPDX-License-Identifier: GPL-3.0-or-later
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QStatusBar>

#include "app/frmAbout.h"
#include "app/frmConfig.h"
#include "app/home_panel.h"
#include "tests/app/main_window.h"

namespace davo::test {
namespace {

// A child window of the tests in place of one that a menu item opens.
struct Child {
    OpenChild Opener() {
        return [this](QMdiArea& area, std::function<void()> closed) {
            if (fails) throw RunTimeError(ErrorNumber::FileNotFound, "child");
            ++opened;
            auto* page = area.addSubWindow(new QWidget);
            page->show();
            close = [page, closed = std::move(closed)] {
                delete page;
                closed();
            };
            areaWasShown = area.isVisible();
            if (onOpen) onOpen();
        };
    }

    int opened = 0;
    bool areaWasShown = false;
    bool fails = false;
    std::function<void()> close;
    std::function<void()> onOpen;
};

class MainMenuItems : public MainWindow {
  protected:
    void OpenWithChildren() {
        Open("DAVO-E R3.10", {testList.Opener(), memoryDirectory.Opener(), headerSetup.Opener(),
                              recordHeaders.Opener(), fileUtilities.Opener()});
    }
    bool FileEnabled() { return Enabled("mnuFile"); }
    QString Said() { return window->statusBar()->currentMessage(); }

    Child testList;
    Child memoryDirectory;
    Child headerSetup;
    Child recordHeaders;
    Child fileUtilities;
};

std::vector<std::string> TreeOf(const QMenu& menu) {
    std::vector<std::string> lines;
    for (const QAction* item : menu.actions()) {
        lines.push_back(item->objectName().toStdString() +
                        (item->isSeparator() ? "" : " \"" + item->text().toStdString() + "\""));
        if (item->menu() == nullptr) continue;
        for (const std::string& line : TreeOf(*item->menu()))
            lines.push_back("  " + line);
    }
    return lines;
}

TEST_F(MainMenuItems, AreTheWholeTreeInItsOrder) {
    Open();
    EXPECT_EQ(window->windowTitle(), u"DAVO PC-Interface V.3.15"_s);
    ASSERT_EQ(window->menuBar()->actions().size(), 1);
    EXPECT_EQ(Find<QAction>("mnuFile")->text(), u"&File"_s);
    EXPECT_THAT(TreeOf(*Find<QMenu>("mnuFile")),
                ElementsAre("mnuRecall \"&Recall Test\"",  //
                            "mnuLine1",                    //
                            "mnuCControl \"R&un Test\"", "  mnuBoth \"S&aturation && Ratio Tests\"",
                            "  mnuRatio \"Ratio Test &Only\"",
                            "mnuLine2",                               //
                            "mnuDownload \"&Download Test Record\"",  //
                            "mnuLine3",                               //
                            "mnuSetup \"&Set Kneepoint Marker\"",     //
                            "  mnuKneepoint30 \"IEEE &30 Degree Marker\"",
                            "  mnuKneepoint45 \"IEEE &45 Degree Marker\"",
                            "  mnuKneepointASA10 \"&ASA 10/50 Marker\"",
                            "mnuLine4",                         //
                            "mnuOverlay \"&Overlay 2 Tests\"",  //
                            "mnuLine5",                         //
                            "mnuSetHeaderFile \"Setup Test &Header Information\"",
                            "mnuSetDescr \"&Test Record Header Information\"",
                            "mnuLine6",                         //
                            "mnuFileUtil \"File &Utilities\"",  //
                            "mnuConfig \"&Configure System\"",  //
                            "mnuLine7",                         //
                            "mnuExit \"&Exit\"",                //
                            "mnuAbout \"&About\""));
}

TEST_F(MainMenuItems, KneepointMarkersAreCheckedOneAtATime) {
    Open();
    const std::pair<const char*, const char*> markers[] = {
        {"mnuKneepoint30", "IEEE 30 Degree Marker"},
        {"mnuKneepoint45", "IEEE 45 Degree Marker"},
        {"mnuKneepointASA10", "ASA 10/50 Marker"}};
    for (int round = 0; round < 2; ++round) {
        for (const auto& [pressed, type] : markers) {
            // Once more: what is checked stays so.
            for (int times = 0; times < 2; ++times) {
                Press(pressed);
                EXPECT_EQ(state.settings.kneepointType, QLatin1String(type));
                for (const auto& [item, text] : markers)
                    EXPECT_EQ(Checked(item), std::string(item) == pressed) << item;
                EXPECT_EQ(Find<QLabel>("lblKneepoint")->text(), QLatin1String(type));
            }
        }
    }
}

TEST_F(MainMenuItems, RecallRebuildsTheDirectoryAndOpensTheTestList) {
    OpenWithChildren();
    AddRecord("T1.txt", "11/21/26");
    state.directory.recordsFromInstrument = true;
    testList.onOpen = [this] {
        EXPECT_FALSE(FileEnabled());
        EXPECT_EQ(state.directory.recordCount, 1);
        EXPECT_FALSE(state.directory.recordsFromInstrument);
        EXPECT_EQ(state.listCaller, ListCaller::Recall);
    };
    Press("mnuRecall");
    ASSERT_EQ(testList.opened, 1);
    EXPECT_TRUE(testList.areaWasShown);
    EXPECT_FALSE(FileEnabled());
    EXPECT_FALSE(Find<HomePanel>("homePanel")->isVisible());
    testList.close();
    EXPECT_TRUE(FileEnabled());
    EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
    EXPECT_TRUE(port.sent.empty());
}

TEST_F(MainMenuItems, RecallOpensThePortWhenItIsNot) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    OpenWithChildren();
    Press("mnuRecall");
    EXPECT_EQ(testList.opened, 1) << "the list needs no port";
    testList.close();
    EXPECT_FALSE(state.linkState.portOpen);
    port.failOpen.reset();
    Press("mnuRecall");
    EXPECT_TRUE(state.linkState.portOpen);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(MainMenuItems, FileUtilitiesAndOverlayOpenTheFileWindowEachInItsRole) {
    AddRecord("T1.txt", "11/21/26");
    OpenWithChildren();
    const std::pair<const char*, ListCaller> items[] = {{"mnuOverlay", ListCaller::Overlay},
                                                        {"mnuFileUtil", ListCaller::FileUtilities}};
    int opened = 0;
    for (const auto& [item, caller] : items) {
        state.directory.recordsFromInstrument = true;
        Press(item);
        EXPECT_EQ(fileUtilities.opened, ++opened);
        EXPECT_EQ(state.listCaller, caller);
        EXPECT_FALSE(state.directory.recordsFromInstrument);
        EXPECT_EQ(state.directory.recordCount, 1);
        EXPECT_FALSE(FileEnabled());
        fileUtilities.close();
        EXPECT_TRUE(FileEnabled());
    }
    EXPECT_EQ(static_cast<int>(ListCaller::FileUtilities), 2);
    EXPECT_EQ(static_cast<int>(ListCaller::Overlay), 3);
}

TEST_F(MainMenuItems, TheFileWindowIsNotOpenedOnceTheRecordsAreGone) {
    AddRecord("T1.txt", "11/21/26");
    OpenWithChildren();
    ASSERT_TRUE(QFile::remove(DataFolder() + u"T1.txt"_s));
    for (const char* item : {"mnuOverlay", "mnuFileUtil"}) {
        Press(item);
        EXPECT_EQ(fileUtilities.opened, 0);
        EXPECT_TRUE(FileEnabled());
        EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
    }
}

TEST_F(MainMenuItems, ADataFolderThatIsGoneIsSaidInsteadOfTheFileWindow) {
    AddRecord("T1.txt", "11/21/26");
    for (const char* item : {"mnuOverlay", "mnuFileUtil"}) {
        QDir().mkpath(DataFolder());
        AddRecord("T1.txt", "11/21/26");
        OpenWithChildren();
        ASSERT_TRUE(Enabled(item));
        prompts.shown.clear();
        ASSERT_TRUE(QDir(DataFolder()).removeRecursively());
        Choose(item);
        EXPECT_EQ(fileUtilities.opened, 0);
        EXPECT_THAT(prompts.shown,
                    ElementsAre(UnreadText(state.directory.listing, state.settings.dataPath)));
        for (const char* other : {"mnuFileUtil", "mnuOverlay", "mnuSetDescr"})
            EXPECT_FALSE(Enabled(other)) << other;
        window.reset();
    }
}

TEST_F(MainMenuItems, RecordHeadersRebuildTheDirectoryAndOpenTheirWindow) {
    AddRecord("T1.txt", "11/21/26");
    OpenWithChildren();
    AddRecord("T2.txt", "11/21/26");
    Press("mnuSetDescr");
    EXPECT_EQ(recordHeaders.opened, 1);
    EXPECT_FALSE(state.directory.recordsFromInstrument);
    EXPECT_EQ(state.directory.recordCount, 2);
    EXPECT_FALSE(FileEnabled());
    recordHeaders.close();
    EXPECT_TRUE(FileEnabled());
}

TEST_F(MainMenuItems, DownloadAndHeaderSetupOpenTheirWindows) {
    OpenWithChildren();
    state.listCaller = ListCaller::Recall;
    port.Always("d", "#001\r\n11/21/26\r\nDONE\r\n");
    Press("mnuDownload");
    EXPECT_EQ(memoryDirectory.opened, 1);
    EXPECT_EQ(state.listCaller, ListCaller::Download);
    memoryDirectory.close();
    Press("mnuSetHeaderFile");
    EXPECT_EQ(headerSetup.opened, 1);
    EXPECT_FALSE(FileEnabled());
    headerSetup.close();
    EXPECT_TRUE(FileEnabled());
}

TEST_F(MainMenuItems, AWindowThatFailsToOpenLeavesTheMenuEnabled) {
    OpenWithChildren();
    testList.fails = true;
    Press("mnuRecall");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Run-time error '53': File not found: child"_s));
    EXPECT_TRUE(FileEnabled());
    EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
}

TEST_F(MainMenuItems, RecordsAreListedWhereTheirListCannotBeWritten) {
    AddRecord("T1.txt", "11/21/26");
    OpenWithChildren();
    ASSERT_TRUE(QFile::remove(DataFolder() + QLatin1String(kDirectoryFileName)));
    ASSERT_TRUE(QDir().mkpath(DataFolder() + QLatin1String(kDirectoryFileName)));
    const std::vector<std::pair<const char*, Child*>> items = {{"mnuRecall", &testList},
                                                               {"mnuOverlay", &fileUtilities},
                                                               {"mnuFileUtil", &fileUtilities},
                                                               {"mnuSetDescr", &recordHeaders}};
    for (const auto& [item, child] : items) {
        const int before = child->opened;
        Press(item);
        EXPECT_EQ(child->opened, before + 1) << item;
        EXPECT_EQ(state.directory.recordCount, 1) << item;
        child->close();
    }
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"List not saved"_s);
}

TEST_F(MainMenuItems, AWindowThatIsNoPartOfThisVersionIsSaidSo) {
    AddRecord("T1.txt", "11/21/26");
    Open();
    const std::pair<const char*, const char*> items[] = {
        {"mnuRecall", "\"Recall Test\" is not part of this version of the program."},
        {"mnuDownload", "\"Download Test Record\" is not part of this version of the program."},
        {"mnuOverlay", "\"Overlay 2 Tests\" is not part of this version of the program."},
        {"mnuSetHeaderFile",
         "\"Setup Test Header Information\" is not part of this version of the program."},
        {"mnuSetDescr",
         "\"Test Record Header Information\" is not part of this version of the program."},
        {"mnuFileUtil", "\"File Utilities\" is not part of this version of the program."}};
    for (const auto& [item, text] : items) {
        window->statusBar()->clearMessage();
        Press(item);
        EXPECT_EQ(Said(), QLatin1String(text));
        EXPECT_TRUE(FileEnabled()) << item;
        EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible()) << item;
    }
    EXPECT_TRUE(prompts.shown.empty());
    Choose("mnuBoth");
    EXPECT_TRUE(Said().isEmpty()) << "a wait has the status line to itself";
}

TEST_F(MainMenuItems, RecordsThatCameWhileAWindowWasOpenEnableTheirItems) {
    OpenWithChildren();
    EXPECT_FALSE(Enabled("mnuFileUtil"));
    Press("mnuRecall");
    AddRecord("T1.txt", "11/21/26");
    testList.close();
    for (const char* item : {"mnuFileUtil", "mnuOverlay", "mnuSetDescr"})
        EXPECT_TRUE(Enabled(item)) << item;
    Press("mnuRecall");
    ASSERT_TRUE(QFile::remove(DataFolder() + u"T1.txt"_s));
    testList.close();
    EXPECT_FALSE(Enabled("mnuFileUtil"));
}

TEST_F(MainMenuItems, ButtonsStandForTheItemsThatHaveAWindow) {
    Open();
    EXPECT_EQ(window->findChild<QPushButton*>(u"cmdRecall"_s), nullptr);
    EXPECT_TRUE(Find<QPushButton>("cmdBoth")->isVisible());
    EXPECT_TRUE(Find<QPushButton>("cmdRatio")->isVisible());
    EXPECT_TRUE(Find<QPushButton>("cmdConfig")->isVisible());
    window.reset();
    OpenWithChildren();
    EXPECT_TRUE(Find<QPushButton>("cmdRecall")->isVisible());
    EXPECT_TRUE(Find<QPushButton>("cmdDownload")->isVisible());
}

TEST_F(MainMenuItems, ConfigureDoesNotOpenWhileATestUsesTheLine) {
    Open();
    OpenTestWindow("mnuBoth");
    Choose("mnuConfig");
    EXPECT_EQ(window->findChild<QWidget*>(u"frmConfig"_s), nullptr);
    EXPECT_EQ(port.sent.size(), 3U);
}

TEST_F(MainMenuItems, ConfigureShowsItsDialogAndTheStatusLineFollows) {
    Open();
    Press("mnuConfig");
    auto* config = Find<frmConfig>("frmConfig");
    EXPECT_TRUE(config->isVisible());
    config->findChild<QAbstractButton*>(u"optImpedance1"_s)->click();
    QTest::mouseClick(config->findChild<QPushButton*>(u"cmdSave"_s), Qt::LeftButton);
    EXPECT_TRUE(state.settings.showImpedance);
    EXPECT_EQ(state.settings.comPort, 1);
    ASSERT_TRUE(Until([this] { return window->findChild<QWidget*>(u"frmConfig"_s) == nullptr; }));
    EXPECT_EQ(Find<QLabel>("lblPort")->text(), u"COM1 ready"_s);
}

TEST_F(MainMenuItems, AboutShowsTheModel) {
    Open();
    Press("mnuAbout");
    auto* about = Find<frmAbout>("frmAbout");
    EXPECT_TRUE(about->isVisible());
    EXPECT_FALSE(about->isModal());
    EXPECT_TRUE(FileEnabled());
    EXPECT_EQ(Find<QLabel>("lblDavoVer")->text(), u"DAVO-E R3.10"_s);
    EXPECT_THAT(port.sent, ElementsAre("B", "W"));
    Press("mnuAbout");
    EXPECT_EQ(window->findChildren<QWidget*>(u"frmAbout"_s).size(), 1);
    about->close();
    ASSERT_TRUE(Until([this] { return window->findChildren<QWidget*>(u"frmAbout"_s).empty(); }));
    Press("mnuAbout");
    EXPECT_TRUE(Find<frmAbout>("frmAbout")->isVisible());
}

TEST_F(MainMenuItems, AboutOfASilentInstrument) {
    port.always.clear();
    Open();
    port.always.clear();
    Press("mnuAbout");
    EXPECT_THAT(prompts.shown, ElementsAre(QLatin1String(kNotAvailableMessage)));
    EXPECT_EQ(Find<QLabel>("lblDavoVer")->text(), u"DAVO N/A"_s);
    EXPECT_EQ(state.linkState.instrumentModel, "DAVO N/A");
}

TEST_F(MainMenuItems, AboutWithoutAPortShowsNothing) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    Press("mnuAbout");
    EXPECT_EQ(window->findChild<QWidget*>(u"frmAbout"_s), nullptr);
    EXPECT_TRUE(prompts.shown.empty());
}

}  // namespace
}  // namespace davo::test
