// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/copy_file.h"

#include <string>
#include <system_error>

#include "common/file_system.h"
#include "common/native_path_windows.h"

// After the others: its macros rename what they declare.
#include <windows.h>

namespace davo {

namespace {

// The system's sentence, which ends with a line end.
QString WordsOf(DWORD error) {
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const QString words = QString::fromWCharArray(text, static_cast<qsizetype>(length)).trimmed();
    ::LocalFree(text);
    return words.isEmpty() ? QStringLiteral("Windows error %1").arg(error) : words;
}

bool IsReadOnly(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

void DeletePart(const std::wstring& path) {
    // A copy of a read-only file is one.
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileW(path.c_str());
}

}  // namespace

QString CopyFileOver(const QString& source, const QString& target) {
    const QString beside = target + QStringLiteral(".part");
    const std::wstring part = NativePath(beside);
    if (IsReadOnly(NativePath(target))) return WordsOf(ERROR_ACCESS_DENIED);
    DeletePart(part);
    if (::CopyFileW(NativePath(source).c_str(), part.c_str(), FALSE) == 0) {
        const DWORD error = ::GetLastError();
        DeletePart(part);
        return WordsOf(error);
    }
    const std::error_code error = MoveOver(beside, target);
    if (!error) return {};
    DeletePart(part);
    return WordsOf(static_cast<DWORD>(error.value()));
}

}  // namespace davo
