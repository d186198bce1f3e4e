#include <windows.h>

#include <QDir>
#include <algorithm>

#include "common/file_system.h"

namespace davo {

namespace {

std::error_code LastError() {
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

std::wstring Native(const QString& path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

std::error_code WriteAll(HANDLE file, std::string_view bytes) {
    constexpr std::size_t kLargestWrite = 1U << 20U;
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kLargestWrite));
        if (::WriteFile(file, bytes.data(), size, &written, nullptr) == 0) return LastError();
        bytes.remove_prefix(written);
    }
    return {};
}

}  // namespace

std::error_code WriteFlushed(const QString& path, std::string_view bytes) {
    HANDLE file = ::CreateFileW(Native(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return LastError();
    std::error_code error = WriteAll(file, bytes);
    if (!error && ::FlushFileBuffers(file) == 0) error = LastError();
    if (::CloseHandle(file) == 0 && !error) error = LastError();
    return error;
}

std::error_code MoveOver(const QString& from, const QString& to) {
    const DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (::MoveFileExW(Native(from).c_str(), Native(to).c_str(), how) == 0) return LastError();
    return {};
}

}  // namespace davo
