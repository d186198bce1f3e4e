// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

namespace davo {

// A part of a logarithmic axis, as powers of ten: from 10^low to 10^high.
struct LogSpan {
    double low = 0;
    double high = 1;
    bool operator==(const LogSpan&) const = default;
    double Length() const { return high - low; }
};

// The smallest whole decades that hold every value above zero; 0.01 to 1 (-2, 0) without one.
// Values that are not finite are left out.
LogSpan DecadesOf(const std::vector<double>& values);

// What holds every value above zero with some room at both ends, a decade at least; 0.01 to 1 (-2,
// 0) without one.
LogSpan SpanAround(const std::vector<double>& values);

// Grows one of both so that a decade is as long across, where there are wide pixels, as up, where
// there are high ones: around its middle or, with aside, to the right and downwards.
void EqualDecades(LogSpan& across, LogSpan& up, double wide, double high, bool aside);

// span grown or shrunk by 1/factor around the power of ten at, kept inside whole and not shorter
// than a twentieth of a decade. factor is above zero; above 1 shows less.
LogSpan Zoomed(LogSpan span, double factor, double at, LogSpan whole);

// span moved by a part of its length, as far as whole allows.
LogSpan Moved(LogSpan span, double part, LogSpan whole);

// Where an axis from 10^low to 10^high has its marks with a number (rising): at whole decades, in a
// part of few decades also at 2 and 5 or at every digit, in a short one at even steps.
std::vector<double> AxisMarks(LogSpan span);
// The marks between those, without a number: 2 to 9 of every decade; 2 and 5 where there is no room
// for all.
std::vector<double> FineMarks(LogSpan span, bool all = true);

}  // namespace davo
