// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/files.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>
#include <system_error>

#include "common/file_system.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

// 76 when the folder that would hold path is missing, else 53.
ErrorNumber MissingNumber(const QString& path) {
    return FolderExists(QFileInfo(path).path()) ? ErrorNumber::FileNotFound
                                                : ErrorNumber::PathNotFound;
}

ErrorNumber NumberOf(const std::error_code& error, const QString& path) {
    const auto said = MeaningOf(error);
    for (const auto missing : {std::errc::no_such_file_or_directory, std::errc::not_a_directory}) {
        if (said == missing) return MissingNumber(path);
    }
    for (const auto denied :
         {std::errc::permission_denied, std::errc::operation_not_permitted,
          std::errc::read_only_file_system, std::errc::is_a_directory, std::errc::text_file_busy,
          std::errc::device_or_resource_busy, std::errc::file_exists}) {
        if (said == denied) return ErrorNumber::PermissionDenied;
    }
    for (const auto full : {std::errc::no_space_on_device, std::errc::file_too_large}) {
        if (said == full) return ErrorNumber::DiskFull;
    }
    if (said == std::errc::filename_too_long) return ErrorNumber::BadFileNameOrNumber;
    return ErrorNumber::DeviceInputOutput;
}

[[noreturn]] void Throw(ErrorNumber number, const QString& path) {
    throw RunTimeError(number, ShownPath(path).toStdString());
}

void ThrowIf(const std::error_code& error, const QString& path) {
    if (error) Throw(NumberOf(error, path), path);
}

// The name under which the new content of path is written before it takes the place of the old.
// It is the same each time, so that one left over from a kill is removed by the next, and holds no
// ".txt", so that a listing of the records never shows it.
QString NameWhileWriting(const QString& path) {
    const QFileInfo info(path);
    return info.path() + QStringLiteral("/~") +
           info.fileName().replace(QLatin1Char('.'), QLatin1Char('_')) + QStringLiteral(".new");
}

// Has write make the new content of path beside it and puts that in the place of the old.
template <class Write>
std::error_code Replace(const QString& path, const Write& write) {
    const QString beside = NameWhileWriting(path);
    std::error_code error = write(beside);
    if (MeaningOf(error) == std::errc::file_exists) {
        error = RemoveLeftOver(beside);
        if (!error) error = write(beside);
    }
    if (!error) error = MoveOver(beside, path);
    if (error) RemoveLeftOver(beside);
    return error;
}

}  // namespace

bool FileExists(const QString& path) {
    return QFileInfo(path).isFile();
}

bool FolderExists(const QString& path) {
    return QFileInfo(path).isDir();
}

void CreateFolder(const QString& path) {
    const QString folder = QDir::cleanPath(path);
    if (FileExists(folder)) Throw(ErrorNumber::PermissionDenied, path);
    ThrowIf(MakeFolders(folder), path);
}

std::vector<QString> NamesInFolder(const QString& path) {
    std::vector<QString> names;
    ThrowIf(ListNames(QDir::cleanPath(path), names), path);
    return names;
}

void DeleteFile(const QString& path) {
    if (FolderExists(path)) Throw(ErrorNumber::PermissionDenied, path);
    ThrowIf(RemoveFile(path), path);
}

bool RemoveLinkOrPipe(const QString& path) {
    using std::filesystem::file_type;
    std::error_code error;
    const auto type = std::filesystem::symlink_status(path.toStdU16String(), error).type();
    if (type != file_type::symlink && type != file_type::fifo) return false;
    RemoveFile(path);
    return true;
}

std::string ReadWholeFile(const QString& path) {
    std::string bytes;
    ThrowIf(ReadBytes(path, bytes), path);
    return bytes;
}

std::vector<std::string> SplitLines(std::string_view bytes) {
    std::vector<std::string> lines;
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        std::string_view line = bytes.substr(0, end);
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
        if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
        lines.emplace_back(line);
    }
    return lines;
}

std::vector<std::string> ReadLines(const QString& path) {
    return SplitLines(ReadWholeFile(path));
}

std::string JoinLines(const std::vector<std::string>& lines) {
    std::string bytes;
    for (const std::string& line : lines) {
        bytes += line;
        bytes += kLineEnd;
    }
    return bytes;
}

void ReplaceFile(const QString& path, std::string_view bytes) {
    const QFileInfo old(path);
    const bool mayReplace = !old.exists() || (old.isFile() && old.isWritable());
    if (!mayReplace) Throw(ErrorNumber::PermissionDenied, path);
    const auto error =
        Replace(path, [&](const QString& beside) { return WriteNew(beside, bytes, path); });
    // A folder is never removed; its name tells the user what is in the way.
    const QString beside = NameWhileWriting(path);
    ThrowIf(error, FolderExists(beside) ? beside : path);
}

QString CopyFileOver(const QString& source, const QString& target) {
    const auto error =
        Replace(target, [&](const QString& beside) { return CopyNew(source, beside); });
    return error ? WordsOf(error) : QString();
}

}  // namespace davo
