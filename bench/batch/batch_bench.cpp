// SPDX-License-Identifier: GPL-3.0-or-later
// Records a second of davo-report on one core and on two, its memory, and how much longer it takes
// than reading the same bytes. "davo_bench_batch COUNT..." takes other numbers of records.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/realistic_record.h"
#include "common/files.h"

namespace {

struct Run {
    double seconds = 0;
    double megabytes = 0;  // of the largest process
};

// What a shell takes for command.
Run RunOf(const std::string& command) {
    QElapsedTimer clock;
    clock.start();
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    if (status != 0) {
        std::fprintf(stderr, "failed: %s\n", command.c_str());
        std::exit(1);
    }
    return {static_cast<double>(clock.nsecsElapsed()) / 1e9,
            static_cast<double>(used.ru_maxrss) / 1024};
}

// The quickest of three: what is slower, something else was in the way of.
Run Best(const std::string& command) {
    Run best = RunOf(command);
    for (int again = 0; again < 2; ++again) {
        const Run run = RunOf(command);
        if (run.seconds < best.seconds) best = run;
    }
    return best;
}

// So many records of one to five tests, a hundred in a folder.
void MakeArchive(const QString& folder, int records) {
    constexpr int kInFolder = 100;
    constexpr int kMostTests = 5;
    std::vector<std::string> texts;
    for (int tests = 1; tests <= kMostTests; ++tests)
        texts.push_back(davo::bench::RealisticFileText(tests));
    for (int i = 0; i < records; ++i) {
        const QString below =
            folder + QStringLiteral("/%1/").arg(i / kInFolder, 5, 10, QLatin1Char('0'));
        if (i % kInFolder == 0) QDir().mkpath(below);
        QFile file(below + QStringLiteral("T%1.txt").arg(i));
        const std::string& text = texts[static_cast<std::size_t>(i % kMostTests)];
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(text.data(), static_cast<qint64>(text.size())) < 0)
            std::exit(1);
    }
}

void Print(const char* what, const Run& run, int records, double reading) {
    std::printf("%8d records  %-28s %8.2f s  %8.0f records/s  %5.1f times reading  %5.1f MB\n",
                records, what, run.seconds, records / run.seconds, run.seconds / reading,
                run.megabytes);
    std::fflush(stdout);
}

void Measure(int records) {
    const QTemporaryDir temporary;
    const std::string folder = temporary.path().toStdString() + "/archive";
    const std::string out = temporary.path().toStdString() + "/out";
    MakeArchive(QString::fromStdString(folder), records);
    const std::string program = DAVO_REPORT;
    // On one core, like what it is compared with.
    const std::string one = "exec taskset -c 0 ";
    const Run reading = Best(one + "find " + folder + " -name '*.txt' -exec cat {} + >/dev/null");
    Print("reading (find, cat)", reading, records, reading.seconds);
    Print("--csv -", Best(one + program + " --csv - " + folder + " >/dev/null"), records,
          reading.seconds);
    const std::string share = std::to_string(std::max(records / 800, 1));  // of the folders
    Print("--csv -, by two processes",
          Best("ls -d " + folder + "/* | xargs -P2 -n " + share + " " + program +
               " --csv - --no-heading >/dev/null"),
          records, reading.seconds);
    Print("the same, by one",
          Best("ls -d " + folder + "/* | xargs -P1 -n " + share + " " + program +
               " --csv - --no-heading >/dev/null"),
          records, reading.seconds);
    // What takes a hundred times as long as a row.
    constexpr int kMostPages = 500;
    const std::string some =
        " $(ls -d " + folder + "/* | head -n " + std::to_string(kMostPages / 100) + ")";
    for (const std::string format : {"--csv - --judge", "--csv", "--xlsx", "--html", "--pdf"}) {
        const int made = std::min(records, kMostPages);
        Print(format.c_str(),
              RunOf(one + program + " " + format + " --force --out " + out + some + " >/dev/null"),
              made, reading.seconds * made / records);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> counts;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-') counts.push_back(std::atoi(argv[i]));
    }
    if (counts.empty()) counts = {1000};
    for (const int count : counts)
        Measure(count);
    return 0;
}
