// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace davo::test {

// The words of a script line: separated by blanks, a word in double quotes may hold blanks, and
// inside quotes \n, \" and \\ mean a line end, a quote and a backslash. A line that is empty
// or starts with '#' has no words.
QStringList ScriptWords(const QString& line);

}  // namespace davo::test
