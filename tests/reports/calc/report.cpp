// SPDX-License-Identifier: GPL-3.0-or-later
// Renders a report of record files' text with LibreOffice Calc, for tests that need a program of
// its own: calc_report TESTS TEMPLATE TARGET [TIMES]. Tells how long each took, in milliseconds.

#include <QCoreApplication>
#include <chrono>
#include <cstdio>
#include <exception>

#include "reports/renderer.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4) return 2;
    const auto renderer = davo::MakeCalcRenderer();
    if (!renderer) return 3;
    renderer->Prepare();
    const int tests = arguments[1].toInt();
    const int times = arguments.size() > 4 ? arguments[4].toInt() : 1;
    const davo::Workbook workbook = davo::BuildReport(
        davo::test::ParseFile(davo::test::FileText(tests) + davo::test::Line("NOTES:") +
                              davo::test::Line("first note") + davo::test::Line("second")),
        {"IEEE 30 Degree Marker", true});
    try {
        for (int i = 0; i < times; ++i) {
            const auto start = std::chrono::steady_clock::now();
            renderer->Render(workbook, arguments[2], arguments[3], {}, {});
            const std::chrono::duration<double, std::milli> taken =
                std::chrono::steady_clock::now() - start;
            std::printf("%.0f\n", taken.count());
            std::fflush(stdout);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
