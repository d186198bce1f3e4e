// SPDX-License-Identifier: GPL-3.0-or-later
// Reports of 1 to 31 tests of 20 to 32 points by a warm LibreOffice Calc, against what a script
// would do in the same run: write the workbook as .xlsx and let `soffice --convert-to xls` make the
// .xls. The two alternate; figures are medians of five.

#include <sys/resource.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/realistic_record.h"
#include "reports/renderer.h"
#include "reports/report_writer.h"
#include "reports/xlsx/renderer.h"
#include "tests/reports/workbook_view.h"

namespace davo {
namespace {

constexpr const char* kTemplate = DAVO_TEMPLATE;

// Milliseconds.
struct Took {
    double wall = 0;
    double processor = 0;
};

// Of every process that is LibreOffice and our child: what a file of its folder in /proc says.
std::vector<QByteArray> OfEngines(const char* fileName) {
    const QByteArray parent = "PPid:\t" + QByteArray::number(QCoreApplication::applicationPid());
    const auto contents = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    std::vector<QByteArray> found;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        if (name.toInt() == 0) continue;
        const QString folder = QStringLiteral("/proc/") + name + QLatin1Char('/');
        const QList<QByteArray> lines = contents(folder + QStringLiteral("status")).split('\n');
        if (lines.contains("Name:\tsoffice.bin") && lines.contains(parent))
            found.push_back(contents(folder + QLatin1String(fileName)));
    }
    return found;
}

double Milliseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1000.0 + static_cast<double>(time.tv_usec) / 1000.0;
}

// Of this program, the engine, and the programs that have ended.
double ProcessorTime() {
    double sum = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        getrusage(who, &used);
        sum += Milliseconds(used.ru_utime) + Milliseconds(used.ru_stime);
    }
    const double tick = 1000.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
    for (const QByteArray& stat : OfEngines("stat")) {
        // "123 (soffice.bin) S 1 ...": the 14th and the 15th of all.
        const QList<QByteArray> parts = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (parts.size() > 12) sum += (parts[11].toDouble() + parts[12].toDouble()) * tick;
    }
    return sum;
}

Took TimeOf(const std::function<void()>& operation) {
    const auto began = std::chrono::steady_clock::now();
    const double beganProcessor = ProcessorTime();
    operation();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    return {took.count(), ProcessorTime() - beganProcessor};
}

double MedianOf(const std::vector<Took>& runs, double Took::*part) {
    std::vector<double> times;
    times.reserve(runs.size());
    for (const Took& run : runs)
        times.push_back(run.*part);
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

// "VmHWM:   213000 kB".
void PrintMemory() {
    for (const QByteArray& status : OfEngines("status")) {
        for (const QByteArray& line : status.split('\n')) {
            if (line.startsWith("VmHWM")) std::printf("peak memory %s\n", line.constData());
        }
    }
}

int Run() {
    const QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("report.xlsx"));
    const QString target = folder.filePath(QStringLiteral("report.xls"));
    const auto renderer = MakeCalcRenderer();
    if (!renderer) return 1;
    XlsxRenderer builtIn;
    const auto report = [](int tests) {
        return BuildReport(test::ParseFile(bench::RealisticFileText(tests)),
                           {"IEEE 30 Degree Marker", true});
    };
    const Workbook first = report(1);
    const auto renderTo = [&](const Workbook& workbook) {
        renderer->Render(workbook, QLatin1String(kTemplate), target, {}, {});
    };
    std::printf("first report, engine not started: %.0f ms\n",
                TimeOf([&] { renderTo(first); }).wall);
    const auto convert = [&](const Workbook& workbook) {
        builtIn.Render(workbook, QLatin1String(kTemplate), source, {}, {});
        QProcess soffice;
        soffice.setStandardOutputFile(QProcess::nullDevice());
        soffice.setStandardErrorFile(QProcess::nullDevice());
        soffice.start(
            QStringLiteral("soffice"),
            {QStringLiteral("-env:UserInstallation=file://") +
                 folder.filePath(QStringLiteral("profile")),
             QStringLiteral("--headless"), QStringLiteral("--convert-to"), QStringLiteral("xls"),
             QStringLiteral("--outdir"), folder.filePath(QStringLiteral("converted")), source});
        soffice.waitForFinished(-1);
    };
    convert(first);  // makes the profile
    for (const int tests : {1, 3, 10, 20, 31}) {
        const Workbook workbook = report(tests);
        constexpr int kRuns = 5;
        const bool isCompared = tests <= 3 || tests == 31;
        std::vector<Took> warm;
        std::vector<Took> converted;
        for (int run = 0; run < kRuns; ++run) {
            warm.push_back(TimeOf([&] { renderTo(workbook); }));
            if (isCompared) converted.push_back(TimeOf([&] { convert(workbook); }));
        }
        const double wall = MedianOf(warm, &Took::wall);
        const double processor = MedianOf(warm, &Took::processor);
        std::printf("%2d tests: %.0f ms, processor %.0f ms", tests, wall, processor);
        if (isCompared) {
            const double wallOfPeer = MedianOf(converted, &Took::wall);
            const double processorOfPeer = MedianOf(converted, &Took::processor);
            std::printf("; converted %.0f ms, processor %.0f ms; ratios %.2f and %.2f", wallOfPeer,
                        processorOfPeer, wall / wallOfPeer, processor / processorOfPeer);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    PrintMemory();
    return 0;
}

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return davo::Run();
}
