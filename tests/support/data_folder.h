// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <string>
#include <vector>

#include "common/files.h"
#include "common/settings.h"
#include "records/directory_file.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// A data folder with the one for reports beside it, its tables, and prompts.
class DataFolder {
  public:
    explicit DataFolder(const std::string& parent = {}) {
        settings.dataPath = folder.Path((parent + "Shots_Data/").c_str());
        settings.excelPath = folder.Path((parent + "Shots_Excel/").c_str());
        QDir().mkpath(settings.dataPath);
        QDir().mkpath(settings.excelPath);
    }
    QString DataFile(const QString& name) const {
        return settings.dataPath + name + QStringLiteral(".txt");
    }
    void AddRecord(const QString& name, const BriefRecord& record = {}) const {
        ReplaceFile(DataFile(name), RecordFileText(name.toStdString(), record));
    }
    // The listing and the tables have what is in the folder.
    void ListRecords() { ListFolder(settings.dataPath, directory); }
    std::vector<std::string> Shown() const { return prompts.Texts(); }
    // Hidden files and what is left of a writing included.
    static std::vector<std::string> NamesIn(const QString& path,
                                            QDir::Filters kinds = QDir::Files | QDir::Hidden) {
        std::vector<std::string> names;
        for (const QString& name : QDir(path).entryList(kinds, QDir::Name))
            names.push_back(name.toStdString());
        return names;
    }

    TemporaryFolder folder;
    Settings settings;
    DirectoryTables directory;
    FakePrompts prompts;
};

}  // namespace davo::test
