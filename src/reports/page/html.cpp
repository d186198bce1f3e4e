// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/html.h"

#include <QFile>

#include "reports/page/chart.h"

// Outside the namespace, because it names a function that the resource compiler makes there.
static void LoadStyle() {
    Q_INIT_RESOURCE(certificate);
}

namespace davo {

namespace {

using Kind = PagePart::Kind;

// On a dark screen: the inks of paper in the same order, each 4.5 to 1 at least where it is read.
constexpr const char* kDarkInks[kInks] = {
    "#eceff2", "#b4c0ca", "#75828e", "#343d46", "#ff8a80", "#a9cbe8", "#6db8ff", "#ff9a5c",
    "#4fd0a5", "#e08cd9", "#d6bf4a", "#ff7d98", "#4fcbdc", "#a3a3ff", "#a6d04a", "#e2a27e"};

QString Style() {
    LoadStyle();
    QFile file(QStringLiteral(":/davo/page/certificate.css"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll());
}

QString Inks() {
    QString light = QStringLiteral(":root{--paper:#ffffff;");
    QString dark =
        QStringLiteral("@media screen and (prefers-color-scheme:dark){:root{--paper:#15191e;");
    QString rules;
    for (int i = 0; i < kInks; ++i) {
        light += QStringLiteral("--i%1:#%2;").arg(i).arg(PaperColour(i), 6, 16, QLatin1Char('0'));
        dark += QStringLiteral("--i%1:%2;").arg(i).arg(QLatin1String(kDarkInks[i]));
        rules +=
            QStringLiteral("svg .i%1{stroke:var(--i%1)}svg text.i%1,svg .f.i%1{fill:var(--i%1)}\n")
                .arg(i);
    }
    return light + QStringLiteral("}\n") + rules + dark + QStringLiteral("}}\n");
}

QString Escaped(const QString& text) {
    return text.toHtmlEscaped();
}

QString HeaderHtml(const std::vector<CertificateField>& fields) {
    QString html = QStringLiteral("<div class=\"head\">\n<dl>\n");
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i == (fields.size() + 1) / 2) html += QStringLiteral("</dl>\n<dl>\n");
        html += QStringLiteral("<dt>%1</dt><dd>%2</dd>\n")
                    .arg(Escaped(fields[i].caption), Escaped(fields[i].text));
    }
    return html + QStringLiteral("</dl>\n</div>\n");
}

QString HeadsHtml(const CertificateTable& table) {
    QString groups;
    QString heads;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const CertificateColumn& column = table.columns[i];
        heads += QStringLiteral("<th%1>%2</th>")
                     .arg(column.isNumber ? QStringLiteral(" class=\"n\"") : QString(),
                          Escaped(column.Caption()));
        if (i > 0 && !column.group.isEmpty() && table.columns[i - 1].group == column.group)
            continue;
        std::size_t end = i + 1;
        while (!column.group.isEmpty() && end < table.columns.size() &&
               table.columns[end].group == column.group)
            ++end;
        groups += column.group.isEmpty() ? QStringLiteral("<td></td>")
                                         : QStringLiteral("<th colspan=\"%1\">%2</th>")
                                               .arg(end - i)
                                               .arg(Escaped(column.group));
    }
    return QStringLiteral("<thead>\n<tr>%1</tr>\n<tr>%2</tr>\n</thead>\n").arg(groups, heads);
}

QString CellHtml(const CertificateTable& table, std::size_t column, const CertificateCell& cell) {
    QString style;
    if (table.columns[column].isNumber) {
        style = QStringLiteral(" class=\"n\"");
        if (const double room = DecimalRoom(table, column, cell.text); room > 0)
            style += QStringLiteral(" style=\"padding-right:%1em\"").arg(0.9 + room, 0, 'f', 3);
    }
    const QString mark = cell.mark > 0 ? QStringLiteral("<sup>%1</sup>").arg(cell.mark) : QString();
    return QStringLiteral("<td%1>%2%3</td>").arg(style, Escaped(cell.text), mark);
}

