// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>

namespace davo {

// The letters of lists and labels, times the usual ones.
inline constexpr double kFormTextGrowth = 1.25;
inline constexpr int kFormSpacing = 12;

template <class Control>
Control* Named(Control* control, const QString& name) {
    control->setObjectName(name);
    return control;
}

inline void Enlarge(QWidget* widget, double growth = kFormTextGrowth) {
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * growth);
    widget->setFont(font);
}

// A label of plain text.
inline QLabel* MakeLabel(QWidget* parent, const QString& name, const QString& text = {}) {
    auto* label = Named(new QLabel(text, parent), name);
    label->setTextFormat(Qt::PlainText);
    Enlarge(label);
    return label;
}

}  // namespace davo
