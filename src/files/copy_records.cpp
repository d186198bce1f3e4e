#include "files/copy_records.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/files.h"
#include "common/places.h"

namespace davo {

namespace {

std::filesystem::path PathOf(const QString& path) {
    return {path.toStdU16String()};
}

// Writes content as the file path with that time; why it could not, in words.
QString WriteNew(const QString& path, const QByteArray& content, const QDateTime& time) {
    QFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                           file.write(content) == content.size() && file.flush();
    if (!isWritten) return file.errorString();
    // A disk that keeps no times keeps the content all the same.
    file.setFileTime(time, QFileDevice::FileModificationTime);
    return {};
}

QString CopyWhole(const QString& source, const QString& target) {
    QFile from(source);
    if (!from.open(QIODevice::ReadOnly)) return from.errorString();
    const QByteArray content = from.readAll();
    if (from.error() != QFileDevice::NoError) return from.errorString();
    const QString beside = target + QStringLiteral(".part");
    const QString reason =
        WriteNew(beside, content, from.fileTime(QFileDevice::FileModificationTime));
    std::error_code error;
    if (reason.isEmpty()) std::filesystem::rename(PathOf(beside), PathOf(target), error);
    if (reason.isEmpty() && !error) return {};
    QFile::remove(beside);
    return reason.isEmpty() ? QString::fromLocal8Bit(error.message().c_str()) : reason;
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
    const QString there = QFileInfo(one).canonicalFilePath();
    return !there.isEmpty() && there == QFileInfo(other).canonicalFilePath();
}

CopyOutcome CopyRecord(const QString& dataPath, const QString& target, const QString& name,
                       Prompts& prompts) {
    const QString file = name + QStringLiteral(".txt");
    if (FileExists(target + file)) {
        const QString question =
            QStringLiteral("The file ") + name +
            QStringLiteral("already  exists.  Do you want to replace the existing file? ");
        const Answer answer = prompts.YesNoCancel(question, Answer::No);
        if (answer == Answer::Cancel) return {CopyEnd::Cancelled, {}};
        if (answer != Answer::Yes) return {CopyEnd::Skipped, {}};
    }
    const QString reason = CopyWhole(dataPath + file, target + file);
    if (reason.isEmpty()) return {CopyEnd::Copied, {}};
    return {CopyEnd::Failed, reason};
}

QString CopyFailuresText(const std::vector<QString>& failures, std::size_t fileCount) {
    constexpr std::size_t kMostNamed = 15;
    if (failures.empty()) return {};
    QStringList lines(
        QStringLiteral("%1 of %2 files were not copied:").arg(failures.size()).arg(fileCount));
    for (std::size_t i = 0; i < std::min(failures.size(), kMostNamed); ++i)
        lines += failures[i];
    if (failures.size() > kMostNamed) {
        lines += QStringLiteral("and %1 more").arg(failures.size() - kMostNamed);
    }
    return lines.join(QStringLiteral("\r\n"));
}

}  // namespace davo
