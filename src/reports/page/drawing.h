// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QSizeF>
#include <QString>
#include <cstdint>
#include <vector>

namespace davo {

// What lines and texts are drawn in; curve number i has Ink::Curve + i % kCurveInks.
enum Ink : int { kTextInk, kQuietInk, kLineInk, kFineInk, kMarkInk, kBrandInk, kCurveInk };
inline constexpr int kCurveInks = 10;
inline constexpr int kInks = kCurveInk + kCurveInks;

// On white; 4.5 to 1 at least for what is read.
std::uint32_t PaperColour(int ink);

enum class Anchor { Start, Middle, End };

struct DrawnLine {
    std::vector<QPointF> points;  // mm from the top left
    int ink = kLineInk;
    double width = 0.2;  // mm
    int dash = 0;        // 0 solid, 1 dashed, 2 dotted
    bool filled = false;
    QString name = {};  // shown where the pointer is on it
    QString link = {};  // where a press on it leads; empty: nowhere
};

struct DrawnText {
    QPointF at;  // on the base line
    QString text;
    double size = 8;  // points
    Anchor anchor = Anchor::Start;
    bool bold = false;
    int ink = kTextInk;
    bool upward = false;
};

// Lines, then texts over them. Who writes it needs to know nothing else.
struct Drawing {
    QSizeF size;  // mm
    std::vector<DrawnLine> lines;
    std::vector<DrawnText> texts;
};

inline constexpr double kMillimetresPerPoint = 25.4 / 72;

// About as wide as text is in Arial or a font of its widths, in mm.
double WidthOf(const QString& text, double points);

// The drawing as SVG for the inside of a page whose style has InkRules: its colours are the page's
// variables "--i0", "--i1" ...
QString SvgOf(const Drawing& drawing, const QString& title);
QString InkRules();

}  // namespace davo
