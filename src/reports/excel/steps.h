// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

#include "reports/excel/automation.h"
#include "reports/workbook.h"

// The conversation with Excel that makes a report. Members, arguments and constants are those of
// the reference of Excel's object model (Excel 2002 and later).
namespace davo::excel {

// Called before every step; n from 1 to m counts the sheets that are of a test and is 0 for the
// other steps. What it throws ends the writing.
using BeforeStep = std::function<void(int n, int m)>;

// Makes the application silent: invisible, no messages, no macros, no redrawing.
void Quieten(const Object& application);

// Opens the template file in application, fills it with workbook and saves it as an Excel 97-2003
// workbook under targetPath. The book is closed in every case. Throws RunTimeError 440: what Excel
// says, or that the template has no model sheet; and what beforeStep throws.
void MakeReport(const Object& application, const Workbook& workbook, const QString& templatePath,
                const QString& targetPath, const BeforeStep& beforeStep);

}  // namespace davo::excel
