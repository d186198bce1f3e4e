// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/settings_store.h"

#include <QByteArray>
#include <QSettings>
#include <string>

#include "common/files.h"
#include "common/run_time_error.h"

namespace davo {

namespace {

QString KeyOf(const QString& application, const QString& section, const QString& value) {
    return application + QLatin1Char('/') + section + QLatin1Char('/') + value;
}

// As QSettings reads a line, which does not say which one it could not.
bool IsReadable(const std::string& line) {
    const QByteArray text = QByteArray::fromStdString(line).trimmed();
    if (text.isEmpty() || text.startsWith(';')) return true;
    return text.contains(text.startsWith('[') ? ']' : '=');
}

class IniSettingsStore : public SettingsStore {
  public:
    explicit IniSettingsStore(const QString& path) : settings_(path, QSettings::IniFormat) {
        RemoveLinkOrPipe(path + QStringLiteral(".lock"));
    }

    QString Read(const QString& application, const QString& section,
                 const QString& value) const override {
        return settings_.value(KeyOf(application, section, value)).toString();
    }

    void Write(const QString& application, const QString& section, const QString& value,
               const QString& text) override {
        settings_.setValue(KeyOf(application, section, value), text);
        settings_.sync();
        // A line that cannot be read is told by the same status and hides whether the file was
        // written; a second object, which finds the file read already, knows.
        QSettings again(settings_.fileName(), QSettings::IniFormat);
        again.setValue(KeyOf(application, section, value), text);
        again.sync();
        if (again.status() != QSettings::NoError) {
            throw RunTimeError(ErrorNumber::PathFileAccess, settings_.fileName().toStdString());
        }
    }

    QString UnreadableLine() const override {
        static_cast<void>(settings_.allKeys());  // sections are read as they are asked for
        if (settings_.status() != QSettings::FormatError) return {};
        int number = 0;
        for (const std::string& line : ReadLines(settings_.fileName())) {
            ++number;
            if (!IsReadable(line))
                return QStringLiteral("Line %1 of %2").arg(number).arg(settings_.fileName());
        }
        return settings_.fileName();
    }

  private:
    QSettings settings_;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeSettingsStore(const Places& places) {
    return std::make_unique<IniSettingsStore>(places.configurationFolder +
                                              QStringLiteral("davo.ini"));
}

}  // namespace davo
