// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/renderer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

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

// The module is apart from the program, which also runs where LibreOffice's libraries are missing.
// It is beside the program, or in the folder of its libraries, or where it was built.
std::unique_ptr<ReportRenderer> MakeCalcRenderer(const CalcSettings& settings) {
    if (!FileExists(settings.programFolder + QStringLiteral("/soffice.bin"))) return nullptr;
    if (!FileExists(settings.programFolder + QStringLiteral("/libsclo.so"))) return nullptr;
    const QString name = QStringLiteral("/libdavo_reports_calc.so");
    const QString beside = QCoreApplication::applicationDirPath();
    for (const QString& folder : {beside, beside + QStringLiteral("/../lib/davo"),
                                  QStringLiteral(DAVO_CALC_MODULE_FOLDER)}) {
        const QString file = folder + name;
        if (!FileExists(file)) continue;
        using Make = ReportRenderer* (*)(const CalcSettings*);
        const auto make =
            reinterpret_cast<Make>(QLibrary::resolve(file, "davo_make_calc_renderer"));
        if (make != nullptr) return std::unique_ptr<ReportRenderer>(make(&settings));
    }
    return nullptr;
}

}  // namespace davo
