// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include "common/open_document.h"

// Which program opens a kind of file is looked up as freedesktop.org's "Association between MIME
// types and applications" says, in the desktop's own files: no other program need be installed for
// it, and none is waited for. What the programs' entries mean is said on freedesktop.org's page on
// desktop entries.
namespace davo {

namespace {

using Group = QMap<QString, QString>;

QString KindOf(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("html")) return QStringLiteral("text/html");
    return suffix == QLatin1String("xls")
               ? QStringLiteral("application/vnd.ms-excel")
               : QStringLiteral(
                     "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet");
}

// The values of a group of such a file; none when file or group is missing. Of a key that comes
// twice the first counts.
Group ReadGroup(const QString& path, const QString& name) {
    Group group;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return group;
    bool isWithin = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            isWithin = line == QLatin1Char('[') + name + QLatin1Char(']');
            continue;
        }
        const auto equals = line.indexOf(QLatin1Char('='));
        if (!isWithin || equals <= 0 || line.startsWith(QLatin1Char('#'))) continue;
        const QString key = line.left(equals).trimmed();
        if (!group.contains(key)) group.insert(key, line.mid(equals + 1).trimmed());
    }
    return group;
}

QStringList ApplicationFolders() {
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

// The entries that are named for a kind, the likeliest first: what the user or the system chose,
// what was added by hand, what the programs say of themselves.
QStringList EntriesFor(const QString& kind) {
    QStringList lists;
    QStringList desktops = QString::fromLocal8Bit(qgetenv("XDG_CURRENT_DESKTOP"))
                               .toLower()
                               .split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (QString& desktop : desktops)
        desktop += QLatin1Char('-');
    desktops.append(QString());
    const QStringList folders =
        QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation) +
        ApplicationFolders();
    for (const QString& folder : folders) {
        for (const QString& desktop : desktops)
            lists += QDir(folder).filePath(desktop + QLatin1String("mimeapps.list"));
    }
    QStringList entries;
    const auto add = [&](const QStringList& files, const QString& group) {
        for (const QString& file : files)
            entries +=
                ReadGroup(file, group).value(kind).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    };
    add(lists, QStringLiteral("Default Applications"));
    add(lists, QStringLiteral("Added Associations"));
    QStringList caches;
    for (const QString& folder : ApplicationFolders())
        caches += QDir(folder).filePath(QStringLiteral("mimeinfo.cache"));
    add(caches, QStringLiteral("MIME Cache"));
    entries.removeDuplicates();
    return entries;
}

// The file of an entry: "a-b.desktop" may be "a/b.desktop".
QString FileOfEntry(const QString& entry) {
    QString found = QStandardPaths::locate(QStandardPaths::ApplicationsLocation, entry);
    if (!found.isEmpty()) return found;
    QString within = entry;
    const auto dash = within.indexOf(QLatin1Char('-'));
    if (dash > 0) within[dash] = QLatin1Char('/');
    return QStandardPaths::locate(QStandardPaths::ApplicationsLocation, within);
}

// The words of an entry's command with path in the place of its field codes; a command without
// one for a file gets it at its end. Empty when its program is not there.
QStringList CommandOf(const Group& entry, const QString& path) {
    QStringList words = QProcess::splitCommand(entry.value(QStringLiteral("Exec")));
    if (words.isEmpty()) return {};
    const QString program = QStandardPaths::findExecutable(words.front());
    if (program.isEmpty()) return {};
    QStringList command{program};
    bool isNamed = false;
    for (const QString& word : words.mid(1)) {
        if (word == QLatin1String("%f") || word == QLatin1String("%F")) {
            command += path;
            isNamed = true;
        } else if (word == QLatin1String("%u") || word == QLatin1String("%U")) {
            command += QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
            isNamed = true;
        } else if (!word.startsWith(QLatin1Char('%'))) {
            command += QString(word).replace(QLatin1String("%%"), QLatin1String("%"));
        }
    }
    if (!isNamed) command += path;
    return command;
}

}  // namespace

bool ShowDocument(const QString& path) {
    const QString file = QFileInfo(path).absoluteFilePath();
    for (const QString& name : EntriesFor(KindOf(file))) {
        const Group entry = ReadGroup(FileOfEntry(name), QStringLiteral("Desktop Entry"));
        QStringList command = CommandOf(entry, file);
        if (command.isEmpty()) continue;
        const QString program = command.takeFirst();
        if (QProcess::startDetached(program, command)) return true;
    }
    return false;
}

}  // namespace davo
