// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "app/date_guard.h"
#include "common/files.h"
#include "common/settings.h"
#include "link/link.h"
#include "link/port_devices.h"
#include "records/directory_file.h"
#include "records/header_table.h"
#include "reports/report_runner.h"
#include "testing/shot_sequence.h"

namespace davo {

// Which menu item opened the test list or the file windows.
enum class ListCaller : std::uint8_t { Download = 0, Recall = 1, FileUtilities = 2, Overlay = 3 };

// The process-wide state: one value per owner, for the whole run. The program makes it and hands
// its parts down by reference.
struct ProgramState {
    Settings settings;
    LinkState linkState;
    HeaderTable header;
    DirectoryTables directory;
    ListCaller listCaller = ListCaller::Download;
    TestModes modes;
    SessionState session;
    std::string dirReply;  // what the instrument sent as its memory directory
};

// What the windows need from around them; all outlive them.
struct ProgramServices {
    SettingsStore& store;
    const Places& places;
    const Clock& clock;
    Prompts& prompts;
    Link& link;
    PortDevices& devices;
    ShortDateFormat& shortDate;
    std::function<void()> beep;
    ReportRunner* reports = nullptr;  // without it nobody is asked for a report
    std::function<bool(const QString& path)> folderExists = FolderExists;
};

}  // namespace davo
