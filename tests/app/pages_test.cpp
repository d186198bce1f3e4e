// SPDX-License-Identifier: GPL-3.0-or-later
// The windows of the menu items as pages of the main window.

#include <QMdiArea>
#include <QMdiSubWindow>
#include <algorithm>

#include "app/home_panel.h"
#include "app/open_forms.h"
#include "files/frmCopyFile.h"
#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

constexpr std::array kPageItems = {"mnuRecall", "mnuOverlay", "mnuSetDescr", "mnuFileUtil",
                                   "mnuBoth"};

class Pages : public MainWindow {
  protected:
    void SetUp() override {
        AddRecord("T1.txt", "11/21/26");
        AddRecord("T2.txt", "11/22/26");
        port.Always("W", "DAVO-E R3.10\r\n");
        Make(OpenForms(state, {store, places, clock, prompts, link, devices, shortDate, [] {}}));
        window->Form_Load();
        window->resize(1366, 700);
        ASSERT_TRUE(ShowActive(*window));
    }
    QMdiSubWindow* Frame() { return window->findChild<QMdiArea*>()->activeSubWindow(); }
    // The page that item opens.
    QWidget& Open(const char* item) {
        Choose(item);
        if (!Until([this] { return Frame() != nullptr && Frame()->isVisible(); }))
            throw std::logic_error(std::string("nothing is opened by ") + item);
        test::Pause(50);
        return *Frame()->widget();
    }
    QRect PlaceOf(const QWidget& control) {
        return {control.mapTo(window.get(), QPoint()), control.size()};
    }
    bool NonePages() {
        return Until([this] { return window->findChild<QMdiArea*>()->subWindowList().empty(); });
    }
    void Leave() {
        ClickIn(*Frame()->widget(), "cmdExit");
        ASSERT_TRUE(NonePages());
    }
    // Both records are chosen to be copied.
    QPointer<frmCopyFile> OpenCopyBox() {
        QWidget& page = Open("mnuFileUtil");
        QTest::keyClick(FindIn<QTreeWidget>(page, "lvTest"), Qt::Key_A, Qt::ControlModifier);
        ClickIn(page, "cmdOp1");
        EXPECT_TRUE(NonePages());
        EXPECT_TRUE(
            Until([this] { return window->findChild<QWidget*>(u"frmCopyFile"_s) != nullptr; }));
        return Find<frmCopyFile>("frmCopyFile");
    }
};

TEST_F(Pages, HaveTheirWayOutAtTheSamePlaceAtTheEndOfTheirStrip) {
    QRect wayOut;
    for (const char* item : kPageItems) {
        SCOPED_TRACE(item);
        QWidget& page = Open(item);
        auto* strip = FindIn<QWidget>(page, "pageHeader");
        EXPECT_EQ(PlaceOf(*strip).topLeft(), PlaceOf(page).topLeft());
        EXPECT_EQ(strip->width(), page.width());
        EXPECT_EQ(FindIn<QLabel>(*strip, "lblPage")->text(), page.windowTitle());
        const QRect place = PlaceOf(*FindIn<QPushButton>(*strip, "cmdExit"));
        if (wayOut.isNull()) wayOut = place;
        EXPECT_EQ(place, wayOut);
        for (const QPushButton* button : strip->findChildren<QPushButton*>()) {
            if (button->objectName() == u"cmdExit"_s || !button->isVisible()) continue;
            EXPECT_LT(PlaceOf(*button).right(), place.left());
            EXPECT_EQ(PlaceOf(*button).top(), place.top());
        }
        EXPECT_THAT(CutTextsOf(page), IsEmpty());
        Leave();
    }
}

TEST_F(Pages, HaveTheMainButtonBesideTheWayOut) {
    const std::pair<const char*, const char*> mains[] = {{"mnuRecall", "cmdSave"},
                                                         {"mnuOverlay", "cmdOp2"},
                                                         {"mnuSetDescr", "cmdSave"},
                                                         {"mnuFileUtil", "cmdOp1"},
                                                         {"mnuBoth", "cmdStart"}};
    for (const auto& [item, name] : mains) {
        QWidget& page = Open(item);
        const QRect main = PlaceOf(*FindIn<QPushButton>(page, name));
        EXPECT_LT(PlaceOf(*FindIn<QPushButton>(page, "cmdExit")).left() - main.right(), 20) << item;
        Leave();
    }
}

