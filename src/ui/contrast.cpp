// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/contrast.h"

#include <algorithm>
#include <cmath>

namespace davo {

namespace {

double Linear(double part) {
    constexpr double kToe = 0.03928;
    return part <= kToe ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
           0.0722 * Linear(colour.blueF());
}

QColor Ground(const QPalette& palette) {
    return palette.color(QPalette::Active, QPalette::Window);
}

QColor Ink(const QPalette& palette) {
    return palette.color(QPalette::Active, QPalette::WindowText);
}

// So much of the ink on the ground, and more where that is too faint.
QColor PartOfInk(const QPalette& palette, double part, double contrast) {
    return Readable(Mixed(Ground(palette), Ink(palette), part), Ground(palette), Ink(palette),
                    contrast);
}

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
    constexpr double kFlare = 0.05;
    const double first = Luminance(one) + kFlare;
    const double second = Luminance(other) + kFlare;
    return std::max(first, second) / std::min(first, second);
}

QColor Mixed(const QColor& one, const QColor& other, double part) {
    const auto mix = [part](int a, int b) {
        return static_cast<int>(std::lround(a * (1 - part) + b * part));
    };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()),
            mix(one.blue(), other.blue())};
}

QColor Readable(const QColor& colour, const QColor& base, const QColor& other, double contrast) {
    constexpr int kSteps = 20;
    for (int step = 0; step < kSteps; ++step) {
        QColor tried = Mixed(colour, other, static_cast<double>(step) / kSteps);
        if (Contrast(tried, base) >= contrast) return tried;
    }
    return other;
}

QColor QuietInk(const QPalette& palette) {
    return PartOfInk(palette, 0.6, 5.0);
}

QColor OutlineInk(const QPalette& palette) {
    return PartOfInk(palette, 0.5, 3.5);
}

QColor FocusInk(const QPalette& palette) {
    return Readable(palette.color(QPalette::Active, QPalette::Highlight), Ground(palette),
                    Ink(palette), 3.0);
}

}  // namespace davo
