// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/html.h"

#include <algorithm>
#include <array>
#include <optional>

#include "reports/page/chart.h"

namespace davo {

namespace {

// <name class="style">inside</name>
QString Element(const char* name, const char* style, const QString& inside) {
    const QString classes =
        *style ? QStringLiteral(" class=\"%1\"").arg(QLatin1String(style)) : QString();
    return QStringLiteral("<%1%2>%3</%1>").arg(QLatin1String(name), classes, inside);
}

QString Row(const QString& cells) {
    return QStringLiteral("<tr>%1</tr>\n").arg(cells);
}

QString Table(const char* style, const QString& rows) {
    return Element("table", style, QLatin1Char('\n') + rows) + QLatin1Char('\n');
}

QString HeaderHtml(const std::vector<CertificateField>& fields) {
    QString rows;
    QString row;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        row += Element("th", "", fields[i].caption.toHtmlEscaped()) +
               Element("td", "", fields[i].text.toHtmlEscaped());
        if (i % 2 == 0 && i + 1 < fields.size()) continue;
        rows += Row(row);
        row.clear();
    }
    return Table("head", rows);
}

// More headers than a few are below the chart, which is on the first page.
QString HeadersHtml(const Certificate& certificate, bool isAboveChart) {
    constexpr std::size_t kFew = 3;
    QString html;
    if (isAboveChart != (certificate.headers.size() <= kFew)) return html;
    for (const auto& header : certificate.headers)
        html += HeaderHtml(header);
    return html;
}

// Whether a group of columns begins, between which and the one before it is some room.
bool BeginsGroup(const CertificateTable& table, std::size_t column) {
    const QString& group = table.columns[column].group;
    return column > 0 && !group.isEmpty() && table.columns[column - 1].group != group;
}

QString HeadsHtml(const CertificateTable& table) {
    QString groups;
    QString heads;
    std::size_t from = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const CertificateColumn& column = table.columns[i];
        if (BeginsGroup(table, i)) {
            groups += Element("td", "gap", {});
            heads += Element("td", "heads", {});
            from = i;
        }
        heads += Element("th",
                         column.isNumber ? "heads n"
                         : i > 0         ? "heads w"
                                         : "heads",
                         QString::fromUtf8(column.heading));
        if (i + 1 < table.columns.size() && table.columns[i + 1].group == column.group) continue;
        const bool isTitle = column.group.isEmpty();
        groups += QStringLiteral("<th colspan=\"%1\" class=\"%2\">%3</th>")
                      .arg(i + 1 - from)
                      .arg(isTitle ? QStringLiteral("title") : QStringLiteral("group"),
                           (isTitle ? table.title : column.group).toHtmlEscaped());
    }
    return Element("thead", "", Row(groups) + Row(heads));
}

// How many blanks are as wide as what is behind a number's whole part: in the fonts of the page one
// is half as wide as a digit, and as wide as a point. None behind other texts, nor "0" for nothing.
std::optional<qsizetype> BlanksOf(const QString& text) {
    bool isNumber = false;
    if (text.toDouble(&isNumber) == 0 || !isNumber) return std::nullopt;
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    return point < 0 ? 0 : 2 * (text.size() - point) - 1;
}

QString CellHtml(const CertificateCell& cell, qsizetype most, bool hasMarks) {
    QString text = cell.text.toHtmlEscaped();
    if (const auto blanks = BlanksOf(cell.text))
        text += QString(std::max<qsizetype>(0, most - *blanks), QChar::Nbsp);
    if (!hasMarks) return text;
    return text + QStringLiteral("<sup>%1</sup>")
                      .arg(cell.mark > 0 ? QString::number(cell.mark) : QString(2, QChar::Nbsp));
}

QString TableHtml(const CertificateTable& table) {
    std::vector<QString> cells(table.rows.size());
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const bool isNumber = table.columns[i].isNumber;
        qsizetype most = 0;
        bool hasMarks = false;
        for (const auto& row : table.rows) {
            if (isNumber) most = std::max(most, BlanksOf(row[i].text).value_or(0));
            hasMarks = hasMarks || row[i].mark > 0;
        }
        for (std::size_t row = 0; row < cells.size(); ++row) {
            if (BeginsGroup(table, i)) cells[row] += Element("td", "cell", {});
            cells[row] += Element(i == 0 ? "th" : "td",
                                  i == 0     ? "cell test"
                                  : isNumber ? "cell n"
                                             : "cell w",
                                  CellHtml(table.rows[row][i], most, hasMarks));
        }
    }
    QString rows;
    for (const QString& row : cells)
        rows += Row(row);
    if (rows.isEmpty()) return {};
    const char* const style = table.rows.size() <= kUnbroken ? "results short" : "results";
    return Table(style, HeadsHtml(table) + Element("tbody", "", rows));
}

// Two columns of which the first is narrow.
QString ListHtml(const QStringList& first, const QStringList& second) {
    QString rows;
    for (qsizetype i = 0; i < second.size(); ++i)
        rows +=
            Row(Element("th", "", first.value(i)) + Element("td", "", second[i].toHtmlEscaped()));
    return rows.isEmpty() ? QString() : Table("list", rows);
}

