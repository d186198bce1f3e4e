// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/renderer.h"

#include <QTemporaryDir>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/excel/steps.h"

namespace davo {

namespace {

// Stop was requested; caught in Render.
struct Stopped {};

}  // namespace

ExcelRenderer::ExcelRenderer(std::unique_ptr<excel::Launcher> launcher)
    : launcher_(std::move(launcher)) {}

bool ExcelRenderer::Render(const Workbook& workbook, const QString& templatePath,
                           const QString& targetPath, const RenderProgress& progress,
                           const std::stop_token& stop) {
    const std::scoped_lock lock(oneAtATime_);
    RequireRenderPaths(templatePath, targetPath);
    // Excel works on copies in a folder of their own: it neither locks nor writes what is the
    // user's, and the length of the target's path does not matter to it.
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        throw RunTimeError(ErrorNumber::PathFileAccess, folder.errorString().toStdString());
    }
    const QString model = folder.filePath(QString::fromStdString(workbook.templateFile));
    const QString made = folder.filePath(QStringLiteral("report.xls"));
    ReplaceFile(model, ReadWholeFile(templatePath));
    try {
        if (stop.stop_requested()) return false;
        const std::unique_ptr<excel::Session> session = launcher_->Start(stop);
        const auto beforeStep = [&](int n, int m) {
            session->KeepWatch();
            if (stop.stop_requested()) throw Stopped{};
            if (n > 0 && progress) progress(n, m);
        };
        excel::MakeReport(session->Application(), workbook, model, made, beforeStep);
    } catch (const Stopped&) {
        return false;
    } catch (const RunTimeError&) {
        // Whoever stops ends an Excel that hangs, and that is no failure.
        if (stop.stop_requested()) return false;
        throw;
    }
    return FinishRendering(targetPath, ReadWholeFile(made), stop);
}

}  // namespace davo
