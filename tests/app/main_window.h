// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/cursor_pointer.h"
#include "app/frmMain.h"
#include "common/files.h"
#include "common/places.h"
#include "tests/app/fake_port_devices.h"
#include "tests/link/fake_serial_port.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/memory_settings_store.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

inline constexpr int kPatience = 3000;  // ms until a condition must have come true

class FakeShortDate : public ShortDateFormat {
  public:
    std::optional<QString> Read() override { return format; }
    void Set(const QString& text) override {
        format = text;
        sets.push_back(text);
        if (onSet) onSet();
    }

    QString format = QStringLiteral("MM/dd/yyyy");
    std::vector<QString> sets;
    std::function<void()> onSet;
};

// A record file of so many lines as the directory needs.
inline std::string RecordText(const char* date, const char* station = "NORTH") {
    return std::string("TEST NUMBER: T\r\nDATE: ") + date +
           "\r\nTIME: 10:15\r\n# OF SHOTS: 03\r\nCOMPANY: C\r\nSTATION: " + station +
           "\r\nCIRCUIT: 1\r\nMFR: M\r\nMODEL: 2\r\nSN: 3\r\nCOMMENTS: 4\r\nOPERATOR: 5\r\n";
}

// The main window on a scripted instrument and a store in memory.
class MainWindow : public ::testing::Test {
  protected:
    MainWindow() { port.Always("B", "RDY\r\n"); }
    ~MainWindow() override { window.reset(); }

    void Make(const ChildForms& windows = {}) {
        window = std::make_unique<frmMain>(
            state, ProgramServices{store, places, clock, prompts, link, devices, shortDate, [] {}},
            windows);
    }
    void Open(const char* model = "DAVO-E R3.10", const ChildForms& windows = {}) {
        port.Always("W", std::string(model) + "\r\n");
        Make(windows);
        window->Form_Load();
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    template <class Item>
    Item* Find(const char* name) {
        auto* item = window->findChild<Item*>(QLatin1String(name));
        if (item == nullptr) throw std::logic_error(std::string("no item ") + name);
        return item;
    }
    void Choose(const char* name) { Find<QAction>(name)->trigger(); }
    // Chooses with the mouse, through the menus.
    void Press(const char* name) {
        QAction* item = Find<QAction>(name);
        QMenu* menu = Find<QMenu>("mnuFile");
        QMenuBar* bar = window->menuBar();
        QTest::mouseClick(bar, Qt::LeftButton, {},
                          bar->actionGeometry(menu->menuAction()).center());
        ASSERT_TRUE(menu->isVisible());
        for (QMenu* inner : menu->findChildren<QMenu*>()) {
            if (!inner->actions().contains(item)) continue;
            QTest::mouseClick(menu, Qt::LeftButton, {},
                              menu->actionGeometry(inner->menuAction()).center());
            ASSERT_TRUE(Until([inner] { return inner->isVisible(); }));
            menu = inner;
            break;
        }
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(item).center());
    }
    bool Enabled(const char* name) { return Find<QAction>(name)->isEnabled(); }
    bool Checked(const char* name) { return Find<QAction>(name)->isChecked(); }
    QWidget* TestWindow() { return window->findChild<QWidget*>(QStringLiteral("frmCControl")); }
    bool Until(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }
    void Store(const char* key, const QString& text) { store.texts[QLatin1String(key)] = text; }
    // The data folder of a first run, made here, with a record file.
    QString DataFolder() const {
        return ShownPath(places.applicationFolder + QStringLiteral("Shots_Data/"));
    }
    void AddRecord(const char* name, const char* date, const char* station = "NORTH") {
        ASSERT_TRUE(QDir().mkpath(DataFolder()));
        ReplaceFile(DataFolder() + QLatin1String(name), RecordText(date, station));
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
