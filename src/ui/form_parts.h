// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QWidget>
#include <functional>

namespace davo {

// The letters of lists and labels, times the usual ones.
inline constexpr double kFormTextGrowth = 1.25;
inline constexpr int kFormSpacing = 12;

template <class Object>
Object* Named(Object* object, QAnyStringView name) {
    object->setObjectName(name);
    return object;
}

void Enlarge(QWidget* widget, double growth = kFormTextGrowth);
void MakeBold(QWidget* widget);

// The same room around layout on all sides.
template <class Layout>
Layout* WithMargin(Layout* layout, int margin) {
    layout->setContentsMargins(margin, margin, margin, margin);
    return layout;
}

// A label of plain text.
QLabel* MakeLabel(QWidget* parent, QAnyStringView name, const QString& text = {},
                  double growth = kFormTextGrowth);
// The same, wrapped.
QLabel* MakeParagraph(QWidget* parent, QAnyStringView name, const QString& text = {},
                      double growth = kFormTextGrowth);

// A button for gloves: high, its letters large, its focus seen from a distance. Enter presses it
// when it has the focus; a key that is held down presses it once.
class BigButton : public QPushButton {
  public:
    explicit BigButton(QWidget* parent, QAnyStringView name = {}, const char* caption = "");

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

// Calls act for key wherever in window the focus is; once for a key that is held down.
void OnKey(QWidget* window, const QKeySequence& key, const std::function<void()>& act);

// A hidden widget keeps its room, so that what is around it keeps its place.
void KeepRoomWhenHidden(QWidget* widget);

// What the F1 key does at widget.
void PressF1(QWidget& widget);

// Puts window in the middle of the screen that other is on, else of the primary screen: Top =
// (screen height - window height) / 2, Left = (screen width - window width) / 2. A window that is
// to be shown yet takes the size of its contents first, unless it was given one.
void CentreForm(QWidget& window, const QWidget* other);

}  // namespace davo
