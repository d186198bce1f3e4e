// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

#include "common/prompts.h"

namespace davo {

enum class CopyEnd { Copied, Skipped, Cancelled, Failed };

struct CopyOutcome {
    CopyEnd end = CopyEnd::Copied;
    QString reason;  // of a failure, in words
};

// target as a folder path: without blanks around it, ended by the separator; empty stays empty.
QString CopyTarget(const QString& target);

// Whether both are the same folder, however they are spelt.
bool IsSameFolder(const QString& one, const QString& other);

// Copies a record file from dataPath to target (both end with the separator), content and time.
// Asks before a file there is replaced. The copy is written beside its place and renamed when it is
// whole: whatever happens, the target has the earlier file, the whole new one or none.
CopyOutcome CopyRecord(const QString& dataPath, const QString& target, const QString& file,
                       Prompts& prompts);

// What the operator is told when copying has ended.
struct CopyEndings {
    std::size_t files = 0;  // that were to be copied
    std::size_t copied = 0;
    std::vector<QString> failures;  // "name: reason" each

    void Count(const QString& file, const CopyOutcome& outcome);
    // removable: it says that the target can be taken out, when all that was copied is on it.
    QString Text(const QString& target, bool removable = false) const;
};

}  // namespace davo
