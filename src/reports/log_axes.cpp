// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/log_axes.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace davo {

namespace {

constexpr LogSpan kNothingShown{-2, 0};
constexpr double kLeastSpan = 0.05;
// Up to how many decades the digits between them have numbers, too.
constexpr double kEveryDigit = 0.8;
constexpr double kSomeDigits = 2;
constexpr double kEvenSteps = 0.35;
constexpr double kRounding = 1e-9;
constexpr double kStepsWanted = 5;

double Power(double exponent) {
    return std::pow(10.0, exponent);
}

// The least and the most of the values that an axis can show; zero without one.
LogSpan Bounds(const std::vector<double>& values) {
    LogSpan bounds{0, 0};
    for (const double value : values) {
        if (!(value > 0) || !std::isfinite(value)) continue;
        bounds.low = bounds.low > 0 ? std::min(bounds.low, value) : value;
        bounds.high = std::max(bounds.high, value);
    }
    return bounds;
}

LogSpan Inside(LogSpan span, LogSpan whole) {
    const double length = span.Length();
    // Steps in and out again come back to the whole, whatever they were rounded to.
    if (length > whole.Length() * (1 - kRounding)) return whole;
    const double low = std::clamp(span.low, whole.low, whole.high - length);
    return {low, low + length};
}

std::vector<double> Digits(LogSpan span, std::initializer_list<int> digits) {
    std::vector<double> marks;
    const int last = static_cast<int>(std::floor(span.high + kRounding));
    for (int decade = static_cast<int>(std::floor(span.low)); decade <= last; ++decade) {
        for (const int digit : digits)
            marks.push_back(digit * Power(decade));
    }
    return marks;
}

std::vector<double> EvenSteps(LogSpan span) {
    const double low = Power(span.low);
    const double high = Power(span.high);
    const double wanted = (high - low) / kStepsWanted;
    const double unit = Power(std::floor(std::log10(wanted)));
    double step = unit * 10;
    for (const double nice : {5.0, 2.0, 1.0}) {
        if (unit * nice >= wanted) step = unit * nice;
    }
    std::vector<double> marks;
    const auto first = static_cast<long long>(std::ceil(low / step));
    const auto last = static_cast<long long>(std::floor(high / step));
    for (long long i = first; i <= last; ++i)
        marks.push_back(static_cast<double>(i) * step);
    return marks;
}

}  // namespace

LogSpan DecadesOf(const std::vector<double>& values) {
    const LogSpan bounds = Bounds(values);
    if (!(bounds.low > 0)) return kNothingShown;
    const double low = std::floor(std::log10(bounds.low));
    return {low, std::max(low + 1, std::ceil(std::log10(bounds.high)))};
}

LogSpan SpanAround(const std::vector<double>& values) {
    constexpr double kRoomAtEnds = 0.06;
    const LogSpan bounds = Bounds(values);
    if (!(bounds.low > 0)) return kNothingShown;
    const double middle = (std::log10(bounds.low) + std::log10(bounds.high)) / 2;
    const double half = std::max(1.0, std::log10(bounds.high / bounds.low)) * (0.5 + kRoomAtEnds);
    return {middle - half, middle + half};
}

void EqualDecades(LogSpan& across, LogSpan& up, double wide, double high, bool aside) {
    const double decade = std::min(wide / across.Length(), high / up.Length());
    if (!(decade > 0)) return;
    const double moreAcross = std::max(0.0, wide / decade - across.Length());
    const double moreUp = std::max(0.0, high / decade - up.Length());
    const double part = aside ? 0 : 0.5;
    across = {across.low - part * moreAcross, across.high + (1 - part) * moreAcross};
    up = {up.low - (1 - part) * moreUp, up.high + part * moreUp};
}

LogSpan Zoomed(LogSpan span, double factor, double at, LogSpan whole) {
    const double length = std::clamp(span.Length() / factor, kLeastSpan, whole.Length());
    const double part = (at - span.low) / span.Length();
    const double low = at - part * length;
    return Inside({low, low + length}, whole);
}

LogSpan Moved(LogSpan span, double part, LogSpan whole) {
    const double way = part * span.Length();
    return Inside({span.low + way, span.high + way}, whole);
}

std::vector<double> AxisMarks(LogSpan span) {
    if (span.Length() <= kEvenSteps) return EvenSteps(span);
    if (span.Length() <= kEveryDigit) return Digits(span, {1, 2, 3, 4, 5, 6, 8});
    if (span.Length() <= kSomeDigits) return Digits(span, {1, 2, 5});
    return Digits(span, {1});
}

std::vector<double> FineMarks(LogSpan span, bool all) {
    if (span.Length() <= kEvenSteps) return {};
    return all ? Digits(span, {2, 3, 4, 5, 6, 7, 8, 9}) : Digits(span, {2, 5});
}

}  // namespace davo
