// SPDX-License-Identifier: GPL-3.0-or-later
// Writing the header of one record of a full data folder back, against a bare read, write, flush
// and rename of the same bytes.

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <cstdlib>
#include <string>

#include "bench/record_text.h"
#include "common/file_system.h"
#include "common/files.h"
#include "files/record_headers.h"
#include "records/directory_file.h"

namespace davo {
namespace {

constexpr int kShots = 10;

template <class Action>
double SecondsOf(const Action& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Counter "ratio": the time from the bytes on the disk to the new ones there, with every check
// that the editor makes, over that of the reference, alternating in one run. Both wait for the
// disk.
void RewriteOfOneRecord(benchmark::State& state) {
    const QTemporaryDir folder(QDir::currentPath() + QStringLiteral("/header_bench"));
    const auto path = [&folder](int i) {
        return folder.filePath(QStringLiteral("T%1.txt").arg(i));
    };
    for (int i = 0; i < kMostListedRecords; ++i) {
        QFile file(path(i));
        if (!file.open(QIODevice::WriteOnly)) std::abort();
        file.write((bench::RecordText(i, kShots) + "NOTES:\r\nTerminal box dry.\r\n").c_str());
    }
    RecordHeaders headers = ReadRecordHeaders(ReadWholeFile(path(7)));
    double rewrite = 0;
    double reference = 0;
    double rules = 0;
    int round = 0;
    for ([[maybe_unused]] auto unused : state) {
        headers.testDescriptions.at(3) = "round " + std::to_string(++round);
        const double seconds = SecondsOf([&] {
            const std::string bytes = ReadWholeFile(path(7));
            if (!SurvivesRewrite(bytes, EveryText(headers))) std::abort();
            ReplaceFile(path(7), RewriteRecord(bytes, EveryText(headers)));
        });
        state.SetIterationTime(seconds);
        rewrite += seconds;
        const std::string bytes = ReadWholeFile(path(7));
        rules += SecondsOf([&] {
            benchmark::DoNotOptimize(SurvivesRewrite(bytes, EveryText(headers)));
            benchmark::DoNotOptimize(RewriteRecord(bytes, EveryText(headers)));
        });
        reference += SecondsOf([&] {
            QFile old(path(8));
            if (!old.open(QIODevice::ReadOnly)) std::abort();
            const std::string same = old.readAll().toStdString();
            const QString beside = folder.filePath(QStringLiteral("beside"));
            if (WriteNew(beside, same, path(8)) || MoveOver(beside, path(8))) std::abort();
        });
    }
    state.counters["ratio"] = rewrite / reference;
    state.counters["rules_us"] = rules / round * 1e6;
}
BENCHMARK(RewriteOfOneRecord)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace davo

BENCHMARK_MAIN();
