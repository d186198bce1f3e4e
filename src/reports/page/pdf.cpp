// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/pdf.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetrics>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>
#include <cmath>
#include <map>

#include "common/files.h"
#include "reports/page/chart.h"
#include "reports/page/html.h"

namespace davo {

namespace {

constexpr int kDotsPerInch = 1200;
constexpr double kDot = 25.4 / kDotsPerInch;  // mm

// Those on white are the first in the style.
QColor PaperInk(int ink) {
    static const QString kStyle = QString::fromUtf8(PageResource("page/chart.css"));
    const QString name = QStringLiteral("--i%1:").arg(ink);
    return QColor(kStyle.mid(kStyle.indexOf(name) + name.size(), 7));
}

QFont PageFont(double points, bool bold = false) {
    QFont font;
    font.setFamilies({QStringLiteral("Liberation Sans"), QStringLiteral("Arial"),
                      QStringLiteral("Helvetica"), QStringLiteral("DejaVu Sans")});
    font.setPointSizeF(points);
    font.setBold(bold);
    return font;
}

void DrawLine(QPainter& painter, const DrawnLine& line) {
    const QColor colour = PaperInk(line.ink);
    QPen pen(colour, line.width / kDot, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    if (line.dash == 1) pen.setDashPattern({4, 3});
    if (line.dash == 2) pen.setDashPattern({1, 2.5});
    painter.setPen(pen);
    painter.setBrush(line.filled ? QBrush(colour) : QBrush(Qt::NoBrush));
    QPolygonF points;
    for (const QPointF& point : line.points)
        points += point / kDot;
    if (line.filled) {
        painter.drawPolygon(points);
    } else {
        painter.drawPolyline(points);
    }
}

void DrawText(QPainter& painter, const DrawnText& text) {
    painter.setFont(PageFont(kChartText, text.bold));
    painter.setPen(PaperInk(text.ink));
    const double wide = painter.fontMetrics().horizontalAdvance(text.text);
    painter.save();
    painter.translate(text.at / kDot);
    if (text.upward) painter.rotate(-90);
    painter.drawText(QPointF(-wide * static_cast<int>(text.anchor) / 2, 0), text.text);
    painter.restore();
}

QTextLength Percent(double part) {
    return QTextLength(QTextLength::PercentageLength, part);
}

// As browser.css has them, too.
void Form(QTextTable& table, double above) {
    static const std::map<int, QList<QTextLength>> kWidths = {
        {2, {Percent(6), Percent(94)}},
        {4, {Percent(13), Percent(37), Percent(13), Percent(37)}},
        {5, {Percent(30), Percent(3), Percent(15), Percent(3), Percent(49)}}};
    QTextTableFormat format = table.format();
    format.setWidth(Percent(100));
    format.setCellSpacing(0);
    format.setBorderCollapse(true);
    format.setTopMargin(above);
    if (const auto own = kWidths.find(table.columns()); own != kWidths.end())
        format.setColumnWidthConstraints(own->second);
    table.setFormat(format);
}

// A certificate laid out for a device, with room for its chart.
class Pages {
  public:
    Pages(const Certificate& certificate, Paper paper, QPaintDevice* device)
        : certificate_(certificate),
          chartSize_(ChartSize(certificate, paper)),
          size_((SizeOf(paper) - QSizeF(2, 2) * kPageMargin - QSizeF(0, kFooterHeight)) / kDot) {
        document_.documentLayout()->setPaintDevice(device);
        document_.setDocumentMargin(0);
        document_.setDefaultFont(PageFont(8.5));
        // Without the empty part at its right.
        static const QImage kLetterhead =
            QImage::fromData(PageResource("report/letterhead.png")).copy(0, 0, 592, 160);
        document_.addResource(QTextDocument::ImageResource, QUrl(QStringLiteral("letterhead")),
                              kLetterhead);
        document_.setPageSize(size_);
        QTextDocument draft;
        Fill(draft);
        QTextCursor(&document_).insertFragment(QTextDocumentFragment(&draft));
        for (QTextFrame* frame : document_.rootFrame()->childFrames()) {
            if (auto* table = qobject_cast<QTextTable*>(frame)) {
                KeepTogether(*table);
            } else {
                chart_ = frame;
            }
        }
    }

    int Count() const { return document_.pageCount(); }

    void Draw(QPainter& painter, int number) const {
        painter.resetTransform();
        painter.translate(QPointF(kPageMargin, kPageMargin) / kDot);
        painter.setFont(PageFont(7.5));
        painter.setPen(PaperInk(kQuietInk));
        const QRectF foot({0, 0}, size_ + QSizeF(0, kFooterHeight / kDot));
        painter.drawText(foot, Qt::AlignLeft | Qt::AlignBottom, certificate_.subject);
        painter.drawText(foot, Qt::AlignRight | Qt::AlignBottom,
                         QStringLiteral("Page %1 of %2").arg(number + 1).arg(Count()));
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = QRectF({0, number * size_.height()}, size_);
        painter.translate(-context.clip.topLeft());
        painter.setClipRect(context.clip);
        document_.documentLayout()->draw(&painter, context);
        painter.setClipping(false);
        if (number > 0 || !chart_) return;
        painter.translate(document_.documentLayout()->frameBoundingRect(chart_).topLeft());
        const Drawing chart = ChartOf(certificate_.curves, chartSize_);
        for (const DrawnLine& line : chart.lines)
            DrawLine(painter, line);
        for (const DrawnText& text : chart.texts)
            DrawText(painter, text);
    }

  private:
    // A document that has a layout is laid out at each change; a draft has none.
    void Fill(QTextDocument& draft) const {
        QString style = QString::fromUtf8(PageResource("page/certificate.css"));
        for (int ink = 0; ink < kCurveInk; ++ink)
            style.replace(QStringLiteral("var(--i%1)").arg(ink), PaperInk(ink).name());
        draft.setDefaultFont(PageFont(8.5));
        draft.setDefaultStyleSheet(style);
        QTextCursor cursor(&draft);
        cursor.insertHtml(AboveChart(
            certificate_, QStringLiteral("<img src=\"letterhead\" width=\"133\" height=\"36\">")));
        if (!certificate_.curves.empty()) {
            QTextFrameFormat room;
            room.setHeight(chartSize_.height() / kDot);
            cursor.insertFrame(room);
            cursor.movePosition(QTextCursor::End);
        }
        cursor.insertHtml(BelowChart(certificate_));
        double above = 0;
        for (QTextFrame* frame : draft.rootFrame()->childFrames()) {
            auto* table = qobject_cast<QTextTable*>(frame);
            if (!table) continue;
            Form(*table, above);
            above = above == 0 ? 2 : 7;
        }
    }

    // A short table is on one page.
    void KeepTogether(QTextTable& table) const {
        if (table.rows() > kUnbroken + 2 || table.columns() == 2) return;
        const auto pageOf = [this](const QTextCursor& cursor) {
            return std::floor(
                document_.documentLayout()->blockBoundingRect(cursor.block()).bottom() /
                size_.height());
        };
        if (pageOf(table.firstCursorPosition()) == pageOf(table.lastCursorPosition())) return;
        QTextTableFormat format = table.format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        table.setFormat(format);
    }

    const Certificate& certificate_;
    const QSizeF chartSize_;  // mm
    const QSizeF size_;       // of a page's text, in dots
    QTextDocument document_;
    QTextFrame* chart_ = nullptr;
};

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
        const Pages pages(certificate, paper, &writer);
        for (int i = 0; i < pages.Count(); ++i) {
            if (i > 0) writer.newPage();
            pages.Draw(painter, i);
        }
    }
    NameAuthor(bytes);
    ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

}  // namespace davo
