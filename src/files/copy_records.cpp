// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/copy_records.h"

#include <QDir>
#include <QStringList>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/files.h"
#include "common/places.h"
#include "files/record_names.h"

namespace davo {

namespace {

// Without a separator at its end, which not every platform takes here.
std::filesystem::path PathOf(const QString& folder) {
    return {QDir::cleanPath(folder).toStdU16String()};
}

}  // namespace

QString CopyTarget(const QString& target) {
    const QString separator = FolderText("\\");
    QString folder = target.trimmed();
    if (!folder.isEmpty() && !folder.endsWith(separator)) folder += separator;
    return folder;
}

bool IsSameFolder(const QString& one, const QString& other) {
    if (one == other) return true;
    std::error_code error;
    return std::filesystem::equivalent(PathOf(one), PathOf(other), error);
}

CopyOutcome CopyRecord(const QString& dataPath, const QString& target, const QString& file,
                       Prompts& prompts) {
    if (FileExists(target + file)) {
        const QString question =
            QStringLiteral("The file ") + ShownName(file) +
            QStringLiteral("already  exists.  Do you want to replace the existing file? ");
        const Answer answer = prompts.YesNoCancel(question, Answer::No);
        if (answer == Answer::Cancel) return {CopyEnd::Cancelled, {}};
        if (answer != Answer::Yes) return {CopyEnd::Skipped, {}};
    }
    const QString reason = CopyFileOver(dataPath + file, target + file);
    if (reason.isEmpty()) return {CopyEnd::Copied, {}};
    return {CopyEnd::Failed, reason};
}

void CopyEndings::Count(const QString& file, const CopyOutcome& outcome) {
    if (outcome.end == CopyEnd::Copied) ++copied;
    if (outcome.end == CopyEnd::Failed)
        failures.push_back(ShownName(file) + QStringLiteral(": ") + outcome.reason);
}

QString CopyEndings::Text(const QString& target, bool removable) const {
    constexpr std::size_t kMostNamed = 15;
    QStringList lines(
        QStringLiteral("%1 of %2 copied to %3").arg(copied).arg(files).arg(ShownPath(target)));
    // A copy counts once it is flushed and renamed.
    if (removable && copied == files)
        lines += QStringLiteral("All of it is on the disk: it is safe to remove.");
    if (!failures.empty())
        lines += QStringLiteral("%1 of %2 files were not copied:").arg(failures.size()).arg(files);
    for (std::size_t i = 0; i < std::min(failures.size(), kMostNamed); ++i)
        lines += failures[i];
    if (failures.size() > kMostNamed) {
        lines += QStringLiteral("and %1 more").arg(failures.size() - kMostNamed);
    }
    return lines.join(QStringLiteral("\r\n"));
}

}  // namespace davo