QString ComparisonHtml(const QStringList& sentences) {
    if (sentences.isEmpty()) return {};
    QString rows = Row(Element("th", "title", QStringLiteral("Comparison")));
    for (const QString& sentence : sentences)
        rows += Row(Element("td", "", sentence.toHtmlEscaped()));
    return Table(sentences.size() <= kUnbroken ? "short" : "", rows);
}

QString PrintedPage(const Certificate& certificate, Paper paper) {
    const QSizeF size = SizeOf(paper);
    QString foot = certificate.subject;
    for (const char c : {'\\', '"', '<', '\n', '\f', '\r'})  // in a string of a style
        foot.replace(QLatin1Char(c), QStringLiteral("\\%1 ").arg(int{c}, 0, 16));
    return QStringLiteral(
               "@page{size:%1mm %2mm;margin:%3mm %3mm %4mm;"
               "font:7.5pt \"Liberation Sans\",Arial,Helvetica,sans-serif;color:#4a5a68;"
               "@bottom-left{content:\"%5\"}"
               "@bottom-right{content:\"Page \" counter(page) \" of \" counter(pages)}}\n")
        .arg(size.width())
        .arg(size.height())
        .arg(kPageMargin)
        .arg(kPageMargin + kFooterHeight)
        .arg(foot);
}

}  // namespace

Paper PaperOf(const QLocale& locale) {
    using L = QLocale;
    // Those of CLDR's supplemental data whose paper is "US-Letter".
    constexpr std::array kLetter = {L::UnitedStates, L::Canada,    L::Mexico,   L::Philippines,
                                    L::PuertoRico,   L::Chile,     L::Colombia, L::CostaRica,
                                    L::Guatemala,    L::Nicaragua, L::Panama,   L::ElSalvador,
                                    L::Venezuela,    L::Belize};
    const bool letter =
        std::find(kLetter.begin(), kLetter.end(), locale.territory()) != kLetter.end();
    return letter && locale.language() != QLocale::C ? Paper::Letter : Paper::A4;
}

Paper UsualPaper() {
    for (const char* name : {"LC_ALL", "LC_PAPER"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty()) return PaperOf(QLocale(value));
    }
    return PaperOf(QLocale::system());
}

QSizeF SizeOf(Paper paper) {
    return paper == Paper::A4 ? QSizeF(210, 297) : QSizeF(215.9, 279.4);
}

QSizeF ChartSize(const Certificate& certificate, Paper paper) {
    constexpr double kFrameShare = 0.401;
    constexpr double kOfNumbers = 10;
    const bool isShared = certificate.curves.size() > 1 || !certificate.compared.isEmpty();
    const QSizeF page = SizeOf(paper);
    const double wide = page.width() - 2 * kPageMargin;
    const double high = kFrameShare * page.width() * page.height() / (wide - kChartAround.width());
    return {wide, high + kChartAround.height() - (isShared ? kOfNumbers : 0)};
}

QString AboveChart(const Certificate& certificate, const QString& letterhead) {
    const QString html =
        Table("top", Row(QStringLiteral("<th><h1>Test Certificate</h1></th><td></td><td>%1</td>")
                             .arg(letterhead)));
    return html + HeadersHtml(certificate, true);
}

QString BelowChart(const Certificate& certificate) {
    QString html = HeadersHtml(certificate, false);
    for (const CertificateTable& table : certificate.tables)
        html += TableHtml(table);
    QStringList marks;
    for (qsizetype i = 1; i <= certificate.explained.size(); ++i)
        marks += QStringLiteral("<sup>%1</sup>").arg(i);
    html += ListHtml(marks, certificate.explained);
    html += ComparisonHtml(certificate.compared);
    html += ListHtml({QStringLiteral("Notes")}, certificate.notes);
    const QString signs =
        QStringLiteral("<th>%1</th><td></td><th>%2</th><td></td><th>&nbsp;</th>")
            .arg(certificate.tester.toHtmlEscaped(), certificate.date.toHtmlEscaped());
    const QString captions =
        QStringLiteral("<td>Tested by</td><td></td><td>Date</td><td></td><td>Signature</td>");
    // A page without a chart has room enough.
    if (certificate.curves.empty()) html += QStringLiteral("<p class=\"room\">&nbsp;</p>\n");
    return html + Table("sign", Row(signs) + Row(captions));
}

std::string CertificateAsHtml(const Certificate& certificate, Paper paper) {
    QString styles = PrintedPage(certificate, paper);
    for (const char* name : {"page/certificate.css", "page/chart.css", "page/browser.css"})
        styles += QString::fromUtf8(PageResource(name));
    const QString letterhead =
        QStringLiteral("<img alt=\"DAVO\" src=\"data:image/png;base64,%1\">")
            .arg(QLatin1String(PageResource("report/letterhead.png").toBase64()));
    QString chart;
    if (const auto& curves = certificate.curves; !curves.empty())
        chart = Element("div", "chart",
                        SvgOf(ChartOf(curves, ChartSize(certificate, paper)),
                              QStringLiteral("Excitation curves")));
    return FilledPage("page/certificate.html",
                      {certificate.Title().toHtmlEscaped().toStdString(), styles.toStdString(),
                       AboveChart(certificate, letterhead).toStdString(), chart.toStdString(),
                       BelowChart(certificate).toStdString()});
}

}  // namespace davo
