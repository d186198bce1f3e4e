// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QSizeF>
#include <QString>
#include <string>

#include "reports/page/certificate.h"

namespace davo {

enum class Paper { A4, Letter };

// By the locale's country; on Linux that of LC_ALL or LC_PAPER comes first.
Paper PaperOf(const QLocale& locale);
Paper UsualPaper();

QSizeF SizeOf(Paper paper);  // mm
inline constexpr double kPageMargin = 10;
inline constexpr double kFooterHeight = 6;

// What the chart has of the first page: its frame is two fifths of that page, of several curves or
// beside a comparison with the numbers of the axes.
QSizeF ChartSize(const Certificate& certificate, Paper paper);

// The certificate as HTML that a browser and Qt's rich text understand: what is above the chart,
// with letterhead for its picture, and what is below. Numbers of a column are filled up with blanks
// until their points are below each other.
QString AboveChart(const Certificate& certificate, const QString& letterhead);
QString BelowChart(const Certificate& certificate);

// A table of so many rows is on one page.
inline constexpr int kUnbroken = 12;

// The certificate as one file of HTML in UTF-8, with the chart in it and without a script: light or
// dark on the screen, with the pages of the PDF on paper. The same certificate gives the same
// bytes.
std::string CertificateAsHtml(const Certificate& certificate, Paper paper);

}  // namespace davo
