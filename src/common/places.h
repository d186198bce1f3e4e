// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace davo {

// Where the system's fixed places are on this machine; every path ends with the platform's
// separator. A plain value: tests and demonstration runs make their own.
struct Places {
    QString scratchFolder;        // "C:\": capture file and scratch files
    QString applicationFolder;    // where "Shots_Data" and "Shots_Excel" are made on a first run
    QString configurationFolder;  // settings store where the platform has no registry
};

// The places of this user on this platform. The folders are not created.
//   scratch: C:\ on Windows where the user may write there, else the local application data folder
//   application: the executable's folder when the user may write there, else Documents/DAVO
Places PlatformPlaces();

// "davo-window.ini" of the configuration folder: what the windows keep for themselves, beside the
// settings, which are five values.
QString WindowFile(const Places& places);

// A folder rule such as "\Shots_Data\" in the platform's separator.
QString FolderText(const char* rule);

// How a path is shown to the user and typed by him: the platform's separators.
QString ShownPath(const QString& path);

}  // namespace davo
