// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/chart_look.h"

#include <algorithm>

namespace davo {

namespace {

constexpr double kLeastContrast = 4.5;
constexpr double kFaintContrast = 2;
// Hues that also differ in lightness for who sees few colours.
constexpr std::array<QRgb, kCurveLooks> kCurveColours = {
    0xff0060a8, 0xffc24a00, 0xff007a5a, 0xff8a2f84, 0xff6b5900,
    0xffb00030, 0xff007c8c, 0xff4a4ac0, 0xff4f7000, 0xff8a4b2a};

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

ChartColours ColoursOn(const QPalette& palette) {
    return Colours(palette.color(QPalette::Base), palette.color(QPalette::Text));
}

ChartColours PaperColours() {
    return Colours(Qt::white, Qt::black);
}

}  // namespace davo
