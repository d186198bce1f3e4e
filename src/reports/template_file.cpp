// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/template_file.h"

#include <QDir>

#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"

namespace davo {

QString InstalledTemplate(const QString& programFolder) {
    const QString name = QLatin1String(kTemplateFileName);
    const QString beside = QDir(programFolder).filePath(name);
    const QString shared =
        QDir::cleanPath(programFolder + QStringLiteral("/../share/davo/") + name);
    return !FileExists(beside) && FileExists(shared) ? shared : beside;
}

void PutTemplate(const QString& excelPath, const QString& installed) {
    if (!FolderExists(excelPath))
        throw RunTimeError(ErrorNumber::PathNotFound, ShownPath(excelPath).toStdString());
    const QString path = QDir(excelPath).filePath(QLatin1String(kTemplateFileName));
    if (FileExists(path)) return;
    if (!FileExists(installed))
        throw RunTimeError(ErrorNumber::FileNotFound, ShownPath(installed).toStdString());
    ReplaceFile(path, ReadWholeFile(installed));
}

}  // namespace davo
