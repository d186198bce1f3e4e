// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/reading_size.h"

#include <QFont>
#include <QFontMetricsF>
#include <QScreen>
#include <QWidget>
#include <cmath>

namespace davo {

namespace {

// Projectors and virtual screens tell sizes that no screen has.
constexpr double kLeastDotsPerInch = 50;
constexpr double kMostDotsPerInch = 400;
constexpr double kMillimetresPerInch = 25.4;

double DotsPerInch(const QScreen& screen) {
    const double physical = screen.physicalDotsPerInchY();
    const bool plausible = physical >= kLeastDotsPerInch && physical <= kMostDotsPerInch;
    return plausible ? physical : screen.logicalDotsPerInchY();
}

}  // namespace

int PixelSizeForCapitals(const QFont& font, double millimetres, const QWidget& widget) {
    constexpr int kTrialSize = 100;
    QFont trial = font;
    trial.setPixelSize(kTrialSize);
    const double capitalShare = QFontMetricsF(trial).capHeight() / kTrialSize;
    const double capitals = millimetres / kMillimetresPerInch * DotsPerInch(*widget.screen());
    return static_cast<int>(std::ceil(capitals / capitalShare));
}

}  // namespace davo
