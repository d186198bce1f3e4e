// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/home_panel.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTextDocumentFragment>
#include <set>

#include "app/session_cards.h"
#include "common/files.h"
#include "common/places.h"
#include "common/settings.h"
#include "tests/support/controls.h"
#include "tests/support/pause.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "ui/contrast.h"

namespace davo::test {
namespace {

// A main window with the menus that the panel's items are in.
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
        overlay = AddItem(file, "mnuOverlay", "&Overlay 2 Tests");
        headers = AddItem(file, "mnuSetHeaderFile", "Setup Test &Header Information");
        fileUtil = AddItem(file, "mnuFileUtil", "File &Utilities");
        panel = new HomePanel(
            {both, ratio, recall, download},
            {{overlay, "Overlay"}, {headers, "Header"}, {fileUtil, "File Utilities"}}, &window);
        panel->OnView = [this](const QString& name) { viewed.push_back(name.toStdString()); };
        window.setCentralWidget(panel);
        facts.link.comPort = 1;
        facts.link.portOpen = true;
        facts.link.deviceWords = u"FT232R USB UART, FTDI, /dev/ttyUSB0"_s;
        facts.link.instrumentModel = "DAVO-E R3.10";
        facts.dataPath = u"/home/technician/Documents/DAVO/Shots_Data/"_s;
        for (int i = 0; i < 12; ++i) {
            facts.records.push_back({"B" + std::to_string(20 - i), "11/21/26", "03",
                                     "NORTH               ", "C", "M", "O"});
            facts.files.push_back(u"B%1.txt"_s.arg(20 - i));
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
    QAction* overlay = nullptr;
    QAction* headers = nullptr;
    QAction* fileUtil = nullptr;
    HomePanel* panel = nullptr;
    ShellFacts facts;
    std::vector<std::string> chosen;
    std::vector<std::string> viewed;
};

// With records on the disk, in a window that has room for the preview.
class HomeWithRecords : public Home {
  protected:
    HomeWithRecords() {
        facts.dataPath = folder.Path();
        facts.kneepointType = QLatin1String(kKneeIeee30);
        for (const QString& record : facts.files) {
            const QString name = record.chopped(4);
            ReplaceFile(folder.Path() + record,
                        HeaderText(name.toStdString(), "Station " + name.toStdString()) +
                            RecordText() + WithoutACurve());
        }
        panel->ShowFacts(facts);
    }
    void OpenLarge() {
        window.resize(1024, 600);
        ASSERT_TRUE(ShowActive(window));
    }
    static std::string WithoutACurve() {
        RecordParts parts;
        parts.number = " 2";
        parts.points.clear();
        parts.measuredRatio = "99.6";
        parts.polarity = "OUT OF PHASE";
        parts.percentError = "-0.40%";
        return RecordText(parts);
    }
    QTreeWidget* Newest() { return Find<QTreeWidget>("lvNewest"); }
    QString Shown() {
        return QTextDocumentFragment::fromHtml(Find<QLabel>("lblPreview")->text()).toPlainText();
    }

