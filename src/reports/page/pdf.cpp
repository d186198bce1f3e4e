// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/pdf.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>
#include <cmath>

#include "common/files.h"
#include "reports/page/chart.h"
#include "reports/page/html.h"

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

QFont PageFont(double points, bool bold) {
    QFont font;
    font.setFamilies({QStringLiteral("Liberation Sans"), QStringLiteral("Arial"),
                      QStringLiteral("Helvetica"), QStringLiteral("DejaVu Sans")});
    font.setPointSizeF(points);
    font.setBold(bold);
    return font;
}

// at in dots: a font of a few millimetres would be one of a few dots.
void DrawText(QPainter& painter, QPointF at, const DrawnText& text) {
    const QFont font = PageFont(text.size, text.bold);
    painter.setFont(font);
    painter.setPen(QColor(QRgb(PaperColour(text.ink))));
    const double wide = QFontMetricsF(font, painter.device()).horizontalAdvance(text.text);
    painter.save();
    painter.translate(at);
    if (text.upward) painter.rotate(-90);
    painter.drawText(QPointF(-wide * static_cast<int>(text.anchor) / 2, 0), text.text);
    painter.restore();
}

// at in dots.
void DrawDrawing(QPainter& painter, QPointF at, const Drawing& drawing) {
    painter.save();
    painter.translate(at);
    painter.scale(1 / kDot, 1 / kDot);
    for (const DrawnLine& line : drawing.lines)
        DrawLine(painter, line);
    painter.restore();
    for (const DrawnText& text : drawing.texts)
        DrawText(painter, at + text.at / kDot, text);
}

// A certificate laid out for a device, with room for its chart.
class Pages {
  public:
    Pages(const Certificate& certificate, Paper paper, QPaintDevice* device)
        : certificate_(certificate),
          paper_(paper),
          size_((SizeOf(paper).width() - 2 * kPageMargin) / kDot,
                (SizeOf(paper).height() - 2 * kPageMargin - kFooterHeight) / kDot) {
        document_.documentLayout()->setPaintDevice(device);
        document_.setDocumentMargin(0);
        document_.setDefaultFont(PageFont(8.5, false));
        QString style = QString::fromUtf8(PageResource("page/certificate.css"));
        for (int ink = kInks - 1; ink >= 0; --ink)
            style.replace(QStringLiteral("var(--i%1)").arg(ink),
                          QColor(QRgb(PaperColour(ink))).name());
        document_.setDefaultStyleSheet(style);
        document_.addResource(
            QTextDocument::ImageResource, QUrl(QStringLiteral("letterhead")),
            QImage::fromData(PageResource("report/letterhead.png")).copy(0, 0, 592, 160));
        document_.setPageSize(size_);
        QTextCursor cursor(&document_);
        cursor.beginEditBlock();
        cursor.insertHtml(AboveChart(
            certificate, QStringLiteral("<img src=\"letterhead\" width=\"133\" height=\"36\">")));
        if (!certificate.curves.empty()) {
            QTextFrameFormat room;
            room.setTopMargin(4);
            room.setHeight(ChartSize(paper, certificate.curves.size()).height() / kDot);
            chart_ = cursor.insertFrame(room);
            cursor.movePosition(QTextCursor::End);
        }
        cursor.insertHtml(BelowChart(certificate));
        cursor.endEditBlock();
        std::vector<QTextTable*> tables;
        for (QTextFrame* frame : document_.rootFrame()->childFrames()) {
            if (auto* table = qobject_cast<QTextTable*>(frame)) tables.push_back(table);
        }
        cursor.beginEditBlock();
        for (QTextTable* table : tables)
            Form(*table);
        cursor.endEditBlock();
        for (QTextTable* table : tables)
            KeepTogether(*table);
    }

    int Count() const { return document_.pageCount(); }

    void Draw(QPainter& painter, int number) const {
        painter.save();
        painter.translate(kPageMargin / kDot, kPageMargin / kDot - number * size_.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = QRectF({0, number * size_.height()}, size_);
        painter.setClipRect(context.clip);
        document_.documentLayout()->draw(&painter, context);
        painter.setClipping(false);
        if (number == 0 && chart_) {
            const QRectF room = document_.documentLayout()->frameBoundingRect(chart_);
            DrawDrawing(
                painter, room.topLeft(),
                ChartOf(certificate_.curves, ChartSize(paper_, certificate_.curves.size())));
        }
        painter.restore();
        DrawFooter(painter, number);
    }

  private:
    // Of the tables that are not as wide as their texts want.
    static std::vector<double> WidthsOf(int columns) {
        if (columns == 2) return {6, 94};
        if (columns == 4) return {13, 37, 13, 37};
        if (columns == 5) return {30, 3, 15, 3, 49};
        return {};
    }

    // What browser.css says, too.
    static void Form(QTextTable& table) {
        QTextTableFormat format = table.format();
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        format.setCellSpacing(0);
        format.setCellPadding(0);
        format.setBorder(0);
        format.setBorderCollapse(true);
        format.setTopMargin(table.columns() == 3 ? 0 : table.columns() == 4 ? 2 : 7);
        QList<QTextLength> widths;
        for (const double percent : WidthsOf(table.columns()))
            widths += QTextLength(QTextLength::PercentageLength, percent);
        format.setColumnWidthConstraints(widths);
        table.setFormat(format);
    }

    void KeepTogether(QTextTable& table) const {
        if (table.rows() > kUnbroken + 2 || table.columns() == 2) return;
        const auto at = [this](const QTextCursor& cursor) {
            return document_.documentLayout()->blockBoundingRect(cursor.block());
        };
        const double top = at(table.firstCursorPosition()).top();
        const double bottom = at(table.lastCursorPosition()).bottom();
        if (std::floor(top / size_.height()) == std::floor(bottom / size_.height())) return;
        QTextTableFormat format = table.format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        table.setFormat(format);
    }

    void DrawFooter(QPainter& painter, int number) const {
        const QSizeF size = SizeOf(paper_);
        const double foot = size.height() - kPageMargin;
        const double right = size.width() - kPageMargin;
        Drawing footer;
        footer.lines = {{{{kPageMargin, foot - 4.5}, {right, foot - 4.5}}, kLineInk}};
        footer.texts = {
            {{kPageMargin, foot}, certificate_.subject, 7.5, Anchor::Start, false, kQuietInk},
            {{right, foot},
             QStringLiteral("Page %1 of %2").arg(number + 1).arg(Count()),
             7.5,
             Anchor::End,
             false,
             kQuietInk}};
        DrawDrawing(painter, {}, footer);
    }

    const Certificate& certificate_;
    const Paper paper_;
    const QSizeF size_;
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
