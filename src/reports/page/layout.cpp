// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/layout.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>

#include "reports/page/chart.h"

namespace davo {

namespace {

using Kind = PagePart::Kind;

constexpr double kTitleHeight = 14;
constexpr double kFooterHeight = 6;
constexpr double kHeadingHeight = 6.5;  // of a table or a list
constexpr double kColumnHeads = 9;      // group, and heading with unit
constexpr double kGap = 2.5;            // behind a part
constexpr double kSignatureHeight = 13;
constexpr double kChartShare = 0.4;
constexpr double kCellRoom = 3.4;  // between columns, also for a mark

double Width(Paper paper) {
    return SizeOf(paper).width() - 2 * kPageMargin;
}

std::size_t LinesOfRow(const std::vector<CertificateCell>& row, const std::vector<double>& widths) {
    qsizetype lines = 1;
    for (std::size_t i = 0; i < row.size(); ++i)
        lines = std::max(lines, WrappedTo(row[i].text, widths[i] - kCellRoom, kBodySize).size());
    return static_cast<std::size_t>(lines);
}

// Deals the parts out to pages.
class Deal {
  public:
    Deal(const Certificate& certificate, Paper paper)
        : page_(certificate), paper_(paper), width_(Width(paper)) {
        Open();
    }

    std::vector<PageParts> Pages() {
        for (std::size_t i = 0; i < page_.headers.size(); ++i) {
            const std::size_t rows = (page_.headers[i].size() + 1) / 2;
            const double height = static_cast<double>(rows) * kRowHeight + kGap;
            Need(height);
            Put({Kind::Header, i, 0, 1, height});
        }
        for (std::size_t i = 0; i < page_.tables.size(); ++i)
            DealTable(i);
        DealLines(Kind::Explained, page_.explained, kGap);
        PutChart();
        DealLines(Kind::Notes, page_.notes, kHeadingHeight + kGap);
        Need(kSignatureHeight);
        Put({Kind::Signature, 0, 0, 1, kSignatureHeight});
        return std::move(pages_);
    }

  private:
    double LeastChart() const { return page_.curves.empty() ? 0 : LeastChartHeight(paper_) + kGap; }

    void Open() {
        pages_.emplace_back();
        left_ = SizeOf(paper_).height() - 2 * kPageMargin - kTitleHeight - kFooterHeight;
        if (pages_.size() == 1) left_ -= LeastChart();
    }
    void Put(const PagePart& part) {
        pages_.back().push_back(part);
        left_ -= part.height;
    }
    // Goes on to the next page where there is no room.
    void Need(double height) {
        if (height <= left_ || pages_.back().empty()) return;
        if (pages_.size() == 1 && !hasChart_ && LeastChart() > 0)
            Put({Kind::Chart, 0, 0, 1, LeastChart() + left_});
        Open();
    }
    double LinesHeight(const QStringList& lines, std::size_t from) const {
        double height = 0;
        for (std::size_t i = from; i < static_cast<std::size_t>(lines.size()); ++i)
            height += LineHeight(lines, i);
        return height;
    }
    double LineHeight(const QStringList& lines, std::size_t i) const {
        return static_cast<double>(
                   WrappedTo(lines.at(static_cast<qsizetype>(i)), width_ - 6, kBodySize).size()) *
               kRowHeight;
    }
    void PutChart() {
        if (pages_.size() > 1 || LeastChart() == 0) return;
        double tail = kSignatureHeight + LinesHeight(page_.notes, 0);
        if (!page_.notes.isEmpty()) tail += kHeadingHeight + kGap;
        const double more = tail <= left_ ? left_ - tail : 0;
        hasChart_ = true;
        left_ += LeastChart();
        Put({Kind::Chart, 0, 0, 1, LeastChart() + more});
    }