    TemporaryFolder folder;
};

TEST_F(Home, TheButtonsBearTheItemsCaptionsWithoutMnemonics) {
    EXPECT_EQ(Text("cmdBoth"), "Saturation && Ratio Tests");
    EXPECT_EQ(Text("cmdRatio"), "Ratio Test Only");
    EXPECT_EQ(Text("cmdRecall"), "Recall Test");
    EXPECT_EQ(Text("cmdDownload"), "Download Test Record");
    Open();
    for (const char* letter : {"Alt+F", "Alt+A"})  // the menu bar's
        EXPECT_THAT(MnemonicsOf(*panel), Not(Contains(letter)));
    EXPECT_TRUE(MnemonicsAreUnique(*panel));
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
    HomePanel late({ratio}, {}, nullptr);
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

// A shape and a colour of its own for each state, and no colour that cannot be seen.
TEST_F(Home, ADotShowsTheStateOfThePort) {
    const auto dot = [this] {
        panel->ShowFacts(facts);
        const auto* label = Find<QLabel>("lblDot");
        const QColor colour = label->palette().color(QPalette::WindowText);
        EXPECT_GE(Contrast(colour, window.palette().color(QPalette::Window)), 4.5);
        return std::pair(label->text(), colour.name());
    };
    const auto ready = dot();
    facts.link.portOpen = false;
    facts.link.present = true;
    const auto whenNeeded = dot();
    EXPECT_EQ(Text("lblPort"), "COM1 opened when needed");
    facts.link.present = false;
    const auto missing = dot();
    EXPECT_EQ(Text("lblPort"), "COM1 not plugged in");
    facts.link.comPort = kNoPortChosen;
    EXPECT_EQ(dot(), missing);
    EXPECT_THAT((std::set{ready.first, whenNeeded.first, missing.first}), SizeIs(3));
    EXPECT_THAT((std::set{ready.second, whenNeeded.second, missing.second}), SizeIs(3));
}

TEST_F(Home, ASecondRowHasSmallerButtonsAndTheGuide) {
    EXPECT_EQ(Text("cmdOverlay"), "Overlay");
    EXPECT_EQ(Text("cmdSetHeaderFile"), "Header");
    EXPECT_EQ(Text("cmdFileUtil"), "File Utilities");
    EXPECT_EQ(Text("cmdGuide"), "Guide (F1)");
    Open();
    const auto* large = Find<QPushButton>("cmdBoth");
    for (const char* name : {"cmdOverlay", "cmdSetHeaderFile", "cmdFileUtil"}) {
        Click(name);
        EXPECT_LT(Find<QPushButton>(name)->font().pointSizeF(), large->font().pointSizeF());
        EXPECT_GT(Find<QPushButton>(name)->y(), Find<QPushButton>("cmdDownload")->y());
    }
    EXPECT_THAT(chosen, ElementsAre("mnuOverlay", "mnuSetHeaderFile", "mnuFileUtil"));
    fileUtil->setEnabled(false);
    EXPECT_FALSE(Enabled("cmdFileUtil"));
}

TEST_F(Home, TheGuideButtonDoesWhatF1Does) {
    class Keys : public QObject {
      public:
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::KeyPress)
                pressed.push_back(static_cast<QKeyEvent*>(event)->key());
            return false;
        }
        std::vector<int> pressed;
    } keys;
    Open();
    Find<QPushButton>("cmdGuide")->installEventFilter(&keys);
    Click("cmdGuide");
    EXPECT_THAT(keys.pressed, ElementsAre(Qt::Key_F1));
}

TEST_F(Home, TheFocusGoesToTheButtonOfAnItem) {
    Open();
    panel->FocusButtonOf(recall);
    EXPECT_EQ(window.focusWidget(), Find<QPushButton>("cmdRecall"));
    panel->FocusButtonOf(fileUtil);
    EXPECT_EQ(window.focusWidget(), Find<QPushButton>("cmdFileUtil"));
    fileUtil->setEnabled(false);
    both->setEnabled(false);
    panel->FocusButtonOf(fileUtil);
    EXPECT_EQ(window.focusWidget(), Find<QPushButton>("cmdRatio")) << "one that Enter presses";
    panel->FocusButtonOf(nullptr);
    EXPECT_EQ(window.focusWidget(), Find<QPushButton>("cmdRatio"));
}

TEST_F(Home, EnterAndADoubleClickViewARecord) {
    Open();
    auto* list = Find<QTreeWidget>("lvNewest");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Enter);
    EXPECT_THAT(viewed, ElementsAre("B20.txt", "B19.txt"));
    const QPoint third = list->visualItemRect(list->topLevelItem(2)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, third);
    EXPECT_THAT(viewed, SizeIs(2));
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, third);
    EXPECT_THAT(viewed, ElementsAre("B20.txt", "B19.txt", "B18.txt"));
}

TEST_F(Home, WhatIsSelectedStaysSoWhileTheFactsAreShownAnew) {
    Open();
    auto* list = Find<QTreeWidget>("lvNewest");
    ClickItem(*list, list->topLevelItem(3));
    const auto selected = [list] { return list->selectedItems().value(0)->text(0).toStdString(); };
    EXPECT_EQ(selected(), "B17");
    panel->ShowFacts(facts);
    EXPECT_EQ(selected(), "B17");
    facts.records.insert(facts.records.begin(), {"B21", "11/21/26", "03", "NORTH", "C", "M", "O"});
    facts.files.insert(facts.files.begin(), u"B21.txt"_s);
    panel->ShowFacts(facts);
    EXPECT_EQ(selected(), "B17");
    facts.records.erase(facts.records.begin(), facts.records.begin() + 5);
    facts.files.erase(facts.files.begin(), facts.files.begin() + 5);
    panel->ShowFacts(facts);
    EXPECT_EQ(selected(), "B16") << "the newest one where it is gone";
}

