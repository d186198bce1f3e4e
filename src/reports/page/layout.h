// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <vector>

#include "reports/page/certificate.h"
#include "reports/page/drawing.h"

namespace davo {

enum class Paper { A4, Letter };

// By the locale's country; on Linux that of LC_ALL or LC_PAPER comes first.
Paper PaperOf(const QLocale& locale);
Paper UsualPaper();

QSizeF SizeOf(Paper paper);  // mm
inline constexpr double kPageMargin = 10;

// Where a page's text is: of so many points, in lines so high (mm).
inline constexpr double kBodySize = 8.5;
inline constexpr double kRowHeight = 4.2;

struct PagePart {
    enum class Kind { Header, Table, Explained, Chart, Notes, Signature };
    Kind kind = Kind::Header;
    std::size_t index = 0;  // of a header or a table
    std::size_t from = 0;   // rows or lines [from, to)
    std::size_t to = 0;
    double height = 0;
};
using PageParts = std::vector<PagePart>;

// What is on which page. The chart is on the first one and has two fifths of it at least; what is
// before it in the certificate and finds no room there follows it.
std::vector<PageParts> PagesOf(const Certificate& certificate, Paper paper);

// The widths of a table's columns in mm; they are as wide as the page together.
std::vector<double> ColumnWidths(const CertificateTable& table, double width);

// What is left free right of a number for the decimals that others of its column have, in parts of
// the text's size.
double DecimalRoom(const CertificateTable& table, std::size_t column, const QString& text);

// A page of the certificate as lines and texts; number from 0.
Drawing DrawnPage(const Certificate& certificate, const std::vector<PageParts>& pages,
                  std::size_t number, Paper paper);

// "Page 1 of 3"
QString PageNumberText(std::size_t number, std::size_t count);

inline constexpr const char* kCertificateTitle = "Test Certificate";

// How much of a page's height two fifths of its surface are in its text's width.
double LeastChartHeight(Paper paper);

}  // namespace davo
