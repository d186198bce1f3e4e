// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "common/places.h"

namespace davo {

// Opens the document at path, a workbook or a page of HTML, with the program that this user's
// desktop has for its kind, and leaves it to the user. False when there is no such program or it
// does not start. May be called on any thread.
bool ShowDocument(const QString& path);

// ShowDocument of a finished workbook. When false: show NoProgramText. It has the system's own
// name; any program for workbooks will do.
inline bool ShowReportInExcel(const QString& path) {
    return ShowDocument(path);
}

// With the path as the user writes it.
inline QString NoProgramText(const QString& path) {
    return QStringLiteral(
               "The report is finished, but this computer has no program that shows it. "
               "It is stored as ") +
           ShownPath(path);
}

}  // namespace davo
