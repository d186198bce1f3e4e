// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/home_panel.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include "app/session_cards.h"
#include "common/places.h"
#include "tests/support/controls.h"

namespace davo::test {
namespace {

// A main window with the menus that the panel's items stand in.
class Home : public ::testing::Test, public Controls {
  protected:
    Home() {
        file = window.menuBar()->addMenu(u"&File"_s);
        recall = AddItem(file, "mnuRecall", "&Recall Test");
        run = file->addMenu(u"R&un Test"_s);
        both = AddItem(run, "mnuBoth", "S&aturation && Ratio Tests");
        ratio = AddItem(run, "mnuRatio", "Ratio Test &Only");
        download = AddItem(file, "mnuDownload", "&Download Test Record");
        window.menuBar()->addAction(u"&About"_s);
        panel = new HomePanel({both, ratio, recall, download}, &window);
        window.setCentralWidget(panel);
        facts.link.comPort = 1;
        facts.link.portOpen = true;
        facts.link.deviceWords = u"FT232R USB UART, FTDI, /dev/ttyUSB0"_s;
        facts.link.instrumentModel = "DAVO-E R3.10";
        facts.dataPath = u"/home/technician/Documents/DAVO/Shots_Data/"_s;
        for (int i = 0; i < 12; ++i) {
            facts.records.push_back({"B" + std::to_string(20 - i), "11/21/26", "03",
                                     "NORTH               ", "C", "M", "O"});
        }
        panel->ShowFacts(facts);
    }

    void Open() {
        window.resize(911, 480);  // a laptop's screen at 150 %
        ASSERT_TRUE(ShowActive(window));
    }
    QAction* AddItem(QMenu* menu, const char* name, const char* caption) {
        QAction* item = menu->addAction(QLatin1String(caption));
        item->setObjectName(QLatin1String(name));
        QObject::connect(item, &QAction::triggered, &window,
                         [this, name] { chosen.emplace_back(name); });
        return item;
    }
    QWidget& Window() override { return *panel; }

