#include "app/settings_store.h"

#include <QSettings>

#include "common/run_time_error.h"

namespace davo {

namespace {

constexpr const char* kRoot = R"(HKEY_CURRENT_USER\Software\VB and VBA Program Settings)";

// QSettings takes '/' in a name for a sub key.
QString KeyOf(const QString& application, const QString& section, const QString& value) {
    return application + QLatin1Char('/') + section + QLatin1Char('/') + value;
}

class RegistrySettingsStore : public SettingsStore {
  public:
    QString Read(const QString& application, const QString& section,
                 const QString& value) const override {
        return settings_.value(KeyOf(application, section, value)).toString();
    }

    void Write(const QString& application, const QString& section, const QString& value,
               const QString& text) override {
        settings_.setValue(KeyOf(application, section, value), text);
        settings_.sync();
        if (settings_.status() != QSettings::NoError) {
            throw RunTimeError(ErrorNumber::PathFileAccess, kRoot);
        }
    }

  private:
    QSettings settings_{QLatin1String(kRoot), QSettings::NativeFormat};
};

}  // namespace

std::unique_ptr<SettingsStore> MakeSettingsStore(const Places&) {
    return std::make_unique<RegistrySettingsStore>();
}

}  // namespace davo
