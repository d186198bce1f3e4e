// SPDX-License-Identifier: GPL-3.0-or-later
// Rebuilding the directory of a full data folder, against reading the same files once.

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/record_text.h"
#include "common/files.h"
#include "records/directory_file.h"

namespace davo {
namespace {

// A folder with as many records as are listed at most, made once.
class Folder {
  public:
    Folder() {
        for (int i = 0; i < kMostListedRecords; ++i) {
            QFile file(path() + QStringLiteral("T%1.txt").arg(i));
            if (!file.open(QIODevice::WriteOnly)) std::abort();
            file.write(bench::RecordText(i).c_str());
        }
    }
    QString path() const { return folder_.path() + QLatin1Char('/'); }

  private:
    QTemporaryDir folder_;
};

std::size_t ReadEveryFile(const QString& path) {
    std::size_t bytes = 0;
    for (int i = 0; i < kMostListedRecords; ++i) {
        QFile file(path + QStringLiteral("T%1.txt").arg(i));
        if (!file.open(QIODevice::ReadOnly)) std::abort();
        bytes += static_cast<std::size_t>(file.readAll().size());
    }
    return bytes;
}

template <class Action>
double SecondsOf(const Action& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A rebuild that finds the folder as it was. Counter "ratio": its time over the time in which the
// same files are read once, alternating in one run.
void RebuildOfAnUnchangedFolder(benchmark::State& state) {
    const Folder folder;
    DirectoryTables tables;
    RebuildDirectory(folder.path(), tables);
    double rebuild = 0;
    double reading = 0;
    for ([[maybe_unused]] auto round : state) {
        const double seconds = SecondsOf([&] { RebuildDirectory(folder.path(), tables); });
        state.SetIterationTime(seconds);
        rebuild += seconds;
        reading += SecondsOf([&] { benchmark::DoNotOptimize(ReadEveryFile(folder.path())); });
    }
    state.counters["ratio"] = rebuild / reading;
}
BENCHMARK(RebuildOfAnUnchangedFolder)->UseManualTime()->Unit(benchmark::kMillisecond);

// A rebuild that writes the directory file. Counter "ratio": its time over the time in which the
// same files are read once and a file of the directory file's size is replaced once; both wait
// for the disk.
void RebuildWithANewDirectoryFile(benchmark::State& state) {
    const Folder folder;
    DirectoryTables tables;
    double rebuild = 0;
    double reference = 0;
    for ([[maybe_unused]] auto round : state) {
        QFile::remove(folder.path() + QLatin1String(kDirectoryFileName));
        const double seconds = SecondsOf([&] { RebuildDirectory(folder.path(), tables); });
        state.SetIterationTime(seconds);
        rebuild += seconds;
        const QString other = folder.path() + QLatin1String("other");
        const std::string listing = JoinLines(tables.dirEntries);
        QFile::remove(other);
        reference += SecondsOf([&] {
            benchmark::DoNotOptimize(ReadEveryFile(folder.path()));
            ReplaceFile(other, listing);
        });
    }
    state.counters["ratio"] = rebuild / reference;
}
BENCHMARK(RebuildWithANewDirectoryFile)->UseManualTime()->Unit(benchmark::kMillisecond);

// Loading the directory file against reading all records: what a list costs when nothing changed.
void LoadOfTheDirectoryFile(benchmark::State& state) {
    const Folder folder;
    DirectoryTables tables;
    RebuildDirectory(folder.path(), tables);
    double load = 0;
    double reading = 0;
    for ([[maybe_unused]] auto round : state) {
        const double seconds = SecondsOf([&] { LoadDirectoryFile(folder.path(), tables); });
        state.SetIterationTime(seconds);
        load += seconds;
        reading += SecondsOf([&] { benchmark::DoNotOptimize(ReadEveryFile(folder.path())); });
    }
    state.counters["ratio"] = load / reading;
}
BENCHMARK(LoadOfTheDirectoryFile)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace davo

BENCHMARK_MAIN();