TEST_F(Pages, FillTheFrameAndCannotBeMadeSmaller) {
    for (const char* item : kPageItems) {
        SCOPED_TRACE(item);
        const QWidget& page = Open(item);
        const auto* area = window->findChild<QMdiArea*>();
        EXPECT_EQ(PlaceOf(page), PlaceOf(*area->viewport()));
        EXPECT_EQ(window->menuBar()->cornerWidget(Qt::TopRightCorner), nullptr);
        EXPECT_EQ(window->menuBar()->cornerWidget(Qt::TopLeftCorner), nullptr);
        EXPECT_EQ(Frame()->systemMenu(), nullptr);
        QTest::keyClick(Frame(), Qt::Key_Minus, Qt::AltModifier);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        window->resize(1300, 690);
        test::Pause(20);
        EXPECT_EQ(PlaceOf(page), PlaceOf(*area->viewport()));
        EXPECT_EQ(window->windowTitle(), u"DAVO PC-Interface V.3.15"_s);
        Leave();
    }
}

TEST_F(Pages, BeginWhereWorkBeginsAndAtNoButton) {
    for (const char* item : {"mnuRecall", "mnuOverlay", "mnuSetDescr", "mnuFileUtil"}) {
        const QWidget& page = Open(item);
        EXPECT_EQ(QApplication::focusWidget(), FindIn<QTreeWidget>(page, "lvTest")) << item;
        Leave();
    }
    // While the readiness check is under way.
    QWidget* atFirst = nullptr;
    port.OnOutput("B", "RDY\r\n");
    port.OnOutputDo("B", [&] {
        atFirst = QApplication::focusWidget();
        port.Deliver("RDY\r\n");
    });
    const QWidget& page = Open("mnuBoth");
    EXPECT_EQ(atFirst, &page);
    EXPECT_TRUE(
        Until([&] { return QApplication::focusWidget() == FindIn<QWidget>(page, "cmdStart"); }));
}

// Letters as large as users choose them, on the smallest screen.
class PagesInLargeLetters : public Pages {
  protected:
    PagesInLargeLetters() {
        QFont large = usual_;
        constexpr double kLarge = 14;
        large.setPointSizeF(kLarge);
        QApplication::setFont(large);
    }
    ~PagesInLargeLetters() override { QApplication::setFont(usual_); }

  private:
    QFont usual_ = QApplication::font();
};

TEST_F(PagesInLargeLetters, OfRecordsCutNothingOnASmallScreen) {
    const QSize screen(1024, 600);
    for (const char* item : {"mnuRecall", "mnuOverlay", "mnuSetDescr", "mnuFileUtil"}) {
        window->resize(screen);
        QWidget& page = Open(item);
        QTest::keyClick(FindIn<QTreeWidget>(page, "lvTest"), Qt::Key_Down);
        test::Pause(150);
        EXPECT_LE(window->width(), screen.width()) << item;
        EXPECT_LE(window->height(), screen.height()) << item;
        EXPECT_THAT(CutTextsOf(page), IsEmpty()) << item;
        Leave();
    }
}

TEST_F(Pages, AreClosedByTheKeysThatCloseAWindow) {
    for (const char* item : kPageItems) {
        Open(item);
        QTest::keyClick(window->focusWidget(), Qt::Key_F4, Qt::ControlModifier);
        EXPECT_TRUE(NonePages()) << item;
        EXPECT_TRUE(Enabled("mnuFile")) << item;
    }
}

TEST_F(Pages, OfARunningTestAreNotClosedByThem) {
    OpenTestWindow("mnuRatio");
    Click("cmdStart");
    QTest::keyClick(TestWindow(), Qt::Key_F4, Qt::ControlModifier);
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_EQ(prompts.shown.back(),
              u"A test is running. Cancel it before you leave, or hit the ESC key."_s);
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_TRUE(Frame()->isMaximized());
    EXPECT_TRUE(Find<QPushButton>("cmdCancel")->isEnabled());
}

