// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guide.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMetaObject>
#include <QWidget>

#include "common/places.h"

namespace davo {

namespace {

// The guide's file of this name; empty when there is none.
QString PageOf(const QString& folder, const QString& name) {
    if (name.isEmpty()) return {};
    const QString page = QDir(folder).filePath(QStringLiteral("f1/%1.html").arg(name));
    return QFileInfo::exists(page) ? page : QString();
}

// The line of a message that the guide knows: its place, a part of it, an advice; all empty when it
// does not.
QStringList Known(const QString& folder, const QString& message) {
    QFile file(QDir(folder).filePath(QStringLiteral("f1/messages.txt")));
    QStringList found{{}, {}, {}};
    if (message.isEmpty() || !file.open(QIODevice::ReadOnly)) return found;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == found.size() && fields[1].size() > found[1].size() &&
            message.contains(fields[1]))
            found = fields;
    }
    return found;
}

// The name of a widget's place in the guide: a window that serves two purposes has one for each.
QString PlaceOf(const QWidget& widget) {
    const QString place = widget.property("guidePlace").toString();
    return place.isEmpty() ? widget.objectName() : place;
}

// The window that is open in the area of this one; null without.
const QWidget* OpenWithin(const QWidget* widget) {
    const auto* area = widget->findChild<QMdiArea*>();
    const QMdiSubWindow* frame = area == nullptr ? nullptr : area->activeSubWindow();
    return frame == nullptr ? nullptr : frame->widget();
}

}  // namespace

QStringList GuideFolders() {
    const QDir program(QCoreApplication::applicationDirPath());
    return {program.filePath(QStringLiteral("guide")),
            QDir::cleanPath(program.filePath(QStringLiteral("../share/davo/guide")))};
}

QString GuidePage(const QString& folder, const QWidget* widget) {
    for (; widget != nullptr; widget = widget->parentWidget()) {
        const QWidget* within = OpenWithin(widget);
        QString page = within == nullptr ? QString() : PageOf(folder, PlaceOf(*within));
        if (page.isEmpty())
            page = PageOf(folder, Known(folder, widget->property("exactText").toString())[0]);
        if (page.isEmpty()) page = PageOf(folder, PlaceOf(*widget));
        if (!page.isEmpty()) return page;
    }
    const QString first = QDir(folder).filePath(QStringLiteral("index.html"));
    return QFileInfo::exists(first) ? first : QString();
}

QString GuideAdvice(const QStringList& folders, const QString& message) {
    for (const QString& folder : folders) {
        QString advice = Known(folder, message)[2];
        if (!advice.isEmpty()) return advice;
    }
    return {};
}

GuideKey::GuideKey(QStringList folders, Prompts& prompts, Open open)
    : folders_(std::move(folders)), prompts_(prompts), open_(std::move(open)) {}

bool GuideKey::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType()) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier) return false;
    if (!busy_ && !key->isAutoRepeat()) Show(static_cast<QWidget*>(watched));
    return true;
}

void GuideKey::Show(const QWidget* widget) {
    busy_ = true;
    QString page;
    for (const QString& folder : folders_) {
        page = GuidePage(folder, widget);
        if (!page.isEmpty()) break;
    }
    // The answer comes through the event loop: a message must not open inside a key's event.
    pool_.start([this, page] {
        const bool shown = !page.isEmpty() && open_(page);
        QMetaObject::invokeMethod(this, [this, page, shown] { Opened(page, shown); });
    });
}

void GuideKey::Opened(const QString& path, bool shown) {
    if (path.isEmpty()) {
        prompts_.Message(QStringLiteral("The guide is not on this computer. It belongs in ") +
                         ShownPath(folders_.value(0)));
    } else if (!shown) {
        prompts_.Message(
            QStringLiteral("This computer has no program that shows the guide. It is stored as ") +
            ShownPath(path));
    }
    busy_ = false;
}

}  // namespace davo