    void DealTable(std::size_t index) {
        const CertificateTable& table = page_.tables.at(index);
        const std::vector<double> widths = ColumnWidths(table, width_);
        constexpr double kHead = kHeadingHeight + kColumnHeads + kGap;
        std::size_t from = 0;
        while (from < table.rows.size()) {
            const auto heightOf = [&](std::size_t row) {
                return static_cast<double>(LinesOfRow(table.rows[row], widths)) * kRowHeight;
            };
            Need(kHead + heightOf(from));
            PagePart part{Kind::Table, index, from, from, kHead};
            while (part.to < table.rows.size() &&
                   (part.to == from || part.height + heightOf(part.to) <= left_))
                part.height += heightOf(part.to++);
            Put(part);
            from = part.to;
        }
    }

    void DealLines(Kind kind, const QStringList& lines, double head) {
        const auto count = static_cast<std::size_t>(lines.size());
        std::size_t from = 0;
        while (from < count) {
            Need(head + LineHeight(lines, from));
            PagePart part{kind, 0, from, from, head};
            while (part.to < count &&
                   (part.to == from || part.height + LineHeight(lines, part.to) <= left_))
                part.height += LineHeight(lines, part.to++);
            Put(part);
            from = part.to;
        }
    }

    const Certificate& page_;
    Paper paper_;
    double width_;
    std::vector<PageParts> pages_;
    double left_ = 0;
    bool hasChart_ = false;
};

const QRegularExpression& PlainNumber() {
    static const QRegularExpression kNumber(QStringLiteral("^-?\\d+(\\.\\d+)?$"));
    return kNumber;
}

qsizetype DecimalsOf(const QString& text) {
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    return point < 0 ? 0 : text.size() - point - 1;
}

// Draws one page.
class PageWriter {
  public:
    PageWriter(const Certificate& certificate, Paper paper)
        : page_(certificate), size_(SizeOf(paper)), width_(Width(paper)) {
        drawing_.size = size_;
    }

    Drawing Write(const PageParts& parts, const QString& number) {
        DrawTitle();
        for (const PagePart& part : parts) {
            DrawPart(part);
            y_ += part.height;
        }
        const double foot = size_.height() - kPageMargin;
        Line(kPageMargin, foot - 4.5, width_, kLineInk);
        Text(kPageMargin, foot, page_.subject, 7.5, Anchor::Start, false, kQuietInk);
        Text(kPageMargin + width_, foot, number, 7.5, Anchor::End, false, kQuietInk);
        return std::move(drawing_);
    }

  private:
    void Line(double x, double y, double width, int ink, double thick = 0.2) {
        drawing_.lines.push_back({{{x, y}, {x + width, y}}, ink, thick});
    }
    void Text(double x, double y, const QString& text, double size = kBodySize,
              Anchor anchor = Anchor::Start, bool bold = false, int ink = kTextInk) {
        if (!text.isEmpty()) drawing_.texts.push_back({{x, y}, text, size, anchor, bold, ink});
    }
    void Heading(const QString& text) {
        Text(kPageMargin, y_ + 4.2, text, 10, Anchor::Start, true, kBrandInk);
    }

    void DrawTitle() {
        Text(kPageMargin, y_ + 6.5, QLatin1String(kCertificateTitle), 19, Anchor::Start, true,
             kBrandInk);
        Text(kPageMargin + width_, y_ + 4.2, QStringLiteral("DAVO"), 13, Anchor::End, true,
             kBrandInk);
        Text(kPageMargin + width_, y_ + 8, QStringLiteral("Current-Transformer Test Sets"), 7.5,
             Anchor::End, false, kQuietInk);
        Line(kPageMargin, y_ + 10.5, width_, kBrandInk, 0.5);
        y_ += kTitleHeight;
    }

    void DrawPart(const PagePart& part) {
        if (part.kind == Kind::Header) DrawHeader(page_.headers.at(part.index));
        if (part.kind == Kind::Table) DrawTable(page_.tables.at(part.index), part);
        if (part.kind == Kind::Chart) DrawChart(part.height - kGap);
        if (part.kind == Kind::Explained) DrawLines(page_.explained, part, y_, true);
        if (part.kind == Kind::Notes) {
            Heading(QStringLiteral("Notes"));
            DrawLines(page_.notes, part, y_ + kHeadingHeight, false);
        }
        if (part.kind == Kind::Signature) DrawSignature();
    }

