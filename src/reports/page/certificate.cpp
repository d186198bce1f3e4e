// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/certificate.h"

#include <algorithm>
#include <array>

#include "common/text.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

// As the report has them.
constexpr std::array kCertifiedRules = {KneeRule::Asa1050, KneeRule::Ieee30, KneeRule::Ieee45};

std::vector<CertificateField> FieldsOf(const RecordFacts& record, const RecordFileHeader& header) {
    constexpr std::array kCaptions = {"Company", "Station",       "Circuit",  "Manufacturer",
                                      "Model",   "Serial number", "Comments", "Operator"};
    std::vector<CertificateField> fields = {
        {QStringLiteral("Record"), FromPage(record.name)},
        {QStringLiteral("Date and time"), FromPage(header.date + " " + header.time)}};
    for (std::size_t i = 0; i < kCaptions.size(); ++i)
        fields.push_back({QLatin1String(kCaptions.at(i)), FromPage(header.fields.at(i))});
    return fields;
}

CertificateTable EmptyResults() {
    const auto text = [](const char* heading) {
        return CertificateColumn{{}, QLatin1String(heading), {}, false};
    };
    const auto number = [](const char* group, const char* heading, QString unit) {
        return CertificateColumn{QLatin1String(group), QLatin1String(heading), std::move(unit),
                                 true};
    };
    return {QStringLiteral("Ratio and polarity"),
            {text("Test"), text("Description"), text("Nameplate"), number("", "Ratio", {}),
             number("", "Error", QStringLiteral("%")), text("Polarity"), text("Phase"),
             number("", "Angle", QStringLiteral("\u00b0")),
             number("Excitation", "Voltage", QStringLiteral("V")),
             number("Excitation", "Current", QStringLiteral("A"))},
            {}};
}

CertificateTable EmptyKnees() {
    CertificateTable table{QStringLiteral("Kneepoints"), {{{}, QStringLiteral("Test"), {}}}, {}};
    for (const KneeRule rule : kCertifiedRules) {
        const QString group = KneeWord(rule);
        table.columns.push_back({group, QStringLiteral("Voltage"), QStringLiteral("V"), true});
        table.columns.push_back({group, QStringLiteral("Current"), QStringLiteral("A"), true});
        table.columns.push_back({group, QStringLiteral("Smooth curve"), QStringLiteral("V"), true});
    }
    return table;
}

QString WithoutEnd(QString text, const QString& end) {
    if (text.endsWith(end)) text.chop(end.size());
    return text.trimmed();
}

// The same sentence has one mark, wherever it is said.
int MarkFor(QStringList& explained, const KneeFact& fact) {
    const std::string& said = fact.reason.empty() ? fact.doubt : fact.reason;
    if (said.empty()) return 0;
    const QString sentence = FromPage(said);
    if (!explained.contains(sentence)) explained += sentence;
    return static_cast<int>(explained.indexOf(sentence)) + 1;
}

void AddRows(Certificate& page, const QString& name, const RecordTest& test) {
    const auto cell = [](const std::string& text) { return CertificateCell{FromPage(text)}; };
    page.tables[0].rows.push_back({{name},
                                   cell(test.description),
                                   cell(test.nameplateRatio),
                                   cell(test.measuredRatio),
                                   {WithoutEnd(FromPage(test.percentError), QStringLiteral("%"))},
                                   cell(test.polarity),
                                   cell(test.phase),
                                   cell(test.phaseAngle),
                                   cell(test.excitationVoltage),
                                   cell(test.excitationCurrent)});
    if (test.points.empty()) return;
    std::vector<CertificateCell> knees = {{name}};
    for (const KneeRule rule : kCertifiedRules) {
        const KneeFact& fact = FactOf(test, rule);
        knees.push_back({FromPage(fact.printed.voltage), MarkFor(page.explained, fact)});
        knees.push_back(cell(fact.printed.current));
        knees.push_back({WithoutEnd(SmoothText(fact), QStringLiteral(" V"))});
    }
    page.tables[1].rows.push_back(std::move(knees));
}

void AddCurve(Certificate& page, const QString& name, const RecordTest& test,
              std::optional<KneeRule> marked) {
    if (std::none_of(test.points.begin(), test.points.end(), CanBeDrawn)) return;
    ChartCurve curve{name, test.points, {}, CurveLook::Normal};
    if (marked) {
        const KneeFact& fact = FactOf(test, *marked);
        if (fact.At()) curve.knees.push_back({*marked, *fact.At(), PrintedText(fact)});
    }
    page.curves.push_back(std::move(curve));
}

// A record's name is in front of a test's number where there are several headers.
void AddTest(Certificate& page, const CertifiedTest& one, bool named,
             std::optional<KneeRule> marked) {
    const RecordTest& test = *one.test;
    QString name = FromPage(test.testNumber);
    if (named) name.prepend(FromPage(one.record->name) + QLatin1Char(' '));
    AddRows(page, name, test);
    QString curve = QStringLiteral("Test ") + FromPage(test.testNumber);
    if (named) curve.prepend(FromPage(one.record->name) + QLatin1Char(' '));
    AddCurve(page, curve, test, marked);
    if (!test.notes.empty())
        page.notes += QStringLiteral("Test %1: %2").arg(name, FromPage(test.notes));
}

}  // namespace

Certificate CertificateOf(std::span<const CertifiedTest> tests, std::optional<KneeRule> marked) {
    Certificate page;
    page.tables = {EmptyResults(), EmptyKnees()};
    std::vector<const RecordFacts*> records;
    std::vector<const RecordFileHeader*> headers;
    for (const CertifiedTest& one : tests) {
        const RecordFileHeader& header = one.record->headers.at(one.test->header);
        if (std::find(records.begin(), records.end(), one.record) == records.end())
            records.push_back(one.record);
        if (std::find(headers.begin(), headers.end(), &header) != headers.end()) continue;
        headers.push_back(&header);
        page.headers.push_back(FieldsOf(*one.record, header));
    }
    for (const CertifiedTest& one : tests)
        AddTest(page, one, records.size() > 1, marked);
    QStringList names;
    for (const RecordFacts* record : records) {
        names += FromPage(record->name);
        for (const std::string& line : record->notes)
            page.notes += FromPage(line);
    }
    page.notes += NotesOn(records, ShareOfTests(records.size()));
    page.subject = names.join(QStringLiteral(", "));
    if (!headers.empty()) {
        page.tester = FromPage(headers.front()->fields.back());
        page.date = FromPage(headers.front()->date);
    }
    return page;
}

Certificate CertificateOf(const RecordFacts& record, std::optional<KneeRule> marked) {
    std::vector<CertifiedTest> tests;
    for (const RecordTest& test : record.tests)
        tests.push_back({&record, &test});
    Certificate page = CertificateOf(tests, marked);
    if (!tests.empty()) return page;
    page.subject = FromPage(record.name);
    for (const RecordFileHeader& header : record.headers)
        page.headers.push_back(FieldsOf(record, header));
    page.notes += QStringLiteral("There is no test in it.");
    for (const std::string& line : record.notes)
        page.notes += FromPage(line);
    return page;
}

}  // namespace davo
