// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <optional>

#include "common/open_document.h"
#include "common/prompts.h"
#include "common/settings.h"
#include "reports/choose_renderer.h"
#include "reports/report_hooks.h"
#include "reports/report_tables.h"

class QEventLoop;
class QObject;

namespace davo {

// A window that is opened to be left again does not start another program.
inline constexpr std::chrono::milliseconds kPrepareDelay{8000};

// Makes reports in the Excel folder and shows them, while windows go on. One at a time; all of a
// program's windows share one.
class ReportRunner {
  public:
    using Choose = std::function<ChosenRenderer()>;
    using Open = std::function<bool(const QString& path)>;
    using Show = ReportHooks::Show;

    // prompts and settings must outlive it. open shows a finished workbook; false: nothing can.
    ReportRunner(
        Prompts& prompts, const Settings& settings, Choose choose = [] { return ChooseRenderer(); },
        Open open = ShowReportInExcel);

    // Begins what takes time and can be done ahead, once window, which may ask for a report, has
    // was open for kPrepareDelay; nothing happens when it is gone by then.
    void PrepareSoon(QObject& window);
    void Prepare();

    // For such a window: PrepareSoon, Run and Cancel.
    ReportHooks HooksFor(QObject& window);

    // Builds the report of recordFile (a full path) as excelPath + its name + the renderer's
    // extension, and opens it. Other events run meanwhile; show gets "Plotting graph n of m". An
    // earlier workbook of that name is replaced when the new one is whole. True when the workbook
    // was written; false when the report was left, or one is under way. Throws RunTimeError: what
    // ReadReportTables, BuildReport and ReportRenderer::Render throw.
    bool Run(const QString& recordFile, const Show& show);

    // The same for a group file (a full path), as OverlayWorkbook().
    bool RunOverlay(const QString& groupFile, const Show& show);

    // excelPath + "2Graphs" + the renderer's extension.
    QString OverlayWorkbook();

    bool UnderWay() const { return loop_ != nullptr; }
    // Leaves the report under way; nothing happens without one.
    void Cancel();

  private:
    ReportRenderer& Renderer();
    QString WorkbookOf(const QString& reportName);
    bool Make(const QString& path, RecordSource source, const QString& target, const Show& show);
    void SayOnceWhatIsMissing();

    Prompts& prompts_;
    const Settings& settings_;
    const Choose choose_;
    const Open open_;
    std::optional<ChosenRenderer> chosen_;
    bool toldBuiltIn_ = false;
    QEventLoop* loop_ = nullptr;
    std::function<void()> cancel_;
};

}  // namespace davo
