// SPDX-License-Identifier: GPL-3.0-or-later
#include "look.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QEvent>
#include <QJsonArray>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <cstdio>

#include "widgets.h"

namespace davo::test {
namespace {

class Acts {
  public:
    explicit Acts(QJsonArray& acts) : acts_(acts) {}

    void OfWindow(QWidget* window) {
        window_ = window;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->window() != window) {
                continue;
            }
            if (const auto* bar = qobject_cast<QMenuBar*>(widget)) {
                OfMenu(bar->actions());
            } else if (!widget->objectName().isEmpty() && WhyNotPressable(widget).isEmpty()) {
                OfControl(widget);
            }
        }
    }
    void Add(const QString& command, const QString& text) {
        acts_.append(QJsonObject{{QStringLiteral("do"), command}, {QStringLiteral("text"), text}});
    }

  private:
    void OfMenu(const QList<QAction*>& actions) {
        for (QAction* action : actions) {
            if (!action->isEnabled() || action->isSeparator()) {
                continue;
            }
            if (action->menu() != nullptr) {
                OfMenu(action->menu()->actions());
            } else if (!action->objectName().isEmpty()) {
                Add(QStringLiteral("menu ") + action->objectName(), action->text());
            }
        }
    }
    void OfControl(QWidget* widget) {
        const QString name = window_->objectName() + QLatin1Char('/') + widget->objectName();
        if (qobject_cast<QAbstractButton*>(widget) != nullptr ||
            qobject_cast<QComboBox*>(widget) != nullptr) {
            if (qobject_cast<QMessageBox*>(window_) == nullptr) {
                Add(QStringLiteral("click ") + name, ShownText(widget));
            }
        } else if (const auto* view = qobject_cast<QAbstractItemView*>(widget)) {
            const int rows =
                view->model() == nullptr ? 0 : view->model()->rowCount(view->rootIndex());
            if (rows > 0) {
                Add(QStringLiteral("row ") + name, QString::number(rows));
            }
        } else if (IsEditable(widget)) {
            Add(QStringLiteral("type ") + name, ShownText(widget));
        }
    }
    static bool IsEditable(const QWidget* widget) {
        const bool isEditor = qobject_cast<const QLineEdit*>(widget) != nullptr ||
                              qobject_cast<const QPlainTextEdit*>(widget) != nullptr ||
                              qobject_cast<const QTextEdit*>(widget) != nullptr;
        return isEditor && !widget->property("readOnly").toBool();
    }

    QJsonArray& acts_;
    QWidget* window_ = nullptr;
};

void AddAnswers(const QMessageBox* box, Acts& acts) {
    for (const QAbstractButton* button : box->buttons()) {
        if (!button->isVisible()) {
            continue;
        }
        const QMessageBox::StandardButton standard =
            box->standardButton(const_cast<QAbstractButton*>(button));
        if (standard == QMessageBox::NoButton) {
            acts.Add(QStringLiteral("click msgBox/") + button->objectName(), button->text());
            continue;
        }
        acts.Add(QStringLiteral("answer ") + Answers().key(standard), button->text());
    }
}

bool IsDialog(const QWidget* window) {
    static const QStringList kNames{QStringLiteral("msgBox"), QStringLiteral("inputBox"),
                                    QStringLiteral("cdFile"), QStringLiteral("folderBrowser")};
    return kNames.contains(window->objectName());
}

}  // namespace

QJsonObject Look() {
    // Windows of menu items that are boxes over the main window.
    static const QStringList kBoxes{QStringLiteral("frmHeaderOptn"), QStringLiteral("frmHeader"),
                                    QStringLiteral("frmCopyFile")};
    QJsonArray list;
    QJsonArray dialogs;
    QJsonArray children;
    QJsonObject look;
    Acts acts(list);
    const QWidget* modal = QApplication::activeModalWidget();
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (!top->isVisible() || qobject_cast<QMenu*>(top) != nullptr) {
            continue;
        }
        if (IsDialog(top)) {
            dialogs.append(QJsonObject{{QStringLiteral("name"), top->objectName()},
                                       {QStringLiteral("text"), ShownText(top)}});
        }
        for (const QMdiSubWindow* frame : top->findChildren<QMdiSubWindow*>()) {
            if (frame->isVisible() && frame->widget() != nullptr) {
                children.append(frame->widget()->objectName());
            }
        }
        for (const QMenuBar* bar : top->findChildren<QMenuBar*>()) {
            for (const QAction* action : bar->actions()) {
                if (action->menu() != nullptr &&
                    action->menu()->objectName() == QLatin1String("mnuFile")) {
                    look.insert(QStringLiteral("file"), action->isEnabled());
                }
            }
        }
        if (kBoxes.contains(top->objectName())) {
            children.append(top->objectName());
        }
        if (modal != nullptr && modal != top) {
            continue;
        }
        acts.OfWindow(top);
        if (!top->objectName().isEmpty()) {
            acts.Add(QStringLiteral("close ") + top->objectName(), top->windowTitle());
        }
        if (const auto* box = qobject_cast<QMessageBox*>(top)) {
            AddAnswers(box, acts);
        }
    }
    const QWidget* focus = QApplication::focusWidget();
    look.insert(QStringLiteral("acts"), list);
    look.insert(QStringLiteral("dialogs"), dialogs);
    look.insert(QStringLiteral("children"), children);
    look.insert(QStringLiteral("focus"), focus == nullptr ? QString() : focus->objectName());
    look.insert(QStringLiteral("popup"), QApplication::activePopupWidget() != nullptr);
    return look;
}

bool Watch::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint && watched->objectName() == name_) {
        const QString shown = ShownText(static_cast<QWidget*>(watched));
        if (shown != shown_) {
            shown_ = shown;
            std::fprintf(stdout, "driver: painted %s %s\n", name_.toUtf8().constData(),
                         shown.toUtf8().replace('\n', ' ').constData());
            std::fflush(stdout);
        }
    }
    return false;
}

}  // namespace davo::test
