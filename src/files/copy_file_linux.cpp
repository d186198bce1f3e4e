// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDateTime>
#include <QFile>
#include <filesystem>
#include <system_error>

#include "files/copy_file.h"

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

}  // namespace

QString CopyFileOver(const QString& source, const QString& target) {
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

}  // namespace davo
