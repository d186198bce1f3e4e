// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <vector>

#include "common/settings.h"

namespace davo::test {

// A settings store that lasts as long as the test.
class MemorySettingsStore : public SettingsStore {
  public:
    QString Read(const QString& application, const QString& section,
                 const QString& value) const override {
        const auto found = texts.find(KeyOf(application, section, value));
        return found == texts.end() ? QString() : found->second;
    }

    void Write(const QString& application, const QString& section, const QString& value,
               const QString& text) override {
        const QString key = KeyOf(application, section, value);
        texts[key] = text;
        written.push_back(key);
    }

    std::map<QString, QString> texts;  // by "application/section/value"
    std::vector<QString> written;      // the keys in the order of writing

  private:
    static QString KeyOf(const QString& application, const QString& section, const QString& value) {
        return application + QLatin1Char('/') + section + QLatin1Char('/') + value;
    }
};

}  // namespace davo::test