TEST_F(HomeWithRecords, TheSelectedRecordIsPreviewedUnderTheList) {
    OpenLarge();
    const auto* preview = Find<QWidget>("preview");
    ASSERT_TRUE(preview->isVisible());
    EXPECT_GE(preview->mapTo(panel, QPoint()).y(),
              Newest()->mapTo(panel, QPoint(0, Newest()->height())).y());
    EXPECT_THAT(Shown().toStdString(),
                AllOf(StartsWith("B20\n"), HasSubstr("Station: Station B20"),
                      HasSubstr("Test 1: ratio 241.20, error 0.50%, IN PHASE, kneepoint "),
                      EndsWith("Test 2: ratio 99.6, error -0.40%, OUT OF PHASE")));
    ClickItem(*Newest(), Newest()->topLevelItem(1));
    EXPECT_THAT(Shown().toStdString(), StartsWith("B19\n"));
    Newest()->setFocus();
    QTest::keyClick(Newest(), Qt::Key_Down);
    EXPECT_THAT(Shown().toStdString(), StartsWith("B18\n"));
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
}

TEST_F(HomeWithRecords, ThePreviewHasTheKneepointsOfTheMarkerInUse) {
    OpenLarge();
    const QString first = Shown();
    facts.kneepointType = QLatin1String(kKneeAsa);
    panel->ShowFacts(facts);
    EXPECT_NE(Shown(), first);
}

TEST_F(HomeWithRecords, ARecordThatCannotBeReadIsSaidInThePreview) {
    ReplaceFile(folder.Path("B19.txt"), "nothing");
    OpenLarge();
    ClickItem(*Newest(), Newest()->topLevelItem(1));
    EXPECT_THAT(Shown().toStdString(), StartsWith("B19 cannot be shown: the file is damaged."));
}

TEST_F(HomeWithRecords, WithoutRoomOrRecordsThereIsNoPreview) {
    Open();
    EXPECT_FALSE(Find<QWidget>("preview")->isVisible());
    window.resize(1024, 600);
    EXPECT_TRUE(Until([this] { return Find<QWidget>("preview")->isVisible(); }));
    EXPECT_THAT(Shown().toStdString(), StartsWith("B20\n"));
    facts.records.clear();
    facts.files.clear();
    panel->ShowFacts(facts);
    EXPECT_FALSE(Find<QWidget>("preview")->isVisible());
}

// The rows of the list come first.
TEST_F(HomeWithRecords, SessionsTakeThePreviewsRoomOnASmallScreen) {
    OpenLarge();
    panel->Sessions().Show({UnsavedSession{}});
    panel->ShowFacts(facts);
    EXPECT_FALSE(Find<QWidget>("preview")->isVisible());
    panel->Sessions().Show({});
    panel->ShowFacts(facts);
    EXPECT_TRUE(Find<QWidget>("preview")->isVisible());
}

TEST_F(HomeWithRecords, ARecordThatWasWrittenAnewIsReadWhenThePageIsShownAgain) {
    OpenLarge();
    ReplaceFile(folder.Path("B20.txt"), HeaderText("B20", "Elsewhere") + RecordText());
    panel->hide();
    panel->show();
    EXPECT_THAT(Shown().toStdString(), HasSubstr("Elsewhere"));
}

