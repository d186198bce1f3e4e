// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/home_panel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include "common/places.h"
#include "tests/app/window_checks.h"

namespace davo::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A main window with the menus that the panel's items stand in.
class Home : public ::testing::Test {
  protected:
    Home() {
        file = window.menuBar()->addMenu(QStringLiteral("&File"));
        recall = AddItem(file, "mnuRecall", "&Recall Test");
        run = file->addMenu(QStringLiteral("R&un Test"));
        both = AddItem(run, "mnuBoth", "S&aturation && Ratio Tests");
        ratio = AddItem(run, "mnuRatio", "Ratio Test &Only");
        download = AddItem(file, "mnuDownload", "&Download Test Record");
        window.menuBar()->addAction(QStringLiteral("&About"));
        panel = new HomePanel({both, ratio, recall, download}, &window);
        window.setCentralWidget(panel);
        facts.link.comPort = 1;
        facts.link.portOpen = true;
        facts.link.deviceWords = QStringLiteral("FT232R USB UART, FTDI, /dev/ttyUSB0");
        facts.link.instrumentModel = "DAVO-E R3.10";
        facts.dataPath = QStringLiteral("/home/technician/Documents/DAVO/Shots_Data/");
        for (int i = 0; i < 12; ++i) {
            facts.records.push_back({"B" + std::to_string(20 - i), "11/21/26", "03",
                                     "NORTH               ", "C", "M", "O"});
        }
        panel->ShowFacts(facts);
    }

    void Open() {
        window.resize(911, 480);  // a laptop's screen at 150 %
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    QAction* AddItem(QMenu* menu, const char* name, const char* caption) {
        QAction* item = menu->addAction(QLatin1String(caption));
        item->setObjectName(QLatin1String(name));
        QObject::connect(item, &QAction::triggered, &window,
                         [this, name] { chosen.emplace_back(name); });
        return item;
    }
    template <class Control>
    Control* Find(const char* name) {
        return FindIn<Control>(*panel, name);
    }
    bool Enabled(const char* name) { return Find<QPushButton>(name)->isEnabled(); }

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
    EXPECT_EQ(Find<QPushButton>("cmdBoth")->text(), QStringLiteral("Saturation && Ratio Tests"));
    EXPECT_EQ(Find<QPushButton>("cmdRatio")->text(), QStringLiteral("Ratio Test Only"));
    EXPECT_EQ(Find<QPushButton>("cmdRecall")->text(), QStringLiteral("Recall Test"));
    EXPECT_EQ(Find<QPushButton>("cmdDownload")->text(), QStringLiteral("Download Test Record"));
    Open();
    EXPECT_THAT(MnemonicsOf(*panel), IsEmpty()) << "they would clash with the menu bar's";
}

TEST_F(Home, TheButtonsDoWhatTheItemsDo) {
    Open();
    for (const char* name : {"cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload"})
        QTest::mouseClick(Find<QPushButton>(name), Qt::LeftButton);
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
    EXPECT_EQ(Find<QLabel>("lblPort")->text(), QStringLiteral("COM1 open"));
    EXPECT_EQ(Find<QLabel>("lblDevice")->text(),
              QStringLiteral("FT232R USB UART, FTDI, /dev/ttyUSB0"));
    EXPECT_EQ(Find<QLabel>("lblModel")->text(), QStringLiteral("DAVO-E R3.10"));
    facts.link = {};
    facts.link.comPort = 2;
    panel->ShowFacts(facts);
    EXPECT_EQ(Find<QLabel>("lblPort")->text(), QStringLiteral("COM2 not open"));
    EXPECT_EQ(
        Find<QLabel>("lblDevice")->text(),
        QStringLiteral("No device is plugged in. Choose a port with File, Configure System."));
    EXPECT_EQ(Find<QLabel>("lblModel")->text(), QStringLiteral("Instrument not asked yet"));
    facts.link.comPort = kNoPortChosen;
    panel->ShowFacts(facts);
    EXPECT_EQ(Find<QLabel>("lblDevice")->text(),
              QStringLiteral("Choose a port with File, Configure System."));
}

TEST_F(Home, ShowsTheTenNewestRecords) {
    auto* list = Find<QTreeWidget>("lvNewest");
    QStringList captions;
    for (int i = 0; i < list->columnCount(); ++i)
        captions << list->headerItem()->text(i);
    EXPECT_EQ(captions, (QStringList{QStringLiteral("Filename"), QStringLiteral("Date"),
                                     QStringLiteral("Tests"), QStringLiteral("Station")}));
    ASSERT_EQ(list->topLevelItemCount(), 10);
    const QTreeWidgetItem* first = list->topLevelItem(0);
    EXPECT_EQ(first->text(0), QStringLiteral("B20"));
    EXPECT_EQ(first->text(1), QStringLiteral("11/21/26"));
    EXPECT_EQ(first->text(2), QStringLiteral("03"));
    EXPECT_EQ(first->text(3), QStringLiteral("NORTH"));
    EXPECT_EQ(list->topLevelItem(9)->text(0), QStringLiteral("B11"));
    facts.records.resize(1);
    panel->ShowFacts(facts);
    EXPECT_EQ(list->topLevelItemCount(), 1);
}

TEST_F(Home, WithoutRecordsSaysWhereTheyWillBe) {
    Open();
    EXPECT_FALSE(Find<QLabel>("lblNoRecords")->isVisible());
    facts.records.clear();
    panel->ShowFacts(facts);
    EXPECT_EQ(Find<QLabel>("lblNoRecords")->text(),
              QStringLiteral("No test records yet in ") +
                  ShownPath(QStringLiteral("/home/technician/Documents/DAVO/Shots_Data/")));
    EXPECT_TRUE(Find<QLabel>("lblNoRecords")->isVisible());
    EXPECT_FALSE(Find<QTreeWidget>("lvNewest")->isVisible());
}

TEST_F(Home, TabGoesThroughTheButtonsAndEnterPressesThem) {
    Open();
    EXPECT_THAT(TabOrderOf(*panel),
                ElementsAre("cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload", "lvNewest"));
    Find<QPushButton>("cmdBoth")->setFocus();
    QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(window.focusWidget()->objectName(), QStringLiteral("cmdRatio"));
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("mnuRatio"));
}

TEST_F(Home, NoTextIsCutOnASmallScreen) {
    Open();
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
    facts.link = {};
    facts.link.comPort = 1;
    facts.link.device = facts.link.deviceWords = QStringLiteral(
        "An Adapter With a Long Name, Its Maker, serial number 0123456789ABCDEF, "
        "/dev/ttyUSB0");
    facts.link.present = true;
    facts.records.clear();
    panel->ShowFacts(facts);
    QTest::qWait(20);
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
}

}  // namespace

}  // namespace davo::test
