#include <windows.h>

#include <shellapi.h>

#include <QDir>

#include "reports/open_document.h"

namespace davo {

bool ShowDocument(const QString& path) {
    const std::wstring file = QDir::toNativeSeparators(path).toStdWString();
    const HINSTANCE result =
        ::ShellExecuteW(nullptr, L"open", file.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    // Not a handle but a number; up to 32 they are errors.
    constexpr INT_PTR kLastError = 32;
    return reinterpret_cast<INT_PTR>(result) > kLastError;
}

}  // namespace davo
