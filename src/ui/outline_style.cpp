// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/outline_style.h"

#include <QGroupBox>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>

#include "ui/contrast.h"

namespace davo {

namespace {

class OutlineStyle : public QProxyStyle {
  public:
    OutlineStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

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
                edge.setTop(edge.top() + kTitleRoom + (untitled ? 0 : title));
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

QStyle* MakeOutlineStyle() {
    return new OutlineStyle;
}

}  // namespace davo
