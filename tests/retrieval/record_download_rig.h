// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "instrument/instrument.h"
#include "instrument/memory.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_download.h"
#include "retrieval/record_reply.h"
#include "tests/support/data_folder.h"
#include "tests/support/testing.h"

namespace davo::test {

// A data folder and a scratch folder around a download, and what it told.
class DownloadSurroundings : public DataFolder {
  public:
    DownloadSurroundings() { QDir().mkpath(scratch); }

    // The records of memory are listed in the instrument's order and all selected.
    void Select(const std::vector<instrument::MemoryRecord>& memory) {
        for (const auto& record : memory) {
            for (const std::string& entry :
                 BuildEntries(instrument::DirectoryReply({record})).entries) {
                directory.dirEntries.push_back(entry);
            }
        }
        directory.recordCount = static_cast<std::int16_t>(directory.dirEntries.size());
        directory.recordsFromInstrument = true;
    }

    std::string File(const char* name) const {
        const QString path = settings.dataPath + QLatin1String(name);
        return FileExists(path) ? ReadWholeFile(path) : "(none)";
    }
    void Put(const char* name, const std::string& bytes) const {
        ReplaceFile(settings.dataPath + QLatin1String(name), bytes);
    }
    // All names in the data folder, those of folders included.
    std::vector<std::string> Names() const {
        return NamesIn(settings.dataPath, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    std::string Listing() const { return File(kDirectoryFileName); }
    std::string Header(std::size_t index, const char* name) const {
        return RecordHeaderLines(directory.dirEntries.at(index), name);
    }
    // What the record file of the index-th selected record must hold.
    std::string Whole(std::size_t index, const instrument::MemoryRecord& record,
                      const char* name) const {
        return Header(index, name) + ConvertRecordReply(RecordReply(record)).lines;
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

    QString scratch = folder.Path("scratch/");
    std::vector<std::string> status;
    std::vector<std::string> activity;
    std::vector<std::size_t> progress;
    std::size_t progressTotal = 0;
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

// An instrument that answers quickly and has memory.
inline instrument::InstrumentOptions QuickWithMemory(
    const std::vector<instrument::MemoryRecord>& memory, bool paced = false) {
    instrument::InstrumentOptions options;
    options.paced = paced;
    options.conversation.pauseScale = 0.02;
    options.conversation.memory = memory;
    return options;
}

}  // namespace davo::test
