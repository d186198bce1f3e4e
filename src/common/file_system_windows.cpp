// SPDX-License-Identifier: GPL-3.0-or-later
#include <io.h>
#include <windows.h>

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <cstdint>
#include <memory>

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
OpenFile Open(const QString& path, DWORD access, DWORD sharing, DWORD creation,
              DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    HANDLE file =
        ::CreateFileW(NativePath(path).c_str(), access, sharing, nullptr, creation, flags, nullptr);
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

// attributes as GetFileAttributesW gives them, of a file that is there or not.
bool IsReadOnly(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Programs that look at every new file, such as virus scanners, hold it for an instant: tries again
// until it is free.
template <class Attempt>
std::error_code Insist(const Attempt& attempt) {
    constexpr int kTries = 10;
    constexpr DWORD kPause = 20;  // ms
    std::error_code error;
    for (int i = 0; i < kTries; ++i) {
        if (i > 0) ::Sleep(kPause);
        if (attempt()) return {};
        error = LastError();
        if (error.value() != ERROR_SHARING_VIOLATION && error.value() != ERROR_ACCESS_DENIED) break;
    }
    return error;
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
        case ERROR_CANNOT_MAKE:
            return std::errc::permission_denied;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return std::errc::file_exists;
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

QString WordsOf(const std::error_code& error) {
    wchar_t* text = nullptr;
    const auto number = static_cast<DWORD>(error.value());
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, number, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    // The system's sentence ends with a line end.
    const QString words = QString::fromWCharArray(text, static_cast<qsizetype>(length)).trimmed();
    ::LocalFree(text);
    return words.isEmpty() ? QStringLiteral("Windows error %1").arg(number) : words;
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

std::error_code ListNames(const QString& folder, std::vector<QString>& names) {
    WIN32_FIND_DATAW found = {};
    HANDLE search = ::FindFirstFileW(NativePath(folder + QLatin1String("/*")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        // A drive without a file has not even a name for itself.
        return ::GetLastError() == ERROR_FILE_NOT_FOUND ? std::error_code() : LastError();
    }
    do {
        const QString name = QString::fromWCharArray(found.cFileName);
        if (name != QLatin1String(".") && name != QLatin1String("..")) names.push_back(name);
    } while (::FindNextFileW(search, &found) != 0);
    const std::error_code error =
        ::GetLastError() == ERROR_NO_MORE_FILES ? std::error_code() : LastError();
    ::FindClose(search);
    return error;
}

std::error_code ReadBytes(const QString& path, std::string& bytes) {
    // Who writes or replaces the file meanwhile is not kept from it.
    const OpenFile file = Open(
        path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
    return file ? ReadAll(file.get(), bytes) : LastError();
}

// Who may use the file is the folder's matter here: like is not asked.
std::error_code WriteNew(const QString& path, std::string_view bytes, const QString& /*like*/) {
    OpenFile file = Open(path, GENERIC_WRITE, 0, CREATE_NEW,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file) return LastError();
    std::error_code error = WriteAll(file.get(), bytes);
    if (!error && ::FlushFileBuffers(file.get()) == 0) error = LastError();
    if (::CloseHandle(file.release()) == 0 && !error) error = LastError();
    return error;
}

std::error_code CopyNew(const QString& source, const QString& path) {
    const std::wstring made = NativePath(path);
    if (::CopyFileW(NativePath(source).c_str(), made.c_str(), TRUE) == 0) return LastError();
    // The copy of a read-only file is one, which cannot be opened to be flushed.
    const DWORD attributes = ::GetFileAttributesW(made.c_str());
    const bool isReadOnly = IsReadOnly(attributes);
    if (isReadOnly) ::SetFileAttributesW(made.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    std::error_code error = Insist([&] {
        const OpenFile file =
            Open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
        return file && ::FlushFileBuffers(file.get()) != 0;
    });
    if (isReadOnly && ::SetFileAttributesW(made.c_str(), attributes) == 0 && !error) {
        error = LastError();
    }
    return error;
}

std::error_code RemoveLeftOver(const QString& path) {
    // A copy of a read-only file is one.
    if (!QFileInfo(path).isDir()) {
        ::SetFileAttributesW(NativePath(path).c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    return RemoveFile(path);
}

std::error_code MoveOver(const QString& from, const QString& to) {
    const std::wstring target = NativePath(to);
    if (IsReadOnly(::GetFileAttributesW(target.c_str()))) {
        return {ERROR_ACCESS_DENIED, std::system_category()};
    }
    return Insist([&] {
        return ::MoveFileExW(NativePath(from).c_str(), target.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    });
}

bool FlushToDisk(int descriptor) {
    if (descriptor < 0) return false;
    const std::intptr_t handle = ::_get_osfhandle(descriptor);
    return handle != -1 && ::FlushFileBuffers(reinterpret_cast<HANDLE>(handle)) != 0;
}

}  // namespace davo
