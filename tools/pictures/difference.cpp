// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/pictures/difference.h"

#include <QPainter>
#include <algorithm>
#include <cstdlib>

namespace davo::test {
namespace {

// Of the 255 steps of red, green or blue. A picture that is computed with other instructions of the
// processor is off by one or two.
constexpr int kRounding = 8;
constexpr int kPlain = 32;
// A square has so many pixels on each side. Squares overlap by half, so that what is on the edge of
// one is in the middle of another.
constexpr int kSide = 8;
// What a square may have: a dot of the smallest letters has more. A colour that is a little off
// counts where it fills a part of the square, as an area does and an edge does not.
constexpr int kPlainPixels = 1;
constexpr int kRoundedPixels = 16;

int Distance(QRgb one, QRgb other) {
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

// For each pixel of the larger picture how far the two are from each other; where only one of them
// reaches, farthest.
QImage DistancesOf(const QImage& kept, const QImage& made) {
    const QImage one = kept.convertToFormat(QImage::Format_RGB32);
    const QImage other = made.convertToFormat(QImage::Format_RGB32);
    QImage distances(kept.size().expandedTo(made.size()), QImage::Format_Grayscale8);
    distances.fill(Qt::white);
    const QSize common = kept.size().boundedTo(made.size());
    for (int y = 0; y < common.height(); ++y) {
        const auto* left = reinterpret_cast<const QRgb*>(one.constScanLine(y));
        const auto* right = reinterpret_cast<const QRgb*>(other.constScanLine(y));
        uchar* distance = distances.scanLine(y);
        for (int x = 0; x < common.width(); ++x)
            distance[x] = static_cast<uchar>(Distance(left[x], right[x]));
    }
    return distances;
}

bool IsDifferent(const QImage& distances, const QRect& place) {
    int plain = 0;
    int rounded = 0;
    for (int y = place.top(); y <= place.bottom(); ++y) {
        const uchar* distance = distances.constScanLine(y);
        for (int x = place.left(); x <= place.right(); ++x) {
            plain += distance[x] > kPlain ? 1 : 0;
            rounded += distance[x] > kRounding ? 1 : 0;
        }
    }
    return plain > kPlainPixels || rounded > kRoundedPixels;
}

std::vector<QRect> PlacesOf(const QImage& distances) {
    std::vector<QRect> places;
    for (int y = 0; y < distances.height(); y += kSide / 2) {
        for (int x = 0; x < distances.width(); x += kSide / 2) {
            const QRect place = QRect(x, y, kSide, kSide).intersected(distances.rect());
            if (IsDifferent(distances, place)) places.push_back(place);
        }
    }
    return places;
}

}  // namespace

std::vector<QRect> DifferentPlaces(const QImage& kept, const QImage& made) {
    return PlacesOf(DistancesOf(kept, made));
}

QImage MarkedDifference(const QImage& kept, const QImage& made) {
    const QImage distances = DistancesOf(kept, made);
    QImage marked(distances.size(), QImage::Format_RGB32);
    marked.fill(Qt::white);
    QPainter painter(&marked);
    painter.setOpacity(0.3);
    painter.drawImage(0, 0, made);
    painter.setOpacity(1);
    painter.setPen(QColor(255, 170, 0));
    for (const QRect& place : PlacesOf(distances))
        painter.drawRect(place.adjusted(0, 0, -1, -1));
    painter.end();
    for (int y = 0; y < marked.height(); ++y) {
        for (int x = 0; x < marked.width(); ++x) {
            if (distances.constScanLine(y)[x] > kRounding) marked.setPixel(x, y, qRgb(255, 0, 0));
        }
    }
    return marked;
}

}  // namespace davo::test
