// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string_view>

#include "reports/workbook.h"

namespace davo {

// Called on the renderer's own thread when sheet n of m that is of a test is begun.
using RenderProgress = std::function<void(int n, int m)>;

// Makes a file of a workbook. What can be rendered of it is the renderer's own business; all of
// them put the same cells, formats, merges, charts and page setup into the file.
class ReportRenderer {
  public:
    virtual ~ReportRenderer() = default;

    // Of the files that it makes: ".xls" or ".xlsx".
    virtual QString Extension() const = 0;

    // Begins what takes time and can be done ahead, such as starting another program; returns at
    // once. Called when a window opens that may ask for a report.
    virtual void Prepare() {}

    // One call at a time, on any thread; windows call it through BackgroundRender.
    // Blocks until the file is complete (true) or stop was requested (false). An earlier file of
    // the target's name is replaced at the very end and in one step: it is untouched when this
    // throws or was stopped. progress may be empty; what it throws is passed on.
    // Throws RunTimeError: 76 the target's folder is missing, 70 it may not be written to, 61 the
    // disk is full, 53 the template is missing (named in the text), 440 it is no workbook or has no
    // model sheet, or the engine behind the renderer failed.
    virtual bool Render(const Workbook& workbook, const QString& templatePath,
                        const QString& targetPath, const RenderProgress& progress,
                        const std::stop_token& stop) = 0;
};

// What every renderer makes sure of before it begins: the template is a file that can be read and
// the target's folder is there. Throws RunTimeError 53, 70 and 76.
void RequireRenderPaths(const QString& templatePath, const QString& targetPath);

// The end of every rendering: ReplaceFile(targetPath, bytes) unless stop was requested. Throws what
// ReplaceFile throws. True when the file was written.
bool FinishRendering(const QString& targetPath, std::string_view bytes,
                     const std::stop_token& stop);

// How LibreOffice Calc is driven.
struct CalcSettings {
    QString programFolder = QStringLiteral("/usr/lib/libreoffice/program");
    std::chrono::milliseconds patience{20'000};  // for one step of a report
    int reportsPerEngine = 30;
};

// The renderer that drives LibreOffice Calc and makes ".xls". Null when this build has none, or
// Calc is not installed. Calc stays in the background between reports, as long as this lives.
std::unique_ptr<ReportRenderer> MakeCalcRenderer(const CalcSettings& settings = {});

}  // namespace davo
