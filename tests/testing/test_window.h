// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <thread>

#include "retrieval/frmHeader.h"
#include "testing/frmCControl.h"
#include "tests/support/controls.h"
#include "tests/support/pause.h"
#include "tests/testing/sequence_rig.h"
#include "ui/page_header.h"

namespace davo::test {

// A port on which a wait takes its time.
class RealTimePort : public FakeSerialPort {
  public:
    bool WaitForText(Time until) override {
        if (takesTime && waiting.empty()) std::this_thread::sleep_until(until);
        return FakeSerialPort::WaitForText(until);
    }
    bool takesTime = false;
};

// The test window in a main window's area, on a scripted instrument; its real buttons and keys are
// pressed.
class TestWindow : public ::testing::Test, public SessionParts<RealTimePort>, public Controls {
  protected:
    TestWindow() {
        settings.dataPath = folder.Path("Shots_Data/");
        ReplaceFile(folder.Path("seed"), "");
        EXPECT_TRUE(QDir().mkpath(settings.dataPath));
        port.Always("B", "RDY\r\n");
        modes.testBothMode = true;
        link.OpenComPort(1);
        port.properties.clear();
        main.setCentralWidget(area);
        main.menuBar()->addMenu(u"Menu"_s);
        main.resize(1366, 740);
    }

    QWidget& Window() override { return main; }
    void Open() {
        window = new frmCControl(
            {link, prompts, clock, places, modes, session, header, [this] { ++beeps; },
             [this] { return pluggedIn && link.OpenComPort(1); }},
            settings);
        window->OnUnload = [this] { ++unloads; };
        window->OnHeader = [this](const std::function<void()>& changed) {
            auto* form = new frmHeader(header, session.testNotes, prompts, window);
            form->OnChanged = changed;
            form->open();
        };
        window->Form_Load();
        main.show();
        ShowPage(*area, *window);
        main.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
        // Reset when loaded: "B" is answered and cmdStart has the focus.
        ASSERT_TRUE(Until([this] { return QApplication::focusWidget() == Button("cmdStart"); }));
    }
    QPushButton* Button(const char* name) { return Find<QPushButton>(name); }
    QLabel* Label(const char* name) { return Find<QLabel>(name); }
    void Key(Qt::Key key) {
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target != nullptr ? target : &main, key);
    }
    // What the instrument says arrives.
    void Say(const std::string& line) {
        port.Deliver(line + "\r\n");
        test::Pause(20);
    }
    void Unplug() {
        port.Unplug();
        ASSERT_TRUE(Until([this] { return !state.portOpen; }));
    }
    void StartToZero() {
        Click("cmdStart");
        Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    }
    void StartToRange() {
        StartToZero();
        Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    }
    void StartFullShot() {
        StartToRange();
        Click("cmdContinue");
        Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    }
    void EndShot(const std::string& digits = Digits()) {
        Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        Say("RATIO=241.2");
        Say("POLARITY=+");
        Say(RecordOf(digits));
    }
    void RunFullShot() {
        StartFullShot();
        EndShot();
    }
    void OpenAndStart() {
        Open();
        StartFullShot();
    }
    void OpenAndRun() {
        Open();
        RunFullShot();
    }
    bool Closed() {
        return Until([this] { return window.isNull(); });
    }
    QString Data(const char* name) const { return settings.dataPath + QLatin1String(name); }

    Settings settings;
    bool pluggedIn = true;
    int unloads = 0;
    QMainWindow main;
    QMdiArea* area = new QMdiArea;
    QPointer<frmCControl> window;
};

}  // namespace davo::test
