// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <string>

#include "common/open_document.h"

namespace davo {

bool ShowDocument(const QString& path) {
    // The shell may hand a document over by COM. A thread that has COM already, of whatever kind,
    // keeps it as it is.
    const HRESULT com =
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    const auto leaveCom = qScopeGuard([com] {
        if (SUCCEEDED(com)) ::CoUninitialize();
    });
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const std::wstring file = QDir::toNativeSeparators(absolute).toStdWString();
    SHELLEXECUTEINFOW what = {};
    what.cbSize = sizeof what;
    // No message of the shell's own; and the thread may end as soon as this is done.
    what.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    what.lpFile = file.c_str();
    what.nShow = SW_SHOWNORMAL;
    return ::ShellExecuteExW(&what) != 0;
}

}  // namespace davo
