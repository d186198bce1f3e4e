// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QFont;
class QWidget;

namespace davo {

// Capital heights that a technician reads from where he stands.
inline constexpr double kPromptCapitals = 12.0;  // mm, from two metres
inline constexpr double kReadingCapitals = 8.0;  // mm

// The pixel size at which font's capitals are millimetres high on the screen that widget is on:
// by the screen's physical size where that is plausible, else by its logical resolution.
int PixelSizeForCapitals(const QFont& font, double millimetres, const QWidget& widget);

}  // namespace davo
