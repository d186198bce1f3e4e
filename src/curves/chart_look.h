// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>
#include <array>

#include "ui/contrast.h"

namespace davo {

// How many curves can be told apart by dash and marker.
inline constexpr std::size_t kCurveLooks = 10;

// The colours of a chart.
struct ChartColours {
    QColor base;
    QColor text;
    QColor grid;
    QColor fineGrid;
    QColor faint;
    std::array<QColor, kCurveLooks> curves;
};

// Colours on the palette's base: lines differ from it by a contrast of 4.5 to 1 at least, the
// text has the palette's own.
ChartColours ColoursOn(const QPalette& palette);
// Dark on white, for paper.
ChartColours PaperColours();

}  // namespace davo
