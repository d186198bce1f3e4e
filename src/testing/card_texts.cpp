// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/card_texts.h"

#include <QRegularExpression>
#include <QStringList>
#include <optional>
#include <utility>

#include "common/numbers.h"
#include "common/text.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

constexpr int kStation = 1, kCircuit = 2, kSerialNumber = 5;

// Broken over lines nowhere.
QString Whole(QString text) {
    return text.replace(QLatin1Char(' '), QChar::Nbsp);
}

// A text of any kind may have a word that is as long as the card.
QString Broken(const std::string& text) {
    static const QRegularExpression longWord(QStringLiteral("([^\\s]{10})(?=[^\\s])"));
    return FromPage(text).replace(longWord, QStringLiteral("\\1\u200B"));
}

// A value under its caption, which goes on with a word where the value is to be looked at.
QString Cell(const QString& caption, const QString& value, const QString& word = {}) {
    const QString cell =
        QStringLiteral("<td%1 align=center valign=top><font size=1>%2<br></font><b>%3</b></td>");
    if (word.isEmpty()) return cell.arg(QString(), Whole(caption), value.toHtmlEscaped());
    // Black on amber, in light and dark surroundings alike.
    return cell.arg(QStringLiteral(" bgcolor='#FFB300' style='color:black'"),
                    QStringLiteral("<b>%1</b>").arg(Whole(caption + QStringLiteral(": ") + word)),
                    value.toHtmlEscaped());
}

QString Table(const QString& rows) {
    return QStringLiteral("<table width='100%' cellspacing=3 cellpadding=1>") + rows +
           QStringLiteral("</table>");
}

QString Step(const char* caption, const QString& done, const char* act) {
    const QString state = done.isEmpty() ? QStringLiteral(": open") : QStringLiteral(": done");
    return Cell(QLatin1String(caption) + state, done.isEmpty() ? QLatin1String(act) : done);
}

QString TextOr(const ControlView& box, const char* otherwise) {
    const std::string text = TrimBlanks(box.text);
    return text.empty() ? QString::fromLatin1(otherwise) : Broken(text);
}

QString ErrorCell(const ShotScreen& screen, QString limit) {
    const auto error = WholeNumericValue(screen.txtPE.text);
    const auto most =
        WholeNumericValue(limit.replace(QLatin1Char(','), QLatin1Char('.')).toStdString());
    const bool above = error && most && *most > 0 && *error > *most;
    return Cell(QStringLiteral("Percent error"),
                TextOr(screen.txtPE, "N/A") + (error ? QStringLiteral(" %") : QString()),
                above ? QStringLiteral("ABOVE LIMIT") : QString());
}

// What the instrument said. The record has a polarity of its own, and one without a phase angle
// reads as in phase: where the two differ, or nothing was said, both are named.
QString PolarityCell(const ShotScreen& screen, const std::string& ofRecord) {
    const std::string& said = screen.txtPolarity.text;
    QString word = said == "IN PHASE" ? QString() : QStringLiteral("CHECK");
    if (said != ofRecord && !ofRecord.empty() && said != "UNDETERMINED")
        word = QStringLiteral("RECORD %1").arg(FromPage(ofRecord));
    return Cell(QStringLiteral("Polarity"), said.empty() ? QStringLiteral("NONE") : FromPage(said),
                word);
}

}  // namespace

QString StepsCard(const ShotScreen& screen, const HeaderTable& header) {
    QStringList named;
    for (const int field : {kStation, kCircuit, kSerialNumber}) {
        const std::string text = TrimBlanks(header.Field(field));
        if (!text.empty()) named += Broken(text);
    }
    QString currents;
    if (!screen.txtCRatio.text.empty()) {
        currents = QStringLiteral("%1 : %2 A")
                       .arg(Broken(screen.txtHVolt.text), Broken(screen.txtXVolt.text));
    }
    const bool next = screen.cmdStart.text == kCaptionNext;
    const char* start = next ? "PRESS NEXT TEST" : "PRESS START TEST";
    if (!screen.cmdStart.enabled) start = screen.asking ? "THE DAVO IS ASKED" : "PRESS EXIT";
    return Table(Step("1 Header", named.join(QStringLiteral(", ")), "PRESS HEADER INFO") +
                 Step("2 Nameplate", currents, "TYPE H AND X CURRENT") +
                 Step("3 Start", {}, start));
}

QString ResultsCard(const ShotScreen& screen, const std::string& polarity,
                    const std::vector<KneeFact>& knees, const QString& kneepointType,
                    QString errorLimit) {
    const std::optional<KneeRule> used = KneeRuleOf(kneepointType.toStdString());
    QString knee;
    QStringList others;
    for (const KneeFact& fact : knees) {
        const QString word = KneeWord(fact.rule);
        const bool found = fact.At().has_value();
        const QString text = PrintedText(fact);
        QString doubt;
        if (!found || !fact.doubt.empty()) {
            doubt = found ? QStringLiteral("DOUBTFUL") : QStringLiteral("CHECK");
        }
        if (fact.rule == used) {
            knee = Cell(QStringLiteral("Knee ") + word, Whole(text), doubt);
        } else {
            others += Whole(word + QLatin1Char(' ') + text + QLatin1Char(' ') + doubt.toLower());
        }
    }
    return Table(QStringLiteral("<tr>") +
                 Cell(QStringLiteral("Ratio"), TextOr(screen.txtRatio, "NONE")) +
                 ErrorCell(screen, std::move(errorLimit)) + QStringLiteral("</tr><tr>") +
                 PolarityCell(screen, polarity) + knee + QStringLiteral("</tr>")) +
           QStringLiteral("<div align=center><font size=1>") +
           others.join(QStringLiteral("  &nbsp; ")) + QStringLiteral("</font></div>");
}

QString DiskLine(const ShotScreen& screen, bool typing) {
    if (screen.shotShown == 0)
        return screen.shotDropped ? QStringLiteral("The last shot was dropped.") : QString();
    QString line = QStringLiteral("Shot %1 is on the disk. Press Next Test, or Exit to save.");
    if (screen.lblDamage.visible) line = QStringLiteral("Shot %1 is on the disk.");
    if (typing) line = QStringLiteral("Shot %1 is on the disk, but not yet what you type.");
    if (!screen.shotOnDisk) {
        line = QStringLiteral("Shot %1 is NOT on the disk. Stay here: the program tries again.");
    }
    return line.arg(screen.shotShown);
}

}  // namespace davo
