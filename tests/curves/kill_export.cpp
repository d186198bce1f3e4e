// SPDX-License-Identifier: GPL-3.0-or-later
// Saves a chart as a picture and a certificate, for the test that kills this program at every
// change of the disk: davo_kill_export <folder>

#include <QApplication>

#include "curves/curve_chart.h"
#include "reports/page/pdf.h"

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc != 2) return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    davo::CurveChart chart;
    chart.SavePng(folder + QStringLiteral("chart.png"), {320, 240});
    davo::RecordFacts record;
    record.headers.emplace_back();
    WriteCertificatePdf(CertificateOf(record, {}), davo::Paper::A4,
                        folder + QStringLiteral("page.pdf"));
}
