// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <string>
#include <vector>

#include "common/files.h"
#include "instrument/memory.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_download.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// Folders, tables and prompts around a download, and what it told.
class DownloadSurroundings {
  public:
    DownloadSurroundings() {
        QDir().mkpath(dataPath);
        QDir().mkpath(scratch);
    }

    // The records of memory are listed in the instrument's order and all selected.
    void Select(const std::vector<instrument::MemoryRecord>& memory) {
        for (const auto& record : memory)
            SelectEntries({record});
        tables.recordsFromInstrument = true;
    }

    std::string File(const char* name) const {
        const QString path = dataPath + QLatin1String(name);
        return FileExists(path) ? ReadWholeFile(path) : "(none)";
    }
    void Put(const char* name, const std::string& bytes) const {
        ReplaceFile(dataPath + QLatin1String(name), bytes);
    }
    // All names in the data folder, hidden ones and what is left of a writing included.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const QString& name : QDir(dataPath).entryList(
                 QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name)) {
            names.push_back(name.toStdString());
        }
        return names;
    }
    std::string Directory() const { return File(kDirectoryFileName); }
    std::vector<std::string> Shown() const {
        std::vector<std::string> texts;
        for (const QString& text : prompts.shown)
            texts.push_back(text.toStdString());
        return texts;
    }
    void Watch(RecordDownload& download) {
        download.OnStatus = [this](const QString& text) { status.push_back(text.toStdString()); };
        download.OnActivity = [this](const QString& text) {
            activity.push_back(text.toStdString());
        };
        download.OnProgress = [this](std::size_t done, std::size_t total) {
            EXPECT_LE(done, total);
            EXPECT_GE(done, progress.empty() ? 0 : progress.back());
            progress.push_back(done);
            progressTotal = total;
        };
    }

    TemporaryFolder folder;
    QString dataPath = folder.Path("Shots_Data/");
    QString scratch = folder.Path("scratch/");
    FakePrompts prompts;
    DirectoryTables tables;
    std::vector<std::string> status;
    std::vector<std::string> activity;
    std::vector<std::size_t> progress;
    std::size_t progressTotal = 0;

  private:
    void SelectEntries(const std::vector<instrument::MemoryRecord>& records) {
        for (const std::string& entry : BuildEntries(instrument::DirectoryReply(records)).entries)
            tables.dirEntries.push_back(entry);
        tables.recordCount = static_cast<std::int16_t>(tables.dirEntries.size());
    }
};

// A record of so many tests, its header like that of a real one.
inline instrument::MemoryRecord MemoryRecordOf(int number, int tests) {
    static const auto memory = instrument::MakeMemory(20, 5);
    instrument::MemoryRecord record = memory.at(static_cast<std::size_t>(number) % 20);
    record.number = number;
    const std::vector<RecordImage>& images = memory.at(19).tests;  // a hundred
    record.tests.assign(images.begin(), images.begin() + tests);
    return record;
}

}  // namespace davo::test
