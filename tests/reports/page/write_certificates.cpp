// SPDX-License-Identifier: GPL-3.0-or-later
// Writes records, and the certificate and the workbook of each, into a folder, for a program that
// reads them back: write_certificates FOLDER.

#include <QGuiApplication>
#include <cstdio>
#include <exception>

#include "common/files.h"
#include "reports/page/html.h"
#include "reports/page/pdf.h"
#include "reports/record_csv.h"
#include "reports/report_writer.h"
#include "reports/xlsx/renderer.h"
#include "tests/curves/panel_records.h"
#include "tests/reports/workbook_view.h"

namespace davo::test {
namespace {

std::string Tests(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i) {
        RecordParts parts;
        parts.number = " " + std::to_string(i);
        parts.optionalLines = "TEST DESCRIPTION: X" + std::to_string(i) + "-X" +
                              std::to_string(i + 1) + "\r\nTEST NOTES: tap <" + std::to_string(i) +
                              ">\r\n";
        parts.points = i % 4 == 3 ? KneeCurve() : SmoothCurve(60 * i + 90);
        parts.measuredRatio = std::to_string(20 * i) + (i % 2 == 0 ? ".13" : ".9");
        parts.percentError = i % 5 == 4 ? "N/A" : "-0." + std::to_string(10 + i) + "%";
        text += RecordText(parts);
    }
    return text;
}

std::string RatioTests(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i) {
        RecordParts parts;
        parts.number = " " + std::to_string(i);
        parts.points = {};
        text += RecordText(parts);
    }
    return text;
}

QStringList Comparison(int count) {
    QStringList sentences = {QStringLiteral("Reference: T0001 <first>")};
    for (int i = 1; i <= count; ++i) {
        sentences +=
            QStringLiteral(
                "Test %1: At 0.020 A the voltage is 22.7 % below the reference, beyond the limit "
                "of 5 %, which rounded readings move by 0.1 %. The kneepoint is 3.4 % below the "
                "reference's, give or take 1.2 %.")
                .arg(i);
    }
    return sentences;
}

void WriteAll(const QString& folder, const std::string& name, const std::string& tests,
              const QStringList& compared = {}) {
    std::string bytes = HeaderText(name, "K\xF6ln <&\"'>") + tests;
    constexpr std::string_view kTester = "J. Doe";
    if (tests.empty()) bytes.replace(bytes.find(kTester), kTester.size(), kTester.size(), ' ');
    const QString path = folder + QLatin1Char('/') + QString::fromStdString(name);
    ReplaceFile(path + QStringLiteral(".txt"), bytes);
    const RecordFacts record = ParseRecordFacts(bytes, name);
    ReplaceFile(path + QStringLiteral(".csv"), RecordsAsCsv({record}));
    Certificate certificate = CertificateOf(record, KneeRule::Ieee30);
    certificate.compared = compared;
    for (const Paper paper : {Paper::A4, Paper::Letter}) {
        const QString size = paper == Paper::A4 ? QString() : QStringLiteral("-letter");
        WriteCertificatePdf(certificate, paper, path + size + QStringLiteral(".pdf"));
        ReplaceFile(path + size + QStringLiteral(".html"), CertificateAsHtml(certificate, paper));
    }
    constexpr std::size_t kMostInWorkbook = 31;
    if (tests.empty() || record.tests.size() > kMostInWorkbook) return;
    const ReportTables tables = ParseReportTables(bytes, name, RecordSource::RecordFile);
    XlsxRenderer().Render(BuildReport(tables, {"IEEE 30 Degree Marker", true}), {},
                          path + QStringLiteral(".xlsx"), {}, {});
}

void WriteRecords(const QString& folder) {
    for (const int count : {1, 3, 10, 31})
        WriteAll(folder, "T" + std::to_string(count), Tests(count));
    WriteAll(folder, "RATIO", RatioTests(3));
    for (const int count : {1, 3, 10})
        WriteAll(folder, "COMPARED" + std::to_string(count), Tests(count), Comparison(count));
    std::string notes = "NOTES:\r\n";
    for (int i = 1; i <= 150; ++i)
        notes += "Line " + std::to_string(i) + " of <long> & \"quoted\" notes \xFC\r\n";
    WriteAll(folder, "NOTES", Tests(1) + notes);
    WriteAll(folder, "T100", Tests(100));
    WriteAll(folder, "EMPTY", {});
    std::string more = RecordText(1);
    for (int i = 2; i <= 12; ++i)
        more += HeaderText("HEADS") + RecordText(i);
    WriteAll(folder, "HEADS", more);
    RecordParts wide;
    wide.optionalLines = "TEST DESCRIPTION: " + std::string(70, 'D') +
                         "\r\nTEST NOTES: " + std::string(200, 'W') + "\r\n";
    WriteAll(folder, "WIDE", RecordText(wide));
}

}  // namespace
}  // namespace davo::test

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    if (QGuiApplication::arguments().size() != 2) return 2;
    try {
        davo::test::WriteRecords(QGuiApplication::arguments().at(1));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
