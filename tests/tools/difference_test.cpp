// SPDX-License-Identifier: GPL-3.0-or-later
// What pictures of windows are compared with: it sees what a user would, and nothing else.
#include "tools/pictures/difference.h"

#include <QCheckBox>
#include <QPainter>
#include <QPushButton>
#include <random>

#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

QImage Painted(const QString& text, const QPoint& at = {20, 30}, const QRect& clip = {}) {
    QImage image(160, 50, QImage::Format_RGB32);
    image.fill(QColor(239, 239, 239));
    QPainter painter(&image);
    painter.setFont(QFont(u"DejaVu Sans"_s, 9));
    if (clip.isValid()) painter.setClipRect(clip);
    painter.drawText(at, text);
    return image;
}

QImage WithButton(const QPoint& at, const QString& caption = u"Save"_s) {
    QWidget window;
    window.resize(200, 80);
    QPushButton button(caption, &window);
    button.setGeometry(QRect(at, QSize(90, 34)));
    QCheckBox box(u"Impedance"_s, &window);
    box.move(110, 10);
    return window.grab().toImage();
}

bool Differ(const QImage& one, const QImage& other) {
    EXPECT_EQ(DifferentPlaces(one, other).empty(), DifferentPlaces(other, one).empty());
    return !DifferentPlaces(one, other).empty();
}

TEST(PictureDifference, IsNotInTheRoundingOfColours) {
    std::mt19937_64 random(RandomSeed(3));
    std::uniform_int_distribution<int> step(-8, 8);
    const QImage kept = Painted(u"I = 1.2513 A, V = 491.2 V"_s);
    QImage made = kept;
    for (int y = 0; y < made.height(); ++y) {
        for (int x = 0; x < made.width(); ++x) {
            const QColor colour = made.pixelColor(x, y);
            const auto near = [&](int value) { return std::clamp(value + step(random), 0, 255); };
            made.setPixelColor(
                x, y, QColor(near(colour.red()), near(colour.green()), near(colour.blue())));
        }
    }
    ASSERT_NE(kept, made);
    EXPECT_FALSE(Differ(kept, made));
}

TEST(PictureDifference, IsNotInOnePixelOfAnEdge) {
    const QImage kept = Painted(u"491.2 V"_s);
    QImage made = kept;
    for (int i = 0; i < 5; ++i)
        made.setPixelColor(20 + 12 * i, 25, Qt::black);
    EXPECT_FALSE(Differ(kept, made));
}

TEST(PictureDifference, IsInEachDigitThatIsAnother) {
    for (char one = '0'; one <= '9'; ++one) {
        for (char other = '0'; other < one; ++other) {
            const auto text = [](char digit) { return u"491.%1 V"_s.arg(QLatin1Char(digit)); };
            EXPECT_TRUE(Differ(Painted(text(one)), Painted(text(other)))) << one << ' ' << other;
        }
    }
}

TEST(PictureDifference, IsInTheSmallestSigns) {
    EXPECT_TRUE(Differ(Painted(u"1.5"_s), Painted(u"1,5"_s)));
    EXPECT_TRUE(Differ(Painted(u"10:1"_s), Painted(u"10.1"_s)));
    EXPECT_TRUE(Differ(Painted(u"-5"_s), Painted(u"+5"_s)));
    EXPECT_TRUE(Differ(Painted(u"saved"_s), Painted(u"saved."_s)));
    EXPECT_TRUE(Differ(Painted(u"I"_s), Painted(u"l"_s)));
    EXPECT_TRUE(Differ(Painted(u"Saettigung"_s), Painted(u"Sättigung"_s)));
}

TEST(PictureDifference, IsInAMoveByOnePixel) {
    EXPECT_TRUE(Differ(Painted(u"491.2 V"_s), Painted(u"491.2 V"_s, {21, 30})));
    EXPECT_TRUE(Differ(Painted(u"491.2 V"_s), Painted(u"491.2 V"_s, {20, 31})));
    EXPECT_TRUE(Differ(WithButton({10, 20}), WithButton({11, 20})));
    EXPECT_TRUE(Differ(WithButton({10, 20}), WithButton({10, 21})));
    EXPECT_FALSE(Differ(WithButton({10, 20}), WithButton({10, 20})));
}

TEST(PictureDifference, IsInAMnemonic) {
    EXPECT_TRUE(Differ(WithButton({10, 20}, u"&Save"_s), WithButton({10, 20}, u"S&ave"_s)));
}

TEST(PictureDifference, IsInACutLetter) {
    const QImage whole = Painted(u"DAVO"_s);
    const QFont font(u"DejaVu Sans"_s, 9);
    const int right = 20 + QFontMetrics(font).horizontalAdvance(u"DAVO"_s);
    EXPECT_FALSE(Differ(whole, Painted(u"DAVO"_s, {20, 30}, QRect(0, 0, right + 1, 50))));
    EXPECT_TRUE(Differ(whole, Painted(u"DAVO"_s, {20, 30}, QRect(0, 0, right - 3, 50))));
    EXPECT_TRUE(Differ(Painted(u"gap"_s), Painted(u"gap"_s, {20, 30}, QRect(0, 0, 160, 32))));
}

TEST(PictureDifference, IsInAnAreaOfAnotherColour) {
    QImage kept = Painted({});
    QImage made = kept;
    QPainter(&made).fillRect(100, 10, 12, 12, QColor(239, 239, 229));
    EXPECT_TRUE(Differ(kept, made));
}

TEST(PictureDifference, IsInAnotherSize) {
    const QImage kept = Painted({});
    EXPECT_TRUE(Differ(kept, kept.copy(0, 0, 160, 49)));
    EXPECT_TRUE(Differ(kept, kept.copy(0, 0, 158, 50)));
    EXPECT_TRUE(Differ(kept, QImage()));
}

TEST(PictureDifference, IsMarkedWhereItIs) {
    const QImage kept = Painted(u"491.2 V"_s);
    const QImage made = Painted(u"491.3 V"_s);
    const QImage marked = MarkedDifference(kept, made);
    ASSERT_EQ(marked.size(), made.size());
    int red = 0;
    QRect places;
    for (const QRect& place : DifferentPlaces(kept, made))
        places |= place;
    for (int y = 0; y < marked.height(); ++y) {
        for (int x = 0; x < marked.width(); ++x) {
            if (marked.pixelColor(x, y) != QColor(Qt::red)) continue;
            ++red;
            EXPECT_TRUE(places.contains(x, y));
        }
    }
    EXPECT_GT(red, 5);
    EXPECT_LT(places.width(), 24);
    EXPECT_GT(places.left(), 30);
}

}  // namespace
}  // namespace davo::test
