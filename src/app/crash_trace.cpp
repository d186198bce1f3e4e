// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/crash_trace.h"

#include <QFile>
#include <QFileInfo>

namespace davo {

QString TakeCrashTrace(const QString& folder) {
    const QString stem = folder + QStringLiteral("davo-crash");
    for (const char* ending : {".txt", ".dmp"}) {
        const QString path = stem + QLatin1String(ending);
        const QFileInfo file(path);
        if (!file.exists()) continue;
        const QString kept = stem +
                             file.lastModified().toString(QStringLiteral("-yyyyMMdd-HHmmss")) +
                             QLatin1String(ending);
        return QFile::rename(path, kept) ? kept : path;
    }
    return {};
}

}  // namespace davo
