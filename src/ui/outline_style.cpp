// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/outline_style.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>
#include <optional>

#include "ui/contrast.h"

namespace davo {

namespace {

struct Outline {
    QRectF edge;
    double radius = 0;
};

class OutlineStyle : public QProxyStyle {
  public:
    OutlineStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const std::optional<Outline> outline = OutlineOf(element, *option);
        if (!outline) return;
        const QPalette& palette = option->palette;
        const bool focused = (element == PE_FrameLineEdit || element == PE_PanelButtonCommand) &&
                             option->state.testFlag(State_HasFocus);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(focused ? FocusInk(palette) : OutlineInk(palette));
        painter->drawRoundedRect(outline->edge, outline->radius, outline->radius);
        painter->restore();
    }

  private:
    // Where Fusion draws its own.
    std::optional<Outline> OutlineOf(PrimitiveElement element, const QStyleOption& option) const {
        constexpr double kHalf = 0.5;  // through the middle of the pixels
        constexpr double kRounded = 2;
        constexpr int kTitleRoom = 3;
        const QRectF edge = QRectF(option.rect).adjusted(kHalf, kHalf, -kHalf, -kHalf);
        switch (element) {
            case PE_FrameLineEdit:
            case PE_PanelButtonCommand:
                return Outline{edge, kRounded};
            case PE_Frame:
            case PE_IndicatorCheckBox:
                return Outline{edge};
            case PE_IndicatorRadioButton:
                return Outline{edge, edge.width() / 2};
            case PE_FrameGroupBox: {
                const int title =
                    std::max(pixelMetric(PM_IndicatorHeight), option.fontMetrics.height());
                return Outline{edge.adjusted(0, title + kTitleRoom, 0, 0), kRounded};
            }
            default:
                return std::nullopt;
        }
    }
};

}  // namespace

QStyle* MakeOutlineStyle() {
    return new OutlineStyle;
}

}  // namespace davo
