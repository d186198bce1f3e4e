// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <thread>

#include "common/run_time_error.h"
#include "reports/renderer.h"

namespace davo {

// How a report ended: complete, stopped (no error), or with an error.
struct RenderEnd {
    bool complete = false;
    std::optional<RunTimeError> error;
};

struct RenderRequest {
    Workbook workbook;
    QString templatePath;
    QString targetPath;
};

// A report that is rendered on a thread of its own while windows go on. Both callbacks come
// through the event loop of the thread that made this object, ended as the last one and once.
// Either may delete it.
class BackgroundRender {
  public:
    // renderer must outlive this object.
    BackgroundRender(ReportRenderer& renderer, RenderRequest request, RenderProgress progress,
                     std::function<void(const RenderEnd&)> ended);
    // Stops the report and waits for its thread; no callback comes any more.
    ~BackgroundRender();
    Q_DISABLE_COPY_MOVE(BackgroundRender)

    // Asks the report to stop; returns at once. The end is told by the callback.
    void Cancel() { thread_.request_stop(); }

  private:
    const RenderProgress progress_;
    const std::function<void(const RenderEnd&)> ended_;
    QObject receiver_;
    std::jthread thread_;
};

}  // namespace davo
