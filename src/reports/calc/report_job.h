// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "reports/calc/workbook.h"

namespace davo::calc {

// Opens the template at source, writes workbook into it and stores it at target as ".xls"; context
// is that of the engine, seen from this process or from its own. Throws what the engine throws, and
// RunTimeError 440 for a template that is none.
void MakeReport(const Context& context, const Workbook& workbook, const QString& source,
                const QString& target, const BeforeStep& beforeStep);

// The same in the engine's own process: it loads this module and is asked once, because a call from
// process to process takes longer than most of what is asked for. False, with nothing done, when
// the engine does not load the module.
bool MakeReportInEngine(const Context& context, const Workbook& workbook, const QString& source,
                        const QString& target, const BeforeStep& beforeStep);

}  // namespace davo::calc
