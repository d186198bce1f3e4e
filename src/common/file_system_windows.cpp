// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <memory>
#include <string>

#include "common/file_system.h"
#include "common/native_path_windows.h"

namespace davo {

namespace {

std::error_code LastError() {
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

struct CloseFile {
    void operator()(void* file) const { ::CloseHandle(file); }
};
using OpenFile = std::unique_ptr<void, CloseFile>;

// Nothing when it cannot be opened; the system's last error says why.
OpenFile Open(const QString& path, DWORD access, DWORD sharing, DWORD creation) {
    HANDLE file = ::CreateFileW(NativePath(path).c_str(), access, sharing, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    return OpenFile(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

// Not in every compiler's headers.
constexpr int kVirusInfected = 225;
constexpr int kDiskQuotaExceeded = 1295;

constexpr std::size_t kBlock = 1U << 20U;  // bytes of one call

std::error_code WriteAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kBlock));
        if (::WriteFile(file, bytes.data(), size, &written, nullptr) == 0) return LastError();
        bytes.remove_prefix(written);
    }
    return {};
}

std::error_code ReadAll(HANDLE file, std::string& bytes) {
    LARGE_INTEGER size = {};
    if (::GetFileSizeEx(file, &size) == 0) return LastError();
    // One more than there is, so that the second read finds the end of a file that stays as it is.
    std::size_t room = std::min(kBlock, static_cast<std::size_t>(size.QuadPart) + 1);
    for (;;) {
        const std::size_t end = bytes.size();
        bytes.resize(end + room);
        DWORD count = 0;
        const bool isRead =
            ::ReadFile(file, bytes.data() + end, static_cast<DWORD>(room), &count, nullptr) != 0;
        const std::error_code error = isRead ? std::error_code() : LastError();
        bytes.resize(end + count);
        if (error || count == 0) return error;
        room = std::max(room - count, std::size_t{4096});
    }
}

}  // namespace

std::wstring NativePath(const QString& path) {
    constexpr qsizetype kShort = 200;
    const QString whole = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QString native = QDir::toNativeSeparators(whole);
    if (native.size() < kShort || native.startsWith(QLatin1String(R"(\\?\)"))) {
        return native.toStdWString();
    }
    const bool isOnNetwork = native.startsWith(QLatin1String(R"(\\)"));
    const QString prefixed = isOnNetwork ? QLatin1String(R"(\\?\UNC)") + native.mid(1)
                                         : QLatin1String(R"(\\?\)") + native;
    return prefixed.toStdWString();
}

// The numbers are those of Microsoft's page "System Error Codes"; the standard library knows some.
std::error_condition MeaningOf(const std::error_code& error) {
    if (error.category() != std::system_category()) return error.default_error_condition();
    switch (error.value()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_PATHNAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_DIRECTORY:
            return std::errc::no_such_file_or_directory;
        case ERROR_ACCESS_DENIED:
        case ERROR_NETWORK_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
        case ERROR_CURRENT_DIRECTORY:
        case ERROR_USER_MAPPED_FILE:
        case ERROR_DELETE_PENDING:
        case ERROR_PRIVILEGE_NOT_HELD:
        case kVirusInfected:
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
        case ERROR_CANNOT_MAKE:
            return std::errc::permission_denied;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kDiskQuotaExceeded:
            return std::errc::no_space_on_device;
        case ERROR_FILE_TOO_LARGE:
            return std::errc::file_too_large;
        case ERROR_INVALID_NAME:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_BUFFER_OVERFLOW:
            return std::errc::filename_too_long;
        default:
            return std::errc::io_error;
    }
}

std::error_code MakeFolders(const QString& path) {
    if (QFileInfo(path).isDir()) return {};
    const QString above = QFileInfo(path).path();
    if (above != path && !QFileInfo(above).isDir()) {
        if (QFileInfo::exists(above)) return {ERROR_PATH_NOT_FOUND, std::system_category()};
        if (const std::error_code error = MakeFolders(above)) return error;
    }
    if (::CreateDirectoryW(NativePath(path).c_str(), nullptr) != 0) return {};
    const std::error_code error = LastError();
    // Another program may have made it meanwhile.
    return QFileInfo(path).isDir() ? std::error_code() : error;
}

std::error_code RemoveFile(const QString& path) {
    if (::DeleteFileW(NativePath(path).c_str()) == 0) return LastError();
    return {};
}

std::error_code ReadBytes(const QString& path, std::string& bytes) {
    // Who writes or replaces the file meanwhile is not kept from it.
    const OpenFile file = Open(
        path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
    return file ? ReadAll(file.get(), bytes) : LastError();
}

std::error_code WriteFlushed(const QString& path, std::string_view bytes) {
    OpenFile file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!file) return LastError();
    std::error_code error = WriteAll(file.get(), bytes);
    if (!error && ::FlushFileBuffers(file.get()) == 0) error = LastError();
    if (::CloseHandle(file.release()) == 0 && !error) error = LastError();
    return error;
}

std::error_code MoveOver(const QString& from, const QString& to) {
    // Programs that look at every new file, such as virus scanners, hold it for an instant.
    constexpr int kTries = 10;
    constexpr DWORD kPause = 20;  // ms
    const DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    std::error_code error;
    for (int i = 0; i < kTries; ++i) {
        if (i > 0) ::Sleep(kPause);
        if (::MoveFileExW(NativePath(from).c_str(), NativePath(to).c_str(), how) != 0) return {};
        error = LastError();
        if (error.value() != ERROR_SHARING_VIOLATION && error.value() != ERROR_ACCESS_DENIED) break;
    }
    return error;
}

}  // namespace davo
