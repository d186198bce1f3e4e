// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QJsonObject>
#include <QMessageBox>
#include <QString>
#include <QWidget>

class QAction;
class QMenuBar;

namespace davo::test {

// The visible widget of that object name: in the active modal window first, then in the active
// window, then anywhere. "frmHeader/cmdExit" is cmdExit inside frmHeader. Null when there is none.
QWidget* FindWidget(const QString& name);

// What a widget shows: text, plain text or title.
QString ShownText(const QWidget* widget);

// The window that takes the operator's input now; null without one.
QWidget* FrontWindow();

// Where no window manager runs nobody gives the focus back when a dialog closes: this does it as
// one would, to the modal window or else to the window that was active last.
void ActivateSomeWindow();

// The visible prompt "msgBox" in front; null without one.
QMessageBox* VisiblePrompt();

// The standard buttons of a prompt by their names.
const QHash<QString, QMessageBox::StandardButton>& Answers();

// Empty when the operator could press widget now, else the reason.
QString WhyNotPressable(QWidget* widget);

// A left click at a point of widget, through its window.
void ClickAt(QWidget* widget, const QPoint& point);

// The way from a menu bar to the action of that object name: the bar and the actions to press,
// outermost first; empty path when there is none.
struct MenuPath {
    QMenuBar* bar = nullptr;
    QList<QAction*> actions;
};
MenuPath FindMenuPath(const QString& actionName);

// All visible windows with what their named controls show.
QJsonObject VisibleState();

}  // namespace davo::test
