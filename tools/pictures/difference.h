// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRect>
#include <vector>

namespace davo::test {

// Where two pictures of a window differ to the eye: in more than the rounding of smoothed edges,
// which may come out otherwise on another processor. Squares of the larger picture; none when
// nothing differs.
std::vector<QRect> DifferentPlaces(const QImage& kept, const QImage& made);

// made in pale colours, its different places framed, the pixels that differ in red.
QImage MarkedDifference(const QImage& kept, const QImage& made);

}  // namespace davo::test
