// SPDX-License-Identifier: GPL-3.0-or-later
// The built-in renderer's workbook of 31 tests, against replacing a file by as many bytes, which
// is mostly the flush to the disk, in the same run. The processor time is what a faster disk
// leaves.

#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include "bench/realistic_record.h"
#include "common/files.h"
#include "common/settings.h"
#include "reports/report_writer.h"
#include "reports/xlsx/renderer.h"
#include "tests/reports/workbook_view.h"

namespace davo {
namespace {

constexpr int kRuns = 15;

struct Took {
    double wall = 0;       // milliseconds
    double processor = 0;  // milliseconds
};

Took TimeOf(const std::function<void()>& operation) {
    const auto began = std::chrono::steady_clock::now();
    const std::clock_t beganProcessor = std::clock();
    operation();
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - began;
    constexpr double kPerMillisecond = CLOCKS_PER_SEC / 1000.0;
    return {wall.count(), static_cast<double>(std::clock() - beganProcessor) / kPerMillisecond};
}

double MedianOf(const std::vector<Took>& runs, double Took::*part) {
    std::vector<double> times;
    times.reserve(runs.size());
    for (const Took& run : runs)
        times.push_back(run.*part);
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

void Print(const char* what, const std::vector<Took>& runs) {
    std::printf("%-34s %7.2f ms, processor %7.2f ms (medians of %d)\n", what,
                MedianOf(runs, &Took::wall), MedianOf(runs, &Took::processor), kRuns);
}

void Run(int tests) {
    const QTemporaryDir folder;
    const QString report = folder.filePath(QStringLiteral("T0012.xlsx"));
    const QString copy = folder.filePath(QStringLiteral("copy.xlsx"));
    const Workbook workbook =
        BuildReport(test::ParseFile(bench::RealisticFileText(tests)), {kKneeIeee30, true});
    XlsxRenderer renderer;
    renderer.Render(workbook, {}, report, {}, {});
    const std::string bytes = ReadWholeFile(report);
    std::vector<Took> rendered;
    std::vector<Took> copied;
    for (int run = 0; run < kRuns; ++run) {
        rendered.push_back(TimeOf([&] { renderer.Render(workbook, {}, report, {}, {}); }));
        copied.push_back(TimeOf([&] { ReplaceFile(copy, bytes); }));
    }
    std::printf("%d tests, %zu bytes\n", tests, bytes.size());
    Print("  render and replace", rendered);
    Print("  replace by the same bytes", copied);
    std::printf("  ratio %.1f\n", MedianOf(rendered, &Took::wall) / MedianOf(copied, &Took::wall));
}

}  // namespace
}  // namespace davo

int main() {
    for (const int tests : {1, 3, 31})
        davo::Run(tests);
}
