// SPDX-License-Identifier: GPL-3.0-or-later
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QKeySequence>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <algorithm>

#include "driver.h"
#include "widgets.h"

// What each command waits for and does.

namespace davo::test {
namespace {

QString NotVisible(const QString& name) {
    return name + QStringLiteral(" is not visible");
}

// Line ends as the operator sees them.
QString Plain(QString text) {
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

// The standard button of a prompt by its name ("Yes"); null when it has none such.
QAbstractButton* PromptButton(const QMessageBox* prompt, const QString& name) {
    return prompt->button(Answers().value(name, QMessageBox::NoButton));
}

QString WhyNoPress(QWidget* widget, const QString& name) {
    return widget == nullptr ? NotVisible(name) : WhyNotPressable(widget);
}

// The picture of target with numbers, from 1, at the controls of these names.
QPixmap NumberedPicture(QWidget* target, const QStringList& names) {
    constexpr int kSize = 26;
    QPixmap picture = target->grab();
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = target->font();
    font.setBold(true);
    font.setPixelSize(kSize * 2 / 3);
    painter.setFont(font);
    const QRect inside(QPoint(0, 0), target->size() - QSize(kSize, kSize));
    int number = 0;
    for (const QString& name : names) {
        // At the right of what is wide, where no caption begins.
        const auto* control = target->findChild<QWidget*>(name);
        const int across = control->width() > 2 * kSize ? control->width() - kSize : -kSize / 2;
        QPoint place = control->mapTo(target, QPoint(across, -kSize / 2));
        place.setX(std::clamp(place.x(), inside.left(), inside.right()));
        place.setY(std::clamp(place.y(), inside.top(), inside.bottom()));
        const QRect circle(place, QSize(kSize, kSize));
        painter.setPen(QPen(Qt::white, 2));
        painter.setBrush(QColor(179, 30, 80));
        painter.drawEllipse(circle);
        painter.drawText(circle, Qt::AlignCenter, QString::number(++number));
    }
    return picture;
}

}  // namespace

Step Driver::BuildWait(const QString& command, const QStringList& args) {
    const QString name = args.value(0);
    const QString text = args.value(1);
    Step step;
    if (command == QLatin1String("wait")) {
        step.missing = [name] {
            return FindWidget(name) == nullptr ? NotVisible(name) : QString();
        };
    } else if (command == QLatin1String("waitGone")) {
        step.missing = [name] {
            return FindWidget(name) == nullptr ? QString() : name + QStringLiteral(" is visible");
        };
    } else if (command == QLatin1String("waitEnabled") ||
               command == QLatin1String("waitDisabled")) {
        const bool enabled = command == QLatin1String("waitEnabled");
        step.missing = [name, enabled] {
            const QWidget* widget = FindWidget(name);
            if (widget == nullptr) {
                return NotVisible(name);
            }
            return widget->isEnabled() == enabled
                       ? QString()
                       : name + (enabled ? QStringLiteral(" is disabled")
                                         : QStringLiteral(" is enabled"));
        };
    } else if (command == QLatin1String("waitText") || command == QLatin1String("waitContains")) {
        const bool whole = command == QLatin1String("waitText");
        step.missing = [name, text, whole] {
            const QWidget* widget = FindWidget(name);
            if (widget == nullptr) {
                return NotVisible(name);
            }
            const QString shown = Plain(ShownText(widget));
            return (whole ? shown == text : shown.contains(text))
                       ? QString()
                       : QStringLiteral("%1 shows \"%2\"").arg(name, shown);
        };
    }
    return step;
}

Step Driver::BuildClick(const QString& widget) {
    Step step;
    step.missing = [widget] { return WhyNoPress(FindWidget(widget), widget); };
    step.act = [this, widget] {
        QWidget* found = FindWidget(widget);
        SayPressed(found);
        ClickAt(found, found->rect().center());
    };
    return step;
}

Step Driver::BuildKey(const QString& key) {
    Step step;
    step.missing = [] {
        return QApplication::activeWindow() == nullptr &&
                       QApplication::activePopupWidget() == nullptr
                   ? QStringLiteral("no window is active")
                   : QString();
    };
    step.act = [this, key] {
        const QKeyCombination keys = QKeySequence(key, QKeySequence::PortableText)[0];
        QWidget* target = QApplication::focusWidget();
        if (target == nullptr) {
            target = FrontWindow();
        }
        SayPressed(target);
        QTest::keyClick(target->window()->windowHandle(), keys.key(), keys.keyboardModifiers());
    };
    return step;
}

Step Driver::BuildType(const QString& widget, const QString& text) {
    Step step;
    step.inParts = true;
    step.missing = [widget] { return WhyNoPress(FindWidget(widget), widget); };
    step.act = [widget, text] {
        QWidget* found = FindWidget(widget);
        ClickAt(found, found->rect().center());
        QTest::keyClick(found, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(found, Qt::Key_Delete);
        for (const QChar c : text) {
            if (c == QLatin1Char('\n')) {
                QTest::keyClick(found, Qt::Key_Return);
            } else {
                QTest::sendKeyEvent(QTest::Click, found, Qt::Key_unknown, QString(c), {});
            }
        }
    };
    return step;
}

Step Driver::BuildAnswer(const QStringList& args) {
    Step step;
    step.inParts = true;
    const QString button = args.value(0);
    step.missing = [button, expected = args.value(1), checked = args.size() > 1] {
        const QMessageBox* prompt = VisiblePrompt();
        if (prompt == nullptr) {
            return QStringLiteral("no prompt is shown");
        }
        if (checked && Plain(prompt->text()) != expected) {
            return QStringLiteral("the prompt says \"%1\"").arg(prompt->text());
        }
        QAbstractButton* found = PromptButton(prompt, button);
        return found == nullptr ? QStringLiteral("the prompt has no such button")
                                : WhyNotPressable(found);
    };
    step.act = [button] {
        QAbstractButton* found = PromptButton(VisiblePrompt(), button);
        ClickAt(found, found->rect().center());
    };
    return step;
}

Step Driver::BuildMenu(const QString& action) {
    Step first;
    first.missing = [action] {
        const MenuPath path = FindMenuPath(action);
        if (path.bar == nullptr) {
            return QStringLiteral("no menu bar has ") + action;
        }
        for (const QAction* step : path.actions) {
            if (!step->isEnabled()) {
                return step->objectName() + QStringLiteral(" is disabled");
            }
        }
        return WhyNotPressable(path.bar);
    };
    first.act = [this, action] {
        const MenuPath path = FindMenuPath(action);
        if (path.bar == nullptr) {
            return;  // gone since "missing" was asked
        }
        // The rest of the way, innermost first, since each goes to the front of the queue.
        for (qsizetype i = path.actions.size() - 1; i > 0; --i) {
            QMenu* menu = path.actions.at(i - 1)->menu();
            QAction* pressed = path.actions.at(i);
            Step step;
            step.line = QStringLiteral("menu ") + action;
            step.limitMs = lenient_ ? 300 : 5000;
            step.logged = false;
            step.missing = [menu] {
                return menu->isVisible() ? QString() : QStringLiteral("a menu did not open");
            };
            step.act = [menu, pressed] { ClickAt(menu, menu->actionGeometry(pressed).center()); };
            steps_.push_front(std::move(step));
        }
        Schedule(0);
        ClickAt(path.bar, path.bar->actionGeometry(path.actions.front()).center());
    };
    return first;
}

Step Driver::BuildChooseFile(const QString& name) {
    const auto dialog = [] {
        return qobject_cast<QFileDialog*>(FindWidget(QStringLiteral("cdFile")));
    };
    const auto accept = [dialog] {
        const auto* box = dialog()->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
        return box->button(dialog()->acceptMode() == QFileDialog::AcceptOpen
                               ? QDialogButtonBox::Open
                               : QDialogButtonBox::Save);
    };
    Step step;
    step.missing = [dialog] {
        return dialog() == nullptr ? QStringLiteral("the file dialog is not shown") : QString();
    };
    step.act = [this, dialog, accept, name] {
        dialog()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(name);
        Step press;
        press.line = QStringLiteral("chooseFile ") + name;
        press.limitMs = lenient_ ? 300 : 5000;
        press.logged = false;
        press.inParts = true;
        press.missing = [dialog, accept] {
            return dialog() == nullptr ? QStringLiteral("the file dialog has gone")
                                       : WhyNotPressable(accept());
        };
        press.act = [accept] { ClickAt(accept(), accept()->rect().center()); };
        steps_.push_front(std::move(press));
        Schedule(0);
    };
    return step;
}

Step Driver::BuildGrab(const QStringList& args) {
    Step step;
    step.missing = [args] {
        const QWidget* target = args.size() > 1 ? FindWidget(args.at(1)) : FrontWindow();
        if (target == nullptr) {
            return QStringLiteral("there is nothing to take a picture of");
        }
        for (const QString& name : args.mid(2)) {
            const auto* control = target->findChild<QWidget*>(name);
            if (control == nullptr || !control->isVisible()) {
                return NotVisible(name);
            }
        }
        return QString();
    };
    step.act = [this, args] {
        QWidget* target = args.size() > 1 ? FindWidget(args.at(1)) : FrontWindow();
        const QDir folder(qEnvironmentVariable("DAVO_DRIVER_PICTURES"));
        const QString path = folder.filePath(args.value(0) + QStringLiteral(".png"));
        if (!NumberedPicture(target, args.mid(2)).save(path)) {
            Fail(QStringLiteral("cannot write ") + path);
        }
    };
    return step;
}

Step Driver::BuildRow(const QStringList& args) {
    const auto view = [name = args.value(0)] {
        return qobject_cast<QAbstractItemView*>(FindWidget(name));
    };
    const auto index = [view, row = args.value(1).toInt()] {
        return view()->model()->index(row, 0, view()->rootIndex());
    };
    Step step;
    step.inParts = true;
    step.missing = [view, index, name = args.value(0)] {
        if (view() == nullptr) {
            return NotVisible(name);
        }
        return index().isValid() ? WhyNotPressable(view())
                                 : name + QStringLiteral(" has no such row");
    };
    step.act = [view, index, twice = args.value(2) == QLatin1String("double")] {
        view()->scrollTo(index());
        QWidget* viewport = view()->viewport();
        const QPoint at = view()->visualRect(index()).center();
        ClickAt(viewport, at);
        if (twice) {
            QWindow* window = viewport->window()->windowHandle();
            QTest::mouseDClick(window, Qt::LeftButton, {}, viewport->mapTo(viewport->window(), at));
        }
    };
    return step;
}

Step Driver::BuildColours(const QString& name) {
    Step step;
    step.missing = [] { return QString(); };
    step.act = [name] {
        QPalette palette;
        if (name == QLatin1String("dark")) {
            palette = QPalette(QColor(45, 45, 48), QColor(45, 45, 48));
            palette.setColor(QPalette::Base, QColor(28, 28, 30));
            palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
        }
        QApplication::setPalette(palette);
    };
    return step;
}

Step Driver::BuildClose(const QString& widget) {
    Step step;
    step.missing = [widget] {
        return FindWidget(widget) == nullptr ? NotVisible(widget) : QString();
    };
    step.act = [widget] { FindWidget(widget)->window()->close(); };
    return step;
}

}  // namespace davo::test
