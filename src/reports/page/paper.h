// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QSizeF>
#include <cstddef>

namespace davo {

enum class Paper { A4, Letter };

// By the locale's country; on Linux that of LC_ALL or LC_PAPER comes first.
Paper PaperOf(const QLocale& locale);
Paper UsualPaper();

QSizeF SizeOf(Paper paper);  // mm
inline constexpr double kPageMargin = 10;
inline constexpr double kFooterHeight = 6;

// What a chart of so many curves has of the first page: its frame is two fifths of that page, of
// several curves with the numbers of the axes.
QSizeF ChartSize(Paper paper, std::size_t curves);

}  // namespace davo
