// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_runner.h"

#include <QEventLoop>
#include <QScopedValueRollback>
#include <QTimer>

#include "common/text.h"
#include "records/record_name.h"
#include "reports/background_render.h"
#include "reports/report_writer.h"
#include "reports/template_file.h"

namespace davo {

ReportRunner::ReportRunner(Prompts& prompts, const Settings& settings, Choose choose, Open open)
    : prompts_(prompts), settings_(settings), choose_(std::move(choose)), open_(std::move(open)) {}

ReportRenderer& ReportRunner::Renderer() {
    if (!chosen_) chosen_ = choose_();
    return *chosen_->renderer;
}

void ReportRunner::PrepareSoon(QObject& window) {
    QTimer::singleShot(kPrepareDelay, &window, [this] { Prepare(); });
}

void ReportRunner::Prepare() {
    Renderer().Prepare();
}

QString ReportRunner::WorkbookOf(const QString& reportName) {
    return settings_.excelPath + reportName + Renderer().Extension();
}

QString ReportRunner::OverlayWorkbook() {
    return WorkbookOf(QLatin1String(kOverlayName));
}

ReportHooks ReportRunner::HooksFor(QObject& window) {
    PrepareSoon(window);
    return {[this](const QString& file, const Show& show) { Run(file, show); },
            [this] { Cancel(); }};
}

bool ReportRunner::Run(const QString& recordFile, const Show& show) {
    return Make(recordFile, RecordSource::RecordFile, WorkbookOf(RecordNameOf(recordFile)), show);
}

bool ReportRunner::RunOverlay(const QString& groupFile, const Show& show) {
    return Make(groupFile, RecordSource::GroupFile, OverlayWorkbook(), show);
}

bool ReportRunner::Make(const QString& path, RecordSource source, const QString& target,
                        const Show& show) {
    if (loop_ != nullptr) return false;
    const ReportTables tables = ReadReportTables(path, source);
    // The setting keeps any text that was stored; one outside the page marks no kneepoint.
    const ReportOptions options{ToPage(settings_.kneepointType).value_or(std::string()),
                                settings_.showImpedance};
    QEventLoop loop;
    const QScopedValueRollback current(loop_, &loop);
    RenderEnd end;
    bool isLeft = false;
    BackgroundRender render(
        Renderer(),
        {BuildReport(tables, options), settings_.excelPath + QLatin1String(kTemplateFileName),
         target},
        [&show](int n, int m) { show(QString::fromStdString(PlottingGraphText(n, m))); },
        [&end, &loop](const RenderEnd& how) {
            end = how;
            loop.quit();
        });
    const QScopedValueRollback cancel(cancel_, std::function<void()>([&] {
                                          isLeft = true;
                                          render.Cancel();
                                      }));
    // The loop also returns, without an end, when the program is leaving.
    loop.exec();
    // What a report fails of that nobody waits for is of no interest.
    if (isLeft) return false;
    if (end.error) throw RunTimeError(*end.error);
    if (!end.complete) return false;
    SayOnceWhatIsMissing();
    if (tables.controls > 0) {
        prompts_.Message(
            QStringLiteral("The record has control characters. The report has \"?\" for each."));
    }
    if (!open_(target)) prompts_.Inform(NoProgramText(target));
    return true;
}

void ReportRunner::SayOnceWhatIsMissing() {
    if (!chosen_->isBuiltIn || toldBuiltIn_) return;
    toldBuiltIn_ = true;
    prompts_.Inform(QLatin1String(kBuiltInRendererText));
}

void ReportRunner::Cancel() {
    if (cancel_) cancel_();
}

}  // namespace davo
