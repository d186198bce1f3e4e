// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/background_render.h"

#include <QMetaObject>

namespace davo {

namespace {

RenderEnd RenderNow(ReportRenderer& renderer, const RenderRequest& request,
                    const RenderProgress& progress, const std::stop_token& stop) {
    try {
        return {renderer.Render(request.workbook, request.templatePath, request.targetPath,
                                progress, stop),
                std::nullopt};
    } catch (const RunTimeError& error) {
        return {false, error};
    } catch (const std::exception& error) {
        // Out of memory and the like: it must not end the program from this thread.
        return {false, RunTimeError(ErrorNumber::Automation, error.what())};
    }
}

}  // namespace

BackgroundRender::BackgroundRender(ReportRenderer& renderer, RenderRequest request,
                                   RenderProgress progress,
                                   std::function<void(const RenderEnd&)> ended)
    : progress_(std::move(progress)), ended_(std::move(ended)) {
    thread_ =
        std::jthread([this, &renderer, asked = std::move(request)](const std::stop_token& stop) {
            const auto tell = [this](int n, int m) {
                // Copies of the callbacks: they may delete this object.
                QMetaObject::invokeMethod(
                    &receiver_,
                    [call = progress_, n, m] {
                        if (call) call(n, m);
                    },
                    Qt::QueuedConnection);
            };
            const RenderEnd end = RenderNow(renderer, asked, tell, stop);
            QMetaObject::invokeMethod(
                &receiver_,
                [call = ended_, end] {
                    if (call) call(end);
                },
                Qt::QueuedConnection);
        });
}

BackgroundRender::~BackgroundRender() {
    thread_.request_stop();
    thread_.join();
}

}  // namespace davo
