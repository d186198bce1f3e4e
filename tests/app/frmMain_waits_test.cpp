// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window lets be done while it waits for the instrument, and when the wait ends.
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTimer>

#include "app/home_panel.h"
#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

class WaitingMainWindow : public MainWindow {
  protected:
    // An instrument that is asked for its model, and what is done while it has not answered.
    template <class Act>
    void OpenAndWait(const Act& act, const char* model = "DAVO-E R3.10\r\n") {
        Open();
        port.always.clear();
        port.Always("B", "RDY\r\n");
        port.OnOutputDo("W", [this, act, model] {
            QTimer::singleShot(20, window.get(), [this, act, model] {
                act();
                port.Deliver(model);
            });
        });
    }
    void OpenFileMenu() {
        QMenuBar* bar = window->menuBar();
        QTest::mouseClick(bar, Qt::LeftButton, {},
                          bar->actionGeometry(Find<QAction>("mnuFile")).center());
    }
    qsizetype Children() { return window->findChild<QMdiArea*>()->subWindowList().size(); }
};

TEST_F(WaitingMainWindow, AnOpenFileMenuClosesWhenAWindowOpensUnderIt) {
    bool open = false;
    OpenAndWait([&] {
        OpenFileMenu();
        open = Find<QMenu>("mnuFile")->isVisible();
    });
    Choose("mnuBoth");
    EXPECT_TRUE(open);
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_FALSE(Find<QMenu>("mnuFile")->isVisible());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(WaitingMainWindow, AnOpenMenuOfTheFileMenuClosesToo) {
    OpenAndWait([this] {
        OpenFileMenu();
        Find<QMenu>("mnuSetup")->popup(QPoint(50, 50));
    });
    Choose("mnuRatio");
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(WaitingMainWindow, AnItemOfADisabledMenuDoesNothing) {
    AddRecord("T1.txt", "11/21/26");
    Open();
    Choose("mnuBoth");
    ASSERT_NE(TestWindow(), nullptr);
    const auto sent = port.sent;
    const QString marker = state.settings.kneepointType;
    for (const QAction* item : Find<QMenu>("mnuFile")->findChildren<QAction*>()) {
        const_cast<QAction*>(item)->trigger();
        EXPECT_EQ(Children(), 1) << item->objectName().toStdString();
    }
    EXPECT_EQ(port.sent, sent);
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_EQ(state.settings.kneepointType, marker);
    EXPECT_TRUE(Checked("mnuKneepointASA10"));
    EXPECT_FALSE(Checked("mnuKneepoint30"));
    EXPECT_FALSE(Find<HomePanel>("homePanel")->isVisible());
}

TEST_F(WaitingMainWindow, ItemsThatDoNothingAreDisabledWhileItWaits) {
    AddRecord("T1.txt", "11/21/26");
    std::vector<std::string> enabled;
    std::vector<std::string> buttons;
    OpenAndWait([&] {
        for (const QAction* item : Find<QMenu>("mnuFile")->actions())
            if (!item->isSeparator() && item->isEnabled())
                enabled.push_back(item->objectName().toStdString());
        for (const char* name : {"cmdBoth", "cmdRatio", "cmdConfig"})
            if (Find<QPushButton>(name)->isEnabled()) buttons.emplace_back(name);
    });
    Choose("mnuBoth");
    EXPECT_THAT(enabled, ElementsAre("mnuSetup", "mnuExit"));
    EXPECT_THAT(buttons, IsEmpty());
    test::Pause(50);
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    for (const char* item : {"mnuRecall", "mnuBoth", "mnuFileUtil", "mnuConfig", "mnuAbout"})
        EXPECT_TRUE(Enabled(item)) << item;
}

TEST_F(WaitingMainWindow, WhatWasDisabledBeforeTheWaitStaysSo) {
    OpenAndWait([] {}, "OTHER\r\n");
    EXPECT_FALSE(Enabled("mnuFileUtil"));
    Choose("mnuBoth");
    EXPECT_FALSE(Enabled("mnuFileUtil"));
    EXPECT_TRUE(Enabled("mnuBoth"));
}

TEST_F(WaitingMainWindow, TheFocusIsWhereItWasBefore) {
    OpenAndWait([] {}, "OTHER\r\n");
    Find<QPushButton>("cmdRatio")->setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(port.sent.size(), 2U);
    EXPECT_EQ(window->focusWidget(), Find<QPushButton>("cmdRatio"));
}

TEST_F(WaitingMainWindow, ExitIsAskedAndSendsItsX) {
    prompts.answers = {Answer::Yes};
    OpenAndWait([this] { Choose("mnuExit"); });
    Choose("mnuBoth");
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(prompts.shown, ElementsAre(u"Do You Want to Exit?"_s));
    EXPECT_THAT(port.sent, ElementsAre("B", "W", "X"));
    EXPECT_FALSE(state.linkState.portOpen);
    EXPECT_THAT(store.written, SizeIs(5));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(WaitingMainWindow, ExitThatIsAnsweredNoLeavesTheWait) {
    prompts.answers = {Answer::No};
    OpenAndWait([this] { Choose("mnuExit"); });
    Choose("mnuBoth");
    EXPECT_NE(TestWindow(), nullptr);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WaitingMainWindow, TheLossOfThePortIsShownAtOnce) {
    devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R", "FTDI", "A5")};
    Open();
    Choose("mnuConfig");
    const auto row = [this] {
        const QTreeWidgetItem* item = Find<QTreeWidget>("lstPorts")->topLevelItem(0);
        return (item->text(0) + u'|' + item->text(4)).toStdString();
    };
    EXPECT_EQ(row(), "FT232R|COM1, in use");
    std::vector<std::string> shown;
    prompts.onMessage = [&](const QString&) {
        shown = {row(),
                 FindIn<QLabel>(*Find<QWidget>("homePanel"), "lblPort")->text().toStdString(),
                 Text("lblDevice")};
    };
    devices.present.clear();
    port.Unplug();
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    ASSERT_EQ(shown.size(), 3U);
    EXPECT_EQ(shown[0], "not among the ports plugged in|");
    EXPECT_EQ(shown[1], "COM1 not plugged in");
}

TEST_F(WaitingMainWindow, APortThatATestHasClosedIsNoFaultUntilItIsUnplugged) {
    devices.assigned[1] = u"/dev/ttyUSB0"_s;
    devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R", "FTDI", "A5")};
    Open();
    Choose("mnuBoth");
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    test::Pause(50);
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_FALSE(state.linkState.portOpen);
    EXPECT_EQ(Text("lblPort"), "COM1 opened when needed");
    devices.present.clear();
    EXPECT_TRUE(Until([this] { return Text("lblPort") == "COM1 not plugged in"; }));
    EXPECT_THAT(Text("lblDevice"), StartsWith("/dev/ttyUSB0 is not plugged in."));
}

TEST_F(WaitingMainWindow, TheStartPageComesBackWithTheLastWindowOnly) {
    std::vector<std::function<void()>> close;
    const auto child = [&](QMdiArea& area, std::function<void()> closed) {
        auto* page = area.addSubWindow(new QWidget);
        page->show();
        close.push_back([page, closed = std::move(closed)] {
            delete page;
            closed();
        });
    };
    ChildForms children;
    children.testList = child;
    children.recordHeaders = child;
    AddRecord("T1.txt", "11/21/26");
    Open("DAVO-E R3.10", children);
    Choose("mnuRecall");
    Find<QAction>("mnuFile")->setEnabled(true);
    Choose("mnuSetDescr");
    ASSERT_EQ(close.size(), 2U);
    close[0]();
    EXPECT_FALSE(Find<HomePanel>("homePanel")->isVisible());
    EXPECT_FALSE(Enabled("mnuFile"));
    close[1]();
    EXPECT_TRUE(Find<HomePanel>("homePanel")->isVisible());
    EXPECT_TRUE(Enabled("mnuFile"));
}

// What opened a window has the keyboard again when it closes: Enter opens the next one.
TEST_F(WaitingMainWindow, TheFocusGoesBackToTheButtonThatOpenedTheWindow) {
    std::function<void()> close;
    const auto child = [&](QMdiArea& area, std::function<void()> closed) {
        close = std::move(closed);
        auto* edit = new QLineEdit;
        area.addSubWindow(edit)->show();
        edit->setFocus();
    };
    ChildForms children;
    children.testList = children.headerSetup = children.fileUtilities = children.recordHeaders =
        child;
    AddRecord("T1.txt", "11/21/26");
    Open("DAVO-E R3.10", children);
    for (const char* name : {"cmdRecall", "cmdOverlay", "cmdSetHeaderFile", "cmdFileUtil"}) {
        Find<QPushButton>(name)->setFocus();
        QTest::keyClick(window->focusWidget(), Qt::Key_Return);
        ASSERT_TRUE(close) << name;
        std::exchange(close, nullptr)();
        EXPECT_EQ(window->focusWidget(), Find<QPushButton>(name)) << name;
    }
    Choose("mnuFileUtil");
    close();
    EXPECT_EQ(window->focusWidget(), Find<QPushButton>("cmdFileUtil")) << "by the menu, too";
    Choose("mnuSetDescr");
    close();
    EXPECT_EQ(window->focusWidget(), Find<QWidget>("lvNewest"))
        << "it has no button, and Enter must not start a test";
}

TEST_F(WaitingMainWindow, TheFocusGoesBackAfterATest) {
    Open();
    Find<QPushButton>("cmdRatio")->setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    ASSERT_NE(TestWindow(), nullptr);
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    test::Pause(50);
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_EQ(window->focusWidget(), Find<QPushButton>("cmdRatio"));
}

}  // namespace
}  // namespace davo::test
