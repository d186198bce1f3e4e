// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QString>
#include <string>
#include <vector>

namespace davo::test {

// Where the reading of a file is kept: beside it, under its name with "_" for each full stop, so
// that a record list does not take it for a record.
QString ReadingPath(const QString& file);

// The files of a release's folder and of the folders in it, sorted, without the readings.
std::vector<QString> FrozenFiles(const QString& release);

// What the program reads from file, as a text of lines. What the file is follows from its name; a
// directory file is read together with its folder. Texts are in quotes, each byte that is no plain
// ASCII as "\xE4". Throws what reading the file throws.
std::string Reading(const QString& file);

// The reading of the windows' settings.
std::string WindowsReading(const QRect& geometry, bool isMaximized, const QString& errorLimit);

// The sessions that the program finds in a copy of the scratch folder, each saved as a record file
// by the program's own dialogue, and the readings of these. The last line has what is left in the
// folder.
std::string RecoveredReading(const QString& scratchFolder);

// Its name in a scratch folder.
inline constexpr const char* kRecoveredName = "recovered.read";

}  // namespace davo::test
