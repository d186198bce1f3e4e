// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>

class QStyle;

namespace davo {

// The contrast of two colours, 1 to 21 (WCAG 2.1, "contrast ratio").
double Contrast(const QColor& one, const QColor& other);

// one with a part (0 to 1) of other.
QColor Mixed(const QColor& one, const QColor& other, double part);

// colour, moved towards other until it differs from base by a contrast.
QColor Readable(const QColor& colour, const QColor& base, const QColor& other, double contrast);

// Of text on the palette's window that is second to other text, 4.5 to 1 at least.
QColor QuietInk(const QPalette& palette);

// Of the outlines of fields and frames on the palette's window, 3 to 1 at least.
QColor OutlineInk(const QPalette& palette);
// The same of what has the focus.
QColor FocusInk(const QPalette& palette);

// The Fusion style with outlines of fields, buttons and frames that differ from the window by 3
// to 1 in every palette: its own are the window's colour made darker, and lost on a dark one.
QStyle* MakeOutlineStyle();

}  // namespace davo
