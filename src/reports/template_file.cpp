#include "reports/template_file.h"

#include <QCoreApplication>
#include <QDir>

#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"

namespace davo {

QString InstalledTemplate() {
    const QDir program(QCoreApplication::applicationDirPath());
    const QString beside = program.filePath(QLatin1String(kTemplateFileName));
    const QString shared = QDir::cleanPath(
        program.filePath(QStringLiteral("../share/davo/") + QLatin1String(kTemplateFileName)));
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