    void DrawHeader(const std::vector<CertificateField>& fields) {
        constexpr double kCaptionWidth = 27;
        const std::size_t half = (fields.size() + 1) / 2;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const bool isRight = i >= half;
            const std::size_t row = isRight ? i - half : i;
            const double x = kPageMargin + (isRight ? width_ / 2 : 0);
            const double y = y_ + static_cast<double>(row) * kRowHeight + 1;
            Text(x, y, fields[i].caption, kBodySize, Anchor::Start, false, kQuietInk);
            // The fields of a record are short; one that is not is made smaller.
            const double room = width_ / 2 - kCaptionWidth - 2;
            const double wide = WidthOf(fields[i].text, kBodySize, true);
            Text(x + kCaptionWidth, y, fields[i].text,
                 wide > room ? kBodySize * room / wide : kBodySize, Anchor::Start, true);
        }
    }

    void DrawHeads(const CertificateTable& table, const std::vector<double>& widths) {
        double x = kPageMargin;
        double groupFrom = x;
        const double y = y_ + kHeadingHeight;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const CertificateColumn& column = table.columns[i];
            const bool endsGroup =
                i + 1 == widths.size() || table.columns[i + 1].group != column.group;
            if (i > 0 && table.columns[i - 1].group != column.group) groupFrom = x;
            const double end = x + widths[i] - kCellRoom;
            if (endsGroup && !column.group.isEmpty()) {
                Text((groupFrom + end) / 2, y + 2.5, column.group, kBodySize, Anchor::Middle, true);
                Line(groupFrom + 2, y + 3.6, end - groupFrom - 2, kLineInk);
            }
            const QString head = column.Caption();
            Text(column.isNumber ? end : x, y + 7, head, 7.5,
                 column.isNumber ? Anchor::End : Anchor::Start, false, kQuietInk);
            x += widths[i];
        }
        Line(kPageMargin, y + kColumnHeads - 1, width_, kBrandInk, 0.3);
    }

    void DrawTable(const CertificateTable& table, const PagePart& part) {
        Heading(table.title);
        const std::vector<double> widths = ColumnWidths(table, width_);
        DrawHeads(table, widths);
        double y = y_ + kHeadingHeight + kColumnHeads;
        for (std::size_t row = part.from; row < part.to; ++row) {
            double x = kPageMargin;
            for (std::size_t i = 0; i < widths.size(); ++i) {
                DrawCell(table, i, table.rows[row][i], {x, y + 2.7}, widths[i]);
                x += widths[i];
            }
            y += static_cast<double>(LinesOfRow(table.rows[row], widths)) * kRowHeight;
            Line(kPageMargin, y - 0.5, width_, kFineInk, 0.15);
        }
    }

    void DrawCell(const CertificateTable& table, std::size_t column, const CertificateCell& cell,
                  QPointF at, double width) {
        const QStringList lines = WrappedTo(cell.text, width - kCellRoom, kBodySize);
        const bool isNumber = table.columns[column].isNumber;
        const auto endOf = [&](const QString& line) {
            return at.x() + width - kCellRoom -
                   DecimalRoom(table, column, line) * kBodySize * kMillimetresPerPoint;
        };
        double y = at.y();
        for (const QString& line : lines) {
            Text(isNumber ? endOf(line) : at.x(), y, line, kBodySize,
                 isNumber ? Anchor::End : Anchor::Start, column == 0);
            y += kRowHeight;
        }
        // Marks are of numbers only.
        if (cell.mark > 0)
            Text(endOf(lines.front()) + 0.4, at.y() - 1.1, QString::number(cell.mark), 6,
                 Anchor::Start, true, kMarkInk);
    }

