// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/places.h"

#include <QDir>

namespace davo {

QString WindowFile(const Places& places) {
    return places.configurationFolder + QStringLiteral("davo-window.ini");
}

QString FolderText(const char* rule) {
    return QString::fromLatin1(rule).replace(QLatin1Char('\\'), QDir::separator());
}

QString ShownPath(const QString& path) {
    return QDir::toNativeSeparators(path);
}

}  // namespace davo