TEST_F(HomeWithRecords, ACertificateIsOfferedOfARecordThatCanBeRead) {
    ReplaceFile(folder.Path("B19.txt"), "nothing");
    ReplaceFile(folder.Path("B18.txt"), HeaderText("B18"));
    std::vector<std::string> wanted;
    panel->OnCertificate = [&wanted](const QString& name) { wanted.push_back(name.toStdString()); };
    OpenLarge();
    for (const QSize size : {QSize(1024, 600), QSize(911, 480)}) {  // with a preview and without
        window.resize(size);
        wanted.clear();
        for (const auto& [row, offered] : {std::pair(0, true), {1, false}, {2, false}, {3, true}}) {
            Newest()->scrollToItem(Newest()->topLevelItem(row));
            ClickItem(*Newest(), Newest()->topLevelItem(row));
            EXPECT_EQ(Enabled("cmdCertificate"), offered) << row;
            QTest::mouseClick(Find<QPushButton>("cmdCertificate"), Qt::LeftButton);
        }
        EXPECT_THAT(wanted, ElementsAre("B20.txt", "B17.txt"));
    }
    panel->EnableWorking(false);
    EXPECT_FALSE(Enabled("cmdCertificate"));
    panel->EnableWorking(true);
    EXPECT_TRUE(Enabled("cmdCertificate"));
    facts.records.clear();
    facts.files.clear();
    panel->ShowFacts(facts);
    EXPECT_FALSE(Enabled("cmdCertificate"));
}

TEST_F(HomeWithRecords, TheCertificateIsAtHandByKey) {
    int wanted = 0;
    panel->OnCertificate = [&wanted](const QString&) { ++wanted; };
    OpenLarge();
    const std::vector<std::string> order = TabOrderOf(*panel);
    const auto list = std::ranges::find(order, "lvNewest");
    ASSERT_NE(list, order.begin());
    EXPECT_EQ(*(list - 1), "cmdCertificate");
    EXPECT_THAT(MnemonicsOf(*panel), ElementsAre("Alt+C"));
    QTest::keyClick(window.windowHandle(), Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(Until([&wanted] { return wanted == 1; }));
}

TEST_F(HomeWithRecords, WhatWasSavedIsSaidUntilAnotherRecordIsSelected) {
    OpenLarge();
    panel->ShowSavedSession(u"B18.txt"_s);
    EXPECT_THAT(Shown().toStdString(), StartsWith("B18\n"));
    EXPECT_EQ(Text("lblSaved"),
              "B18 is saved. With Certificate... you make a page of it for the customer.");
    EXPECT_TRUE(Find<QLabel>("lblSaved")->isVisible());
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
    panel->ShowFacts(facts);
    EXPECT_TRUE(Find<QLabel>("lblSaved")->isVisible());
    ClickItem(*Newest(), Newest()->topLevelItem(1));
    EXPECT_FALSE(Find<QLabel>("lblSaved")->isVisible());
    panel->ShowSavedSession(u"B18.txt"_s);
    panel->hide();
    panel->show();
    EXPECT_FALSE(Find<QLabel>("lblSaved")->isVisible()) << "another window was open";
    panel->ShowSavedSession(u"elsewhere.txt"_s);
    EXPECT_FALSE(Find<QLabel>("lblSaved")->isVisible()) << "it is not in the list";
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
                ElementsAre("cmdBoth", "cmdRatio", "cmdRecall", "cmdDownload", "lvNewest",
                            "cmdOverlay", "cmdSetHeaderFile", "cmdFileUtil", "cmdGuide"));
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
    test::Pause(20);
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
    test::Pause(20);
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
}

// The letters of a user who has set them larger, from before the window is made.
class LargeLetters {
  protected:
    LargeLetters() {
        QFont font = usual_;
        font.setPointSizeF(14);
        QApplication::setFont(font);
    }
    ~LargeLetters() { QApplication::setFont(usual_); }

  private:
    QFont usual_ = QApplication::font();
};

class HomeInLargeLetters : LargeLetters, public HomeWithRecords {};

TEST_F(HomeInLargeLetters, FitsTheSmallestScreen) {
    constexpr QSize kSmallest(1024, 560);  // 600 less the frame and the status bar
    window.resize(kSmallest);
    ASSERT_TRUE(ShowActive(window));
    EXPECT_EQ(window.size(), kSmallest) << "it needs no more room";
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
    panel->Sessions().Show({UnsavedSession{}, UnsavedSession{}});
    panel->ShowFacts(facts);
    test::Pause(20);
    EXPECT_EQ(window.size(), kSmallest);
    EXPECT_THAT(CutTextsOf(*panel), IsEmpty());
    EXPECT_TRUE(Find<QWidget>("lvNewest")->isVisible());
}

}  // namespace
}  // namespace davo::test
