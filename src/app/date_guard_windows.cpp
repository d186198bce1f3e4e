// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <string>
#include <thread>

#include "app/date_guard.h"

namespace davo {

namespace {

// Tells all windows that a setting has changed. A window that does not answer is left out.
void SendSettingChange() {
    constexpr UINT kLongestWait = 100;  // ms for each window
    DWORD_PTR result = 0;
    ::SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, 0, SMTO_ABORTIFHUNG, kLongestWait,
                          &result);
}

class UserShortDateFormat : public ShortDateFormat {
  public:
    // What was told last is told to the end.
    ~UserShortDateFormat() override { EndTelling(); }

    std::optional<QString> Read() override {
        const LCID locale = ::GetUserDefaultLCID();
        const int length = ::GetLocaleInfoW(locale, LOCALE_SSHORTDATE, nullptr, 0);
        if (length <= 0) return std::nullopt;
        std::wstring format(static_cast<std::size_t>(length), L' ');
        const int written = ::GetLocaleInfoW(locale, LOCALE_SSHORTDATE, format.data(), length);
        if (written <= 0) return std::nullopt;
        format.resize(static_cast<std::size_t>(written - 1));  // the terminating character counts
        return QString::fromStdWString(format);
    }

    void Set(const QString& format) override {
        ::SetLocaleInfoW(::GetUserDefaultLCID(), LOCALE_SSHORTDATE, format.toStdWString().c_str());
        if (::PostMessageW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, 0) != 0) return;
        // Some systems let this message be sent only. A busy window of another program must not
        // keep this one waiting.
        EndTelling();
        telling_ = std::thread(SendSettingChange);
    }

  private:
    void EndTelling() {
        if (telling_.joinable()) telling_.join();
    }

    std::thread telling_;
};

}  // namespace

std::unique_ptr<ShortDateFormat> MakeShortDateFormat() {
    return std::make_unique<UserShortDateFormat>();
}

}  // namespace davo
