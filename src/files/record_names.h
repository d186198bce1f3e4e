// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

#include "common/prompts.h"

namespace davo {

// The most names that a selection of record files holds.
inline constexpr std::size_t kMostSelected = 251;

// The name of a record file as the operator is asked about it: without ".txt" at its end.
QString ShownName(const QString& file);

// Renames record files of dataPath one after the other, by asking for each. The new file is whole
// before the old one goes; its first line names it. A file that cannot be renamed is told, and the
// rest goes on.
void RenameRecords(const QString& dataPath, const std::vector<QString>& files, Prompts& prompts);

// Deletes record files of dataPath by asking for each: No keeps one, Cancel this and all that
// follow. A file that cannot be deleted is told, and the rest goes on.
void DeleteRecords(const QString& dataPath, const std::vector<QString>& files, Prompts& prompts);

}  // namespace davo
