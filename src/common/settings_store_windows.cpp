// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <vector>

#include "common/run_time_error.h"
#include "common/settings_store.h"

namespace davo {

namespace {

constexpr const char* kRoot = R"(Software\VB and VBA Program Settings)";

QString KeyOf(const QString& application, const QString& section) {
    return QLatin1String(kRoot) + QLatin1Char('\\') + application + QLatin1Char('\\') + section;
}

const wchar_t* Wide(const QString& text) {
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

// The value's bytes; nothing when it is missing or of another type than these.
std::vector<wchar_t> Query(const QString& key, const QString& value) {
    // Never expanded: a data path may hold percent signs.
    const DWORD kinds = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    std::vector<wchar_t> text;
    DWORD bytes = 0;
    LSTATUS status =
        ::RegGetValueW(HKEY_CURRENT_USER, Wide(key), Wide(value), kinds, nullptr, nullptr, &bytes);
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        text.assign(bytes / sizeof(wchar_t) + 1, L'\0');
        bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status = ::RegGetValueW(HKEY_CURRENT_USER, Wide(key), Wide(value), kinds, nullptr,
                                text.data(), &bytes);
        if (status == ERROR_SUCCESS) return text;
    }
    return {};
}

// Not QSettings: it takes "/" in a name for a sub key, and writes a text that is a number as one.
class RegistrySettingsStore : public SettingsStore {
  public:
    // A text ends at its first null. A value that is no text counts as missing, as it does for
    // whoever else reads these settings as texts.
    QString Read(const QString& application, const QString& section,
                 const QString& value) const override {
        const std::vector<wchar_t> text = Query(KeyOf(application, section), value);
        return text.empty() ? QString() : QString::fromWCharArray(text.data());
    }

    void Write(const QString& application, const QString& section, const QString& value,
               const QString& text) override {
        const QString key = KeyOf(application, section);
        const auto bytes = static_cast<DWORD>((text.size() + 1) * qsizetype{sizeof(wchar_t)});
        const LSTATUS status =
            ::RegSetKeyValueW(HKEY_CURRENT_USER, Wide(key), Wide(value), REG_SZ, Wide(text), bytes);
        if (status == ERROR_SUCCESS) return;
        throw RunTimeError(ErrorNumber::PathFileAccess,
                           "HKEY_CURRENT_USER\\" + key.toStdString() + '\\' + value.toStdString());
    }
};

}  // namespace

std::unique_ptr<SettingsStore> MakeSettingsStore(const Places&) {
    return std::make_unique<RegistrySettingsStore>();
}

}  // namespace davo
