// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/form_parts.h"

namespace davo {

void Enlarge(QWidget* widget, double growth) {
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * growth);
    widget->setFont(font);
}

void MakeBold(QWidget* widget) {
    QFont font = widget->font();
    font.setBold(true);
    widget->setFont(font);
}

QLabel* MakeLabel(QWidget* parent, QAnyStringView name, const QString& text, double growth) {
    auto* label = Named(new QLabel(text, parent), name);
    label->setTextFormat(Qt::PlainText);
    Enlarge(label, growth);
    return label;
}

QLabel* MakeParagraph(QWidget* parent, QAnyStringView name, const QString& text, double growth) {
    QLabel* label = MakeLabel(parent, name, text, growth);
    label->setWordWrap(true);
    return label;
}

void KeepRoomWhenHidden(QWidget* widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

}  // namespace davo
