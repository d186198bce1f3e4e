// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/record_texts.h"

#include <QStringList>
#include <algorithm>
#include <array>

#include "common/numbers.h"
#include "common/places.h"
#include "common/text.h"

namespace davo {

QString KneeWord(KneeRule rule) {
    if (rule == KneeRule::Ieee30) return QStringLiteral("IEEE 30");
    if (rule == KneeRule::Ieee45) return QStringLiteral("IEEE 45");
    return QStringLiteral("ASA 10/50");
}

const KneeFact& FactOf(const RecordTest& test, KneeRule rule) {
    const auto place = std::ranges::find(kKneeRules, rule) - kKneeRules.begin();
    return test.knees.at(static_cast<std::size_t>(place));
}

QString PrintedText(const KneeFact& fact) {
    QString voltage = FromPage(fact.printed.voltage);
    if (!fact.At()) return voltage;
    return QStringLiteral("%1 V, %2 A").arg(voltage, FromPage(fact.printed.current));
}

QString JudgedText(const KneeFact& fact) {
    return PrintedText(fact) + (fact.doubt.empty() ? QString() : QStringLiteral(" (?)"));
}

QString SmoothText(const KneeFact& fact) {
    const auto volts = [](double value) { return FromPage(Picture(value, kVoltagePicture)); };
    if (fact.range) {
        return QStringLiteral("%1 to %2 V").arg(volts(fact.range->low), volts(fact.range->high));
    }
    if (!fact.smooth) return QStringLiteral("none");
    return QStringLiteral("%1 \u00b1 %2 V")
        .arg(volts(fact.smooth->at.voltage), volts(fact.smooth->uncertainty));
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

std::size_t ShareOfTests(std::size_t count) {
    return kMostFactTests / std::max<std::size_t>(1, count);
}

QStringList NotesOn(const std::vector<const RecordFacts*>& records, std::size_t share) {
    QStringList notes;
    bool isCut = false;
    for (const RecordFacts* record : records) {
        const std::size_t tests = record->tests.size() + record->testsLeft;
        if (tests > share && records.size() == 1) {
            notes +=
                QStringLiteral("%1 has %2 tests; the first %3 are shown.")
                    .arg(FromPage(record->name), QString::number(tests), QString::number(share));
        }
        isCut = isCut || tests > share;
        if (record->controls == 0) continue;
        notes += QStringLiteral("%1 has %2, shown as \"?\".")
                     .arg(FromPage(record->name),
                          record->controls == 1
                              ? QStringLiteral("1 control character")
                              : QStringLiteral("%1 control characters").arg(record->controls));
    }
    if (isCut && records.size() > 1)
        notes += QStringLiteral("Of each record the first %1 tests are shown.").arg(share);
    return notes;
}

QString WithoutCurve(const QStringList& tests) {
    constexpr int kMostNamed = 3;
    if (tests.isEmpty()) return {};
    const QString named = QStringList(tests.mid(0, kMostNamed)).join(QStringLiteral(", "));
    if (tests.size() <= kMostNamed) return QStringLiteral("Without a curve: %1.").arg(named);
    return QStringLiteral("Without a curve: %1 and %2 more.")
        .arg(named)
        .arg(tests.size() - kMostNamed);
}

QStringList NotWritten(const std::vector<const RecordFacts*>& records, std::size_t selected) {
    QStringList said;
    if (records.size() < selected) {
        said += QStringLiteral("%1 of %2 records are written.").arg(records.size()).arg(selected);
    }
    for (const RecordFacts* record : records) {
        if (record->testsLeft == 0) continue;
        said += QStringLiteral("%1 has %2 tests; the first %3 are written.")
                    .arg(FromPage(record->name),
                         QString::number(record->tests.size() + record->testsLeft),
                         QString::number(record->tests.size()));
    }
    return said;
}

QString SavedText(const QString& path) {
    if (path.isEmpty()) return {};
    constexpr QChar kMayBreak(0x200B);
    QString text = ShownPath(path);
    for (const char separator : {'/', '\\'})
        text.replace(QLatin1Char(separator), QString(QLatin1Char(separator)) + kMayBreak);
    return QStringLiteral("Saved: ") + text;
}

QString PhaseAndAngle(const RecordTest& test) {
    QString word = FromPage(test.phase);
    if (test.phaseAngle.empty()) return word;
    return QStringLiteral("%1, %2\u00b0").arg(word, FromPage(test.phaseAngle));
}

QStringList HeaderFields(const RecordFacts& record) {
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
    return fields;
}

}  // namespace davo
