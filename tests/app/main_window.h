// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "app/cursor_pointer.h"
#include "app/frmMain.h"
#include "common/files.h"
#include "common/places.h"
#include "tests/support/controls.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/fake_serial_port.h"
#include "tests/support/memory_settings_store.h"
#include "tests/support/pause.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

class FakeShortDate : public ShortDateFormat {
  public:
    std::optional<QString> Read() override { return format; }
    void Set(const QString& text) override {
        format = text;
        sets.push_back(text);
        if (onSet) onSet();
    }

    QString format = u"MM/dd/yyyy"_s;
    std::vector<QString> sets;
    std::function<void()> onSet;
};

// The main window on a scripted instrument and a store in memory.
class MainWindow : public ::testing::Test, public Controls {
  protected:
    MainWindow() { port.Always("B", "RDY\r\n"); }
    ~MainWindow() override { window.reset(); }

    QWidget& Window() override { return *window; }
    void Make(const ChildForms& windows = {}) {
        window = std::make_unique<frmMain>(
            state, ProgramServices{store, places, clock, prompts, link, devices, shortDate, [] {}},
            windows);
    }
    void Open(const char* model = "DAVO-E R3.10", const ChildForms& windows = {}) {
        port.Always("W", std::string(model) + "\r\n");
        Make(windows);
        window->Form_Load();
        ASSERT_TRUE(ShowActive(*window));
    }
    void Choose(const char* name) { Find<QAction>(name)->trigger(); }
    // Chooses with the mouse, through the menus.
    void Press(const char* name) {
        QAction* item = Find<QAction>(name);
        QMenu* menu = Find<QMenu>("mnuFile");
        QMenuBar* bar = window->menuBar();
        // Through the window, which tells Qt where the mouse is: a menu takes no press of one that
        // has not moved since it opened.
        const QPoint place = bar->actionGeometry(menu->menuAction()).center();
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                          bar->mapTo(window.get(), place));
        ASSERT_TRUE(menu->isVisible());
        for (QMenu* inner : menu->findChildren<QMenu*>()) {
            if (!inner->actions().contains(item)) continue;
            ClickItem(*menu, *inner->menuAction());
            ASSERT_TRUE(Until([inner] { return inner->isVisible(); }));
            menu = inner;
            break;
        }
        ClickItem(*menu, *item);
    }
    static void ClickItem(QMenu& menu, QAction& item) {
        QTest::mouseClick(menu.windowHandle(), Qt::LeftButton, {},
                          menu.actionGeometry(&item).center());
    }
    bool Enabled(const char* name) { return Find<QAction>(name)->isEnabled(); }
    bool Checked(const char* name) { return Find<QAction>(name)->isChecked(); }
    QWidget* TestWindow() { return window->findChild<QWidget*>(u"frmCControl"_s); }
    void Store(const char* key, const QString& text) { store.texts[QLatin1String(key)] = text; }
    void OpenTestWindow(const char* item) {
        Choose(item);
        ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));  // ready
        test::Pause(50);
    }
    // A test window whose shot is complete and not saved.
    void CompleteAShot() {
        OpenTestWindow("mnuRatio");
        Click("cmdStart");
        port.Deliver("DATA" + std::string(296, '0') + "\r\nDONE\r\n");
        ASSERT_TRUE(Until([this] { return Find<QPushButton>("cmdExit")->isEnabled(); }));
    }
    // The data folder of a first run, made here, with a record file.
    QString DataFolder() const { return ShownPath(places.applicationFolder + u"Shots_Data/"_s); }
    void AddRecord(const char* name, const char* date, const char* station = "NORTH") {
        ASSERT_TRUE(QDir().mkpath(DataFolder()));
        ReplaceFile(DataFolder() + QLatin1String(name), RecordFileText("T", {date, station, {}}));
    }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    MemorySettingsStore store;
    FakeSerialPort port;
    FakePortDevices devices;
    FakeShortDate shortDate;
    FakePrompts prompts;
    FakeClock clock{QDateTime(QDate(2026, 11, 21), QTime(14, 5, 9))};
    CursorPointer pointer;
    ProgramState state;
    Link link{port, state.linkState, prompts, pointer};
    std::unique_ptr<frmMain> window;
};

}  // namespace davo::test