QString TableHtml(const CertificateTable& table, const PagePart& part, double width) {
    QString html = QStringLiteral("<h2>%1</h2>\n<div class=\"wide\"><table>\n<colgroup>")
                       .arg(Escaped(table.title));
    for (const double one : ColumnWidths(table, width))
        html += QStringLiteral("<col style=\"width:%1%\">").arg(100 * one / width, 0, 'f', 2);
    html += QStringLiteral("</colgroup>\n") + HeadsHtml(table) + QStringLiteral("<tbody>\n");
    for (std::size_t row = part.from; row < part.to; ++row) {
        html += QStringLiteral("<tr>");
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            html += CellHtml(table, i, table.rows[row][i]);
        html += QStringLiteral("</tr>\n");
    }
    return html + QStringLiteral("</tbody>\n</table></div>\n");
}

QString ExplainedHtml(const QStringList& lines, const PagePart& part) {
    QString html = QStringLiteral("<ol start=\"%1\">\n").arg(part.from + 1);
    for (std::size_t i = part.from; i < part.to; ++i)
        html += QStringLiteral("<li>%1</li>\n").arg(Escaped(lines.at(static_cast<qsizetype>(i))));
    return html + QStringLiteral("</ol>\n");
}

QString PartHtml(const Certificate& page, const PagePart& part, double width) {
    if (part.kind == Kind::Header) return HeaderHtml(page.headers.at(part.index));
    if (part.kind == Kind::Table) return TableHtml(page.tables.at(part.index), part, width);
    if (part.kind == Kind::Explained) return ExplainedHtml(page.explained, part);
    if (part.kind == Kind::Chart) {
        const Drawing chart = ChartOf(page.curves, {width, part.height - 2.5});
        return QStringLiteral("<div class=\"wide\">\n") +
               SvgOf(chart, QStringLiteral("Excitation curves")) + QStringLiteral("</div>\n");
    }
    if (part.kind == Kind::Notes) {
        const QStringList lines = page.notes.mid(static_cast<qsizetype>(part.from),
                                                 static_cast<qsizetype>(part.to - part.from));
        return QStringLiteral("<h2>Notes</h2>\n<div class=\"notes\">%1</div>\n")
            .arg(Escaped(lines.join(QLatin1Char('\n'))));
    }
    return QStringLiteral(
               "<div class=\"sign\"><div><b>%1</b><span>Tested by</span></div>"
               "<div><b>%2</b><span>Date</span></div>"
               "<div><b>&nbsp;</b><span>Signature</span></div></div>\n")
        .arg(Escaped(page.tester), Escaped(page.date));
}

}  // namespace

std::string CertificateAsHtml(const Certificate& certificate, Paper paper) {
    const QSizeF size = SizeOf(paper);
    const double width = size.width() - 2 * kPageMargin;
    const QString title = Escaped(certificate.Title());
    QString html = QStringLiteral(
                       "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<title>%1</title>\n<style>\n")
                       .arg(title) +
                   QStringLiteral("@page{size:%1mm %2mm;margin:%3mm}:root{--high:%4mm}\n")
                       .arg(size.width())
                       .arg(size.height())
                       .arg(kPageMargin)
                       .arg(size.height() - 2 * kPageMargin - 0.5) +
                   Style() + Inks() + QStringLiteral("</style>\n</head>\n<body>\n");
    const std::vector<PageParts> pages = PagesOf(certificate, paper);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        html += QStringLiteral(
                    "<section>\n<header><h1>%1</h1><div class=\"maker\">DAVO<br>"
                    "<small>Current-Transformer Test Sets</small></div></header>\n")
                    .arg(QLatin1String(kCertificateTitle));
        for (const PagePart& part : pages[i])
            html += PartHtml(certificate, part, width);
        html += QStringLiteral("<footer><span>%1</span><span>%2</span></footer>\n</section>\n")
                    .arg(Escaped(certificate.subject), PageNumberText(i, pages.size()));
    }
    return (html + QStringLiteral("</body>\n</html>\n")).toStdString();
}

}  // namespace davo
