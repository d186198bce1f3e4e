// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/certificate.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>

#include "common/numbers.h"
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

CertificateTable RatioTable() {
    const QString excitation = QStringLiteral("Excitation");
    return {QStringLiteral("Ratio and polarity"),
            {{"Test", false},
             {"Description", false},
             {"Nameplate", false},
             {"Ratio"},
             {"Error, %"},
             {"Polarity", false},
             {"Phase", false},
             {"Angle, \u00b0"},
             {"Voltage, V", true, excitation},
             {"Current, A", true, excitation}},
            {}};
}

CertificateTable KneeTable() {
    CertificateTable table{QStringLiteral("Kneepoints"), {{"Test", false}}, {}};
    for (const KneeRule rule : kCertifiedRules) {
        QString group = KneeWord(rule);
        // Who knows the one name looks for it in vain under the other.
        if (rule == KneeRule::Asa1050) group += QStringLiteral(", IEC knee point e.m.f.");
        for (const char* heading : {"V", "A", "Smooth V", "Smooth A"})
            table.columns.push_back({heading, true, group});
    }
    return table;
}

const QRegularExpression& Numbers() {
    static const QRegularExpression kNumbers(QStringLiteral("\\d+(\\.\\d+)?|\u2026"));
    return kNumbers;
}

// Sentences of one kind differ in their numbers.
QString KindOf(QString sentence) {
    return sentence.replace(Numbers(), QStringLiteral("\u2026"));
}

// What two sentences of one kind both say, with "\u2026" for the numbers that differ.
QString CommonText(const QString& one, const QString& other) {
    QString common;
    qsizetype end = 0;
    QRegularExpressionMatchIterator others = Numbers().globalMatch(other);
    for (const QRegularExpressionMatch& number : Numbers().globalMatch(one)) {
        common += one.mid(end, number.capturedStart() - end);
        const bool isSame = others.hasNext() && others.next().captured() == number.captured();
        common += isSame ? number.captured() : QStringLiteral("\u2026");
        end = number.capturedEnd();
    }
    return common + one.mid(end);
}

// What is said of the kneepoints of several tests. The same kind of doubt has one mark.
class Doubts {
  public:
    // 0 where there is nothing to say.
    int MarkFor(const KneeFact& fact, int row) {
        // The table has the smooth kneepoint.
        static const QRegularExpression kPlace(
            QStringLiteral("its kneepoint (only )?(at|between) .*?[VA]\\.(?= [A-Z]|$)"));
        QString said = FromPage(fact.reason.empty() ? fact.doubt : fact.reason);
        if (said.isEmpty()) return 0;
        said.replace(kPlace, QStringLiteral("its kneepoint \\1as under \"Smooth\"."));
        const auto isSameKind = [&said](const Doubt& other) {
            return KindOf(other.text) == KindOf(said);
        };
        auto place = std::find_if(doubts_.begin(), doubts_.end(), isSameKind);
        if (place == doubts_.end()) place = doubts_.insert(place, {said, {}});
        place->text = CommonText(said, place->text);
        if (place->rows.empty() || place->rows.back() != row) place->rows.push_back(row);
        return static_cast<int>(place - doubts_.begin()) + 1;
    }

    // The sentences, with the tests of whose rows they are.
    QStringList Explained(const CertificateTable& table) const {
        const auto nameOf = [&table](int row) { return table.rows.at(row).front().text; };
        QStringList explained;
        for (const Doubt& doubt : doubts_) {
            explained += doubt.text;
            if (table.rows.size() == 1) continue;
            const QString tests =
                QLatin1String(doubt.rows.size() > 1 ? " (Tests %1)" : " (Test %1)");
            explained.back() += tests.arg(RunsText(doubt.rows, nameOf));
        }
        return explained;
    }

  private:
    struct Doubt {
        QString text;
        std::vector<int> rows;  // rising
    };

    std::vector<Doubt> doubts_;
};

void AddRows(Certificate& page, Doubts& doubts, const QString& name, const RecordTest& test) {
    const auto cell = [](const std::string& text) { return CertificateCell{FromPage(text)}; };
    page.tables[0].rows.push_back({{name},
                                   cell(test.description),
                                   cell(test.nameplateRatio),
                                   cell(test.measuredRatio),
                                   {FromPage(test.percentError).remove(QLatin1Char('%')).trimmed()},
                                   cell(test.polarity),
                                   cell(test.phase),
                                   cell(test.phaseAngle),
                                   cell(test.excitationVoltage),
                                   cell(test.excitationCurrent)});
    if (test.points.empty()) return;
    const int row = static_cast<int>(page.tables[1].rows.size());
    std::vector<CertificateCell> knees = {{name}};
    for (const KneeRule rule : kCertifiedRules) {
        const KneeFact& fact = FactOf(test, rule);
        knees.push_back({FromPage(fact.printed.voltage), doubts.MarkFor(fact, row)});
        knees.push_back(cell(fact.printed.current));
        knees.push_back({SmoothText(fact).remove(QStringLiteral(" V"))});
        knees.push_back(cell(fact.smooth && !fact.range
                                 ? Picture(fact.smooth->at.current, kPointPicture)
                                 : std::string()));
    }
    page.tables[1].rows.push_back(std::move(knees));
}

// A record's name is in front of a test's number where there are several.
void AddTest(Certificate& page, Doubts& doubts, const CertifiedTest& one, bool named,
             std::optional<KneeRule> marked) {
    if (!one.test) {
        page.notes += QStringLiteral("There is no test in it.");
        return;
    }
    const RecordTest& test = *one.test;
    const QString record = named ? FromPage(one.record->name) + QLatin1Char(' ') : QString();
    const QString number = FromPage(test.testNumber);
    AddRows(page, doubts, record + number, test);
    if (!test.notes.empty())
        page.notes += QStringLiteral("Test %1: %2").arg(record + number, FromPage(test.notes));
    if (std::none_of(test.points.begin(), test.points.end(), CanBeDrawn)) return;
    ChartCurve curve{record + QStringLiteral("Test ") + number, test.points, {}};
    if (marked) {
        const KneeFact& fact = FactOf(test, *marked);
        if (const auto at = fact.At()) curve.knees.push_back({*marked, *at, PrintedText(fact)});
    }
    page.curves.push_back(std::move(curve));
}

}  // namespace

Certificate CertificateOf(std::span<const CertifiedTest> tests, std::optional<KneeRule> marked) {
    Certificate page;
    page.tables = {RatioTable(), KneeTable()};
    std::vector<const RecordFacts*> records;
    std::vector<const RecordFileHeader*> headers;
    for (const CertifiedTest& one : tests) {
        const RecordFileHeader& header = one.record->headers.at(one.test ? one.test->header : 0);
        if (std::find(records.begin(), records.end(), one.record) == records.end())
            records.push_back(one.record);
        if (std::find(headers.begin(), headers.end(), &header) != headers.end()) continue;
        headers.push_back(&header);
        page.headers.push_back(FieldsOf(*one.record, header));
    }
    Doubts doubts;
    for (const CertifiedTest& one : tests)
        AddTest(page, doubts, one, records.size() > 1, marked);
    page.explained = doubts.Explained(page.tables[1]);
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
    if (tests.empty()) tests.push_back({&record});
    return CertificateOf(tests, marked);
}

}  // namespace davo
