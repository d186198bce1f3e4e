// SPDX-License-Identifier: GPL-3.0-or-later
// From the selection of a record to the painted panel, and through 250 records one by one; run it
// offscreen. Milliseconds, and the memory that the process holds.

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "common/files.h"
#include "curves/curve_chart.h"
#include "curves/record_panel.h"
#include "tests/curves/panel_records.h"
#include "tests/support/fake_prompts.h"

namespace {

using davo::test::Curve;
using davo::test::SmoothCurve;

std::string Record(int tests, int offset) {
    std::string text = davo::test::HeaderText();
    for (int i = 1; i <= tests; ++i)
        text += Curve(SmoothCurve(60 + 7 * i + offset), i);
    return text;
}

// Kilobytes; 0 where the system does not tell.
long MemoryHeld() {
    try {
        for (const std::string& line : davo::ReadLines(QStringLiteral("/proc/self/status"))) {
            if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
        }
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    const auto path = [&](int i) { return folder.filePath(QStringLiteral("R%1.txt").arg(i)); };
    constexpr int kRecords = 250;
    constexpr int kBig = 11;
    for (int i = 0; i < kRecords; ++i)
        davo::ReplaceFile(path(i), Record(3, i));
    for (int i = 0; i < kBig; ++i)
        davo::ReplaceFile(path(kRecords + i), Record(100, i));

    davo::test::FakePrompts prompts;
    davo::RecordPanel panel(prompts);
    panel.resize(500, 680);
    panel.show();
    QTest::qWait(100);
    auto* chart =
        dynamic_cast<davo::CurveChart*>(panel.findChild<QWidget*>(QStringLiteral("chtCurves")));
    const auto show = [&](const std::vector<QString>& files) {
        const int before = chart->Paints();
        QElapsedTimer clock;
        clock.start();
        panel.ShowRecords(files);
        while (chart->Paints() == before)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const double spent = static_cast<double>(clock.nsecsElapsed()) / 1e6;
        QTest::qWait(50);
        return spent;
    };
    show({path(0)});
    const long memory = MemoryHeld();
    std::vector<double> times;
    for (int i = 0; i < kBig; ++i)
        times.push_back(show({path(kRecords + i)}));
    std::sort(times.begin(), times.end());
    std::printf("a record of 100 tests: median %.1f ms, worst %.1f ms (10 ms of it waiting)\n",
                times.at(times.size() / 2), times.back());
    std::vector<QString> ten;
    for (int i = 0; i < 10; ++i)
        ten.push_back(path(kRecords + i));
    std::printf("ten records of 100 tests: %.1f ms\n", show(ten));
    std::printf("memory: %ld kB before, %ld kB with ten records of 100 tests\n", memory,
                MemoryHeld());

    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < kRecords; ++i) {
        panel.ShowRecords({path(i)});
        QApplication::processEvents();
    }
    std::printf("250 selections without a pause: %.1f ms\n",
                static_cast<double>(clock.nsecsElapsed()) / 1e6);
    return 0;
}
