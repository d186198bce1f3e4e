#include "app/date_guard.h"

#include <QByteArray>

// After the others: its macros disturb them.
#include <windows.h>

namespace davo {

namespace {

class UserShortDateFormat : public ShortDateFormat {
  public:
    std::optional<QString> Read() override {
        const LCID locale = GetUserDefaultLCID();
        const int length = GetLocaleInfoA(locale, LOCALE_SSHORTDATE, nullptr, 0);
        if (length <= 0) return std::nullopt;
        QByteArray format(length, ' ');
        const int written = GetLocaleInfoA(locale, LOCALE_SSHORTDATE, format.data(), length);
        if (written <= 0) return std::nullopt;
        format.truncate(written - 1);  // the terminating character counts
        return QString::fromLocal8Bit(format);
    }

    void Set(const QString& format) override {
        const QByteArray bytes = format.toLocal8Bit();
        SetLocaleInfoA(GetUserDefaultLCID(), LOCALE_SSHORTDATE, bytes.constData());
        PostMessageA(HWND_BROADCAST, WM_SETTINGCHANGE, 0, 0);
    }
};

}  // namespace

std::unique_ptr<ShortDateFormat> MakeShortDateFormat() {
    return std::make_unique<UserShortDateFormat>();
}

}  // namespace davo
