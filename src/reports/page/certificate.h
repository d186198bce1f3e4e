// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "reports/chart_curve.h"
#include "reports/record_facts.h"

namespace davo {

struct CertificateField {
    QString caption;
    QString text;
};

struct CertificateColumn {
    std::string_view heading;  // in UTF-8
    bool isNumber = true;      // aligned by the decimal point
    QString group = {};        // over the headings of several columns; may be empty
};

struct CertificateCell {
    QString text;
    int mark = 0;  // of a sentence in Certificate::explained, from 1
};

struct CertificateTable {
    QString title;
    std::vector<CertificateColumn> columns;
    std::vector<std::vector<CertificateCell>> rows;
};

// What the page for a customer has, as texts in the order in which they are read.
struct Certificate {
    QString subject;  // of the document: the records' names
    std::vector<std::vector<CertificateField>> headers;
    std::array<CertificateTable, 2> tables;  // results, and kneepoints
    QStringList explained;                   // what the marks of doubtful kneepoints mean
    std::vector<ChartCurve> curves;          // none in a session of ratio tests only
    QStringList compared;  // sentences of a comparison, the reference's name first
    QStringList notes;
    QString tester;
    QString date;

    QString Title() const { return subject + QStringLiteral(" - Test Certificate"); }
};

// A test of a record, whose kneepoints are found; null for a record without one.
struct CertifiedTest {
    const RecordFacts* record = nullptr;
    const RecordTest* test = nullptr;
};

// The certificate of tests, which may be of several records; marked is the rule whose kneepoints
// the chart marks. Its texts are those of the report.
Certificate CertificateOf(std::span<const CertifiedTest> tests, std::optional<KneeRule> marked);
// Of all tests of a record, which are judged.
Certificate CertificateOf(const RecordFacts& record, std::optional<KneeRule> marked);

}  // namespace davo
