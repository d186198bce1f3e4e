// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/renderer.h"

#include <com/sun/star/lang/DisposedException.hpp>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/calc/report_job.h"
#include "reports/calc/xls_file.h"

namespace davo {

namespace {

using namespace calc;

// Stop was requested; caught in Render.
struct Stopped {};

std::string TextOf(const sun::uno::Exception& error) {
    return FromUno(error.Message).simplified().toStdString();
}

}  // namespace

CalcRenderer::CalcRenderer(const CalcSettings& settings) : engine_(settings) {}

bool CalcRenderer::Render(const Workbook& workbook, const QString& templatePath,
                          const QString& targetPath, const RenderProgress& progress,
                          const std::stop_token& stop) {
    const std::scoped_lock lock(oneAtATime_);
    RequireRenderPaths(templatePath, targetPath);
    // The engine works on copies in its own folder: it neither locks nor writes what is the user's.
    const std::string model = ReadWholeFile(templatePath);
    try {
        std::optional<std::string> bytes = MakeUnlessLost(workbook, model, progress, stop);
        if (!bytes && !stop.stop_requested()) {
            // It may have been what it had loaded of this program.
            inEngine_ = false;
            bytes = MakeUnlessLost(workbook, model, progress, stop);
        }
        if (stop.stop_requested()) return false;
        if (!bytes)
            throw RunTimeError(ErrorNumber::Automation, "LibreOffice Calc ended or hung twice");
        return FinishRendering(targetPath, *bytes, stop);
    } catch (const Stopped&) {
        return false;
    } catch (const sun::uno::Exception& error) {
        // What the engine refuses, it would refuse again.
        throw RunTimeError(ErrorNumber::Automation, TextOf(error));
    }
}

// Nothing when the engine ended in the middle, by itself or because it hung.
std::optional<std::string> CalcRenderer::MakeUnlessLost(const Workbook& workbook,
                                                        const std::string& model,
                                                        const RenderProgress& progress,
                                                        const std::stop_token& stop) {
    try {
        std::string bytes = Make(workbook, model, progress, stop);
        engine_.EndWatch(true);
        return bytes;
    } catch (const sun::lang::DisposedException&) {
        engine_.Kill();
        engine_.EndWatch(false);
        return std::nullopt;
    } catch (...) {
        engine_.EndWatch(false);
        throw;
    }
}

std::string CalcRenderer::Make(const Workbook& workbook, const std::string& model,
                               const RenderProgress& progress, const std::stop_token& stop) {
    const auto beforeStep = [&](int n, int m) {
        if (stop.stop_requested()) throw Stopped{};
        if (n > 0 && progress) progress(n, m);
        engine_.KeepWatch();
    };
    beforeStep(0, 0);
    // Who stops does not wait for the step that is under way.
    const std::stop_callback end(stop, [this] { engine_.Kill(); });
    const auto context = engine_.Connect();
    const QString folder = engine_.ScratchFolder();
    const QString source = folder + QString::fromStdString(workbook.templateFile);
    const QString target = folder + QStringLiteral("report.xls");
    ReplaceFile(source, model);
    if (!inEngine_ || !MakeReportInEngine(context, workbook, source, target, beforeStep))
        MakeReport(context, workbook, source, target, beforeStep);
    std::string made = ReadWholeFile(target);
    FinishXls(made, workbook);
    return made;
}

}  // namespace davo

// What the program asks this module for, see MakeCalcRenderer.
extern "C" Q_DECL_EXPORT davo::ReportRenderer* davo_make_calc_renderer(
    const davo::CalcSettings* settings) {
    return new davo::CalcRenderer(*settings);
}
