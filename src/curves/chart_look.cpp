// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/chart_look.h"

#include <algorithm>
#include <cmath>

namespace davo {

namespace {

constexpr double kLeastContrast = 4.5;
constexpr double kFaintContrast = 2;
// Hues that also differ in lightness for who sees few colours.
constexpr std::array<QRgb, kCurveLooks> kCurveColours = {
    0xff0060a8, 0xffc24a00, 0xff007a5a, 0xff8a2f84, 0xff6b5900,
    0xffb00030, 0xff007c8c, 0xff4a4ac0, 0xff4f7000, 0xff8a4b2a};

double Linear(double part) {
    constexpr double kToe = 0.03928;
    return part <= kToe ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
           0.0722 * Linear(colour.blueF());
}

QColor Mixed(const QColor& one, const QColor& other, double part) {
    const auto mix = [part](int a, int b) {
        return static_cast<int>(std::lround(a * (1 - part) + b * part));
    };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()),
            mix(one.blue(), other.blue())};
}

// colour, moved towards other until it stands out from base by a contrast.
QColor Readable(const QColor& colour, const QColor& base, const QColor& other, double contrast) {
    constexpr int kSteps = 20;
    for (int step = 0; step < kSteps; ++step) {
        QColor tried = Mixed(colour, other, static_cast<double>(step) / kSteps);
        if (Contrast(tried, base) >= contrast) return tried;
    }
    return other;
}

ChartColours Colours(const QColor& base, const QColor& text) {
    ChartColours colours;
    colours.base = base;
    colours.text = text;
    colours.grid = Mixed(base, text, 0.28);
    colours.fineGrid = Mixed(base, text, 0.10);
    std::transform(
        kCurveColours.begin(), kCurveColours.end(), colours.curves.begin(),
        [&](QRgb colour) { return Readable(QColor(colour), base, text, kLeastContrast); });
    // Not a grey: it is no line of the grid.
    const QColor& first = colours.curves.front();
    colours.faint = Readable(Mixed(base, first, 0.45), base, first, kFaintContrast);
    return colours;
}

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
    constexpr double kFlare = 0.05;
    const double first = Luminance(one) + kFlare;
    const double second = Luminance(other) + kFlare;
    return std::max(first, second) / std::min(first, second);
}

ChartColours ColoursOn(const QPalette& palette) {
    return Colours(palette.color(QPalette::Base), palette.color(QPalette::Text));
}

ChartColours PaperColours() {
    return Colours(Qt::white, Qt::black);
}

}  // namespace davo
