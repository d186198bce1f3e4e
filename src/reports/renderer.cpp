#include "reports/renderer.h"

#include <QFileInfo>

#include "common/files.h"
#include "common/run_time_error.h"

namespace davo {

void RequireRenderPaths(const QString& templatePath, const QString& targetPath) {
    const QFileInfo model(templatePath);
    if (!model.isFile()) throw RunTimeError(ErrorNumber::FileNotFound, templatePath.toStdString());
    if (!model.isReadable())
        throw RunTimeError(ErrorNumber::PermissionDenied, templatePath.toStdString());
    const QString folder = QFileInfo(targetPath).path();
    if (!FolderExists(folder)) throw RunTimeError(ErrorNumber::PathNotFound, folder.toStdString());
}

bool FinishRendering(const QString& targetPath, std::string_view bytes,
                     const std::stop_token& stop) {
    if (stop.stop_requested()) return false;
    ReplaceFile(targetPath, bytes);
    return true;
}

}  // namespace davo
