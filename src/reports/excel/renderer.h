// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <memory>
#include <mutex>
#include <stop_token>

#include "reports/excel/automation.h"
#include "reports/renderer.h"

namespace davo {

namespace excel {

// An Excel of the program's own, which ends with this object in every case.
class Session {
  public:
    virtual ~Session() = default;

    virtual const Object& Application() const = 0;
    // Called before every step: one that takes too long ends Excel, and the pending call fails.
    virtual void KeepWatch() = 0;
};

class Launcher {
  public:
    virtual ~Launcher() = default;

    // Starts a new Excel, never one that is there; to be used and ended on the calling thread.
    // After stop was requested a call that hangs is not waited for long. Throws RunTimeError 429
    // when there is none, 440 when it cannot be used.
    virtual std::unique_ptr<Session> Start(const std::stop_token& stop) = 0;
};

}  // namespace excel

// Makes ".xls" by Microsoft Excel: one Excel per report, which works on copies of the files.
class ExcelRenderer : public ReportRenderer {
  public:
    explicit ExcelRenderer(std::unique_ptr<excel::Launcher> launcher);

    QString Extension() const override { return QStringLiteral(".xls"); }
    bool Render(const Workbook& workbook, const QString& templatePath, const QString& targetPath,
                const RenderProgress& progress, const std::stop_token& stop) override;

  private:
    std::mutex oneAtATime_;
    const std::unique_ptr<excel::Launcher> launcher_;
};

// The renderer that drives Microsoft Excel. Null when Excel is not installed.
std::unique_ptr<ReportRenderer> MakeExcelRenderer();

}  // namespace davo
