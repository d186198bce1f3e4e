// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <functional>

namespace davo {

// Capital heights that a technician reads from some metres away.
inline constexpr double kPromptCapitals = 12.0;  // mm, from two metres
inline constexpr double kReadingCapitals = 8.0;  // mm

// The pixel size at which font's capitals are millimetres high on the screen that widget is on:
// by the screen's physical size where that is plausible, else by its logical resolution.
int PixelSizeForCapitals(const QFont& font, double millimetres, const QWidget& widget);

// A label that writes its text as large as its rectangle allows: wrapped between words, never
// cut, not below the least size unless the rectangle is too small for that, not above the largest.
// An "&" underlines the next character and is no shortcut. Rich text (setTextFormat) has these
// sizes as its own usual one.
class FitLabel : public QLabel {
  public:
    // least: height of the capitals in millimetres; the largest is growth times that.
    FitLabel(double leastCapitals, double growth, QWidget* parent);

    // A frame and a hazard ground, for what must not be overlooked.
    void SetAlert(bool alert);
    // An arrow in front of the text, on the ground of what is to be done now: a click does it.
    void SetCallToAct(std::function<void()> act);

    // The pixel size that the text is written in now.
    int FittedPixelSize() const;
    int LeastPixelSize() const { return PixelSizeForCapitals(font(), leastCapitals_, *this); }
    // Whether text can be written in the least size in a label of this size.
    bool HasRoomFor(const QString& text, QSize size) const;

    QSize sizeHint() const override { return minimumSizeHint(); }
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    int Margin() const;
    QRect TextRect() const;
    bool Fits(const QString& text, int pixelSize, QSize room) const;

    double leastCapitals_;
    double growth_;
    bool alert_ = false;
    std::function<void()> call_;
};

}  // namespace davo