    QMainWindow window;
    QMenu* file = nullptr;
    QMenu* run = nullptr;
    QAction* recall = nullptr;
    QAction* both = nullptr;
    QAction* ratio = nullptr;
    QAction* download = nullptr;
    HomePanel* panel = nullptr;
    HomeFacts facts;
    std::vector<std::string> chosen;
};

TEST_F(Home, TheButtonsBearTheItemsCaptionsWithoutMnemonics) {
    EXPECT_EQ(Text("cmdBoth"), "Saturation && Ratio Tests");
    EXPECT_EQ(Text("cmdRatio"), "Ratio Test Only");
    EXPECT_EQ(Text("cmdRecall"), "Recall Test");
    EXPECT_EQ(Text("cmdDownload"), "Download Test Record");
    Open();
    EXPECT_THAT(MnemonicsOf(*panel), IsEmpty()) << "they would clash with the menu bar's";
}

TEST_F(Home, TheButtonsDoWhatTheItemsDo) {
    Open();
    for (const char* name : {"cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload"})
        Click(name);
    EXPECT_THAT(chosen, ElementsAre("mnuBoth", "mnuRatio", "mnuRecall", "mnuDownload"));
}

TEST_F(Home, AButtonIsEnabledWhileItsItemIs) {
    recall->setEnabled(false);
    EXPECT_FALSE(Enabled("cmdRecall"));
    EXPECT_TRUE(Enabled("cmdDownload"));
    recall->setEnabled(true);
    EXPECT_TRUE(Enabled("cmdRecall"));
}

TEST_F(Home, AButtonIsEnabledWhileEveryMenuAboveItsItemIs) {
    run->menuAction()->setEnabled(false);
    EXPECT_FALSE(Enabled("cmdBoth"));
    EXPECT_FALSE(Enabled("cmdRatio"));
    EXPECT_TRUE(Enabled("cmdRecall"));
    run->menuAction()->setEnabled(true);
    EXPECT_TRUE(Enabled("cmdBoth"));
    file->menuAction()->setEnabled(false);
    for (const char* name : {"cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload"})
        EXPECT_FALSE(Enabled(name)) << name;
    Open();
    QTest::mouseClick(Find<QPushButton>("cmdBoth"), Qt::LeftButton);
    EXPECT_THAT(chosen, IsEmpty());
    file->menuAction()->setEnabled(true);
    EXPECT_TRUE(Enabled("cmdBoth"));
    EXPECT_TRUE(Enabled("cmdDownload"));
}

TEST_F(Home, AnItemThatIsDisabledFromTheStartHasADisabledButton) {
    ratio->setEnabled(false);
    HomePanel late({ratio}, nullptr);
    EXPECT_FALSE(FindIn<QPushButton>(late, "cmdRatio")->isEnabled());
}

TEST_F(Home, ShowsTheStateOfTheLink) {
    EXPECT_EQ(Text("lblPort"), "COM1 ready");
    EXPECT_EQ(Text("lblDevice"), "FT232R USB UART, FTDI, /dev/ttyUSB0");
    EXPECT_EQ(Text("lblModel"), "DAVO-E R3.10");
    facts.link = {};
    facts.link.comPort = 2;
    panel->ShowFacts(facts);
    EXPECT_EQ(Text("lblPort"), "COM2 not plugged in");
    EXPECT_EQ(Find<QLabel>("lblDevice")->text(),
              u"No device is plugged in. Choose a port with File, Configure System."_s);
    EXPECT_EQ(Text("lblModel"), "Instrument not asked yet");
    facts.link.comPort = kNoPortChosen;
    panel->ShowFacts(facts);
    EXPECT_EQ(Text("lblDevice"), "Choose a port with File, Configure System.");
}

TEST_F(Home, ShowsTheTenNewestRecords) {
    auto* list = Find<QTreeWidget>("lvNewest");
    QStringList captions;
    for (int i = 0; i < list->columnCount(); ++i)
        captions << list->headerItem()->text(i);
    EXPECT_EQ(captions, (QStringList{u"Filename"_s, u"Date"_s, u"Tests"_s, u"Station"_s}));
    ASSERT_EQ(list->topLevelItemCount(), 10);
    const QTreeWidgetItem* first = list->topLevelItem(0);
    EXPECT_EQ(first->text(0), u"B20"_s);
    EXPECT_EQ(first->text(1), u"11/21/26"_s);
    EXPECT_EQ(first->text(2), u"03"_s);
    EXPECT_EQ(first->text(3), u"NORTH"_s);
    EXPECT_EQ(list->topLevelItem(9)->text(0), u"B11"_s);
    facts.records.resize(1);
    panel->ShowFacts(facts);
    EXPECT_EQ(list->topLevelItemCount(), 1);
}

TEST_F(Home, WithoutRecordsSaysWhereTheyWillBe) {
    Open();
    EXPECT_FALSE(Find<QLabel>("lblNoRecords")->isVisible());
    facts.records.clear();
    panel->ShowFacts(facts);
    EXPECT_EQ(
        Find<QLabel>("lblNoRecords")->text(),
        u"No test records yet in "_s + ShownPath(u"/home/technician/Documents/DAVO/Shots_Data/"_s));
    EXPECT_TRUE(Find<QLabel>("lblNoRecords")->isVisible());
    EXPECT_FALSE(Find<QTreeWidget>("lvNewest")->isVisible());
}

// Only a folder that was read and is empty has no records yet.
TEST_F(Home, SaysWhyAFolderShowsNoRecords) {
    const auto said = [this] {
        panel->ShowFacts(facts);
        return Text("lblNoRecords");
    };
    facts.records.clear();
    const std::string path = ShownPath(facts.dataPath).toStdString();
    facts.listing.unread = u"Permission denied"_s;
    EXPECT_EQ(said(), "The folder " + path + " cannot be read: Permission denied.");
    facts.listing = {};
    facts.listing.skipped = {{u"a.txt"_s, SkipReason::TooFewLines}};
    EXPECT_EQ(said(), "No file in " + path + " can be listed as a test record.");
    facts.listing = {};
    EXPECT_EQ(said(), "No test records yet in " + path);
}

TEST_F(Home, TabGoesThroughTheButtonsAndEnterPressesThem) {
    Open();
    EXPECT_THAT(TabOrderOf(*panel),
                ElementsAre("cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload", "lvNewest"));
    Find<QPushButton>("cmdBoth")->setFocus();
    QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(window.focusWidget()->objectName(), u"cmdRatio"_s);
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("mnuRatio"));
}

TEST_F(Home, WithSessionsItIsNoHigherThanASmallScreen) {
    std::vector<UnsavedSession> sessions(5);
    for (UnsavedSession& session : sessions) {
        session.capturePath = u"TESTFILE-%1.txt"_s.arg(&session - sessions.data());
        session.journal.header.Field(1) = "WESTERN TRANSMISSION";
        session.journal.header.Field(5) = "01234567890123456789";
    }
    panel->Sessions().Show(sessions);
    Open();
    Click("cmdLater0");
    QTest::qWait(20);
    EXPECT_LE(window.minimumSizeHint().height(), 480);
    EXPECT_EQ(window.height(), 480);
    EXPECT_TRUE(Find<QWidget>("lvNewest")->isVisible());
}

TEST_F(Home, NoTextIsCutOnASmallScreen) {
    Open();
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
    facts.link = {};
    facts.link.comPort = 1;
    facts.link.device = facts.link.deviceWords =
        u"An Adapter With a Long Name, Its Maker, serial number 0123456789ABCDEF, "
        "/dev/ttyUSB0"_s;
    facts.link.present = true;
    facts.records.clear();
    panel->ShowFacts(facts);
    QTest::qWait(20);
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
}

}  // namespace
}  // namespace davo::test
