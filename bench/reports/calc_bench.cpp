// SPDX-License-Identifier: GPL-3.0-or-later
// Reports of 1, 3 and 31 tests by a warm LibreOffice Calc, against what a script would do in the
// same run: write the workbook as .xlsx and let `soffice --convert-to xls` make the .xls.

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

#include "reports/renderer.h"
#include "reports/report_writer.h"
#include "reports/xlsx/renderer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"

namespace davo {
namespace {

constexpr const char* kTemplate = DAVO_TEMPLATE;

double TimeOf(const std::function<void()>& operation) {
    const auto began = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    return took.count();
}

double MedianTimeOf(int runs, const std::function<void()>& operation) {
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(runs));
    for (int run = 0; run < runs; ++run)
        times.push_back(TimeOf(operation));
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

// "VmHWM:   213000 kB" of every process that is LibreOffice and our child.
void PrintMemory() {
    const QByteArray parent = "PPid:\t" + QByteArray::number(QCoreApplication::applicationPid());
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile file(QStringLiteral("/proc/") + name + QStringLiteral("/status"));
        if (name.toInt() == 0 || !file.open(QIODevice::ReadOnly)) continue;
        const QList<QByteArray> lines = file.readAll().split('\n');
        if (!lines.contains("Name:\tsoffice.bin") || !lines.contains(parent)) continue;
        for (const QByteArray& line : lines) {
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
        return BuildReport(test::ParseFile(test::FileText(tests)), {"IEEE 30 Degree Marker", true});
    };
    const Workbook first = report(1);
    const auto renderTo = [&](const Workbook& workbook) {
        renderer->Render(workbook, QLatin1String(kTemplate), target, {}, {});
    };
    std::printf("first report, engine not started: %.0f ms\n", TimeOf([&] { renderTo(first); }));
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
    for (const int tests : {1, 3, 31}) {
        const Workbook workbook = report(tests);
        constexpr int kRuns = 3;
        const double warm = MedianTimeOf(kRuns, [&] { renderTo(workbook); });
        const double converted = MedianTimeOf(kRuns, [&] { convert(workbook); });
        std::printf("%2d tests: %.0f ms, converted %.0f ms, ratio %.2f\n", tests, warm, converted,
                    warm / converted);
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
