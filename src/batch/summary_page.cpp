// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/summary_page.h"

#include <QFileInfo>
#include <QUrl>
#include <span>

#include "common/text.h"
#include "records/directory_entry.h"
#include "reports/page/certificate.h"
#include "reports/page/chart.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

// More curves over each other tell nothing, and a browser would take long to draw them.
constexpr std::size_t kMostCurves = 400;

QString Attribute(const char* name, const QString& text) {
    return QStringLiteral(" %1=\"%2\"").arg(QLatin1String(name), text.toHtmlEscaped());
}

std::string TextCell(const QString& text, const QString& attributes = {}) {
    return QStringLiteral("<td%1>%2</td>").arg(attributes, text.toHtmlEscaped()).toStdString();
}

std::string TextCells(std::initializer_list<const std::string*> texts,
                      const QString& attributes = {}) {
    std::string cells;
    for (const std::string* text : texts)
        cells += TextCell(FromPage(*text), attributes);
    return cells;
}

}  // namespace

void SummaryPage::Add(const RecordFacts& record, const QString& path, const QStringList& files) {
    ++records_;
    QString links;
    for (const QString& file : files) {
        const QString to = folder_.relativeFilePath(QFileInfo(file).absoluteFilePath());
        links +=
            QStringLiteral("<a href=\"%1\">%2</a> ")
                .arg(QLatin1String(QUrl::toPercentEncoding(to, "/")), QFileInfo(file).suffix());
    }
    const std::string name = TextCell(FromPage(record.name), Attribute("title", path));
    const QString number = QStringLiteral(" class=\"n\"");
    for (const RecordTest& test : record.tests) {
        const RecordFileHeader& header = record.headers.at(test.header);
        const std::optional<QDate> date = ParseRecordDate(header.date);
        const auto& [company, station, circuit, maker, model, serial, comments, op] = header.fields;
        rows_ +=
            "<tr id=\"t" + std::to_string(++tests_) + "\">" + name +
            TextCells({&test.testNumber}, number) +
            TextCell(FromPage(header.date),
                     date ? Attribute("data-key", date->toString(Qt::ISODate)) : QString()) +
            TextCells({&station, &circuit, &serial}) +
            TextCells({&test.nameplateRatio, &test.measuredRatio, &test.percentError}, number) +
            TextCells({&test.polarity});
        for (const KneeRule rule : kRuleRows) {
            const KneeFact& fact = FactOf(test, rule);
            rows_ += TextCell(JudgedText(fact), number + Attribute("title", DoubtOf(fact)));
        }
        rows_ += "<td>" + links.toStdString() + "</td>" +
                 TextCells({&company, &maker, &model, &comments, &op}) + "</tr>\n";
        const CertifiedTest one{&record, &test};
        for (ChartCurve& curve : CertificateOf(std::span(&one, 1), rule_).curves) {
            if (++withCurve_ > kMostCurves) continue;
            curve.name.prepend(FromPage(record.name) + QLatin1Char(' '));
            curve.link = QStringLiteral("#t%1").arg(tests_);
            curves_.push_back(std::move(curve));
        }
    }
    if (!record.tests.empty()) return;
    rows_ += "<tr>" + name + "<td colspan=\"18\">There is no test in it.</td></tr>\n";
}

void SummaryPage::AddUnread(const QString& sentence) {
    unread_ += "<li>" + sentence.toHtmlEscaped().toStdString() + "</li>\n";
}

std::string SummaryPage::Html() const {
    QString counts = QStringLiteral("Records: %1. Tests: %2.").arg(records_).arg(tests_);
    QString chart;
    if (!curves_.empty()) {
        counts += QStringLiteral(" The chart has %1 of %2 curves and marks the kneepoints by %3.")
                      .arg(curves_.size())
                      .arg(withCurve_)
                      .arg(KneeWord(rule_));
        chart = SvgOf(ChartOf(curves_, {200, 120}), QStringLiteral("Excitation curves"));
    }
    const std::string unread =
        unread_.empty() ? "" : "<h2>Not in the table</h2>\n<ul>\n" + unread_ + "</ul>";
    return FilledPage("batch/summary_page.html",
                      {PageResource("page/chart.css").toStdString(), counts.toStdString(),
                       chart.toStdString(), rows_, unread});
}

}  // namespace davo