    void DrawLines(const QStringList& lines, const PagePart& part, double y, bool marked) {
        y += 2.7;
        for (std::size_t i = part.from; i < part.to; ++i) {
            if (marked)
                Text(kPageMargin, y - 1.1, QString::number(i + 1), 6, Anchor::Start, true,
                     kMarkInk);
            const QString& whole = lines.at(static_cast<qsizetype>(i));
            for (const QString& line : WrappedTo(whole, width_ - 6, kBodySize)) {
                Text(kPageMargin + (marked ? 5 : 0), y, line);
                y += kRowHeight;
            }
        }
    }

    void DrawChart(double height) {
        const Drawing chart = ChartOf(page_.curves, {width_, height});
        const QPointF by(kPageMargin, y_);
        for (DrawnLine line : chart.lines) {
            for (QPointF& point : line.points)
                point += by;
            drawing_.lines.push_back(std::move(line));
        }
        for (DrawnText text : chart.texts) {
            text.at += by;
            drawing_.texts.push_back(std::move(text));
        }
    }

    void DrawSignature() {
        const double y = y_ + kSignatureHeight - 4;
        const double third = width_ / 3;
        const auto place = [&](double x, double wide, const char* caption, const QString& text) {
            Text(x, y - 1.5, text, kBodySize, Anchor::Start, true);
            Line(x, y, wide, kLineInk, 0.3);
            Text(x, y + 3.6, QLatin1String(caption), 7.5, Anchor::Start, false, kQuietInk);
        };
        place(kPageMargin, third - 6, "Tested by", page_.tester);
        place(kPageMargin + third, third / 2 - 6, "Date", page_.date);
        place(kPageMargin + third * 1.5, third * 1.5, "Signature", {});
    }

    const Certificate& page_;
    QSizeF size_;
    double width_;
    double y_ = kPageMargin;
    Drawing drawing_;
};

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

double LeastChartHeight(Paper paper) {
    const QSizeF size = SizeOf(paper);
    return kChartShare * size.width() * size.height() / Width(paper);
}

std::vector<PageParts> PagesOf(const Certificate& certificate, Paper paper) {
    return Deal(certificate, paper).Pages();
}

std::vector<double> ColumnWidths(const CertificateTable& table, double width) {
    constexpr double kMostOfAll = 0.3;
    std::vector<double> widths;
    double sum = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const CertificateColumn& column = table.columns[i];
        double widest = WidthOf(column.Caption(), 7.5);
        for (const auto& row : table.rows) {
            const double room = DecimalRoom(table, i, row[i].text) * kBodySize;
            widest = std::max(
                widest, WidthOf(row[i].text, kBodySize, i == 0) + room * kMillimetresPerPoint);
        }
        widths.push_back(std::min(widest, width * kMostOfAll) + kCellRoom);
        sum += widths.back();
    }
    // What is left over goes between them; what is too much is taken from all.
    const double part = (width - sum) / static_cast<double>(widths.size());
    for (double& one : widths)
        one = part >= 0 ? one + part : one * width / sum;
    return widths;
}

double DecimalRoom(const CertificateTable& table, std::size_t column, const QString& text) {
    constexpr double kDigit = 0.556;
    constexpr double kPoint = 0.278;
    if (!table.columns[column].isNumber || !PlainNumber().match(text).hasMatch()) return 0;
    qsizetype most = 0;
    for (const auto& row : table.rows) {
        const QString& other = row[column].text;
        if (PlainNumber().match(other).hasMatch()) most = std::max(most, DecimalsOf(other));
    }
    const qsizetype own = DecimalsOf(text);
    return static_cast<double>(most - own) * kDigit + (own == 0 && most > 0 ? kPoint : 0);
}

QString PageNumberText(std::size_t number, std::size_t count) {
    return QStringLiteral("Page %1 of %2").arg(number + 1).arg(count);
}

Drawing DrawnPage(const Certificate& certificate, const std::vector<PageParts>& pages,
                  std::size_t number, Paper paper) {
    return PageWriter(certificate, paper)
        .Write(pages.at(number), PageNumberText(number, pages.size()));
}

}  // namespace davo
