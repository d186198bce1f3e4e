// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets.h"

#include <QAction>
#include <QApplication>
#include <QJsonArray>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QWindow>

namespace davo::test {
namespace {

QWidget* FindIn(QWidget* root, const QString& name) {
    if (root == nullptr) {
        return nullptr;
    }
    if (root->objectName() == name && root->isVisible()) {
        return root;
    }
    for (QWidget* child : root->findChildren<QWidget*>(name)) {
        if (child->isVisible()) {
            return child;
        }
    }
    return nullptr;
}

bool FindAction(const QList<QAction*>& actions, const QString& name, QList<QAction*>& path) {
    for (QAction* action : actions) {
        path.append(action);
        const bool named = action->objectName() == name;
        if (named ||
            (action->menu() != nullptr && FindAction(action->menu()->actions(), name, path))) {
            return true;
        }
        path.removeLast();
    }
    return false;
}

QJsonObject ControlState(const QWidget* control) {
    return {{QStringLiteral("text"), ShownText(control)},
            {QStringLiteral("enabled"), control->isEnabled()},
            {QStringLiteral("focus"), control->hasFocus()}};
}

QJsonObject WindowState(const QWidget* window) {
    QJsonObject controls;
    for (const QWidget* child : window->findChildren<QWidget*>()) {
        const QString name = child->objectName();
        if (child->isVisible() && !child->isWindow() && !name.isEmpty() &&
            !name.startsWith(QStringLiteral("qt_"))) {
            controls.insert(name, ControlState(child));
        }
    }
    return {{QStringLiteral("name"), window->objectName()},
            {QStringLiteral("class"), QLatin1String(window->metaObject()->className())},
            {QStringLiteral("title"), window->windowTitle()},
            {QStringLiteral("text"), ShownText(window)},
            {QStringLiteral("modal"), window->isModal()},
            {QStringLiteral("front"), window == FrontWindow()},
            {QStringLiteral("controls"), controls}};
}

}  // namespace

QWidget* FrontWindow() {
    if (QWidget* popup = QApplication::activePopupWidget()) {
        return popup;
    }
    if (QWidget* modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return QApplication::activeWindow();
}

void ActivateSomeWindow() {
    static QPointer<QWidget> last;
    if (QApplication::activeWindow() != nullptr) {
        last = QApplication::activeWindow();
        return;
    }
    QWidget* window = QApplication::activeModalWidget();
    if (window == nullptr && last != nullptr && last->isVisible()) {
        window = last;
    }
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (window == nullptr && top->isVisible() && top->windowHandle() != nullptr) {
            window = top;
        }
    }
    if (window != nullptr) {
        window->activateWindow();
    }
}

QWidget* FindWidget(const QString& name) {
    const qsizetype slash = name.indexOf(QLatin1Char('/'));
    if (slash >= 0) {
        return FindIn(FindWidget(name.left(slash)), name.mid(slash + 1));
    }
    if (QWidget* found = FindIn(QApplication::activeModalWidget(), name)) {
        return found;
    }
    if (QWidget* found = FindIn(QApplication::activeWindow(), name)) {
        return found;
    }
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (QWidget* found = FindIn(top, name)) {
            return found;
        }
    }
    return nullptr;
}

QString ShownText(const QWidget* widget) {
    for (const char* property : {"text", "plainText", "title", "currentText"}) {
        const QVariant value = widget->property(property);
        if (value.isValid()) {
            return value.toString();
        }
    }
    return {};
}

QMessageBox* VisiblePrompt() {
    return qobject_cast<QMessageBox*>(FindWidget(QStringLiteral("msgBox")));
}

const QHash<QString, QMessageBox::StandardButton>& Answers() {
    static const QHash<QString, QMessageBox::StandardButton> kAnswers{
        {QStringLiteral("Ok"), QMessageBox::Ok},
        {QStringLiteral("Yes"), QMessageBox::Yes},
        {QStringLiteral("No"), QMessageBox::No},
        {QStringLiteral("Cancel"), QMessageBox::Cancel}};
    return kAnswers;
}

QString WhyNotPressable(QWidget* widget) {
    const QString name = widget->objectName();
    if (!widget->isEnabled()) {
        return name + QStringLiteral(" is disabled");
    }
    const QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != widget->window() && !modal->isAncestorOf(widget)) {
        return name + QStringLiteral(" is blocked by ") + modal->objectName() +
               QStringLiteral(" \"") + ShownText(modal) + QLatin1Char('"');
    }
    QWidget* window = widget->window();
    if (window->windowHandle() == nullptr) {
        return name + QStringLiteral(" has no window yet");
    }
    const QWidget* hit = window->childAt(widget->mapTo(window, widget->rect().center()));
    if (widget != window && hit != widget && !widget->isAncestorOf(hit)) {
        return name + QStringLiteral(" is covered or outside its window");
    }
    return {};
}

void ClickAt(QWidget* widget, const QPoint& point) {
    QWidget* window = widget->window();
    if (!window->isActiveWindow() && QApplication::activePopupWidget() == nullptr) {
        window->activateWindow();
    }
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, widget->mapTo(window, point));
}

MenuPath FindMenuPath(const QString& actionName) {
    for (QWidget* widget : QApplication::allWidgets()) {
        auto* bar = qobject_cast<QMenuBar*>(widget);
        MenuPath path{bar, {}};
        if (bar != nullptr && bar->isVisible() &&
            FindAction(bar->actions(), actionName, path.actions)) {
            return path;
        }
    }
    return {};
}

QJsonObject VisibleState() {
    QJsonArray windows;
    for (const QWidget* top : QApplication::topLevelWidgets()) {
        if (!top->isVisible()) {
            continue;
        }
        windows.append(WindowState(top));
        // The windows of a multiple-document area are windows to the operator too.
        for (const QMdiSubWindow* frame : top->findChildren<QMdiSubWindow*>()) {
            if (frame->isVisible() && frame->widget() != nullptr) {
                windows.append(WindowState(frame->widget()));
            }
        }
    }
    return {{QStringLiteral("windows"), windows}};
}

}  // namespace davo::test
