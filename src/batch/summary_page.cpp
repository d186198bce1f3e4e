// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/summary_page.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <algorithm>
#include <array>

#include "common/text.h"
#include "records/directory_entry.h"
#include "reports/chart_curve.h"
#include "reports/page/chart.h"
#include "reports/record_texts.h"

// Outside the namespace, because it names a function that the resource compiler makes there.
static void LoadPage() {
    Q_INIT_RESOURCE(summary_page);
}

namespace davo {

namespace {

// More curves over each other tell nothing, and a browser would take long to draw them.
constexpr std::size_t kMostCurves = 400;

// Behind that of the record's name.
constexpr const char* kNoTest = "<td colspan=\"18\">There is no test in it.</td></tr>\n";

std::string Escaped(const QString& text) {
    return text.toHtmlEscaped().toStdString();
}

std::string Attribute(const char* name, const QString& text) {
    return std::string(" ") + name + "=\"" + Escaped(text) + '"';
}

std::string TextCell(const QString& text, const std::string& attributes = {}) {
    return "<td" + attributes + '>' + Escaped(text) + "</td>";
}

std::string NumberCell(const QString& text, const std::string& attributes = {}) {
    return TextCell(text, " class=\"n\"" + attributes);
}

// The colours of the chart.
std::string Inks() {
    QString rules;
    for (int i = 0; i < kInks; ++i) {
        rules += QStringLiteral("svg .i%1{stroke:#%2}svg text.i%1,svg .f.i%1{fill:#%2}\n")
                     .arg(i)
                     .arg(PaperColour(i), 6, 16, QLatin1Char('0'));
    }
    return rules.toStdString();
}

}  // namespace

void SummaryPage::Add(const RecordFacts& record, const QString& path, const QStringList& files) {
    ++records_;
    std::string links = "<td>";
    for (const QString& file : files) {
        const QByteArray to = QUrl::toPercentEncoding(
            folder_.relativeFilePath(QFileInfo(file).absoluteFilePath()), "/");
        links += "<a href=\"" + to.toStdString() + "\">" +
                 Escaped(file.mid(file.lastIndexOf(QLatin1Char('.')) + 1)) + "</a> ";
    }
    links += "</td>";
    const std::string name = TextCell(FromPage(record.name), Attribute("title", path));
    for (const RecordTest& test : record.tests)
        AddTest(record, test, name, links);
    if (record.tests.empty()) rows_ += "<tr>" + name + kNoTest;
}

void SummaryPage::AddTest(const RecordFacts& record, const RecordTest& test,
                          const std::string& before, const std::string& behind) {
    const RecordFileHeader& header = record.headers.at(test.header);
    const std::optional<QDate> date = ParseRecordDate(header.date);
    const auto& [company, station, circuit, maker, model, serial, comments, op] = header.fields;
    const auto put = [this](const std::string& text) { rows_ += TextCell(FromPage(text)); };
    const auto putNumber = [this](const std::string& text) { rows_ += NumberCell(FromPage(text)); };
    rows_ += "<tr id=\"t" + std::to_string(++tests_) + "\">" + before;
    putNumber(test.testNumber);
    rows_ += TextCell(FromPage(header.date),
                      date ? Attribute("data-key", date->toString(Qt::ISODate)) : std::string());
    for (const std::string* text : {&station, &circuit, &serial})
        put(*text);
    for (const std::string* text : {&test.nameplateRatio, &test.measuredRatio, &test.percentError})
        putNumber(*text);
    put(test.polarity);
    for (const KneeRule rule : kRuleRows) {
        const KneeFact& fact = FactOf(test, rule);
        rows_ += NumberCell(JudgedText(fact), Attribute("title", DoubtOf(fact)));
    }
    rows_ += behind;
    for (const std::string* text : {&company, &maker, &model, &comments, &op})
        put(*text);
    rows_ += "</tr>\n";

    if (std::none_of(test.points.begin(), test.points.end(), CanBeDrawn)) return;
    if (++withCurve_ > kMostCurves) return;
    ChartCurve curve{FromPage(record.name + " Test " + test.testNumber), test.points, {}};
    curve.link = QStringLiteral("#t%1").arg(tests_);
    const KneeFact& fact = FactOf(test, rule_);
    if (const std::optional<CurvePoint> knee = fact.At())
        curve.knees.push_back({rule_, *knee, PrintedText(fact)});
    curves_.push_back(std::move(curve));
}

void SummaryPage::AddUnread(const QString& sentence) {
    unread_ += "<li>" + Escaped(sentence) + "</li>\n";
}

std::string SummaryPage::Counts() const {
    QString text = QStringLiteral("Records: %1. Tests: %2.").arg(records_).arg(tests_);
    if (curves_.empty()) return Escaped(text);
    text += QStringLiteral(" The chart marks the kneepoints by %1").arg(KneeWord(rule_));
    if (withCurve_ > curves_.size()) {
        text += QStringLiteral("; it has the first %1 of %2 curves")
                    .arg(curves_.size())
                    .arg(withCurve_);
    }
    return Escaped(text + QLatin1Char('.'));
}

std::string SummaryPage::Chart() const {
    if (curves_.empty()) return {};
    constexpr QSizeF kSize(200, 120);
    return SvgOf(ChartOf(curves_, kSize), QStringLiteral("Excitation curves")).toStdString();
}

std::string SummaryPage::Html() const {
    LoadPage();
    QFile file(QStringLiteral(":/davo/batch/summary_page.html"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    std::string page = file.readAll().toStdString();
    const std::string unread =
        unread_.empty() ? std::string() : "<h2>Not in the table</h2>\n<ul>\n" + unread_ + "</ul>";
    // No part has such a place in it: what a record says is escaped.
    constexpr std::string_view kPlace = "<!-- % -->";
    for (const std::string& part : {Inks(), Counts(), Chart(), rows_, unread})
        page.replace(page.find(kPlace), kPlace.size(), part);
    return page;
}

}  // namespace davo
