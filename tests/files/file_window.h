// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "common/files.h"
#include "common/settings.h"
#include "records/directory_file.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// The twelve lines that every record file begins with, and what stands behind them.
inline std::string RecordFileText(const std::string& name, const std::string& rest = {}) {
    return "TEST NUMBER: " + name +
           "\r\nDATE: 03/07/24\r\nTIME: 14:05\r\n# OF SHOTS: 03\r\nCOMPANY: C\r\nSTATION: S\r\n"
           "CIRCUIT: 1\r\nMFR: M\r\nMODEL: 2\r\nSN: 3\r\nCOMMENTS: 4\r\nOPERATOR: 5\r\n" +
           rest;
}

// A window over a data folder of its own.
template <class Window>
class FileWindow : public ::testing::Test {
  protected:
    FileWindow() {
        settings.dataPath = folder.Path("Shots_Data/");
        settings.excelPath = folder.Path("Shots_Excel/");
        QDir().mkpath(settings.dataPath);
        QDir().mkpath(settings.excelPath);
    }
    QString DataFile(const QString& name) const {
        return settings.dataPath + name + QStringLiteral(".txt");
    }
    void AddRecord(const QString& name, const std::string& rest = {}) {
        ReplaceFile(DataFile(name), RecordFileText(name.toStdString(), rest));
    }
    void ShowWindow() {
        window->OnUnload = [this] { ++unloaded; };
        window->Form_Load();
        constexpr int kWidth = 1100;
        constexpr int kHeight = 640;
        window->resize(kWidth, kHeight);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    template <class Control>
    Control* Find(const char* name) {
        auto* control = window->template findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::logic_error(std::string("no control ") + name);
        return control;
    }
    void Click(const char* name) { QTest::mouseClick(Find<QPushButton>(name), Qt::LeftButton); }
    std::vector<std::string> Shown() const {
        std::vector<std::string> texts;
        for (const QString& text : prompts.shown)
            texts.push_back(text.toStdString());
        return texts;
    }
    static std::vector<std::string> NamesIn(const QString& path) {
        std::vector<std::string> names;
        for (const QString& name : QDir(path).entryList(QDir::Files | QDir::Hidden, QDir::Name))
            names.push_back(name.toStdString());
        return names;
    }
    bool Unloaded() {
        constexpr int kPatience = 5000;
        return QTest::qWaitFor([this] { return unloaded == 1; }, kPatience);
    }

    TemporaryFolder folder;
    Settings settings;
    DirectoryTables directory;
    FakePrompts prompts;
    std::unique_ptr<Window> window;
    int unloaded = 0;
};

}  // namespace davo::test
