// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/pdf.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include "common/files.h"

namespace davo {

namespace {

constexpr int kDotsPerInch = 1200;
constexpr double kDot = 25.4 / kDotsPerInch;  // mm

void DrawLine(QPainter& painter, const DrawnLine& line) {
    const QColor colour(QRgb(PaperColour(line.ink)));
    QPen pen(colour, line.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    if (line.dash == 1) pen.setDashPattern({4, 3});
    if (line.dash == 2) pen.setDashPattern({1, 2.5});
    painter.setPen(pen);
    painter.setBrush(line.filled ? QBrush(colour) : QBrush(Qt::NoBrush));
    if (line.filled) {
        painter.drawPolygon(line.points.data(), static_cast<int>(line.points.size()));
    } else {
        painter.drawPolyline(line.points.data(), static_cast<int>(line.points.size()));
    }
}

// In dots: a font of a few millimetres would be one of a few dots.
void DrawText(QPainter& painter, const DrawnText& text) {
    QFont font;
    font.setFamilies({QStringLiteral("Liberation Sans"), QStringLiteral("Arial"),
                      QStringLiteral("Helvetica"), QStringLiteral("DejaVu Sans")});
    font.setPointSizeF(text.size);
    font.setBold(text.bold);
    painter.setFont(font);
    painter.setPen(QColor(QRgb(PaperColour(text.ink))));
    const double wide = QFontMetricsF(font, painter.device()).horizontalAdvance(text.text);
    painter.save();
    painter.resetTransform();
    painter.translate(text.at / kDot);
    if (text.upward) painter.rotate(-90);
    const double back = text.anchor == Anchor::Start    ? 0
                        : text.anchor == Anchor::Middle ? wide / 2
                                                        : wide;
    painter.drawText(QPointF(-back, 0), text.text);
    painter.restore();
}

// Who made the certificate is its author; QPdfWriter knows a creator only. No byte may move,
// because the file says where its parts are. The document's facts are before its text.
void NameAuthor(QByteArray& bytes) {
    const QByteArray creator = QByteArrayLiteral("\n/Creator ");
    const qsizetype at = bytes.indexOf(creator);
    if (at >= 0) bytes.replace(at, creator.size(), QByteArrayLiteral("\n/Author  "));
}

}  // namespace

void WriteCertificatePdf(const Certificate& certificate, Paper paper, const QString& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setResolution(kDotsPerInch);
        writer.setPageSize(QPageSize(paper == Paper::A4 ? QPageSize::A4 : QPageSize::Letter));
        writer.setPageMargins({});
        writer.setTitle(certificate.Title());
        writer.setCreator(certificate.tester.isEmpty() ? QStringLiteral("DAVO")
                                                       : certificate.tester);
        QPainter painter(&writer);
        const std::vector<PageParts> pages = PagesOf(certificate, paper);
        for (std::size_t i = 0; i < pages.size(); ++i) {
            if (i > 0) writer.newPage();
            const Drawing page = DrawnPage(certificate, pages, i, paper);
            painter.resetTransform();
            painter.scale(1 / kDot, 1 / kDot);
            for (const DrawnLine& line : page.lines)
                DrawLine(painter, line);
            for (const DrawnText& text : page.texts)
                DrawText(painter, text);
        }
    }
    NameAuthor(bytes);
    ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

}  // namespace davo
