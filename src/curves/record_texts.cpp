// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_texts.h"

#include <QStringList>
#include <algorithm>
#include <array>

#include "common/text.h"
#include "curves/knee_marks.h"

namespace davo {

const KneeFact& FactOf(const RecordTest& test, KneeRule rule) {
    return *std::find_if(test.knees.begin(), test.knees.end(),
                         [rule](const KneeFact& fact) { return fact.rule == rule; });
}

QString PrintedText(const KneeFact& fact) {
    QString voltage = FromPage(fact.printed.voltage);
    if (!fact.At()) return voltage;
    return QStringLiteral("%1 V, %2 A").arg(voltage, FromPage(fact.printed.current));
}

QString DoubtOf(const KneeFact& fact) {
    const std::string& said = fact.reason.empty() ? fact.doubt : fact.reason;
    if (said.empty()) return {};
    return QStringLiteral("%1: %2. %3").arg(KneeWord(fact.rule), PrintedText(fact), FromPage(said));
}

QString TroubleText(const QString& name, const RunTimeError& error) {
    // What ParseRecordFacts throws; the others are those of a file that cannot be read.
    constexpr std::array kOfTheText = {ErrorNumber::InputPastEnd, ErrorNumber::TypeMismatch,
                                       ErrorNumber::SubscriptOutOfRange, ErrorNumber::Overflow};
    const bool damaged =
        std::find(kOfTheText.begin(), kOfTheText.end(), error.Number()) != kOfTheText.end();
    return QStringLiteral("%1 cannot be shown: %2%3")
        .arg(name, damaged ? QStringLiteral("the file is damaged. ") : QString(),
             QString::fromUtf8(error.what()));
}

QString PhaseAndAngle(const RecordTest& test) {
    QString word = FromPage(test.phase);
    if (test.phaseAngle.empty()) return word;
    return QStringLiteral("%1, %2\u00b0").arg(word, FromPage(test.phaseAngle));
}

QString HeaderText(const RecordFacts& record) {
    constexpr std::array<const char*, 8> kCaptions = {
        "Company", "Station", "Circuit", "MFR", "Model", "Serial&nbsp;#", "Comments", "Operator"};
    QStringList fields;
    for (std::size_t i = 0; i < kCaptions.size(); ++i) {
        // A caption stays with its text.
        const QString text = FromPage(record.headers.front().fields.at(i))
                                 .replace(QLatin1Char(' '), QChar::Nbsp)
                                 .toHtmlEscaped();
        if (!text.isEmpty())
            fields +=
                QStringLiteral("%1:&nbsp;<b>%2</b>").arg(QLatin1String(kCaptions.at(i)), text);
    }
    return fields.join(QStringLiteral("&nbsp; "));
}

}  // namespace davo