TEST_F(Pages, HaveMnemonicsThatNothingElseInSightHas) {
    for (const char* item : kPageItems) {
        for (const QSize size : {QSize(1366, 700), QSize(911, 560)}) {
            window->resize(size);
            QWidget& page = Open(item);
            if (auto* list = page.findChild<QTreeWidget*>(u"lvTest"_s))
                QTest::keyClick(list, Qt::Key_Down);
            test::Pause(150);
            EXPECT_FALSE(Enabled("mnuFile")) << "its mnemonic would count";
            EXPECT_TRUE(MnemonicsAreUnique(*window))
                << item << ::testing::PrintToString(MnemonicsOf(*window));
            Leave();
        }
    }
}

TEST_F(Pages, ThatLoseNothingAreLeftByEscape) {
    for (const char* item : {"mnuRecall", "mnuOverlay", "mnuSetDescr", "mnuFileUtil"}) {
        QWidget& page = Open(item);
        QTest::keyClick(FindIn<QTreeWidget>(page, "lvTest"), Qt::Key_Down);
        test::Pause(20);
        QTest::keyClick(window->focusWidget(), Qt::Key_Escape);
        EXPECT_TRUE(NonePages()) << item;
        EXPECT_TRUE(Enabled("mnuFile")) << item;
    }
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(Pages, TheStartPageIsReadAgainByF5) {
    const auto* newest = Find<QTreeWidget>("lvNewest");
    ASSERT_EQ(newest->topLevelItemCount(), 2);
    AddRecord("T3.txt", "11/23/26");
    QTest::keyClick(window->focusWidget(), Qt::Key_F5);
    EXPECT_EQ(newest->topLevelItemCount(), 3);
}

TEST_F(Pages, CopyingIsABoxOfItsOwnSizeOverTheStartPage) {
    // The start page has had the focus where it can be given back.
    Open("mnuRecall");
    Leave();
    const QPointer<frmCopyFile> box = OpenCopyBox();
    ASSERT_TRUE(QTest::qWaitForWindowActive(box));
    test::Pause(50);
    EXPECT_TRUE(box->isAncestorOf(QApplication::focusWidget()));
    EXPECT_TRUE(box->isWindow());
    EXPECT_TRUE(box->isModal());
    EXPECT_LT(box->height(), window->height() / 2);
    EXPECT_LE(box->width(), 700);
    EXPECT_LE(
        (box->frameGeometry().center() - box->screen()->geometry().center()).manhattanLength(), 2);
    EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
    EXPECT_FALSE(Enabled("mnuFile"));
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_TRUE(Until([&] { return box.isNull(); }));
    EXPECT_TRUE(Enabled("mnuFile"));
}

TEST_F(Pages, TheHeaderWindowsHaveTheStartPageBehindThem) {
    Choose("mnuSetHeaderFile");
    ASSERT_TRUE(Find<QWidget>("frmHeaderOptn")->isVisible());
    EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
}

TEST_F(Pages, ACopyEndsWithTheProgram) {
    const QPointer<frmCopyFile> box = OpenCopyBox();
    const QString target = folder.Path("stick/");
    QDir().mkpath(target);
    for (const QString& name : {u"T1.txt"_s, u"T2.txt"_s})
        ReplaceFile(target + name, "there");
    bool asked = false;
    prompts.answers = {Answer::No};
    prompts.onQuestion = [&](const QString&) {
        asked = true;
        window->Leave();
        box->close();  // as the end of the application does with the window in front
    };
    FindIn<QLineEdit>(*box, "txtPath")->setText(target);
    ClickIn(*box, "cmdOK");
    EXPECT_TRUE(asked);
    EXPECT_TRUE(Until([&] { return box.isNull(); }));
    EXPECT_TRUE(Until([this] { return !window->isVisible(); }));
    for (const QString& name : {u"T1.txt"_s, u"T2.txt"_s})
        EXPECT_EQ(ReadWholeFile(target + name), "there");
}

}  // namespace
}  // namespace davo::test
