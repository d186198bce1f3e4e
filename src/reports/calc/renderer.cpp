// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/renderer.h"

#include <QScopeGuard>
#include <com/sun/star/document/MacroExecMode.hpp>
#include <com/sun/star/document/UpdateDocMode.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/lang/DisposedException.hpp>
#include <com/sun/star/util/XCloseable.hpp>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/calc/workbook.h"
#include "reports/calc/xls_file.h"

namespace davo {

namespace {

using namespace calc;
using Component = Reference<sun::lang::XComponent>;

// Stop was requested; caught in Render.
struct Stopped {};

std::string TextOf(const sun::uno::Exception& error) {
    return FromUno(error.Message).simplified().toStdString();
}

void Close(const Component& component) {
    try {
        const Reference<sun::util::XCloseable> closeable(component, sun::uno::UNO_QUERY);
        if (closeable.is()) closeable->close(true);
    } catch (const sun::uno::Exception&) {
        // A dead engine has closed it already.
    }
}

Component LoadTemplate(const Context& context, const QString& path) {
    const auto how = SequenceOf(
        {Property("Hidden", Any(true)), Property("AsTemplate", Any(true)),
         Property("MacroExecutionMode", Any(sun::document::MacroExecMode::NEVER_EXECUTE)),
         Property("UpdateDocMode", Any(sun::document::UpdateDocMode::NO_UPDATE))});
    return sun::frame::Desktop::create(context)->loadComponentFromURL(
        UrlOf(path), rtl::OUString("_blank"), 0, how);
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
        if (!bytes && !stop.stop_requested())
            bytes = MakeUnlessLost(workbook, model, progress, stop);
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
    const Component open = LoadTemplate(context, source);
    const auto close = qScopeGuard([&open] { Close(open); });
    const Document document(open, sun::uno::UNO_QUERY);
    if (!document.is()) {
        throw RunTimeError(ErrorNumber::Automation,
                           workbook.templateFile + " cannot be read as a workbook");
    }
    WorkbookWriter(context, workbook, document, beforeStep).Write();
    beforeStep(0, 0);
    const Reference<sun::frame::XStorable> storable(document, UNO_QUERY_THROW);
    const auto how = SequenceOf({Property("FilterName", Any(rtl::OUString("MS Excel 97"))),
                                 Property("Overwrite", Any(true))});
    storable->storeToURL(UrlOf(target), how);
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
