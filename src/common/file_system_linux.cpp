// SPDX-License-Identifier: GPL-3.0-or-later
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "common/file_system.h"

namespace davo {

namespace {

std::error_code LastError() {
    return {errno, std::system_category()};
}

std::error_code WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return LastError();
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

// Makes path, which must not be there, with bytes and what set does to the open file.
template <class Set>
std::error_code MakeFile(const QString& path, std::string_view bytes, const Set& set) {
    constexpr int kHow = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int file = ::open(QFile::encodeName(path).constData(), kHow, 0666);
    if (file < 0) return LastError();
    std::error_code error = WriteAll(file, bytes);
    if (!error) error = set(file);
    if (!error && ::fsync(file) != 0) error = LastError();
    if (::close(file) != 0 && !error) error = LastError();
    return error;
}

std::error_code FlushFolder(const QString& path) {
    const QByteArray folder = QFile::encodeName(path);
    const int handle = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return LastError();
    std::error_code error;
    // Some network file systems cannot flush a folder and say so by EINVAL.
    if (::fsync(handle) != 0 && errno != EINVAL) error = LastError();
    ::close(handle);
    return error;
}

std::error_code ReadAll(int file, std::string& bytes) {
    constexpr std::size_t kBlock = 1U << 20U;
    struct stat now {};
    if (::fstat(file, &now) != 0) return LastError();
    // One more than there is, so that the second read finds the end of a file that stays as it is.
    std::size_t room = std::min(kBlock, static_cast<std::size_t>(now.st_size) + 1);
    for (;;) {
        const std::size_t end = bytes.size();
        bytes.resize(end + room);
        const ssize_t count = ::read(file, bytes.data() + end, room);
        const std::error_code error = count < 0 ? LastError() : std::error_code();
        bytes.resize(end + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (error == std::errc::interrupted) continue;
        if (error || count == 0) return error;
        room = std::max(room - static_cast<std::size_t>(count), std::size_t{4096});
    }
}

}  // namespace

std::error_condition MeaningOf(const std::error_code& error) {
    return error.default_error_condition();
}

QString WordsOf(const std::error_code& error) {
    return qt_error_string(error.value());
}

std::error_code MakeFolders(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path.toStdU16String()), error);
    return error;
}

std::error_code RemoveFile(const QString& path) {
    if (::unlink(QFile::encodeName(path).constData()) != 0) return LastError();
    return {};
}

std::error_code ListNames(const QString& folder, std::vector<QString>& names) {
    DIR* open = ::opendir(QFile::encodeName(folder).constData());
    if (open == nullptr) return LastError();
    // Only errno tells the end from an error.
    for (errno = 0; const dirent* entry = ::readdir(open); errno = 0) {
        const QByteArray name = entry->d_name;
        if (name != "." && name != "..") names.push_back(QFile::decodeName(name));
    }
    const std::error_code error = errno != 0 ? LastError() : std::error_code();
    ::closedir(open);
    return error;
}

std::error_code ReadBytes(const QString& path, std::string& bytes) {
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return LastError();
    const std::error_code error = ReadAll(file, bytes);
    ::close(file);
    return error;
}

std::error_code WriteNew(const QString& path, std::string_view bytes, const QString& like) {
    struct stat old {};
    const bool isThere = ::stat(QFile::encodeName(like).constData(), &old) == 0;
    return MakeFile(path, bytes, [&](int file) -> std::error_code {
        if (!isThere || ::fchmod(file, old.st_mode & 0777U) == 0 || errno == EPERM) return {};
        return LastError();
    });
}

std::error_code CopyNew(const QString& source, const QString& path) {
    std::string bytes;
    if (const std::error_code error = ReadBytes(source, bytes)) return error;
    struct stat from {};
    if (::stat(QFile::encodeName(source).constData(), &from) != 0) return LastError();
    return MakeFile(path, bytes, [&](int file) -> std::error_code {
        // A disk that keeps no times keeps the content all the same.
        const timespec times[] = {{0, UTIME_OMIT}, from.st_mtim};
        ::futimens(file, times);
        return {};
    });
}

std::error_code RemoveLeftOver(const QString& path) {
    return RemoveFile(path);
}

std::error_code MoveOver(const QString& from, const QString& to) {
    const QByteArray target = QFile::encodeName(to);
    if (std::rename(QFile::encodeName(from).constData(), target.constData()) != 0) {
        return LastError();
    }
    return FlushFolder(QFileInfo(to).path());
}

bool FlushToDisk(int descriptor) {
    while (::fdatasync(descriptor) != 0) {
        if (errno != EINTR) return false;
    }
    return true;
}

}  // namespace davo
