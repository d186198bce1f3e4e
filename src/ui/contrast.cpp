// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/contrast.h"

#include <QApplication>
#include <QGroupBox>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

namespace davo {

namespace {

double Linear(double part) {
    constexpr double kToe = 0.03928;
    return part <= kToe ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
           0.0722 * Linear(colour.blueF());
}

// So much of the ink on the ground, and more where that is too faint.
QColor PartOfInk(const QPalette& palette, double part, double contrast) {
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    const QColor ink = palette.color(QPalette::Active, QPalette::WindowText);
    return Readable(Mixed(ground, ink, part), ground, ink, contrast);
}

// Qt's palette for the dark mode of Windows has white texts on light grey buttons, and Fusion draws
// a button's face lighter than its colour.
QPalette ReadableButton(QPalette palette) {
    constexpr double kContrast = 9;
    const QColor ink = palette.color(QPalette::Active, QPalette::ButtonText);
    const QColor face = palette.color(QPalette::Active, QPalette::Button);
    if (Contrast(face, ink) >= kContrast) return palette;
    const QColor darker =
        Readable(face, ink, palette.color(QPalette::Active, QPalette::Window), kContrast);
    palette.setColor(QPalette::Button, darker);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, Mixed(darker, ink, 0.5));
    return palette;
}

class OutlineStyle : public QProxyStyle {
  public:
    OutlineStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    using QProxyStyle::polish;
    // Qt's palette for Windows has the window's colour for what is selected in a list without the
    // focus, fainter than that of every other row.
    void polish(QPalette& palette) override {
        QProxyStyle::polish(palette);
        for (const auto role : {QPalette::Highlight, QPalette::HighlightedText})
            palette.setColor(QPalette::Inactive, role, palette.color(QPalette::Active, role));
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        if (button == nullptr || element == CE_PushButtonLabel || element == CE_PushButtonBevel)
            return QProxyStyle::drawControl(element, option, painter, widget);
        QStyleOptionButton own(*button);
        if (element == CE_PushButton) own.palette = ReadableButton(own.palette);
        // Qt fills each of them with the accent in the dark mode of Windows, chosen or not.
        if (element == CE_RadioButton || element == CE_CheckBox)
            own.palette.setBrush(QPalette::Base, QApplication::palette().base());
        QProxyStyle::drawControl(element, &own, painter, widget);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        constexpr double kHalf = 0.5;
        constexpr int kTitleRoom = 3;
        // Where Fusion draws its own, through the middle of the pixels.
        QRectF edge = QRectF(option->rect).adjusted(kHalf, kHalf, -kHalf, -kHalf);
        double radius = 2;
        bool focused = false;
        switch (element) {
            case PE_FrameLineEdit:
            case PE_PanelButtonCommand:
                focused = option->state.testFlag(State_HasFocus);
                break;
            case PE_Frame:
            case PE_IndicatorCheckBox:
                radius = 0;
                break;
            case PE_IndicatorRadioButton:
                radius = edge.width() / 2;
                break;
            case PE_FrameGroupBox: {
                const auto* group = qobject_cast<const QGroupBox*>(widget);
                const bool untitled = group != nullptr && group->title().isEmpty();
                const int title =
                    std::max(pixelMetric(PM_IndicatorHeight), option->fontMetrics.height());
                // Since Qt 6.8 the rectangle begins below the title.
                const double top = group != nullptr ? kHalf : edge.top();
                edge.setTop(top + kTitleRoom + (untitled ? 0 : title));
                // One that is as high as its title frames nothing.
                if (edge.height() <= 0) return;
                break;
            }
            default:
                return;
        }
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(focused ? FocusInk(option->palette) : OutlineInk(option->palette));
        painter->drawRoundedRect(edge, radius, radius);
        painter->restore();
    }
};

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
    constexpr double kFlare = 0.05;
    const double first = Luminance(one) + kFlare;
    const double second = Luminance(other) + kFlare;
    return std::max(first, second) / std::min(first, second);
}

QColor Mixed(const QColor& one, const QColor& other, double part) {
    const auto mix = [part](int a, int b) {
        return static_cast<int>(std::lround(a * (1 - part) + b * part));
    };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()),
            mix(one.blue(), other.blue())};
}

QColor Readable(const QColor& colour, const QColor& base, const QColor& other, double contrast) {
    constexpr int kSteps = 20;
    for (int step = 0; step < kSteps; ++step) {
        QColor tried = Mixed(colour, other, static_cast<double>(step) / kSteps);
        if (Contrast(tried, base) >= contrast) return tried;
    }
    return other;
}

QColor QuietInk(const QPalette& palette) {
    return PartOfInk(palette, 0.6, 5.0);
}

QColor OutlineInk(const QPalette& palette) {
    return PartOfInk(palette, 0.5, 3.5);
}

QColor FocusInk(const QPalette& palette) {
    return Readable(palette.color(QPalette::Active, QPalette::Highlight),
                    palette.color(QPalette::Active, QPalette::Window),
                    palette.color(QPalette::Active, QPalette::WindowText), 3.0);
}

QStyle* MakeOutlineStyle() {
    return new OutlineStyle;
}

}  // namespace davo
