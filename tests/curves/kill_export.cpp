// SPDX-License-Identifier: GPL-3.0-or-later
// Saves a chart as a picture and as a page, for the test that kills this program at every change of
// the disk: davo_kill_export <folder>

#include <QApplication>

#include "curves/curve_chart.h"

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc != 2) return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    davo::CurveChart chart;
    chart.SavePng(folder + QStringLiteral("chart.png"), {320, 240});
    chart.SavePdf(folder + QStringLiteral("chart.pdf"));
}
