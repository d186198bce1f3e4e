// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/drawing.h"

#include <array>

namespace davo {

namespace {

// Of the characters from blank to tilde, in thousandths of the size (Adobe's metrics of Helvetica).
constexpr std::array<int, 95> kWidths = {
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333,  278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667,
    611, 778, 722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667,  611, 722, 667, 944, 667,
    667, 611, 278, 278, 278, 469, 556, 333, 556, 556, 500, 556, 556, 278,  556, 556, 222, 222, 500,
    222, 833, 556, 556, 556, 556, 333, 500, 278, 556, 500, 722, 500, 500,  500, 334, 260, 334, 584};
constexpr int kOtherWidth = 722;

constexpr std::array<std::uint32_t, kInks> kColours = {
    0x16202a, 0x4a5a68, 0x8a98a4, 0xdde3e8, 0xb3141e, 0x1a2f42, 0x0060a8, 0xc24a00,
    0x007a5a, 0x8a2f84, 0x6b5900, 0xb00030, 0x007c8c, 0x4a4ac0, 0x4f7000, 0x8a4b2a};

QString Short(double value) {
    QString text = QString::number(value, 'f', 2);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.'))) text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString SvgLine(const DrawnLine& line) {
    QString points;
    for (const QPointF& point : line.points) {
        if (!points.isEmpty()) points += QLatin1Char(' ');
        points += Short(point.x()) + QLatin1Char(',') + Short(point.y());
    }
    QString style = line.filled ? QStringLiteral(" f") : QString();
    if (line.dash > 0) style += QStringLiteral(" d%1").arg(line.dash);
    QString svg = QStringLiteral("<poly%1 class=\"i%2%3\" stroke-width=\"%4\" points=\"%5\"/>\n")
                      .arg(line.filled ? QStringLiteral("gon") : QStringLiteral("line"))
                      .arg(line.ink)
                      .arg(style, Short(line.width), points);
    if (line.link.isEmpty()) return svg;
    return QStringLiteral("<a href=\"%1\"><title>%2</title>%3</a>\n")
        .arg(line.link.toHtmlEscaped(), line.name.toHtmlEscaped(), svg);
}

QString SvgText(const DrawnText& text) {
    constexpr std::array kAnchors = {"start", "middle", "end"};
    const QString x = Short(text.at.x());
    const QString y = Short(text.at.y());
    const QString turn =
        text.upward ? QStringLiteral(" transform=\"rotate(-90 %1 %2)\"").arg(x, y) : QString();
    return QStringLiteral(
               "<text class=\"i%1%2\" x=\"%3\" y=\"%4\" font-size=\"%5\" "
               "text-anchor=\"%6\"%7>%8</text>\n")
        .arg(text.ink)
        .arg(text.bold ? QStringLiteral(" b") : QString(), x, y,
             Short(text.size * kMillimetresPerPoint),
             QLatin1String(kAnchors.at(static_cast<std::size_t>(text.anchor))), turn,
             text.text.toHtmlEscaped());
}

}  // namespace

std::uint32_t PaperColour(int ink) {
    return kColours.at(static_cast<std::size_t>(ink));
}

double WidthOf(const QString& text, double points) {
    double width = 0;
    for (const QChar c : text) {
        const int place = c.unicode() - ' ';
        const bool known = place >= 0 && place < static_cast<int>(kWidths.size());
        width += known ? kWidths.at(static_cast<std::size_t>(place)) : kOtherWidth;
    }
    return width / 1000 * points * kMillimetresPerPoint;
}

QString SvgOf(const Drawing& drawing, const QString& title) {
    QString svg =
        QStringLiteral(
            "<svg viewBox=\"0 0 %1 %2\" role=\"img\" aria-label=\"%3\" "
            "xmlns=\"http://www.w3.org/2000/svg\">\n")
            .arg(Short(drawing.size.width()), Short(drawing.size.height()), title.toHtmlEscaped());
    for (const DrawnLine& line : drawing.lines)
        svg += SvgLine(line);
    for (const DrawnText& text : drawing.texts)
        svg += SvgText(text);
    return svg + QStringLiteral("</svg>\n");
}

QString InkRules() {
    QString rules;
    for (int i = 0; i < kInks; ++i) {
        rules +=
            QStringLiteral("svg .i%1{stroke:var(--i%1)}svg text.i%1,svg .f.i%1{fill:var(--i%1)}\n")
                .arg(i);
    }
    return rules;
}

}  // namespace davo
